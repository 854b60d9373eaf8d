#include "pos/returns/return_draft.h"

#include "common/errors/errors.h"

#include <algorithm>

namespace orvo::pos::returns {

namespace {
const QString kAlreadyKeyed = QStringLiteral("El articulo ya esta cargado en la devolución...!");
} // namespace

void ReturnDraft::addEverything() {
    QList<InvoiceLine> left;
    for (const InvoiceLine& l : m_invoice.lines)
        if (l.remaining() > Decimal())
            left << l;
    std::stable_sort(left.begin(), left.end(), [](const InvoiceLine& a, const InvoiceLine& b) {
        return a.codigoBarra < b.codigoBarra;
    });
    m_lines.clear();
    for (const InvoiceLine& l : left)
        m_lines.append({l, l.remaining()});
}

const ReturnLine& ReturnDraft::addArticle(const QString& code, const Decimal& quantity) {
    const QString wanted = code.trimmed();
    const auto matches = [&wanted](const InvoiceLine& l) {
        return l.codigoBarra.trimmed().compare(wanted, Qt::CaseInsensitive) == 0 ||
               l.modelKey.compare(wanted, Qt::CaseInsensitive) == 0;
    };
    for (const ReturnLine& r : m_lines)
        if (matches(r.source))
            throw UserError(kAlreadyKeyed);
    // Of equal lines the first one with something left.
    const InvoiceLine* found = nullptr;
    for (const InvoiceLine& l : m_invoice.lines) {
        if (!matches(l))
            continue;
        if (!found || (found->remaining() <= Decimal() && l.remaining() > Decimal()))
            found = &l;
    }
    if (!found)
        throw UserError(QStringLiteral("El articulo no se encuentra en la factura...!"));
    checkQuantity(*found, quantity);
    m_lines.append({*found, quantity});
    return m_lines.last();
}

void ReturnDraft::setQuantity(int index, const Decimal& quantity) {
    ReturnLine& line = m_lines[index];
    checkQuantity(line.source, quantity);
    line.cantidad = quantity;
}

void ReturnDraft::removeLine(int index) {
    m_lines.removeAt(index);
}

void ReturnDraft::checkQuantity(const InvoiceLine& line, const Decimal& quantity) const {
    if (quantity <= Decimal())
        throw UserError(QStringLiteral("La cantidad debe ser mayor que cero...!"));
    // A part of a unit comes back only of what was sold by weight or measure.
    if (!line.fraccionable && quantity != quantity.truncated(0) && quantity != line.remaining())
        throw UserError(QStringLiteral("El artículo %1 se vende por unidades: la cantidad no "
                                       "puede llevar decimales...!")
                            .arg(line.nombre));
    if (quantity > line.remaining())
        throw UserError(QStringLiteral("La cantidad a devolver no puede ser mayor a %1...!")
                            .arg(line.remaining().toString()));
}

ReturnTotals ReturnDraft::totals() const {
    return totalsOf(m_lines);
}

void ReturnDraft::validate() const {
    if (m_lines.isEmpty())
        throw UserError(QStringLiteral("Debe especificar al menos un artículo"));
    if (m_invoice.cliente.trimmed().isEmpty())
        throw UserError(QStringLiteral("Especifique el Cliente al que se le realizó la Venta"));
}

ReturnTotals totalsOf(const QList<ReturnLine>& lines) {
    ReturnTotals t;
    for (const ReturnLine& r : lines) {
        t.merchandise += r.source.precio * r.cantidad;
        t.discount += (r.source.precio - r.source.precioLista) * r.cantidad;
        t.tax += r.source.impuesto * r.cantidad;
        t.cost += r.source.costo * r.cantidad;
    }
    t.merchandise = t.merchandise.rounded(2);
    t.discount = t.discount.rounded(2);
    t.tax = t.tax.rounded(2);
    t.cost = t.cost.rounded(2);
    return t;
}

} // namespace orvo::pos::returns
