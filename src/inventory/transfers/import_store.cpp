#include "inventory/transfers/import_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "inventory/transfers/transfer_store.h"

#include <QSet>
#include <stdexcept>

namespace orvo::inventory::transfers::store {

namespace {

constexpr int kMoney = 2;
constexpr int kQuantity = 3;
constexpr int kPrice = 4;
constexpr int kCost = 5;
const QString kSystemUser = QStringLiteral("SISTEMAS");

// A missing promotion date is written as 01/01/2000, as the article screen does.
QVariant day(const QDate& d) {
    return QVariant(QDateTime(d.isValid() ? d : QDate(2000, 1, 1), QTime(0, 0)));
}

Statement run(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    db::Sql q(db, sql);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    return {sql, values};
}

} // namespace

void upsertCatalogue(const QSqlDatabase& db, const QString& table, const QString& code,
                     const QString& name) {
    static const QSet<QString> tables = {QStringLiteral("MARCAS"), QStringLiteral("COLORES"),
                                         QStringLiteral("CATEGORIAS"),
                                         QStringLiteral("FABRICANTES")};
    if (!tables.contains(table))
        throw std::invalid_argument("catálogo desconocido: " + table.toStdString());
    db::requireTransaction(db);
    if (db::execute(db,
                    QStringLiteral("UPDATE ") + table +
                        QStringLiteral(" SET Status = 1 WHERE Codigo = ?"),
                    {code}) > 0)
        return;
    db::execute(db,
                QStringLiteral("INSERT INTO ") + table +
                    QStringLiteral(" (Codigo, Nombre, Status) VALUES (?, ?, 1)"),
                {code, name.isEmpty() ? code : name});
}

void upsertSize(const QSqlDatabase& db, const QString& code) {
    db::requireTransaction(db);
    if (db::execute(db, QStringLiteral("UPDATE TALLAS SET Status = 1 WHERE Codigo = ?"), {code}) >
        0)
        return;
    db::execute(db, QStringLiteral("INSERT INTO TALLAS (Codigo, Talla, Status) VALUES (?, ?, 1)"),
                {code, code});
}

long long upsertLot(const QSqlDatabase& db, const QString& code, const QString& description,
                    const QDateTime& now) {
    db::requireTransaction(db);
    if (db::execute(db, QStringLiteral("UPDATE LOTES SET Estado = 1 WHERE Lote = ?"), {code}) == 0)
        db::execute(db,
                    QStringLiteral("INSERT INTO LOTES (Lote, Descripcion, FechaRegistro, Estado, "
                                   "UsuarioCreacion) VALUES (?, ?, ?, 1, ?)"),
                    {code, description, now, kSystemUser});
    return db::scalar(db, QStringLiteral("SELECT MIN(ID) FROM LOTES WHERE Lote = ?"), {code})
        .toLongLong();
}

void upsertDispatchType(const QSqlDatabase& db, int id, const QString& description) {
    db::requireTransaction(db);
    if (db::execute(db, QStringLiteral("UPDATE TIPO_DESPACHO SET Estado = 1 WHERE ID = ?"), {id}) >
        0)
        return;
    db::execute(db,
                QStringLiteral("INSERT INTO TIPO_DESPACHO (ID, Descripcion, Estado) VALUES (?, ?, "
                               "1)"),
                {id, description});
}

std::optional<Statement> updateArticle(const QSqlDatabase& db, const PackageArticle& a,
                                       const QDateTime& now) {
    db::requireTransaction(db);
    const QString sql = QStringLiteral(
        "UPDATE INVENTARIO SET Referencia = ?, CodigoMarca = ?, Talla = ?, CodigoColor = ?, "
        "Nombre = ?, Fabricante = ?, Categoria = ?, Status = 1, UltimaActualizacion = ?, "
        "PrecioDetal = ?, PrecioMayor = ?, PrecioAfiliado = ?, PrecioPromocion = ?, Promocion = ?, "
        "FechaInicial = ?, FechaFinal = ? WHERE CodigoBarra = ?");
    const QVariantList values = {a.reference,
                                 a.brand,
                                 a.size,
                                 a.colour,
                                 a.name,
                                 a.manufacturer,
                                 a.category,
                                 now,
                                 a.retail.toVariant(kPrice),
                                 a.wholesale.toVariant(kPrice),
                                 a.member.toVariant(kPrice),
                                 a.promotionPrice.toVariant(kPrice),
                                 a.promotion ? 1 : 0,
                                 day(a.promotionStart),
                                 day(a.promotionEnd),
                                 a.barcode};
    db::Sql q(db, sql);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    if (q.rowsAffected() == 0)
        return std::nullopt;
    return Statement{sql, values};
}

Statement insertArticle(const QSqlDatabase& db, const PackageArticle& a, int taxCode,
                        const QDateTime& now) {
    db::requireTransaction(db);
    return run(db,
               QStringLiteral(
                   "INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
                   "CodigoColor, Fabricante, Categoria, TipoImpuesto, UltimaActualizacion, "
                   "PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, PrecioPromocion, "
                   "FechaInicial, FechaFinal, ExistenciaInicial, Existencia, CostoInicial, "
                   "CostoPromedio, UltimoCosto, CostoDolar, Tipo, Status, Serializado, "
                   "CodigoBarraAnt) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, "
                   "0, 0, 0, 0, 0, 0, 1, 0, ?)"),
               {a.barcode, a.name, a.reference, a.brand, a.size, a.colour, a.manufacturer,
                a.category, taxCode, now, a.retail.toVariant(kPrice), a.wholesale.toVariant(kPrice),
                a.member.toVariant(kPrice), a.promotion ? 1 : 0, a.promotionPrice.toVariant(kPrice),
                day(a.promotionStart), day(a.promotionEnd), a.barcode});
}

Statement applyModelPrices(const QSqlDatabase& db, const PackageArticle& a) {
    db::requireTransaction(db);
    return run(db,
               QStringLiteral("UPDATE INVENTARIO SET PrecioDetal = ?, PrecioMayor = ?, "
                              "PrecioAfiliado = ?, PrecioPromocion = ?, Promocion = ?, "
                              "FechaInicial = ?, FechaFinal = ? WHERE Referencia = ? AND "
                              "CodigoMarca = ?"),
               {a.retail.toVariant(kPrice), a.wholesale.toVariant(kPrice),
                a.member.toVariant(kPrice), a.promotionPrice.toVariant(kPrice), a.promotion ? 1 : 0,
                day(a.promotionStart), day(a.promotionEnd), a.reference, a.brand});
}

bool reactivateArticle(const QSqlDatabase& db, const QString& barcode, const QDateTime& now) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE INVENTARIO SET Status = 1, UltimaActualizacion = ? "
                                      "WHERE CodigoBarra = ?"),
                       {now, barcode}) > 0;
}

