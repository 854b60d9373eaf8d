// Opening the register's day against the software printer, its refusals in order, and deleting
// an opening.
#include "cash_fixture.h"

#include "common/errors/errors.h"
#include "pos/cash/cash_day.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::cash;

namespace {

class CashDayTest : public test::CashTest {
protected:
    OpeningRequest request(const QDate& day) const {
        OpeningRequest r;
        r.serial = kSerial;
        r.day = day;
        r.today = today();
        r.now = QDateTime(today(), QTime(7, 45, 10));
        return r;
    }
    QString openingRefusal(const QDate& day) {
        try {
            openDayWith(db(), *m_printer, request(day));
        } catch (const UserError& e) {
            EXPECT_EQ(e.title(), "Información");
            return e.text();
        }
        return {};
    }
};

TEST_F(CashDayTest, OpensTheDayWithTheLastInvoiceAndThePrinterRates) {
    exec("UPDATE CAJAS SET UltimaFactura = 0 WHERE Serie = ?", {kSerial});
    const CashDay d = openDayWith(db(), *m_printer, request(today()));
    EXPECT_EQ(d.fecha, today());
    EXPECT_EQ(d.status, 0);
    EXPECT_EQ(d.numero, 3);
    EXPECT_EQ(d.facturaInicial, 0);
    EXPECT_EQ(d.facturaFinal, 0);
    EXPECT_EQ(d.horaApertura, QDateTime(today(), QTime(7, 45, 10)));
    EXPECT_EQ(scalar("SELECT ReporteZTexto FROM DIARIOCAJA").toString(), "");
    EXPECT_TRUE(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").isNull());
    // Rates 1..3 now follow the printer (16, 8, 31); the exempt code is left alone.
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE "
                                          "Codigo = 1")),
              Decimal(16));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE "
                                          "Codigo = 2")),
              Decimal(8));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE "
                                          "Codigo = 3")),
              Decimal(31));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE "
                                          "Codigo = 4")),
              Decimal(0));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PorcentajeImpuesto FROM DIARIOCAJA")),
              Decimal(16));
    QFile marker(markerFilePath(kSerial));
    ASSERT_TRUE(marker.open(QIODevice::ReadOnly));
    EXPECT_TRUE(
        QString::fromUtf8(marker.readAll()).contains("Fecha=" + today().toString("yyyyMMdd")));
    EXPECT_EQ(latestDay(db(), kSerial)->fecha, today());
}

TEST_F(CashDayTest, RefusalsComeInTheirOrder) {
    const QDate t = today();
    const QDate earlier = t.addDays(-3);
    addDay(kSerial, earlier, 1);
    // A latest day with sales not closed wins over every other refusal.
    EXPECT_EQ(openingRefusal(earlier.addDays(-1)),
              "La apertura de Fecha " + dayText(earlier) +
                  " tiene su cierre pendiente...! No procede una nueva apertura...!");
    EXPECT_EQ(openingRefusal(t), "La apertura de Fecha " + dayText(earlier) +
                                     " tiene su cierre pendiente...! No procede una nueva "
                                     "apertura...!");
    exec("UPDATE DIARIOCAJA SET Status = 2");
    EXPECT_EQ(openingRefusal(earlier), "La apertura de Fecha " + dayText(earlier) +
                                           " tiene su cierre procesado...! No procede una nueva "
                                           "apertura...!");
    EXPECT_EQ(openingRefusal(earlier.addDays(-1)),
              "No puede realizar una apertura de fecha menor a " + dayText(earlier) +
                  " ...! No procede una nueva apertura...!");
    addDay(kSerial, t.addDays(-1), 0);
    EXPECT_EQ(openingRefusal(t.addDays(-1)), "Ya existe una apertura de Fecha " +
                                                 dayText(t.addDays(-1)) +
                                                 "...! no procede una nueva apertura...!");
    // The day before, opened without sales, is still open.
    EXPECT_EQ(openingRefusal(t), "La apertura de Fecha " + dayText(t.addDays(-1)) +
                                     " tiene su cierre pendiente...! No procede una nueva "
                                     "apertura...!\nLa apertura de Fecha " +
                                     dayText(t.addDays(-1)) +
                                     " no tiene facturación...! Se recomienda eliminar dicha "
                                     "apertura...!");
    EXPECT_EQ(count("DIARIOCAJA"), 2);
    // Deleting the empty opening lets today be opened.
    deleteOpening(db(), kSerial, t.addDays(-1));
    EXPECT_EQ(openingRefusal(t), "");
    EXPECT_EQ(count("DIARIOCAJA"), 2);
}

TEST_F(CashDayTest, ASilentOrDisagreeingPrinterOpensNothing) {
    m_emulator.fault("silence");
    EXPECT_EQ(openingRefusal(today()),
              "No se pudo Realizar la apertura de caja por falta de comunicacion con la impresora "
              "fiscal. Asegurese de que la impresora este encendida y conectada");
    m_emulator.fault("speak");
    exec("UPDATE CAJAS SET UltimaFactura = 7 WHERE Serie = ?", {kSerial});
    EXPECT_EQ(openingRefusal(today()),
              "El numero de factura no concuerda con el numero de factura de la impresora...!");
    EXPECT_EQ(count("DIARIOCAJA"), 0);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE "
                                          "Codigo = 1")),
              Decimal(12));
    EXPECT_FALSE(QFile::exists(markerFilePath(kSerial)));
}

TEST_F(CashDayTest, AnOpeningIsDeletedOnlyWithoutSales) {
    openDayWith(db(), *m_printer, request(today()));
    sell(1, "10.00");
    try {
        deleteOpening(db(), kSerial, today());
        ADD_FAILURE() << "deleted a day with sales";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "La apertura de Fecha " + dayText(today()) +
                                " tiene movimientos...! No procede su eliminación...!");
    }
    EXPECT_EQ(count("DIARIOCAJA"), 1);
    addDay("CAJA02", today(), 0);
    deleteOpening(db(), "CAJA02", today());
    EXPECT_EQ(count("DIARIOCAJA", "Serie = ?", {"CAJA02"}), 0);
    EXPECT_EQ(count("DIARIOCAJA", "Serie = ?", {kSerial}), 1);
}

} // namespace
