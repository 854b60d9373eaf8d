#include "pos/payments/payment_rules.h"
#include "pos/payments/payment_ways.h"

#include "common/errors/errors.h"
#include "support/test_db.h"

using namespace orvo;
using namespace orvo::pos::payments;

namespace {

PaymentRow row(const QString& way, const char* amount) {
    PaymentRow r;
    r.way = way;
    r.amount = Decimal::parse(QString::fromLatin1(amount));
    return r;
}

PaymentRow completeCard(const char* amount) {
    PaymentRow r = row(QStringLiteral("TARJETA DE CREDITO"), amount);
    r.document = "000123";
    r.lot = "4";
    r.bank = "BANESCO";
    r.pointOfSale = "BANESCO PUNTO";
    return r;
}

QString refusal(const std::function<void()>& f) {
    try {
        f();
    } catch (const UserError& e) {
        return e.text();
    }
    return {};
}

} // namespace

TEST(PaymentRules, DollarsCountAtTheDaysRate) {
    const QList<PaymentRow> rows = {row("EFECTIVO DOLAR", "10"), row("EFECTIVO", "25.50"),
                                    PaymentRow()};
    EXPECT_EQ(countedAmount(rows[0], Decimal(35)), Decimal(350));
    EXPECT_EQ(totalPaid(rows, Decimal(35)), Decimal::fromString(u"375.50"));
}

TEST(PaymentRules, EachWayNeedsItsCellsInOrder) {
    EXPECT_EQ(refusal([] { checkRowsComplete({row("EFECTIVO", "0")}); }),
              QStringLiteral("Complete la Información referente Monto...! El monto debe ser mayor "
                             "a cero...!"));
    EXPECT_EQ(refusal([] { checkRowsComplete({row("EFECTIVO", "")}); }),
              QStringLiteral("Complete la Información referente Monto...! El monto debe ser mayor "
                             "a cero...!"));
    PaymentRow cheque = row("CHEQUE", "10");
    EXPECT_EQ(refusal([&] { checkRowsComplete({cheque}); }),
              QStringLiteral("Complete la Información referente al Número del Documento"));
    cheque.document = "991";
    EXPECT_EQ(refusal([&] { checkRowsComplete({cheque}); }),
              QStringLiteral("Complete la Información referente al Banco"));
    cheque.bank = "BANESCO";
    EXPECT_EQ(refusal([&] { checkRowsComplete({cheque}); }), QString());

    PaymentRow card = completeCard("50");
    card.lot.clear();
    EXPECT_EQ(refusal([&] { checkRowsComplete({card}); }),
              QStringLiteral("Complete la Información referente al Número del Lote"));
    card = completeCard("50");
    card.pointOfSale = " ";
    EXPECT_EQ(refusal([&] {
                  checkRowsComplete({row("EFECTIVO", "1"), card});
              }),
              QStringLiteral("Complete la Información referente al Punto de Venta"));
    // The first incomplete row decides.
    EXPECT_EQ(refusal([&] {
                  checkRowsComplete({cheque, row("DEPOSITO", "5"), card});
              }),
              QStringLiteral("Complete la Información referente al Número del Documento"));
}

TEST(PaymentRules, PaidMustCoverTheInvoice) {
    const Decimal invoice = Decimal::fromString(u"100.00");
    const Decimal rate(35);
    const auto covers = [&](const QList<PaymentRow>& rows, bool allowChange) {
        return refusal([&] { checkCoversInvoice(rows, rate, invoice, allowChange); });
    };
    EXPECT_EQ(covers({row("EFECTIVO", "100")}, false), QString());
    EXPECT_EQ(covers({completeCard("60"), row("EFECTIVO", "40")}, true), QString());
    EXPECT_EQ(covers({row("EFECTIVO", "99.99")}, true),
              QStringLiteral("El monto abonado es inferior a el valor de la factura.... corrija el "
                             "valor suprimiendo ó reeditando la fila con el error o completando "
                             "su forma de pago"));
    EXPECT_EQ(
        covers({row("EFECTIVO", "100.01")}, false),
        QStringLiteral("El monto abonado excede a el valor de la factura.... corrija el valor "
                       "suprimiendo ó reeditando la fila con el error"));
    EXPECT_EQ(covers({row("EFECTIVO", "120")}, true), QString());
}