bool taxCodeExists(const QSqlDatabase& db, int code) {
    return db::exists(db, QStringLiteral("SELECT 1 FROM IMPUESTOS WHERE Codigo = ?"), {code});
}

bool receivedExists(const QSqlDatabase& db, Kind kind, long long number, const QString& sender) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ") + received(kind).header +
                           QStringLiteral(" SET Status = Status WHERE Numero = ? AND CodigoEnvia "
                                          "= ?"),
                       {number, sender}) > 0;
}

void insertReceived(const QSqlDatabase& db, Kind kind, const ReceivedHeader& h) {
    db::requireTransaction(db);
    if (kind == Kind::Transfer) {
        db::Sql(db, QStringLiteral("INSERT INTO ITRANSFERENCIAS (Numero, CodigoEnvia, "
                                   "CodigoRecibe, Fecha, FechaEmision, TotalValor, Observacion, "
                                   "InterContable, Status, Usuario, IDLote, IDDespacho) VALUES "
                                   "(?, ?, ?, ?, ?, 0, ?, 0, 1, ?, ?, ?)"))
            .bind(h.number)
            .bind(h.sender)
            .bind(h.receiver)
            .bind(h.date)
            .bind(h.issueDate)
            .bind(h.note)
            .bind(kSystemUser)
            .bind(h.lotId)
            .bind(h.dispatchId)
            .exec();
        return;
    }
    db::Sql(db, QStringLiteral("INSERT INTO IDEVTRANSFERENCIAS (Numero, CodigoEnvia, CodigoRecibe, "
                               "Fecha, FechaEmision, Observacion, Status, Usuario, IDLote, "
                               "TotalValor, InterContable) VALUES (?, ?, ?, ?, ?, ?, 1, ?, ?, 0, "
                               "0)"))
        .bind(h.number)
        .bind(h.sender)
        .bind(h.receiver)
        .bind(h.date)
        .bind(h.issueDate)
        .bind(h.note)
        .bind(kSystemUser)
        .bind(h.lotId)
        .exec();
}

