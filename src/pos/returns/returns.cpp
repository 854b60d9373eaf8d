#include "pos/returns/returns.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/stock/model_average.h"
#include "pos/fiscal/document_builder.h"
#include "pos/fiscal/register_check.h"
#include "pos/payments/payment_rules.h"
#include "pos/register/day_state.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcReturns, "orvo.pos.returns")

namespace orvo::pos::returns {

namespace {

QString esc(const QString& s) {
    return s.toHtmlEscaped();
}

} // namespace

long long nextReturnNumberPreview(const QSqlDatabase& db, const shell::SessionContext& ctx) {
    return common::readSalesCounters(db, ctx.controlFactura, ctx.serial).lastReturn + 1;
}

ReturnableInvoice loadInvoice(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              long long number, Purpose purpose) {
    const bool exchange = purpose == Purpose::Exchange;
    const auto invoice = store::loadInvoice(db, number, ctx.serial);
    if (!invoice)
        throw UserError(
            exchange ? QStringLiteral("La factura no se encuentra registrada en esta caja...!")
                     : QStringLiteral("La factura no se encuentra registrada en esta caja..."));
    if (exchange && invoice->tipoVenta == kCreditSale)
        throw UserError(QStringLiteral("No puede cambiar una factura a credito...!"));
    bool left = false;
    for (const InvoiceLine& l : invoice->lines)
        left = left || l.remaining() > Decimal();
    if (!left)
        throw UserError(exchange ? QStringLiteral("La factura fue devuelta en su totalidad...!")
                                 : QStringLiteral("La factura fue devuelta en su totalidad..."));
    return *invoice;
}

SavedReturn writeReturn(const QSqlDatabase& db, const shell::SessionContext& ctx,
                        const ReturnDraft& draft, store::NegativeStockLastCost negative) {
    db::requireTransaction(db);
    const long long number = common::nextReturnNumber(db, ctx.controlFactura, ctx.serial);
    if (number == 0)
        throw UserError(QStringLiteral("No se pudo obtener el número de la devolución...!"));
    const QDateTime now = db::serverNow(db);
    store::insertHeader(db, {number, ctx.serial, now, ctx.userCode}, draft.invoice());
    for (const ReturnLine& line : draft.lines()) {
        store::addLine(db, number, ctx.serial, now, line);
        if (!store::markReturned(db, draft.invoice(), line.source.item, line.cantidad))
            throw UserError(QStringLiteral("La cantidad a devolver de %1 supera lo que queda "
                                           "por devolver de la factura...!")
                                .arg(line.source.codigoBarra));
    }
    store::restock(db, number, ctx.serial, negative);
    inventory::stock::recomputeModelAverage(
        db, inventory::stock::AveragedDocument::salesReturn(number, ctx.serial));
    SavedReturn saved;
    saved.number = number;
    saved.totals = store::writeTotals(db, number, ctx.serial);
    return saved;
}

void settleRefund(const QSqlDatabase& db, const shell::SessionContext& ctx,
                  const ReturnableInvoice& invoice, SavedReturn& saved) {
    db::requireTransaction(db);
    if (invoice.tipoVenta == kCreditSale) {
        saved.reminder =
            QStringLiteral("Debe registrar un abono por devolución a la cuenta por cobrar...!");
        return;
    }
    // The refund leaves the drawer as a cash withdrawal on the refunds account; without that
    // account the cashier records the withdrawal by hand.
    const QString account = store::refundsAccount(db);
    if (account.isEmpty()) {
        saved.reminder = QStringLiteral("Debe registrar la salida de caja...!");
        return;
    }
    store::CashRefund r;
    r.serie = ctx.serial;
    r.fecha = db::serverNow(db);
    r.account = account;
    r.creditor = invoice.clienteNombre.isEmpty() ? invoice.cliente : invoice.clienteNombre;
    r.document = QString::number(saved.number);
    r.amount = saved.totals.total();
    r.usuario = ctx.userCode;
    saved.cashRefund = store::insertCashRefund(db, r);
}

SavedReturn saveReturn(const QSqlDatabase& db, const shell::SessionContext& ctx,
                       const ReturnDraft& draft, sale::SalePrinter* printer) {
    const QDate today = db::serverNow(db).date();
    registers::checkDayOpen(db, ctx.serial, today);
    draft.validate();
    if (sale::printsFiscally(ctx) && !draft.contingency()) {
        if (!printer)
            throw UserError(QStringLiteral("No existe comunicación con la impresora fiscal...!"));
        // The credit note takes the printer's next number: the counters must agree first.
        fiscal::checkPrinterAgainstRegister(
            printer->facts(), fiscal::readRegisterCounters(db, ctx.serial, ctx.controlFactura),
            today);
    }

    db::Transaction tx(db);
    SavedReturn saved = writeReturn(db, ctx, draft, store::NegativeStockLastCost::LineCost);
    const ReturnableInvoice& invoice = draft.invoice();
    settleRefund(db, ctx, invoice, saved);
    tx.commit();
    qCInfo(lcReturns) << "return" << saved.number << "of invoice" << invoice.number << "saved,"
                      << saved.totals.total().toString(2);
    return saved;
}

sale::PrintResult printReturn(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              long long number, bool contingency, sale::SalePrinter* printer,
                              const sale::PaperPrinter& paper) {
    sale::SavedDocumentPrint document;
    document.failurePrefix = QStringLiteral("La devolución %1").arg(number);
    document.fiscalDocument = [&] {
        return fiscal::returnDocument(db, int(number), ctx.serial, fiscal::loadRateTable(db));
    };
    document.paperHtml = [&](bool large) {
        return paperReturnHtml(db, ctx, number, contingency, large);
    };
    document.markPrinted = [&] { store::markPrinted(db, number, ctx.serial); };
    return sale::printSavedDocument(db, ctx, contingency, printer, paper, number, document);
}

QString paperReturnHtml(const QSqlDatabase& db, const shell::SessionContext& ctx, long long number,
                        bool contingency, bool largeFormat) {
    db::Sql h(db, QStringLiteral("SELECT D.Fecha, D.Cliente, D.NumeroFactura, D.TotalMercancia, "
                                 "D.TotalDescuento, D.TotalImpuesto, C.Nombre FROM DEVVENTAS D "
                                 "LEFT JOIN CLIENTES C ON C.Codigo = D.Cliente "
                                 "WHERE D.NumeroDevolucion = ? AND D.Serie = ?"));
    h.bind(number).bind(ctx.serial).exec();
    if (!h.next())
        return {};
    QString html = sale::paperHeadHtml(ctx, contingency, largeFormat);
    html +=
        QStringLiteral("<p>NOTA DE CREDITO: %1 &nbsp; SERIE: %2<br>FACTURA: %3<br>FECHA: %4"
                       "<br>CLIENTE: %5 %6</p>")
            .arg(QString::number(number).rightJustified(8, QLatin1Char('0')), esc(ctx.serial),
                 h.text(QStringLiteral("NumeroFactura")),
                 h.dateTime(QStringLiteral("Fecha")).toString(QStringLiteral("dd/MM/yyyy hh:mm")),
                 esc(h.text(QStringLiteral("Cliente")).trimmed()),
                 esc(h.text(QStringLiteral("Nombre")).trimmed()));
    html += sale::paperLinesHtml(db, QStringLiteral("MOVDEVVENTAS"),
                                 QStringLiteral("NumeroDevolucion"), number, ctx.serial);
    html += sale::paperTotalsHtml(h.decimal(QStringLiteral("TotalMercancia")),
                                  h.decimal(QStringLiteral("TotalDescuento")),
                                  h.decimal(QStringLiteral("TotalImpuesto")));
    return html + QStringLiteral("</body></html>");
}

QList<long long> pendingReturnPrints(const QSqlDatabase& db, const QString& serie) {
    return store::pendingReturnPrints(db, serie);
}

sale::PrintResult printPendingReturns(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                      sale::SalePrinter* printer, const sale::PaperPrinter& paper) {
    const QList<long long> pending = pendingReturnPrints(db, ctx.serial);
    return sale::printPending(
        pending, sale::printerLastDocument(ctx, printer, true, pending),
        [&](long long number) {
            db::Transaction tx(db);
            store::markPrinted(db, number, ctx.serial);
            tx.commit();
        },
        [&](long long number) { return printReturn(db, ctx, number, false, printer, paper); });
}

} // namespace orvo::pos::returns
