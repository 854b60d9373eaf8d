#include "inventory/dispatch/file_orders.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/orders.h"

#include <QMap>

namespace orvo::inventory::dispatch {

namespace {

bool recorded(const QSqlDatabase& db, const QString& supplier, long long document) {
    return db::exists(db,
                      QStringLiteral("SELECT 1 FROM ORDENDESPACHOAUTOMATICA WHERE Proveedor = ? "
                                     "AND NumeroDocumento = ? AND TipoDocumentoOrigen = 'TR'"),
                      {supplier, QString::number(document)});
}

void record(const QSqlDatabase& db, const FileOrdersRequest& r, long long document, long long order,
            const QString& user, const QDateTime& when) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO ORDENDESPACHOAUTOMATICA (Proveedor, NumeroDocumento, "
                               "Cliente, NumeroOrden, Usuario, FechaRegistro, "
                               "TipoDocumentoOrigen) VALUES (?, ?, ?, ?, ?, ?, 'TR')"))
        .bind(r.supplier)
        .bind(QString::number(document))
        .bind(r.client.codigo)
        .bind(order)
        .bind(user)
        .bind(when)
        .exec();
}

} // namespace

QList<FileDocument> fileDocuments(const QSqlDatabase& db, const QString& supplier,
                                  const transfers::SupplierFile& file) {
    QMap<long long, int> boxes;
    for (const transfers::SupplierBox& b : file.boxes)
        ++boxes[b.document];
    QList<FileDocument> out;
    for (auto it = boxes.cbegin(); it != boxes.cend(); ++it)
        out.append({it.key(), it.value(), !supplier.isEmpty() && recorded(db, supplier, it.key())});
    return out;
}

FileOrdersResult generateOrders(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                const transfers::SupplierFile* file, const FileOrdersRequest& r) {
    if (!file)
        throw UserError(QStringLiteral("Debe seleccionar un archivo MOVITRAN.DBF!"));
    if (r.supplier.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar un proveedor!"));
    if (!r.client.isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    if (r.documents.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar un documento!"));
    const transfers::SupplierFileCheck check = transfers::checkSupplierFile(db, *file);
    if (!check.ok())
        throw UserError(QStringLiteral("No se puede generar la orden de despacho: %1 articulos no "
                                       "existen y %2 no tienen costo o precios (Articulos no "
                                       "existentes.txt, Articulos sin valores.txt)...!")
                            .arg(check.missing.size())
                            .arg(check.withoutValues.size()));
    FileOrdersResult out;
    db::Transaction tx(db);
    const QDateTime now = db::serverNow(db);
    for (long long document : r.documents) {
        if (recorded(db, r.supplier, document)) {
            ++out.skipped;
            continue;
        }
        // Priced and checked as a keyed order; the orders made before in this run hold their
        // stock too.
        pos::sale::SaleDraft draft = newOrderDraft(db, ctx);
        setOrderClient(ctx, draft, r.client);
        QList<QPair<QString, Decimal>> lines;
        for (const transfers::SupplierFile::Row& row : file->rows) {
            if (row.document != document)
                continue;
            auto it = std::find_if(lines.begin(), lines.end(),
                                   [&](const auto& l) { return l.first == row.barcode; });
            if (it == lines.end())
                lines.append({row.barcode, row.quantity});
            else
                it->second += row.quantity;
        }
        for (const auto& [barcode, quantity] : lines) {
            try {
                addToOrder(db, draft, 0, barcode, quantity);
            } catch (const UserError& e) {
                throw UserError(QStringLiteral("Documento ") + QString::number(document) +
                                QStringLiteral(", artículo ") + barcode + QStringLiteral(": ") +
                                e.text());
            }
        }
        const QString note = QStringLiteral("Orden generada aut. por el documento Nº ") +
                             QString::number(document) + QStringLiteral(" del proveedor ") +
                             r.supplier;
        const long long order = writeOrder(db, ctx, draft, {0, note, true});
        record(db, r, document, order, ctx.userCode, now);
        out.orders.append(order);
    }
    tx.commit();
    const QList<FileDocument> after = fileDocuments(db, r.supplier, *file);
    out.wholeFile = std::all_of(after.cbegin(), after.cend(),
                                [](const FileDocument& d) { return d.converted; });
    return out;
}

} // namespace orvo::inventory::dispatch
