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
    m_lines[index].cantidad = quantity;
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
                            const Decimal& exchangeRate) {
    m_payments = rows;
    m_amountPaid = amountPaid;
    m_exchangeRate = exchangeRate;
}

void SaleDraft::clearPayments() {
    m_payments.clear();
    m_amountPaid = Decimal();
}

Decimal SaleDraft::change() const {
    if (m_mode == PaymentMode::Credit)
        return Decimal();
    const Decimal c = m_amountPaid - totals().total;
    return c > Decimal() ? c : Decimal();
}

void SaleDraft::validate() const {
    if (!m_client.isSet())
        throw UserError(QStringLiteral("Especifique el cliente al que se le realizó la venta...!"));
    checkClientAllowed(m_settings.registerListType, m_client);
    if (m_lines.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo...!"));
    if (m_mode == PaymentMode::Cash) {
        if (m_payments.isEmpty())
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
