#include "inventory/purchases/line_sources.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "inventory/articles/article_rules.h"
#include "inventory/articles/articles.h"
#include "inventory/stock/model_prices.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QTextStream>

namespace orvo::inventory::purchases {

namespace {

// A RIF as clients are keyed: capitals, without dashes or spaces.
QString plainRif(QString rif) {
    return rif.remove(QLatin1Char('-')).remove(QLatin1Char(' ')).toUpper();
}

// This store's tax code of a rate; code 1 (the general rate) when none has it.
int taxCodeOf(const QSqlDatabase& db, const Decimal& rate) {
    const QVariant code = db::scalar(
        db,
        QStringLiteral("SELECT Codigo FROM IMPUESTOS WHERE PorcentajeImpuesto = ? ORDER BY "
                       "Codigo"),
        {rate.toVariant(4)});
    return code.isValid() ? code.toInt() : 1;
}

// Creates `barcode` here from the sister's INVENTARIO row; false when the sister has none.
bool createFromSister(const QSqlDatabase& own, const QSqlDatabase& sister, const QString& barcode,
                      const Decimal& taxRate, const ArticleWriter& writer) {
    db::Sql s(sister, QStringLiteral("SELECT CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
                                     "CodigoColor, Categoria, Fabricante, PrecioDetal, "
                                     "PrecioMayor, PrecioAfiliado, Tipo FROM INVENTARIO WHERE "
                                     "CodigoBarra = ?"));
    s.bind(barcode).exec();
    if (!s.next())
        return false;
    const QString reference = s.text(QStringLiteral("Referencia"));
    const QString brand = s.text(QStringLiteral("CodigoMarca"));
    const QString sql =
        QStringLiteral("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, "
                       "CodigoMarca, Talla, CodigoColor, Categoria, Fabricante, "
                       "TipoImpuesto, UltimaActualizacion, FechaPrimerMovimiento, "
                       "PuntoReorden, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
                       "PrecioPromocion, ExistenciaInicial, Existencia, CostoInicial, "
                       "CostoPromedio, UltimoCosto, CostoDolar, Tipo, Status, Serializado, "
                       "CodigoBarraAnt) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ") +
        db::nowExpression(own) + QStringLiteral(", ") + db::nowExpression(own) +
        QStringLiteral(", 0, ?, ?, ?, 0, 0, 0, 0, 0, 0, 0, 0, ?, 0, 0, ?)");
    const QVariantList values = {barcode,
                                 s.text(QStringLiteral("Nombre")),
                                 reference,
                                 brand,
                                 s.text(QStringLiteral("Talla")),
                                 s.text(QStringLiteral("CodigoColor")),
                                 s.text(QStringLiteral("Categoria")),
                                 s.text(QStringLiteral("Fabricante")),
                                 taxCodeOf(own, taxRate),
                                 s.decimal(QStringLiteral("PrecioDetal")).toVariant(4),
                                 s.decimal(QStringLiteral("PrecioMayor")).toVariant(4),
                                 s.decimal(QStringLiteral("PrecioAfiliado")).toVariant(4),
                                 s.integer(QStringLiteral("Tipo")),
                                 barcode};
    db::Sql in(own, sql);
    for (const QVariant& v : values)
        in.bind(v);
    in.exec();
    logArticleWrite(own, barcode, reference, brand, rules::describeStatement(sql, values), writer);
    // A new size or colour of a model sold here sells at the model's prices.
    stock::giveModelPrices(own, barcode);
    return true;
}

} // namespace

QList<SisterCompany> sisterCompanies(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre, BaseDatos FROM EMPRESAS WHERE Status = 1 "
                                 "AND BaseDatos <> '' ORDER BY Codigo"));
    q.exec();
    QList<SisterCompany> out;
    while (q.next())
        out.append({q.text(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre")),
                    q.text(QStringLiteral("BaseDatos")).trimmed()});
    return out;
}

QSqlDatabase openSisterDatabase(const QSqlDatabase& own, const SisterCompany& company,
                                const QString& connectionName) {
    db::ConnectionSettings s;
    s.engine = db::engineOf(own);
    if (s.engine == db::Engine::Sqlite) {
        QString file = company.database;
        if (QFileInfo(file).suffix().isEmpty())
            file += QStringLiteral(".sqlite");
        if (QFileInfo(file).isRelative())
            file = QFileInfo(own.databaseName()).dir().filePath(file);
        if (!QFileInfo::exists(file))
            throw UserError(QStringLiteral("No se encuentra la base de datos ") + company.database +
                            QStringLiteral(" de la empresa ") + company.name +
                            QStringLiteral("...!"));
        s.sqliteFile = file;
    } else {
        s.host = own.hostName();
        s.port = own.port() > 0 ? own.port() : 5432;
        s.database = company.database;
        s.passwordAuth = !own.userName().isEmpty();
        s.user = own.userName();
        s.password = own.password();
    }
    return db::openConnection(s, connectionName);
}