void upsertReceivedLine(const QSqlDatabase& db, Kind kind, const ReceivedHeader& h,
                        const DocumentLine& line, int item, const QDateTime& when) {
    db::requireTransaction(db);
    const QString& lines = received(kind).lines;
    db::Sql up(db, QStringLiteral("UPDATE ") + lines +
                       QStringLiteral(" SET Cantidad = ROUND(Cantidad + ?, 3) WHERE Numero = ? AND "
                                      "CodigoEnvia = ? AND CodigoBarra = ? AND NumeroCaja = ?"));
    up.bind(line.quantity, kQuantity)
        .bind(h.number)
        .bind(h.sender)
        .bind(line.barcode)
        .bind(line.box)
        .exec();
    if (up.rowsAffected() > 0)
        return;
    db::Sql(db, QStringLiteral("INSERT INTO ") + lines +
                    QStringLiteral(" (Numero, CodigoEnvia, Item, Fecha, CodigoBarra, Cantidad, "
                                   "Valor, NumeroCaja) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"))
        .bind(h.number)
        .bind(h.sender)
        .bind(item)
        .bind(when)
        .bind(line.barcode)
        .bind(line.quantity, kQuantity)
        .bind(line.price, kCost)
        .bind(line.box)
        .exec();
}

QList<Arrival> holdArrivals(const QSqlDatabase& db, Kind kind, long long number,
                            const QString& sender) {
    db::requireTransaction(db);
    const QString& lines = received(kind).lines;
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE CodigoBarra IN "
                               "(SELECT CodigoBarra FROM ") +
                    lines + QStringLiteral(" WHERE Numero = ? AND CodigoEnvia = ?)"),
                {number, sender});
    db::Sql q(db, QStringLiteral("SELECT I.CodigoBarra, I.Existencia, I.CostoPromedio, "
                                 "M.Cantidad, M.Valor FROM ") +
                      lines +
                      QStringLiteral(" M INNER JOIN INVENTARIO I ON I.CodigoBarra = "
                                     "M.CodigoBarra WHERE M.Numero = ? AND M.CodigoEnvia = ? "
                                     "ORDER BY M.Item"));
    q.bind(number).bind(sender).exec();
    QList<Arrival> out;
    QList<int> counts;
    while (q.next()) {
        const QString barcode = q.text(QStringLiteral("CodigoBarra"));
        const Decimal units = q.decimal(QStringLiteral("Cantidad"));
        const Decimal value = q.decimal(QStringLiteral("Valor"));
        const auto it = std::find_if(out.begin(), out.end(),
                                     [&](const Arrival& a) { return a.barcode == barcode; });
        if (it == out.end()) {
            out.append({barcode, q.decimal(QStringLiteral("Existencia")),
                        q.decimal(QStringLiteral("CostoPromedio")), units, value});
            counts.append(1);
            continue;
        }
        const auto at = it - out.begin();
        it->units += units;
        it->value += value; // summed here, averaged below
        ++counts[at];
    }
    for (qsizetype i = 0; i < out.size(); ++i)
        out[i].value = out[i].value / Decimal(counts[i]);
    return out;
}

void writeArrival(const QSqlDatabase& db, const QString& barcode, const Decimal& stock,
                  const Decimal& averageCost, const Decimal& lastCost) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("UPDATE INVENTARIO SET CostoPromedio = ?, Existencia = ?, "
                               "UltimoCosto = ? WHERE CodigoBarra = ?"))
        .bind(averageCost, kCost)
        .bind(stock, kQuantity)
        .bind(lastCost, kCost)
        .bind(barcode)
        .exec();
}

void valueReturnedLines(const QSqlDatabase& db, long long number, const QString& sender,
                        const QString& barcode, const Decimal& cost) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE IMOVDEVTRANSFERENCIAS SET Valor = ? WHERE Numero = ? AND "
                               "CodigoEnvia = ? AND CodigoBarra = ?"),
                {cost.toVariant(kCost), number, sender, barcode});
}

void setReceivedTotal(const QSqlDatabase& db, Kind kind, long long number, const QString& sender,
                      const Decimal& total) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE ") + received(kind).header +
                    QStringLiteral(" SET TotalValor = ? WHERE Numero = ? AND CodigoEnvia = ?"),
                {total.toVariant(kMoney), number, sender});
}

} // namespace orvo::inventory::transfers::store
