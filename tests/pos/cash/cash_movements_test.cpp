// Withdrawals, deposits of cash and sale cheques, and their confirmation with its audit copy.
#include "cash_fixture.h"

#include "common/errors/errors.h"
#include "pos/cash/cash_movements.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::cash;

namespace {

class CashMovementsTest : public test::CashTest {
protected:
    void SetUp() override {
        CashTest::SetUp();
        addDay(kSerial, today(), 1);
        exec("INSERT INTO CTABANCOS (Codigo, Nombre, PuntoVenta, Status) VALUES "
             "('0134-01', 'BANESCO CORRIENTE', 0, 1), ('0134-PV', 'BANESCO PUNTO', 1, 1)");
        exec("INSERT INTO CTACONTABLE (Codigo, Nombre, ManejaDocumentos, TieneAcreedor, Status) "
             "VALUES ('6-01', 'GASTOS MENORES', 1, 1, 1)");
    }
    QString refusal(const std::function<void()>& action) {
        try {
            action();
        } catch (const UserError& e) {
            return e.text();
        }
        return {};
    }
    QDateTime now() const { return QDateTime(today(), QTime(15, 30)); }
};

TEST_F(CashMovementsTest, WithdrawalsAreNumberedPerRegisterAndNeedAnOpenDay) {
    Withdrawal w;
    w.descripcion = "Compra de agua";
    w.monto = Decimal::fromString(u"12.345");
    EXPECT_EQ(addWithdrawal(db(), kSerial, today(), w, "ANA", now()), 1);
    w.monto = Decimal(0);
    EXPECT_EQ(refusal([&] { addWithdrawal(db(), kSerial, today(), w, "ANA", now()); }),
              "El monto de la salida debe ser mayor a cero...!");
    w.monto = Decimal(5);
    w.codigoContable = "6-01";
    EXPECT_EQ(refusal([&] { addWithdrawal(db(), kSerial, today(), w, "ANA", now()); }),
              "Debe indicar el acreedor...!");
    w.acreedor = "BODEGA LA ESQUINA";
    w.documento = "F-991";
    EXPECT_EQ(addWithdrawal(db(), kSerial, today(), w, "ANA", now()), 2);
    // A register without an open day takes no withdrawal.
    EXPECT_EQ(refusal([&] { addWithdrawal(db(), "CAJA02", today(), w, "ANA", now()); }),
              "No existe apertura de fecha " + dayText(today()) + "...!");

    const auto list = withdrawalsOf(db(), kSerial, today());
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list[0].monto, Decimal::fromString(u"12.35")); // rounded to the column
    EXPECT_EQ(list[1].acreedor, "BODEGA LA ESQUINA");
    EXPECT_EQ(scalar("SELECT Usuario FROM SALIDASCAJA WHERE Numero = 2").toString(), "ANA");
    removeWithdrawal(db(), kSerial, 1);
    EXPECT_EQ(withdrawalsOf(db(), kSerial, today()).size(), 1);
    exec("UPDATE DIARIOCAJA SET Status = 2");
    EXPECT_EQ(refusal([&] { removeWithdrawal(db(), kSerial, 2); }),
              "Caja con cierre realizado...!");
}

TEST_F(CashMovementsTest, ADepositTakesCashAndTheDaysChequesOnce) {
    sell(1, "100.00", "2");
    sell(2, "50.00", "2");
    auto cheques = pendingCheques(db(), kSerial, today());
    ASSERT_EQ(cheques.size(), 2);
    EXPECT_EQ(cheques[0].cheque, "CH-1");
    EXPECT_EQ(cheques[0].monto, Decimal(116));

    Deposit d;
    d.numeroDeposito = "778899";
    d.cuentaBanco = "0134-01";
    d.totalEfectivo = Decimal::fromString(u"200.10");
    d.cheques = {cheques[0]};
    EXPECT_EQ(addDeposit(db(), kSerial, today(), d, "ANA", now()), Decimal(116));
    ASSERT_EQ(pendingCheques(db(), kSerial, today()).size(), 1);
    EXPECT_EQ(count("MOVDEPOSITOS", "NumeroDeposito = ? AND Cheque = ?", {"778899", "CH-1"}), 1);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT TotalCheques FROM DEPOSITOS")), Decimal(116));

    // The same number in the same account, the same cheque twice, a point-of-sale account.
    EXPECT_EQ(refusal([&] { addDeposit(db(), kSerial, today(), d, "ANA", now()); }),
              "Ya existe el depósito 778899 en esa cuenta...!");
    d.numeroDeposito = "778900";
    d.cheques = {cheques[0], cheques[1]};
    EXPECT_EQ(refusal([&] { addDeposit(db(), kSerial, today(), d, "ANA", now()); }),
              "El cheque CH-1 de la factura 1 ya fue depositado...!");
    EXPECT_EQ(pendingCheques(db(), kSerial, today()).size(), 1); // rolled back
    d.cuentaBanco = "0134-PV";
    EXPECT_EQ(refusal([&] { addDeposit(db(), kSerial, today(), d, "ANA", now()); }),
              "Debe seleccionar la cuenta bancaria...!");
    EXPECT_EQ(count("DEPOSITOS"), 1);
}

TEST_F(CashMovementsTest, ConfirmingADepositKeepsEveryVersionInTheAudit) {
    Deposit d;
    d.numeroDeposito = "5001";
    d.cuentaBanco = "0134-01";
    d.totalEfectivo = Decimal(300);
    addDeposit(db(), kSerial, today(), d, "ANA", now());

    Confirmation c;
    c.numeroDeposito = "5001";
    c.cuentaBanco = "0134-01";
    c.fechaDeposito = today().addDays(1);
    c.monto = Decimal(290);
    EXPECT_EQ(refusal([&] { confirmDeposit(db(), c, "LUIS", now()); }),
              "El monto confirmado difiere del depositado, debe indicar una nota...!");
    EXPECT_EQ(count("CONFIRMACION_DEPOSITO"), 0);
    EXPECT_EQ(count("CONFIRMACION_DEPOSITO_AUD"), 0);
    c.nota = "Billete falso";
    confirmDeposit(db(), c, "LUIS", now());
    c.monto = Decimal(300);
    c.nota.clear();
    confirmDeposit(db(), c, "PEDRO", now());

    EXPECT_EQ(count("CONFIRMACION_DEPOSITO"), 1);
    EXPECT_EQ(count("CONFIRMACION_DEPOSITO_AUD"), 2);
    EXPECT_EQ(Decimal::fromVariant(scalar(
                  "SELECT Monto FROM CONFIRMACION_DEPOSITO_AUD WHERE Usuario = ?", {"LUIS"})),
              Decimal(290));
    EXPECT_EQ(Decimal::fromVariant(scalar(
                  "SELECT Monto FROM CONFIRMACION_DEPOSITO_AUD WHERE Usuario = ?", {"PEDRO"})),
              Decimal(300));
    const auto rows = depositsBetween(db(), today(), today());
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].confirmationStatus, 1);
    EXPECT_EQ(rows[0].montoConfirmado, Decimal(300));
    EXPECT_EQ(rows[0].fechaConfirmada.date(), today().addDays(1));
}

} // namespace
