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
    EXPECT_EQ(refusal([&] { checkCoversInvoice(invoice, invoice, false); }), QString());
    EXPECT_EQ(refusal([&] { checkCoversInvoice(invoice, invoice, true); }), QString());
    EXPECT_EQ(refusal([&] { checkCoversInvoice(Decimal::fromString(u"99.99"), invoice, true); }),
              QStringLiteral("El monto abonado es inferior a el valor de la factura.... corrija el "
                             "valor suprimiendo ó reeditando la fila con el error o completando "
                             "su forma de pago"));
    EXPECT_EQ(
        refusal([&] { checkCoversInvoice(Decimal::fromString(u"100.01"), invoice, false); }),
        QStringLiteral("El monto abonado excede a el valor de la factura.... corrija el valor "
                       "suprimiendo ó reeditando la fila con el error"));
    EXPECT_EQ(refusal([&] { checkCoversInvoice(Decimal(120), invoice, true); }), QString());
}

TEST(PaymentRules, TypedAmountsAndDisplay) {
    EXPECT_EQ(parseTypedAmount("1.234,50"), Decimal::fromString(u"1234.50"));
    EXPECT_EQ(parseTypedAmount("1234,5"), Decimal::fromString(u"1234.50"));
    EXPECT_EQ(parseTypedAmount("1234.5"), Decimal::fromString(u"1234.50"));
    EXPECT_FALSE(parseTypedAmount("doce").has_value());
    EXPECT_EQ(formatAmount(Decimal::fromString(u"1234567.5")), QStringLiteral("1.234.567,50"));
    EXPECT_EQ(formatAmount(Decimal()), QStringLiteral("0,00"));
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
