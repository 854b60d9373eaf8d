#pragma once

#include "pos/sale/pricing.h"
#include "pos/sale/sale_types.h"

#include <QList>

namespace orvo::pos::sale {

// The sale being keyed: its lines, client, seller, lists, discounts and payments, before it is
// saved. No database here: the actions look articles up and hand them in.
// Refuses a quantity an article cannot be sold in: zero or less, decimals for an article sold by
// units, more than three decimals, more than the fiscal printer can print (99.999,999).
void checkQuantity(const ArticlePrices& article, const Decimal& quantity);

class SaleDraft {
public:
    struct Settings {
        QDate today;
        int registerListType = 1; // CAJAS.TipoListaPrecio
        int itemsPerInvoice = 0;  // PARAMETROS.ItemsPorFactura, 0 without limit
    };

    SaleDraft();
    explicit SaleDraft(Settings settings);

    const Settings& settings() const { return m_settings; }
    void setToday(const QDate& today) { m_settings.today = today; }

    // --- lines ---
    const QList<SaleLine>& lines() const { return m_lines; }
    bool isEmpty() const { return m_lines.isEmpty(); }
    // Prices the article (already carrying its model's prices) and adds it as a new line.
    // Refuses a new reference over the limit, a zero cost or price, a quantity the article is not
    // sold in (checkQuantity) or more than its stock.
    const SaleLine& addArticle(const ArticlePrices& article, const Decimal& quantity);
    // A line as it was saved (a parked sale, a dispatch order): kept as it is.
    void addSavedLine(const SaleLine& line);
    SaleLine takeLine(int index);
    // A new quantity for a line, under the same refusals as a new line.
    void setQuantity(int index, const Decimal& quantity);
    // Alternates the line between the retail and the wholesale list.
    void switchList(int index, bool allowed);
    // Sets the line's unit price by hand; the global discount, if any, still applies to it. The
    // rights are checked by the caller (changeLinePrice).
    void setLinePrice(int index, const Decimal& price);
    // The global discount: applied to every line, and no line may be added afterwards.
    void applyGlobalDiscount(const Decimal& percent);
    bool isLocked() const { return m_locked; }
    Decimal globalDiscount() const { return m_globalDiscount; }
    int referenceCount() const;

    // --- header ---
    const SaleClient& client() const { return m_client; }
    // Refuses (UserError) a client whose type the register may not invoice; the client stays.
    void setClient(const SaleClient& client);
    const SaleSeller& seller() const { return m_seller; }
    void setSeller(const SaleSeller& seller) { m_seller = seller; }
    bool isExempt() const { return m_exempt; }
    void setExempt(bool exempt); // every line's tax follows
    bool isContingency() const { return m_contingency; }
    void setContingency(bool contingency) { m_contingency = contingency; }
    long long dispatchOrder() const { return m_dispatchOrder; }
    void setDispatchOrder(long long order) { m_dispatchOrder = order; }

    // --- payment ---
    PaymentMode mode() const { return m_mode; }
    void setMode(PaymentMode mode) { m_mode = mode; }
    int creditDays() const { return m_creditDays; }
    void setCreditDays(int days) { m_creditDays = days; }
    const QList<payments::PaymentRow>& payments() const { return m_payments; }
    Decimal amountPaid() const { return m_amountPaid; }
    Decimal exchangeRate() const { return m_exchangeRate; }
    // The payments as the payments screen accepted them: they cover the sale as it is now, with
    // the IGTF their dollars raised.
    void setPayments(const QList<payments::PaymentRow>& rows, const Decimal& amountPaid,
                     const Decimal& exchangeRate, const fiscal::igtf::Owed& igtf = {});
    // The IGTF the accepted payments pay on top of the total (zero without dollars or IGTF).
    const fiscal::igtf::Owed& igtf() const { return m_igtf; }
    bool paymentsAccepted() const { return m_paymentsAccepted; }
    // The sale changed, or its payments screen was left without accepting: the payments no longer
    // stand, except those charged at the card terminal, which are kept (to be used or voided)
    // and shown again when the payments screen opens.
    void clearPayments();
    void keepTerminalPayments(const QList<payments::PaymentRow>& rows, const Decimal& exchangeRate);
    // Approved terminal payments not used by an invoice yet: the sale cannot be dropped (parked,
    // cancelled, turned to credit, closed) until they are voided.
    QList<payments::PaymentRow> terminalPayments() const;
    // Refuses to let the sale go (park, cancel, credit, replace) while it holds terminal payments.
    void checkNoTerminalPayments() const;
    // A terminal payment voided at the terminal leaves the sale.
    void forgetTerminalPayment(const QString& idPayment);
    // The cash change: what the payments give over the total and its IGTF, out of the cash rows
    // only (zero when short or on credit).
    Decimal change() const;

    SaleTotals totals() const { return totalsOf(m_lines); }
    PricingContext pricingContext() const;

    // The checks of accept, in their order; throws UserError with the first one that fails.
    void validate() const;

    void clear();

private:
    // The article's stock must cover what the sale takes of it (`except` a line being changed).
    void checkStock(const ArticlePrices& article, const Decimal& quantity, int except) const;

    Settings m_settings;
    QList<SaleLine> m_lines;
    SaleClient m_client;
    SaleSeller m_seller;
    bool m_exempt = false;
    bool m_contingency = false;
    bool m_locked = false;
    Decimal m_globalDiscount;
    long long m_dispatchOrder = 0;
    PaymentMode m_mode = PaymentMode::Cash;
    int m_creditDays = 0;
    QList<payments::PaymentRow> m_payments;
    bool m_paymentsAccepted = false;
    Decimal m_amountPaid;
    Decimal m_exchangeRate;
    fiscal::igtf::Owed m_igtf;
};

} // namespace orvo::pos::sale