TEST(PaymentRules, OnlyCashGivesChange) {
    const Decimal invoice = Decimal::fromString(u"100.00");
    const Decimal rate(35);
    const auto covers = [&](const QList<PaymentRow>& rows) {
        return refusal([&] { checkCoversInvoice(rows, rate, invoice, true); });
    };
    // Cash over the balance is change, even beside a card.
    const QList<PaymentRow> cardAndCash = {completeCard("70"), row("EFECTIVO", "50")};
    EXPECT_EQ(covers(cardAndCash), QString());
    EXPECT_EQ(changeDue(cardAndCash, rate, invoice), Decimal(20));
    // A card or dollars over the invoice are refused, naming the row.
    EXPECT_EQ(covers({row("EFECTIVO", "10"), completeCard("100.01")}),
              QStringLiteral("Solo el pago en EFECTIVO da cambio: el monto en TARJETA DE CREDITO "
                             "excede el saldo de la factura. Corrija el monto de esa fila...!"));
    // 3 dollars are 105: five bolivars over.
    EXPECT_EQ(covers({row("EFECTIVO DOLAR", "3")}),
              QStringLiteral("Solo el pago en EFECTIVO da cambio: el monto en EFECTIVO DOLAR "
                             "excede el saldo de la factura. Corrija el monto de esa fila...!"));
    // The dollar row proposed for a balance covers it by less than a cent of a dollar, and that
    // is not change.
    const auto dollars = proposedAmount("EFECTIVO DOLAR", invoice, rate);
    ASSERT_TRUE(dollars.has_value());
    EXPECT_EQ(*dollars, Decimal::fromString(u"2.86")); // 2.857... rounded up
    const QList<PaymentRow> inDollars = {row("EFECTIVO DOLAR", "2.86")};
    EXPECT_EQ(covers(inDollars), QString());
    EXPECT_EQ(refusal([&] { checkCoversInvoice(inDollars, rate, invoice, false); }), QString());
    EXPECT_EQ(changeDue(inDollars, rate, invoice), Decimal());
    // Dollars first, then cash for the rest with change.
    const QList<PaymentRow> mixed = {row("EFECTIVO DOLAR", "2"), row("EFECTIVO", "50")};
    EXPECT_EQ(covers(mixed), QString());
    EXPECT_EQ(changeDue(mixed, rate, invoice), Decimal(20));
    EXPECT_EQ(proposedAmount("EFECTIVO", Decimal::fromString(u"30.004"), rate),
              Decimal::fromString(u"30.00"));
    EXPECT_FALSE(proposedAmount("EFECTIVO", Decimal(), rate).has_value());
}

TEST(PaymentRules, WithIgtfTheDollarsPayTheirTaxOnTopAndOnlyCashGivesChange) {
    const Decimal rate = Decimal::fromString(u"36.50");
    const pos::fiscal::igtf::Settings on{true, Decimal(3)};
    const Decimal total(200);
    // 4 dollars (146.00) bear 4.38: the client owes 204.38, so 58.38 more in cash.
    const QList<PaymentRow> dollars = {row("EFECTIVO DOLAR", "4")};
    EXPECT_EQ(amountOwed(dollars, rate, total, on).tax, Decimal::fromString(u"4.38"));
    EXPECT_EQ(amountOwed(dollars, rate, total, {}).tax, Decimal());
    EXPECT_EQ(proposedAmount("EFECTIVO", dollars, rate, total, on), Decimal::fromString(u"58.38"));
    EXPECT_EQ(proposedAmount("EFECTIVO", dollars, rate, total, {}), Decimal(54));
    // Dollars for everything: 206.00 with the tax on all of it, 5.65 dollars rounded up.
    EXPECT_EQ(proposedAmount("EFECTIVO DOLAR", {}, rate, total, on), Decimal::fromString(u"5.65"));
    // A dollar amount counts to the cent the printer is sent: 1.01 $ is 36.87 (36.865).
    EXPECT_EQ(countedAmount(row("EFECTIVO DOLAR", "1.01"), rate), Decimal::fromString(u"36.87"));

    // Cash short of the tax is refused; a note over it gives change from the cash only.
    const QList<PaymentRow> shortOfTax = {dollars.at(0), row("EFECTIVO", "54")};
    const Decimal owed = amountOwed(shortOfTax, rate, total, on).total;
    EXPECT_FALSE(refusal([&] { checkCoversInvoice(shortOfTax, rate, owed, true); }).isEmpty());
    const QList<PaymentRow> withNote = {dollars.at(0), row("EFECTIVO", "100")};
    EXPECT_TRUE(refusal([&] { checkCoversInvoice(withNote, rate, owed, true); }).isEmpty());
    EXPECT_EQ(changeDue(withNote, rate, owed), Decimal::fromString(u"41.62"));
    // Dollars beyond what is owed with their tax give no change.
    const QList<PaymentRow> tooMany = {row("EFECTIVO DOLAR", "6")};
    EXPECT_TRUE(refusal([&] {
                    checkCoversInvoice(tooMany, rate, amountOwed(tooMany, rate, total, on).total,
                                       true);
                }).contains("EFECTIVO DOLAR"));
}

