#include "inventory/dispatch/invoice_conversion.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/conversion_store.h"
#include "inventory/dispatch/orders.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

namespace orvo::inventory::dispatch {

namespace {

QString originType(InvoiceSource source) {
    return source == InvoiceSource::Transfer ? QStringLiteral("TE") : QStringLiteral("CO");
}

QString documentName(const InvoiceSourceDocument& d) {
    return d.source == InvoiceSource::Transfer
               ? QStringLiteral("La transferencia Nº ") + d.number + QStringLiteral(" de ") + d.from
               : QStringLiteral("La compra Nº ") + d.number + QStringLiteral(" del proveedor ") +
                     d.from;
}

bool invoiced(const QSqlDatabase& db, const InvoiceSourceDocument& d) {
    // A purchase converted into anything else is not invoiced as well.
    return d.source == InvoiceSource::Purchase
               ? store::purchaseLogged(db, d.number, d.from)
               : db::exists(db,
                            QStringLiteral("SELECT 1 FROM BITACORAMOVIMIENTO WHERE "
                                           "TipodocumentoOrigen = 'TE' AND DocumentoOrigen = ? "
                                           "AND Origen = ? AND tipoDocumentoDestino = 'FA'"),
                            {d.number, d.from});
}

// Holds the document's row for the conversion: false when it is not loaded or approved.
bool hold(const QSqlDatabase& db, const InvoiceSourceDocument& d) {
    if (d.source == InvoiceSource::Purchase)
        return store::holdPurchase(db, d.number, d.from);
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ITRANSFERENCIAS SET Status = Status WHERE Numero = ? "
                                      "AND CodigoEnvia = ? AND Status = 1"),
                       {d.number.toLongLong(), d.from}) > 0;
}

QList<std::pair<QString, Decimal>> linesOf(const QSqlDatabase& db, const InvoiceSourceDocument& d) {
    const bool transfer = d.source == InvoiceSource::Transfer;
    db::Sql q(db, transfer ? QStringLiteral("SELECT CodigoBarra, SUM(Cantidad) AS Cantidad, "
                                            "MIN(Item) AS Orden FROM IMOVTRANSFERENCIAS WHERE "
                                            "Numero = ? AND CodigoEnvia = ? GROUP BY CodigoBarra "
                                            "ORDER BY Orden")
                           : QStringLiteral("SELECT CodigoBarra, SUM(Cantidad) AS Cantidad, "
                                            "MIN(Item) AS Orden FROM MOVCOMPRAS WHERE Documento = "
                                            "? AND Proveedor = ? GROUP BY CodigoBarra ORDER BY "
                                            "Orden"));
    if (transfer)
        q.bind(d.number.toLongLong());
    else
        q.bind(d.number);
    q.bind(d.from).exec();
    QList<std::pair<QString, Decimal>> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")).trimmed(),
                    q.decimal(QStringLiteral("Cantidad")).rounded(3)});
    return out;
}

void checkInvoiceable(const QSqlDatabase& db, const InvoiceSourceDocument& d) {
    const bool exists =
        d.source == InvoiceSource::Transfer
            ? db::exists(db,
                         QStringLiteral("SELECT 1 FROM ITRANSFERENCIAS WHERE Numero = ? AND "
                                        "CodigoEnvia = ? AND Status = 1"),
                         {d.number.toLongLong(), d.from})
            : db::exists(db,
                         QStringLiteral("SELECT 1 FROM COMPRAS WHERE Documento = ? AND Proveedor "
                                        "= ? AND Status = 1"),
                         {d.number, d.from});
    if (!exists)
        throw UserError(documentName(d) + QStringLiteral(" no existe o no está aprobada...!"));
    if (invoiced(db, d))
        throw UserError(documentName(d) + QStringLiteral(" ya fue facturada...!"));
}

void listInvoice(const InvoiceSourceDocument& d, long long number, const Decimal& total) {
    QDir().mkpath(shell::appHome());
    QFile file(QDir(shell::appHome()).filePath(QStringLiteral("FacturasAutomaticas.txt")));
    if (!file.open(QIODevice::Append | QIODevice::Text))
        throw UserError(QStringLiteral("No se pudo escribir el archivo ") + file.fileName() +
                        QStringLiteral("...!"));
    QTextStream out(&file);
    out << QDateTime::currentDateTime().toString(QStringLiteral("dd/MM/yyyy hh:mm")) << '\t'
        << QStringLiteral("Factura Nº ") << number << '\t' << invoiceNote(d) << '\t'
        << total.toString(2) << '\n';
}

} // namespace

