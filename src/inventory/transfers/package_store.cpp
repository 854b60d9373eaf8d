#include "inventory/transfers/package_store.h"

#include "common/db/sql.h"
#include "inventory/transfers/transfer_store.h"

#include <QStringList>

namespace orvo::inventory::transfers::store {

namespace {

// "?, ?, ?": one placeholder per document.
QString placeholders(qsizetype count) {
    QStringList marks;
    for (qsizetype i = 0; i < count; ++i)
        marks << QStringLiteral("?");
    return marks.join(QStringLiteral(", "));
}

QString statement(Kind kind, PackagePart part, const QString& in) {
    const Tables& t = issued(kind);
    const QString barcodes = QStringLiteral("SELECT CodigoBarra FROM ") + t.lines +
                             QStringLiteral(" WHERE Numero IN (") + in + QStringLiteral(")");
    const auto ofArticles = [&](const char* column) {
        return QStringLiteral("SELECT %1 FROM INVENTARIO WHERE CodigoBarra IN (%2)")
            .arg(QLatin1String(column), barcodes);
    };
    switch (part) {
    case PackagePart::Summary:
        return QStringLiteral("SELECT * FROM ") + t.header + QStringLiteral(" WHERE Numero IN (") +
               in + QStringLiteral(") ORDER BY Numero");
    case PackagePart::Lines:
        return QStringLiteral("SELECT M.*, I.Nombre FROM ") + t.lines +
               QStringLiteral(" M LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                              "M.Numero IN (") +
               in + QStringLiteral(") ORDER BY M.Numero, M.Item");
    case PackagePart::Articles:
        return QStringLiteral("SELECT * FROM INVENTARIO WHERE CodigoBarra IN (") + barcodes +
               QStringLiteral(") ORDER BY CodigoBarra");
    case PackagePart::Brands:
        return QStringLiteral("SELECT Codigo, Nombre, Status FROM MARCAS WHERE Codigo IN (") +
               ofArticles("CodigoMarca") + QStringLiteral(") ORDER BY Codigo");
    case PackagePart::Sizes:
        return QStringLiteral("SELECT Codigo FROM TALLAS WHERE Codigo IN (") + ofArticles("Talla") +
               QStringLiteral(") ORDER BY Codigo");
    case PackagePart::Colours:
        return QStringLiteral("SELECT Codigo, Nombre, Status FROM COLORES WHERE Codigo IN (") +
               ofArticles("CodigoColor") + QStringLiteral(") ORDER BY Codigo");
    case PackagePart::Categories:
        return QStringLiteral("SELECT Codigo, Nombre, Status FROM CATEGORIAS WHERE Codigo IN (") +
               ofArticles("Categoria") + QStringLiteral(") ORDER BY Codigo");
    case PackagePart::Manufacturers:
        return QStringLiteral("SELECT Codigo, Nombre, Status FROM FABRICANTES WHERE Codigo IN (") +
               ofArticles("Fabricante") + QStringLiteral(") ORDER BY Codigo");
    case PackagePart::Lots:
        return QStringLiteral("SELECT * FROM LOTES WHERE ID IN (SELECT IDLote FROM ") + t.header +
               QStringLiteral(" WHERE Numero IN (") + in + QStringLiteral(")) ORDER BY ID");
    case PackagePart::DispatchTypes:
        if (kind != Kind::Transfer)
            return {};
        return QStringLiteral("SELECT * FROM TIPO_DESPACHO WHERE ID IN (SELECT IDDespacho FROM "
                              "TRANSFERENCIAS WHERE Numero IN (") +
               in + QStringLiteral(")) ORDER BY ID");
    }
    return {};
}

} // namespace

void selectPart(const QSqlDatabase& db, Kind kind, PackagePart part,
                const QList<long long>& numbers,
                const std::function<void(const QSqlRecord&)>& row) {
    const QString sql = statement(kind, part, placeholders(numbers.size()));
    if (sql.isEmpty() || numbers.isEmpty())
        return;
    db::Sql q(db, sql);
    for (long long n : numbers)
        q.bind(n);
    q.exec();
    while (q.next())
        row(q.raw().record());
}

} // namespace orvo::inventory::transfers::store
