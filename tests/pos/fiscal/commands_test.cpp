// Item, discount and payment commands built from stored sale lines.
#include "pos/fiscal/commands.h"
#include "pos/fiscal/protocol/frame.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::fiscal;

namespace {
FiscalLine line(const char* price, const char* tax, const char* qty, const QString& name, int rate,
                const char* discount = "0") {
    FiscalLine l;
    l.price = Decimal::fromString(QString::fromLatin1(price));
    l.taxPercent = Decimal::fromString(QString::fromLatin1(tax));
    l.quantity = Decimal::fromString(QString::fromLatin1(qty));
    l.discountPercent = Decimal::fromString(QString::fromLatin1(discount));
    l.name = name;
    l.rate = rate;
    return l;
}
} // namespace

TEST(FiscalCommands, ItemPriceCarriesItsRoundedTax) {
    // 10.00 + 16 % = 11.60; 0.99 + 16 % = 0.99 + 0.1584 -> 0.16 = 1.15; 10.03 + 8 % = 10.8324
    // -> 0.80 + 10.03 = 10.83.
    EXPECT_EQ(priceWithTaxCents(Decimal(10), Decimal(16)), 1160);
    EXPECT_EQ(priceWithTaxCents(Decimal::fromString(u"0.99"), Decimal(16)), 115);
    EXPECT_EQ(priceWithTaxCents(Decimal::fromString(u"10.03"), Decimal(8)), 1083);
    // Half a cent of tax goes up: 0.05 * 10 % = 0.005 -> 0.01.
    EXPECT_EQ(priceWithTaxCents(Decimal::fromString(u"0.05"), Decimal(10)), 6);

    EXPECT_EQ(itemCommand(line("10", "16", "2", "CAMISA", 1), DocumentType::Invoice),
              QByteArray("!000000116000002000CAMISA") + QByteArray(34, ' '));
    EXPECT_EQ(itemCommand(line("5", "0", "1.5", "PAN", 0), DocumentType::Invoice),
              QByteArray(" 000000050000001500PAN") + QByteArray(37, ' '));
    EXPECT_EQ(itemCommand(line("10", "8", "1", "X", 2), DocumentType::Invoice).left(1), "\"");
    EXPECT_EQ(itemCommand(line("10", "31", "1", "X", 3), DocumentType::Invoice).left(1), "#");
    // A return item: "d" and the rate's index.
    EXPECT_EQ(itemCommand(line("10", "16", "1", "CAMISA", 1), DocumentType::CreditNote).left(20),
              QByteArray("d1000000116000001000"));
}

TEST(FiscalCommands, NameIsExactlyFortyLatin1Characters) {
    const QString longName =
        QStringLiteral("PANTALÓN DE MEZCLILLA AZUL OSCURO TALLA 42 CORTE RECTO");
    const QByteArray cmd = itemCommand(line("1", "16", "1", longName, 1), DocumentType::Invoice);
    ASSERT_EQ(cmd.size(), 1 + 10 + 8 + 40);
    EXPECT_EQ(cmd.mid(19), QByteArray("PANTAL\xD3N DE MEZCLILLA AZUL OSCURO TALLA "));
    // Characters outside ISO-8859-1 never go out as UTF-8.
    EXPECT_EQ(printerText(QStringLiteral("€ñ")), QByteArray("?\xF1"));
}

namespace {
QByteArray frameOf(std::initializer_list<int> list) {
    QByteArray b;
    for (int v : list)
        b.append(char(v));
    return b;
}
} // namespace

TEST(FiscalCommands, GoldenFramesOfDollarsAndIgtf) {
    using protocol::frame;
    // PJ5001: IGTF on.
    EXPECT_EQ(frame(flagCommand(50, 1)), frameOf({0x02, 'P', 'J', '5', '0', '0', '1', 0x03, 0x1D}));
    // PE20EFECTIVO DOLAR: the name of foreign-currency means 20.
    EXPECT_EQ(frame(meansNameCommand(20, QStringLiteral("efectivo dolar "))),
              frameOf({0x02, 'P', 'E', '2', '0', 'E', 'F', 'E', 'C',  'T', 'I',
                       'V',  'O', ' ', 'D', 'O', 'L', 'A', 'R', 0x03, 0x61}));
    // 146.00 (4 dollars at 36.50) under means 20.
    EXPECT_EQ(frame(partialPaymentCommand(20, Decimal::fromString(u"146.00"))),
              frameOf({0x02, '2', '2', '0', '0', '0', '0', '0', '0', '0', '0', '1', '4', '6', '0',
                       '0', 0x03, 0x30}));
    EXPECT_EQ(frame(totalPaymentCommand(20)), frameOf({0x02, '1', '2', '0', 0x03, 0x30}));
    // 199 closes an IGTF document.
    EXPECT_EQ(frame(kCloseDocument), frameOf({0x02, '1', '9', '9', 0x03, 0x32}));
    // The rates and 3.00 % of IGTF as the fourth group.
    EXPECT_EQ(frame(taxRatesCommand({1600, 800, 3100}, 300)),
              frameOf({0x02, 'P', 'T', '1', '1', '6', '0', '0', '1', '0', '8',  '0', '0',
                       '1',  '3', '1', '0', '0', '1', '0', '3', '0', '0', 0x03, 0x09}));
    EXPECT_EQ(taxRatesCommand({1600, 800, 3100}), "PT116001080013100");
    // A name longer than the printer keeps is cut to 14.
    EXPECT_EQ(meansNameCommand(9, QStringLiteral("TARJETA DE DEBITO")), "PE09TARJETA DE DEB");
}

TEST(FiscalCommands, DocumentWithDiscountsAndPayments) {
    FiscalDocument d;
    d.clientId = QStringLiteral("V12345678");
    d.clientName = QStringLiteral("MARIA PEREZ");
    d.clientLines = {QStringLiteral("AV. BOLIVAR 12"), QString()};
    d.lines = {line("10", "16", "1", "CAMISA", 1, "12.5"), line("5", "0", "2", "PAN", 0)};
    d.paymentMeans = 5;
    QList<QByteArray> c = documentCommands(d);
    ASSERT_EQ(c.size(), 7);
    EXPECT_EQ(c[0], "iR*V12345678");
    EXPECT_EQ(c[1], "iS*MARIA PEREZ");
    EXPECT_EQ(c[2], "i01AV. BOLIVAR 12");
    EXPECT_EQ(c[4], "p-1250");
    EXPECT_EQ(c[6], "105");

    // Several payments: each with its means and the amount in cents over 12 digits. A row the
    // change emptied is no payment: the printer refuses "2NN000000000000".
    d.payments = {
        {1, Decimal::fromString(u"10.00")}, {9, Decimal::fromString(u"1234.56")}, {1, Decimal()}};
    c = documentCommands(d);
    EXPECT_EQ(c[c.size() - 2], "201000000001000");
    EXPECT_EQ(c.last(), "209000000123456");
    EXPECT_EQ(d.restMeans(), 9);

    // A credit note names the invoice it returns before its items.
    FiscalDocument r;
    r.type = DocumentType::CreditNote;
    r.affectedInvoice = 12;
    r.affectedInvoiceDate = QDate(2026, 11, 21);
    r.affectedPrinterSerial = QStringLiteral("Z1B0000001");
    r.lines = {line("10", "16", "1", "CAMISA", 1)};
    c = documentCommands(r);
    EXPECT_EQ(c.mid(0, 3), QList<QByteArray>({"iF*00000012", "iD*21/11/2026", "iI*Z1B0000001"}));
    EXPECT_TRUE(c[3].startsWith("d1"));
}