QString invoiceNote(const InvoiceSourceDocument& d) {
    return (d.source == InvoiceSource::Transfer
                ? QStringLiteral("Factura generada aut. por la transferencia Nº ")
                : QStringLiteral("Factura generada aut. por la compra Nº ")) +
           d.number;
}

QList<InvoiceSourceDocument> documentsToInvoice(const QSqlDatabase& db, InvoiceSource source) {
    const bool transfer = source == InvoiceSource::Transfer;
    db::Sql q(db, transfer ? QStringLiteral("SELECT T.Numero AS Numero, T.CodigoEnvia AS Origen, "
                                            "T.Fecha AS Fecha, T.TotalValor AS Total FROM "
                                            "ITRANSFERENCIAS T WHERE T.Status = 1 AND NOT EXISTS "
                                            "(SELECT 1 FROM BITACORAMOVIMIENTO B WHERE "
                                            "B.TipodocumentoOrigen = 'TE' AND "
                                            "B.tipoDocumentoDestino = 'FA' AND B.DocumentoOrigen "
                                            "= CAST(T.Numero AS VARCHAR(20)) AND B.Origen = "
                                            "T.CodigoEnvia) ORDER BY T.Fecha DESC, T.Numero DESC")
                           : QStringLiteral("SELECT C.Documento AS Numero, C.Proveedor AS Origen, "
                                            "C.Fecha AS Fecha, C.TotalMercancia AS Total FROM "
                                            "COMPRAS C WHERE C.Status = 1 AND NOT EXISTS (SELECT "
                                            "1 FROM BITACORAMOVIMIENTO B WHERE "
                                            "B.TipodocumentoOrigen = 'CO' AND B.DocumentoOrigen = "
                                            "C.Documento AND B.Origen = C.Proveedor) ORDER BY "
                                            "C.Fecha DESC, C.Documento DESC"));
    q.exec();
    QList<InvoiceSourceDocument> out;
    while (q.next())
        out.append({source, q.text(QStringLiteral("Numero")).trimmed(),
                    q.text(QStringLiteral("Origen")).trimmed(), q.dateTime(QStringLiteral("Fecha")),
                    q.decimal(QStringLiteral("Total"))});
    return out;
}

pos::sale::SaleDraft invoiceDraft(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                  const InvoiceSourceDocument& document,
                                  const pos::sale::SaleClient& client,
                                  const pos::sale::SaleSeller& seller) {
    checkInvoiceable(db, document);
    pos::sale::SaleDraft draft = newOrderDraft(db, ctx);
    if (!client.isSet())
        throw UserError(QStringLiteral("Especifique el cliente al que se le realizó la venta...!"));
    setOrderClient(ctx, draft, client);
    draft.setSeller(seller);
    draft.setMode(pos::sale::PaymentMode::Credit);
    for (const auto& [barcode, quantity] : linesOf(db, document))
        addToOrder(db, draft, 0, barcode, quantity);
    return draft;
}

long long convertToInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                           const InvoiceSourceDocument& document, const pos::sale::SaleDraft& draft,
                           pos::sale::SalePrinter* printer) {
    checkInvoiceable(db, document);
    const pos::sale::AcceptResult r = pos::sale::acceptSale(
        db, ctx, draft, printer, false,
        [&] {
            // The guard first: it holds the document, so a second conversion waits and then
            // finds it invoiced.
            if (!hold(db, document) || invoiced(db, document))
                checkInvoiceable(db, document);
        },
        [&](long long number) {
            store::logConversion(db,
                                 {originType(document.source), document.number, document.from,
                                  QStringLiteral("FA"), QString::number(number),
                                  draft.client().codigo, ctx.userCode, invoiceNote(document)},
                                 db::serverNow(db));
        });
    if (r.status != pos::sale::AcceptResult::Status::Saved)
        throw UserError(QStringLiteral("La factura excede el máximo diario de la impresora "
                                       "fiscal: emita el reporte Z desde la caja...!"));
    listInvoice(document, r.number, r.total);
    return r.number;
}

} // namespace orvo::inventory::dispatch