TEST(PaymentRules, TypedAmountsAndDisplay) {
    EXPECT_EQ(parseTypedAmount("1.234,50"), Decimal::fromString(u"1234.50"));
    EXPECT_EQ(parseTypedAmount("1234,5"), Decimal::fromString(u"1234.50"));
    EXPECT_EQ(parseTypedAmount("1234.5"), Decimal::fromString(u"1234.50"));
    EXPECT_FALSE(parseTypedAmount("doce").has_value());
    EXPECT_EQ(formatAmount(Decimal::fromString(u"1234567.5")), QStringLiteral("1.234.567,50"));
    EXPECT_EQ(formatAmount(Decimal()), QStringLiteral("0,00"));
    // Quantities read back as they are shown.
    for (const char* q : {"6", "1.25", "1250", "0.005"}) {
        const Decimal d = Decimal::fromString(QString::fromLatin1(q));
        EXPECT_EQ(parseTypedAmount(formatQuantity(d)), d) << q;
    }
    EXPECT_EQ(formatQuantity(Decimal::fromString(u"1.5")), QStringLiteral("1,5"));
}

class PaymentWaysTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        const QList<std::tuple<int, QString, int, int>> ways = {{1, "EFECTIVO", 1, 1},
                                                                {2, "EFECTIVO DOLAR", 1, 2},
                                                                {3, "CHEQUE", 1, 5},
                                                                {4, "DEPOSITO", 0, 6},
                                                                {5, "TARJETA DE DEBITO", 1, 3},
                                                                {6, "MULTIPLE", 1, 7},
                                                                {9, "TARJETA DE CREDITO", 1, 4},
                                                                {12, "OTRA", 1, 8}};
        for (const auto& [code, name, status, order] : ways)
            exec("INSERT INTO FORMAPAGO (Codigo, Nombre, Status, Orden) VALUES (?, ?, ?, ?)",
                 {code, name, status, order});
    }
};

TEST_F(PaymentWaysTest, OfferedWaysFollowTheirOrderAndTheCashRule) {
    EXPECT_EQ(paymentWayNames(db(), true),
              (QStringList{"EFECTIVO", "EFECTIVO DOLAR", "TARJETA DE DEBITO", "TARJETA DE CREDITO",
                           "CHEQUE"}));
    EXPECT_EQ(paymentWayNames(db(), false),
              (QStringList{"TARJETA DE DEBITO", "TARJETA DE CREDITO", "CHEQUE"}));
}

TEST_F(PaymentWaysTest, SwitchingWaysOnAndOff) {
    QList<PaymentWay> ways = loadPaymentWays(db());
    ASSERT_EQ(ways.size(), 8);
    EXPECT_FALSE(ways[3].active);
    for (PaymentWay& w : ways)
        w.active = false;
    EXPECT_EQ(refusal([&] { savePaymentWayStates(db(), ways); }),
              QStringLiteral("Debe seleccionar un tipo de pago...!"));
    EXPECT_EQ(count("FORMAPAGO", "Status = 1"), 7);

    ways[3].active = true;
    savePaymentWayStates(db(), ways);
    EXPECT_EQ(count("FORMAPAGO", "Status = 1"), 1);
    EXPECT_EQ(scalar("SELECT Nombre FROM FORMAPAGO WHERE Status = 1").toString(),
              QStringLiteral("DEPOSITO"));
}