QList<SisterInvoice> sisterInvoices(const QSqlDatabase& own, const QSqlDatabase& sister,
                                    const QString& supplier) {
    const QString rif =
        plainRif(db::scalar(own, QStringLiteral("SELECT IDEmpresa FROM PARAMETROS")).toString());
    if (rif.isEmpty())
        throw UserError(QStringLiteral("La empresa no tiene RIF registrado...!"));
    // Entered already from this supplier: the other database cannot be joined, so it is read here.
    QSet<QString> entered;
    db::Sql done(own, QStringLiteral("SELECT Documento FROM COMPRAS WHERE Proveedor = ?"));
    done.bind(supplier).exec();
    while (done.next())
        entered.insert(done.text(QStringLiteral("Documento")).trimmed());
    db::Sql q(sister, QStringLiteral("SELECT NumeroFactura, Serie, Fecha, TotalMercancia - "
                                     "TotalDescuento + TotalImpuesto AS Total FROM VENTAS WHERE "
                                     "UPPER(REPLACE(REPLACE(Cliente, '-', ''), ' ', '')) = ? AND "
                                     "TotalMercancia > 0 ORDER BY Fecha DESC, NumeroFactura DESC"));
    q.bind(rif).exec();
    QList<SisterInvoice> out;
    while (q.next()) {
        SisterInvoice inv{q.bigint(QStringLiteral("NumeroFactura")),
                          q.text(QStringLiteral("Serie")), q.dateTime(QStringLiteral("Fecha")),
                          q.decimal(QStringLiteral("Total"))};
        if (!entered.contains(inv.document()))
            out.append(inv);
    }
    return out;
}

LoadedLines loadSisterInvoice(const QSqlDatabase& own, const QSqlDatabase& sister,
                              const SisterInvoice& invoice, const ArticleWriter& writer) {
    db::Sql q(sister, QStringLiteral("SELECT CodigoBarra, Cantidad, PrecioLista, "
                                     "PorcentajeImpuesto FROM MOVVENTAS WHERE NumeroFactura = ? "
                                     "AND Serie = ? AND Cantidad > 0 ORDER BY Item"));
    q.bind(invoice.number).bind(invoice.serie).exec();
    struct Sold {
        QString barcode;
        Decimal quantity, price, rate;
    };
    QList<Sold> sold;
    while (q.next())
        sold.append({q.text(QStringLiteral("CodigoBarra")).trimmed(),
                     q.decimal(QStringLiteral("Cantidad")),
                     q.decimal(QStringLiteral("PrecioLista")),
                     q.decimal(QStringLiteral("PorcentajeImpuesto"))});
    LoadedLines out;
    db::Transaction tx(own);
    for (const Sold& s : sold) {
        auto article = findArticleByBarcode(own, s.barcode);
        if (!article && !out.notFound.contains(s.barcode)) {
            if (createFromSister(own, sister, s.barcode, s.rate, writer)) {
                out.created << s.barcode;
                article = findArticleByBarcode(own, s.barcode);
            } else {
                out.notFound << s.barcode;
            }
        }
        if (article)
            out.lines.append({article->barcode, article->name, s.quantity, s.price, s.rate});
    }
    tx.commit();
    return out;
}

PackingList readPackingList(const QSqlDatabase& db, const QString& path, PackingCheck check) {
    const exchange::package::DbfTable table(
        path, {QStringLiteral("CodBarra"), QStringLiteral("Cantidad")});
    const bool named = table.hasField(QStringLiteral("Nombre"));
    const bool valued = table.hasField(QStringLiteral("Valor"));
    struct Row {
        QString barcode, name;
        Decimal quantity, value;
    };
    QList<Row> rows;
    QHash<QString, int> at;
    for (int i = 0; i < table.recordCount(); ++i) {
        if (table.isDeleted(i))
            continue;
        const QString barcode = table.text(i, QStringLiteral("CodBarra")).trimmed();
        if (barcode.isEmpty())
            continue;
        const Decimal quantity = table.decimal(i, QStringLiteral("Cantidad"));
        if (const auto it = at.constFind(barcode); it != at.constEnd()) {
            rows[*it].quantity += quantity;
            continue;
        }
        at.insert(barcode, int(rows.size()));
        rows.append({barcode, named ? table.text(i, QStringLiteral("Nombre")) : QString(), quantity,
                     valued ? table.decimal(i, QStringLiteral("Valor")) : Decimal()});
    }
    PackingList out;
    // The reception's test is the no-op update: an article must be active and have a cost.
    db::Transaction tx(db);
    db::Sql usable(db, QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE CodigoBarra = "
                                      "? AND CostoPromedio > 0 AND Status <> 0"));
    for (const Row& r : rows) {
        const auto article = findArticleByBarcode(db, r.barcode);
        bool ok = article.has_value();
        if (ok && check == PackingCheck::ActiveWithCost) {
            usable.bind(r.barcode).exec();
            ok = usable.rowsAffected() > 0;
        }
        if (ok)
            out.lines.append(
                {article->barcode, article->name, r.quantity, r.value, article->taxRate});
        else
            out.missing.append({r.barcode, r.name, r.quantity});
    }
    tx.rollback(); // the tests wrote nothing
    return out;
}

QString writeMissingArticles(const QList<PackingList::Missing>& missing) {
    const QString path =
        QDir(shell::appHome()).filePath(QStringLiteral("Articulos no existentes.txt"));
    QDir().mkpath(shell::appHome());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        throw UserError(QStringLiteral("No se pudo escribir el archivo ") + path +
                        QStringLiteral("...!"));
    QTextStream out(&file);
    for (const PackingList::Missing& m : missing)
        out << m.barcode << '\t' << m.name << '\t' << m.quantity.toString() << '\n';
    out.flush();
    if (!file.commit())
        throw UserError(QStringLiteral("No se pudo escribir el archivo ") + path +
                        QStringLiteral("...!"));
    return path;
}

} // namespace orvo::inventory::purchases
