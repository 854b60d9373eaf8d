#pragma once

#include "pos/returns/return_types.h"

// The return being keyed: which lines of the invoice come back and how many. No database.
namespace orvo::pos::returns {

class ReturnDraft {
public:
    ReturnDraft() = default;
    explicit ReturnDraft(ReturnableInvoice invoice) : m_invoice(std::move(invoice)) {}

    const ReturnableInvoice& invoice() const { return m_invoice; }
    const QList<ReturnLine>& lines() const { return m_lines; }
    bool isEmpty() const { return m_lines.isEmpty(); }

    // Total return: every line with something left, by barcode, with all that is left.
    void addEverything();
    // Partial return: the invoice's line of this barcode or reference+brand+size+colour. Refuses
    // an article already in the return, one not on the invoice, and more than is left of it.
    const ReturnLine& addArticle(const QString& code, const Decimal& quantity);
    // A new quantity for a keyed line, within what is left.
    void setQuantity(int index, const Decimal& quantity);
    void removeLine(int index);
    void clear() { m_lines.clear(); }

    bool contingency() const { return m_contingency; }
    void setContingency(bool on) { m_contingency = on; }

    // Rounded to the cent as the saved return will be.
    ReturnTotals totals() const;

    // Accept's checks: an invoice with its client and at least one line.
    void validate() const;

private:
    void checkQuantity(const InvoiceLine& line, const Decimal& quantity) const;

    ReturnableInvoice m_invoice;
    QList<ReturnLine> m_lines;
    bool m_contingency = false;
};

ReturnTotals totalsOf(const QList<ReturnLine>& lines);

} // namespace orvo::pos::returns
