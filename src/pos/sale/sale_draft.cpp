#include "pos/sale/sale_draft.h"

#include "common/errors/errors.h"

#include <QSet>
#include <stdexcept>

namespace orvo::pos::sale {

namespace {

QString referenceOf(const SaleLine& l) {
    if (l.article.referencia.isEmpty())
        return l.codigoBarra;
    return l.article.referencia + QLatin1Char('\x1f') + l.article.codigoMarca;
}

} // namespace

void checkQuantity(const ArticlePrices& article, const Decimal& quantity) {
    if (quantity <= Decimal())
        throw UserError(QStringLiteral("La cantidad debe ser mayor que cero...!"));
    if (!article.fraccionable && quantity != quantity.truncated(0))
        throw UserError(QStringLiteral("El artículo %1 se vende por unidades: la cantidad no "
                                       "puede llevar decimales...!")
                            .arg(article.nombre));
    if (quantity != quantity.truncated(3))
        throw UserError(QStringLiteral("La cantidad admite hasta tres decimales...!"));
    // The printer's item command carries eight digits of thousandths.
    if (quantity > Decimal::fromScaled(99999999, 3))
        throw UserError(QStringLiteral("La cantidad no puede ser mayor a 99.999,999...!"));
}

SaleDraft::SaleDraft() : SaleDraft(Settings()) {}
SaleDraft::SaleDraft(Settings settings) : m_settings(std::move(settings)) {}

PricingContext SaleDraft::pricingContext() const {
    PricingContext c;
    c.today = m_settings.today;
    c.registerListType = m_settings.registerListType;
    c.clientType = m_client.tipo;
    c.clientMargin = m_client.porcentajeUtilidad;
    c.exempt = m_exempt;
    return c;
}

int SaleDraft::referenceCount() const {
    QSet<QString> refs;
    for (const SaleLine& l : m_lines)
        refs.insert(referenceOf(l));
    return int(refs.size());
}

const SaleLine& SaleDraft::addArticle(const ArticlePrices& article, const Decimal& quantity) {
    if (m_locked)
        throw std::logic_error("the global discount closed the sale to new lines");
    checkQuantity(article, quantity);
    checkStock(article, quantity, -1);
    SaleLine line = priceNewLine(article, quantity, pricingContext());
    const int limit = m_settings.itemsPerInvoice;
    if (limit > 0) {
        const QString ref = referenceOf(line);
        bool known = false;
        for (const SaleLine& l : m_lines)
            known = known || referenceOf(l) == ref;
        if (!known && referenceCount() >= limit)
            throw UserError(
                QStringLiteral("Alcanzo el tope permitido de referencias por factura...!"));
    }
    m_lines.append(line);
    return m_lines.last();
}

void SaleDraft::addSavedLine(const SaleLine& line) {
    m_lines.append(line);
}

SaleLine SaleDraft::takeLine(int index) {
    if (index < 0 || index >= m_lines.size())
        throw std::out_of_range("sale line");
    return m_lines.takeAt(index);
}

void SaleDraft::setQuantity(int index, const Decimal& quantity) {
    if (index < 0 || index >= m_lines.size())
        throw std::out_of_range("sale line");
    if (m_locked)
        throw UserError(QStringLiteral("No puede modificar la venta después de aplicar el "
                                       "descuento...!"));
    const ArticlePrices& article = m_lines[index].article;
    checkQuantity(article, quantity);
    checkStock(article, quantity, index);
    m_lines[index].cantidad = quantity;
}

void SaleDraft::checkStock(const ArticlePrices& article, const Decimal& quantity,
                           int except) const {
    // Lines saved earlier (a parked sale, an order) carry no stock figure to hold them to.
    if (article.tipo != 0 || article.nombre.isEmpty())
        return;
    Decimal taken = quantity;
    for (int i = 0; i < m_lines.size(); ++i)
        if (i != except && m_lines[i].codigoBarra == article.codigoBarra)
            taken += m_lines[i].cantidad;
    if (taken > article.existencia)
        throw UserError(QStringLiteral("Existencia insuficiente de %1: quedan %2...!")
                            .arg(article.nombre, payments::formatQuantity(article.existencia)));
}

void SaleDraft::switchList(int index, bool allowed) {
    if (!allowed)
        throw UserError(
            QStringLiteral("Caja ó Usuario no autorizado para cambiar listas de precio...!"));
    if (index < 0 || index >= m_lines.size())
        throw UserError(
            QStringLiteral("Seleccione la fila con datos para cambiar lista de precio...!"));
    SaleLine& line = m_lines[index];
    char next;
    if (line.tipoLista == kRetail)
        next = kWholesale;
    else if (line.tipoLista == kWholesale)
        next = kRetail;
    else
        throw UserError(
            QStringLiteral("Solo puede alternar entre la listas de precios detal y mayor...!"));
    const Decimal price =
        (next == kRetail ? line.article.precioDetal : line.article.precioMayor).rounded(4);
    if (price.isZero())
        throw UserError(QStringLiteral("No se puede vender el artículo con precio cero..."));
    SaleLine repriced = priceLine(line.article, next, line.cantidad, pricingContext());
    if (!line.porcentajeDescuento.isZero())
        applyDiscount(repriced, line.porcentajeDescuento, m_exempt);
    line = repriced;
}

void SaleDraft::setLinePrice(int index, const Decimal& price) {
    if (index < 0 || index >= m_lines.size())
        throw UserError(QStringLiteral("Seleccione la fila con datos para cambiar el precio...!"));
    const Decimal newPrice = price.rounded(2);
    if (newPrice <= Decimal())
        throw UserError(QStringLiteral("No se puede vender el artículo con precio cero...!"));
    SaleLine& line = m_lines[index];
    // A price set by hand replaces the promotion: the line falls back to the register's list.
    if (line.tipoLista == kPromotion)
        line.tipoLista = registerLetter(m_settings.registerListType);
    line.precio = newPrice;
    line.precioLista = newPrice;
    line.porcentajeDescuento = Decimal();
    line.impuesto = unitTax(line.precioLista, line.porcentajeImpuesto, m_exempt);
    if (!m_globalDiscount.isZero())
        applyDiscount(line, m_globalDiscount, m_exempt);
}

void SaleDraft::applyGlobalDiscount(const Decimal& percent) {
    if (m_lines.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    for (SaleLine& l : m_lines)
        applyDiscount(l, percent, m_exempt);
    m_globalDiscount = percent;
    m_locked = true;
}

void SaleDraft::setExempt(bool exempt) {
    m_exempt = exempt;
    for (SaleLine& l : m_lines) {
        // An exempt invoice carries no rate either, so the fiscal printer prints it exempt.
        l.porcentajeImpuesto = exempt ? Decimal() : l.article.porcentajeImpuesto;
        l.impuesto = unitTax(l.precioLista, l.porcentajeImpuesto, exempt);
    }
}

void SaleDraft::setClient(const SaleClient& client) {
    checkClientAllowed(m_settings.registerListType, client);
    m_client = client;
}

void SaleDraft::setPayments(const QList<payments::PaymentRow>& rows, const Decimal& amountPaid,
                            const Decimal& exchangeRate, const fiscal::igtf::Owed& igtf) {
    m_payments = rows;
    m_amountPaid = amountPaid;
    m_exchangeRate = exchangeRate;
    m_igtf = igtf;
    m_paymentsAccepted = true;
}

void SaleDraft::clearPayments() {
    keepTerminalPayments(m_payments, m_exchangeRate);
}

void SaleDraft::keepTerminalPayments(const QList<payments::PaymentRow>& rows,
                                     const Decimal& exchangeRate) {
    m_payments = payments::approvedAtTerminal(rows);
    m_exchangeRate = exchangeRate;
    m_igtf = {};
    m_amountPaid = payments::totalPaid(m_payments, m_exchangeRate);
    m_paymentsAccepted = false;
}

QList<payments::PaymentRow> SaleDraft::terminalPayments() const {
    return payments::approvedAtTerminal(m_payments);
}

void SaleDraft::checkNoTerminalPayments() const {
    if (!terminalPayments().isEmpty())
        throw UserError(QStringLiteral("La venta tiene pagos aprobados en el punto de venta VPOS: "
                                       "debe anularlos o usarlos en la factura...!"));
}

void SaleDraft::forgetTerminalPayment(const QString& idPayment) {
    m_payments.removeIf([&](const payments::PaymentRow& r) {
        return r.isApprovedAtTerminal() && r.idPayment == idPayment;
    });
    m_amountPaid = payments::totalPaid(m_payments, m_exchangeRate);
    m_paymentsAccepted = false;
}

Decimal SaleDraft::change() const {
    if (m_mode == PaymentMode::Credit)
        return Decimal();
    return payments::changeDue(m_payments, m_exchangeRate, totals().total + m_igtf.tax);
}

void SaleDraft::validate() const {
    if (!m_client.isSet())
        throw UserError(QStringLiteral("Especifique el cliente al que se le realizó la venta...!"));
    checkClientAllowed(m_settings.registerListType, m_client);
    if (m_lines.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    if (m_mode == PaymentMode::Credit)
        checkNoTerminalPayments();
    if (m_mode == PaymentMode::Cash) {
        if (m_payments.isEmpty() || !m_paymentsAccepted)
            throw UserError(QStringLiteral("Debe Especificar el pago del cliente...!"));
        const bool onlyCash = m_payments.size() == 1 && m_payments.first().way == payments::kCash;
        if (onlyCash && m_amountPaid < totals().total)
            throw UserError(
                QStringLiteral("El monto cancelado no puede ser menor al valor de la factura"));
    }
    if (!m_seller.isSet())
        throw UserError(QStringLiteral("Debe especificar el vendedor que realizó la venta...!"));
}

void SaleDraft::clear() {
    const Settings s = m_settings;
    *this = SaleDraft(s);
}

} // namespace orvo::pos::sale
