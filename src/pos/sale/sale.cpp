#include "pos/sale/sale.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "pos/fiscal/document_builder.h"
#include "pos/register/day_state.h"
#include "pos/sale/sale_store.h"
#include "shell/login/login.h"
#include "shell/session/settings_readers.h"
#include "shell/users/roles.h"

#include <QLoggingCategory>
#include <QSet>

Q_LOGGING_CATEGORY(lcSale, "orvo.pos.sale")

namespace orvo::pos::sale {

namespace {

QDate serverToday(const QSqlDatabase& db) {
    return db::serverNow(db).date();
}

store::DeletedLineContext deletedContext(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                         const SaleDraft& d, const QString& authorisedBy) {
    store::DeletedLineContext c;
    c.number = nextInvoiceNumberPreview(db, ctx);
    c.serie = ctx.serial;
    c.vendedor = d.seller().cedula;
    c.cliente = d.client().codigo;
    c.cajero = ctx.userCode;
    c.autoriza = authorisedBy.isEmpty() ? ctx.userCode : authorisedBy;
    return c;
}

int tipoVentaOf(const SaleDraft& d) {
    return d.mode() == PaymentMode::Credit ? 2 : 1;
}

// Saved lines are priced again from their model, like keyed ones.
QList<SaleLine> withModels(const QSqlDatabase& db, QList<SaleLine> lines) {
    for (SaleLine& l : lines)
        if (!l.article.nombre.isEmpty())
            l.article = withModelPrices(l.article, store::modelPrices(db, l.article));
    return lines;
}

QString wayCode(const QSqlDatabase& db, const QString& name) {
    const QString code = store::paymentWayCode(db, name);
    return code.isEmpty() ? name : code;
}

} // namespace

SaleDraft newDraft(const QSqlDatabase& db, const shell::SessionContext& ctx) {
    SaleDraft::Settings s;
    s.today = serverToday(db);
    s.registerListType = ctx.tipoListaPrecio;
    s.itemsPerInvoice = ctx.itemsPorFactura;
    return SaleDraft(s);
}

long long nextInvoiceNumberPreview(const QSqlDatabase& db, const shell::SessionContext& ctx) {
    return common::readSalesCounters(db, ctx.controlFactura, ctx.serial).lastInvoice + 1;
}

QList<ArticlePrices> lookupArticles(const QSqlDatabase& db, const QString& text) {
    QList<ArticlePrices> found = store::findArticles(db, text);
    for (ArticlePrices& a : found)
        a = withModelPrices(a, store::modelPrices(db, a));
    return found;
}

std::pair<Decimal, QString> splitQuantity(const QString& typed, const Decimal& otherwise) {
    const QString text = typed.trimmed();
    const qsizetype star = text.indexOf(QLatin1Char('*'));
    if (star < 0)
        return {otherwise, text};
    const auto quantity = payments::parseTypedAmount(text.left(star));
    if (!quantity)
        throw UserError(QStringLiteral("La cantidad debe ser un número: %1*código...!")
                            .arg(text.left(star).trimmed()));
    return {*quantity, text.mid(star + 1).trimmed()};
}

const SaleLine& addArticle(SaleDraft& draft, const ArticlePrices& article,
                           const Decimal& quantity) {
    return draft.addArticle(article, quantity);
}

std::optional<SaleClient> findClient(const QSqlDatabase& db, const QString& code) {
    if (code.trimmed().isEmpty())
        return std::nullopt;
    return store::clientByCode(db, code);
}

SaleSeller findSeller(const QSqlDatabase& db, const QString& code) {
    auto s = store::sellerByCode(db, code);
    if (!s)
        throw UserError(QStringLiteral("El vendedor esta inactivo o no existe el código..."));
    return *s;
}

QList<PriceQuote> priceQuery(const QSqlDatabase& db, const SaleDraft& draft, const QString& text) {
    QList<PriceQuote> out;
    for (const ArticlePrices& a : lookupArticles(db, text)) {
        PriceQuote q;
        q.article = a;
        try {
            q.line = priceNewLine(a, 1, draft.pricingContext());
        } catch (const UserError&) {
            q.line.codigoBarra = a.codigoBarra; // shown without a price
        }
        out << q;
    }
    return out;
}

void deleteLine(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft,
                int index, const QString& authorisedBy) {
    if (index < 0 || index >= draft.lines().size())
        return;
    db::Transaction tx(db);
    store::insertDeletedLine(db, deletedContext(db, ctx, draft, authorisedBy), index + 1,
                             draft.lines().at(index));
    tx.commit();
    draft.takeLine(index);
}

bool priceChangeNeedsAuthorisation(const QSqlDatabase& db, const shell::SessionContext& ctx) {
    return shell::registerRequiresAuthorisation(db, ctx.serial) ||
           !shell::users::isAdministrator(db, ctx.userCode);
}

void changeLinePrice(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft,
                     int index, const Decimal& price, const std::optional<Supervisor>& supervisor) {
    const QString refused = QStringLiteral("Caja ó Usuario no autorizado para cambiar precios...!");
    if (!shell::registerMayChangePrices(db, ctx.serial))
        throw UserError(refused);
    if (priceChangeNeedsAuthorisation(db, ctx)) {
        if (!supervisor)
            throw UserError(refused);
        const shell::LoggedUser user =
            shell::checkLogin(db, supervisor->user, supervisor->password);
        if (!shell::users::isAdministrator(db, user.code))
            throw UserError(refused);
    }
    draft.setLinePrice(index, price);
}

void cancelSale(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft,
                const QString& authorisedBy) {
    draft.checkNoTerminalPayments();
    if (!draft.isEmpty()) {
        db::Transaction tx(db);
        const auto c = deletedContext(db, ctx, draft, authorisedBy);
        for (int i = 0; i < draft.lines().size(); ++i)
            store::insertDeletedLine(db, c, i + 1, draft.lines().at(i));
        tx.commit();
    }
    draft.clear();
}

long long parkSale(const QSqlDatabase& db, const shell::SessionContext& ctx, SaleDraft& draft) {
    if (draft.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    draft.checkNoTerminalPayments(); // parked sales keep no payments
    db::Transaction tx(db);
    store::ParkedHeader h;
    h.serie = ctx.serial;
    h.fecha = db::serverNow(db);
    h.vendedor = draft.seller().cedula;
    h.cliente = draft.client().codigo;
    h.tipoVenta = tipoVentaOf(draft);
    h.diasCredito = draft.creditDays();
    h.usuario = ctx.userCode;
    h.numeroOrden = draft.dispatchOrder();
    h.exenta = draft.isExempt();
    h.numero = common::insertNumbered(db, {QStringLiteral("HISTVENTAS"), QStringLiteral("Numero")},
                                      [&](long long numero) {
                                          h.numero = numero;
                                          store::insertParked(db, h);
                                      });
    for (int i = 0; i < draft.lines().size(); ++i)
        store::insertParkedLine(db, h.numero, h.serie, i + 1, h.fecha, draft.lines().at(i));
    store::writeParkedTotals(db, h.numero, h.serie, draft.totals());
    tx.commit();
    draft.clear();
    return h.numero;
}

QList<ParkedSale> parkedSales(const QSqlDatabase& db, const QString& serie) {
    db::Sql q(db, QStringLiteral("SELECT H.Numero, H.Fecha, H.Cliente, C.Nombre AS NombreCliente, "
                                 "T.Nombre AS NombreVendedor FROM HISTVENTAS H "
                                 "LEFT JOIN CLIENTES C ON C.Codigo = H.Cliente "
                                 "LEFT JOIN TRABAJADORES T ON T.Cedula = H.Vendedor "
                                 "WHERE H.Serie = ? ORDER BY H.Numero"));
    q.bind(serie).exec();
    QList<ParkedSale> out;
    while (q.next()) {
        ParkedSale p;
        p.numero = q.bigint(QStringLiteral("Numero"));
        p.fecha = q.dateTime(QStringLiteral("Fecha"));
        p.cliente = q.text(QStringLiteral("Cliente")).trimmed();
        p.clienteNombre = q.text(QStringLiteral("NombreCliente")).trimmed();
        p.vendedorNombre = q.text(QStringLiteral("NombreVendedor")).trimmed();
        out << p;
    }
    for (ParkedSale& p : out)
        p.totalVenta = totalsOf(store::parkedLines(db, p.numero, serie)).total;
    return out;
}

void takeBackParked(const QSqlDatabase& db, const shell::SessionContext& ctx, long long numero,
                    SaleDraft& draft) {
    draft.checkNoTerminalPayments();
    const auto h = store::parkedHeader(db, numero, ctx.serial);
    if (!h)
        return;
    // A client this register may not invoice leaves the sale parked.
    const auto client = store::clientByCode(db, h->cliente);
    if (client)
        checkClientAllowed(ctx.tipoListaPrecio, *client);
    const QList<SaleLine> lines = withModels(db, store::parkedLines(db, numero, ctx.serial));
    draft.clear();
    if (client)
        draft.setClient(*client);
    if (auto s = store::sellerByCode(db, h->vendedor))
        draft.setSeller(*s);
    draft.setMode(h->tipoVenta == 2 ? PaymentMode::Credit : PaymentMode::Cash);
    draft.setCreditDays(h->diasCredito);
    draft.setDispatchOrder(h->numeroOrden);
    for (const SaleLine& l : lines)
        draft.addSavedLine(l);
    if (h->exenta)
        draft.setExempt(true);
    db::Transaction tx(db);
    store::deleteParked(db, numero, ctx.serial);
    tx.commit();
}

QDate dispatchOrdersSince(const QSqlDatabase& db, const shell::SessionContext& ctx) {
    if (ctx.diasFacturarOrdenDespacho > 0)
        return serverToday(db).addDays(-ctx.diasFacturarOrdenDespacho);
    return QDate(1900, 1, 1);
}

QList<DispatchOrderSummary> openDispatchOrders(const QSqlDatabase& db,
                                               const shell::SessionContext& ctx) {
    const QDate since = dispatchOrdersSince(db, ctx);
    QList<DispatchOrderSummary> out;
    for (const auto& o : store::openDispatchOrders(db, since))
        out << DispatchOrderSummary{o.numero,         o.cliente,     o.fecha,
                                    o.totalMercancia, o.observacion, o.exenta};
    return out;
}

void loadDispatchOrder(const QSqlDatabase& db, const shell::SessionContext& ctx, long long numero,
                       SaleDraft& draft) {
    draft.checkNoTerminalPayments();
    const auto o = store::dispatchOrder(db, numero);
    if (!o)
        return;
    const auto client = store::clientByCode(db, o->cliente);
    if (client)
        checkClientAllowed(ctx.tipoListaPrecio, *client);
    const QList<SaleLine> lines = withModels(db, store::dispatchOrderLines(db, numero));
    draft.clear();
    if (client)
        draft.setClient(*client);
    for (const SaleLine& l : lines)
        draft.addSavedLine(l);
    if (o->exenta)
        draft.setExempt(true);
    draft.setDispatchOrder(numero);
}

bool printsFiscally(const shell::SessionContext& ctx) {
    return ctx.usaImpresoraFiscal == 1 && ctx.idImpresoraFiscal != 0;
}

AcceptResult acceptSale(const QSqlDatabase& db, const shell::SessionContext& ctx,
                        const SaleDraft& draft, SalePrinter* printer, bool forcedZDone,
                        const std::function<void()>& alsoInTransaction,
                        const std::function<void(long long number)>& withNumber) {
    const QDate today = serverToday(db);
    registers::checkDayOpen(db, ctx.serial, today);
    draft.validate();
    // The register as it is now: it may have been changed since the draft took its client.
    checkClientAllowed(ctx.tipoListaPrecio, draft.client());

    const bool fiscal = printsFiscally(ctx) && !draft.isContingency();
    if (fiscal) {
        if (!printer)
            throw UserError(QStringLiteral("No existe comunicación con la impresora fiscal...!"));
        fiscal::checkPrinterAgainstRegister(
            printer->facts(), fiscal::readRegisterCounters(db, ctx.serial, ctx.controlFactura),
            today);
    }

    const SaleTotals totals = draft.totals();
    AcceptResult result;
    result.total = totals.total;
    result.paid = draft.mode() == PaymentMode::Credit ? totals.total : draft.amountPaid();
    result.change = draft.change();
    result.igtf = draft.mode() == PaymentMode::Credit ? Decimal() : draft.igtf().tax;
    if (fiscal && !forcedZDone &&
        registers::exceedsDailyMaximum(db, ctx.serial, today, totals.total)) {
        result.status = AcceptResult::Status::NeedsForcedZ;
        return result;
    }

    const Decimal rate =
        draft.exchangeRate() > Decimal() ? draft.exchangeRate() : store::latestExchangeRate(db);
    db::Transaction tx(db);
    if (alsoInTransaction)
        alsoInTransaction();
    if (forcedZDone)
        registers::resetAccumulated(db, ctx.serial, today);
    const long long number = common::nextInvoiceNumber(db, ctx.controlFactura, ctx.serial);
    if (number == 0)
        throw UserError(QStringLiteral("No se pudo obtener el número de la factura...!"));

    const QDateTime now = db::serverNow(db);
    store::SaleHeader h;
    h.number = number;
    h.serie = ctx.serial;
    h.fecha = now;
    h.vendedor = draft.seller().cedula;
    h.cliente = draft.client().codigo;
    h.tipoVenta = tipoVentaOf(draft);
    h.diasCredito = draft.creditDays();
    h.usuario = ctx.userCode;
    h.numeroOrden = draft.dispatchOrder();
    h.contingency = draft.isContingency();
    if (draft.mode() == PaymentMode::Credit) {
        h.formaPago = wayCode(db, kOnAccount);
        h.totalPago = totals.total;
    } else {
        QSet<QString> ways;
        for (const auto& p : draft.payments())
            ways.insert(p.way);
        h.formaPago =
            ways.size() == 1 ? wayCode(db, *ways.begin()) : wayCode(db, QStringLiteral("MULTIPLE"));
        h.totalPago = draft.amountPaid();
        h.baseIgtf = draft.igtf().base;
        h.montoIgtf = draft.igtf().tax;
    }
    store::insertSale(db, h);
    if (draft.dispatchOrder() > 0)
        store::closeDispatchOrder(db, draft.dispatchOrder());

    store::LineWriter lines(db, number, ctx.serial, now);
    for (const SaleLine& l : draft.lines()) {
        lines.add(l);
        lines.decreaseStock(l.codigoBarra, l.cantidad);
    }
    lines.finish();
    store::ensurePlaceholderBank(db);

    if (draft.mode() == PaymentMode::Credit) {
        store::insertReceivable(db, number, ctx.serial, draft.client().codigo, totals.total,
                                draft.creditDays(), now);
    } else {
        // The change is given from the cash: the cash row keeps what stayed in the drawer.
        Decimal change = result.change;
        const auto rows = draft.payments();
        for (int i = 0; i < rows.size(); ++i) {
            const auto& r = rows.at(i);
            store::PaymentRecord p;
            p.item = i + 1;
            p.formaPago = wayCode(db, r.way);
            p.documento = r.document;
            p.aprobacion = r.lot;
            p.banco = r.bank;
            p.puntoVenta = r.pointOfSale;
            p.monto = r.amount.value_or(Decimal());
            if (r.way == payments::kCash && change > Decimal()) {
                const Decimal taken = std::min(change, p.monto);
                p.monto -= taken;
                change -= taken;
            }
            p.merchantJson = r.merchantJson;
            store::insertPayment(db, number, ctx.serial, now, p);
        }
    }
    const SaleTotals stored = store::writeTotals(db, number, ctx.serial, rate);
    registers::addToAccumulated(db, ctx.serial, today, stored.total);
    if (withNumber)
        withNumber(number);
    tx.commit();
    qCInfo(lcSale) << "invoice" << number << "saved, total" << stored.total.toString(2);

    result.number = number;
    result.total = stored.total;
    return result;
}

bool forcedZ(SalePrinter& printer) {
    return printer.printZ();
}

PrintResult printSavedDocument(const QSqlDatabase& db, const shell::SessionContext& ctx,
                               bool contingency, SalePrinter* printer, const PaperPrinter& paper,
                               long long number, const SavedDocumentPrint& document) {
    PrintResult r;
    const auto failed = [&](const QString& why) {
        r.error = document.failurePrefix +
                  QStringLiteral(" fue guardada pero no se pudo imprimir: ") + why;
        qCWarning(lcSale) << r.error;
        return r;
    };
    if (printsFiscally(ctx) && !contingency) {
        if (!printer)
            return failed(QStringLiteral("No existe comunicación con la impresora fiscal...!"));
        fiscal::FiscalDocument doc;
        try {
            doc = document.fiscalDocument();
        } catch (const UserError& e) {
            return failed(e.text());
        }
        if (!printer->print(doc))
            return failed(printer->errorText());
        r.fiscalPrinted = true;
    } else {
        const bool large = ctx.tipoReporte == 2;
        if (!paper || !paper(document.paperHtml(large), large, number))
            return failed(QStringLiteral("Debe configurar la impresora para facturar...!"));
        r.paperPrinted = true;
    }
    db::Transaction tx(db);
    document.markPrinted();
    tx.commit();
    return r;
}

PrintResult printSale(const QSqlDatabase& db, const shell::SessionContext& ctx, long long number,
                      bool contingency, SalePrinter* printer, const PaperPrinter& paper,
                      const Decimal& change, const std::optional<CustomerDisplay>& display) {
    SavedDocumentPrint document;
    document.failurePrefix = QStringLiteral("La factura %1").arg(number);
    document.fiscalDocument = [&] {
        return fiscal::saleDocument(db, int(number), ctx.serial, fiscal::loadRateTable(db));
    };
    document.paperHtml = [&](bool large) {
        return paperInvoiceHtml(db, ctx, number, contingency, large);
    };
    document.markPrinted = [&] { store::markPrinted(db, ctx.serial, number); };
    PrintResult r = printSavedDocument(db, ctx, contingency, printer, paper, number, document);
    if (!r.ok())
        return r;
    if (r.fiscalPrinted) {
        if (display) {
            printer->display(display->upper, display->lower);
        } else {
            const Decimal total = store::invoiceTotal(db, ctx.serial, number);
            printer->display(displayLine(QStringLiteral("Total: "), ctx.simboloMoneda, total),
                             displayLine(QStringLiteral("Cambio: "), ctx.simboloMoneda, change));
        }
    }
    return r;
}

QList<long long> pendingPrints(const QSqlDatabase& db, const QString& serie) {
    db::Sql q(db, QStringLiteral("SELECT NumeroFactura FROM VENTAS WHERE Serie = ? AND Impresa = 0 "
                                 "ORDER BY NumeroFactura"));
    q.bind(serie).exec();
    QList<long long> out;
    while (q.next())
        out << q.bigint(QStringLiteral("NumeroFactura"));
    return out;
}

bool isContingency(const QSqlDatabase& db, const QString& table, const QString& numberColumn,
                   const QString& serie, long long number) {
    return db::scalar(db,
                      QStringLiteral("SELECT Contingencia FROM %1 WHERE %2 = ? AND Serie = ?")
                          .arg(table, numberColumn),
                      {number, serie})
               .toInt() == 1;
}

PrintResult printPending(const QList<long long>& numbers, long long printerLast,
                         const std::function<void(long long number)>& markOnly,
                         const std::function<PrintResult(long long number)>& print) {
    PrintResult all;
    for (long long number : numbers) {
        if (number <= printerLast) {
            qCWarning(lcSale) << "document" << number
                              << "was already on the fiscal printer: marked, not printed again";
            markOnly(number);
            continue;
        }
        PrintResult r = print(number);
        if (!r.ok())
            return r;
        all.fiscalPrinted = all.fiscalPrinted || r.fiscalPrinted;
        all.paperPrinted = all.paperPrinted || r.paperPrinted;
    }
    return all;
}

long long printerLastDocument(const shell::SessionContext& ctx, SalePrinter* printer,
                              bool creditNotes, const QList<long long>& pending) {
    if (pending.isEmpty() || !printer || !printsFiscally(ctx))
        return 0;
    const fiscal::PrinterFacts facts = printer->facts();
    if (!facts.answers)
        return 0;
    return creditNotes ? facts.lastCreditNote : facts.lastInvoice;
}

PrintResult printPendingSales(const QSqlDatabase& db, const shell::SessionContext& ctx,
                              SalePrinter* printer, const PaperPrinter& paper) {
    const QList<long long> pending = pendingPrints(db, ctx.serial);
    return printPending(
        pending, printerLastDocument(ctx, printer, false, pending),
        [&](long long number) {
            db::Transaction tx(db);
            store::markPrinted(db, ctx.serial, number);
            tx.commit();
        },
        [&](long long number) {
            // A contingency invoice is never printed fiscally later: it goes again on paper.
            const bool contingency = isContingency(
                db, QStringLiteral("VENTAS"), QStringLiteral("NumeroFactura"), ctx.serial, number);
            return printSale(db, ctx, number, contingency, printer, paper);
        });
}

} // namespace orvo::pos::sale
