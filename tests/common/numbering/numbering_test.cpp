#include "common/numbering/numbering.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "support/test_db.h"

#include <QMutex>
#include <QSet>
#include <QSqlRecord>
#include <gtest/gtest.h>
#include <thread>

using namespace orvo;
using namespace orvo::common;
using orvo::test::DbTest;

namespace {
const QDateTime kSold(QDate(2024, 5, 6), QTime(10, 30, 15));
}

class Numbering : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO PARAMETROS (Nombre, ControlFactura, UltimaFactura, UltimaDevolucion) "
             "VALUES (?, ?, ?, ?)",
             {"TIENDA", 2, 500, 40});
        for (const auto& [serial, invoices, returns] :
             {std::tuple{"CAJA01", 100, 7}, std::tuple{"CAJA02", 300, 9}})
            exec("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, UltimaDevolucion) "
                 "VALUES (?, ?, ?, ?)",
                 {serial, 1, invoices, returns});
    }

    long long counter(const QString& table, const QString& column, const QString& serial = {}) {
        const QVariant v =
            serial.isEmpty()
                ? scalar(QStringLiteral("SELECT %1 FROM %2").arg(column, table))
                : scalar(QStringLiteral("SELECT %1 FROM %2 WHERE Serie = ?").arg(column, table),
                         {serial});
        return Decimal::fromVariant(v).toLongLong();
    }

    // An invoice with two lines, a receivable and two payments.
    void insertInvoice(long long number, const QString& serial) {
        exec("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Vendedor, Cliente, TipoVenta, "
             "FormaPago, DiasCredito, TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, "
             "InterContable, Usuario, Status, NumeroOrden, TotalPago) "
             "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
             {number, serial, kSold, "V01", "V-123", 1, "MULTIPLE", 30, "100.00", "5.00", "15.20",
              "60.00", 0, "ADMIN", 1, 0, "110.20"});
        const char* line = "INSERT INTO MOVVENTAS (NumeroFactura, Serie, Hora, TipoLista, "
                           "CodigoBarra, Precio, PrecioLista, Costo, Impuesto, PorcentajeImpuesto, "
                           "Cantidad, CantidadDevuelta, Item, PorcentajeDescuento) "
                           "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
        exec(line, {number, serial, kSold, "D", "7501", "40.00", "40.00", "25.00", "6.40", "16",
                    "1", "0", 1, "5"});
        exec(line, {number, serial, kSold, "D", "7502", "30.00", "30.00", "17.50", "4.80", "16",
                    "2", "1", 2, "0"});
        exec("INSERT INTO CUENTASXCOBRAR (Numero, Cliente, Factura, Serie, Monto, DiasCredito, "
             "FechaFactura, FechaAprobacion, Status) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)",
             {count("CUENTASXCOBRAR") + 1, "V-123", number, serial, "60.20", 30, kSold,
              QDateTime(QDate(2000, 1, 1), QTime(0, 0)), 0});
        const char* pay = "INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, Fecha, "
                          "Documento, Aprobacion, Banco, PuntoVenta, Monto, Status) "
                          "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
        exec(pay, {number, serial, 1, "EFECTIVO", kSold, "", "", "", "", "30.00", 1});
        exec(pay, {number, serial, 2, "TARJETA DE DEBITO", kSold, "0012", "A77", "BANESCO", "P1",
                   "20.00", 1});
    }

    QDateTime dateOf(const QString& statement, std::initializer_list<QVariant> values) {
        db::Sql q(db(), statement);
        q.bindAll(values).exec();
        EXPECT_TRUE(q.next());
        return q.dateTime(q.raw().record().fieldName(0));
    }

    Decimal sumOf(const QString& statement, std::initializer_list<QVariant> values) {
        return Decimal::fromVariant(scalar(statement, values)).rounded(2);
    }
};

TEST_F(Numbering, NextCodeComparesCodesAsNumbers) {
    EXPECT_EQ(nextCode(db(), "COLORES", "Codigo"), 1);
    exec("INSERT INTO COLORES (Codigo, Nombre) VALUES (?, ?)", {"0099", "ROJO"});
    exec("INSERT INTO COLORES (Codigo, Nombre) VALUES (?, ?)", {"100", "AZUL"});
    exec("INSERT INTO COLORES (Codigo, Nombre) VALUES (?, ?)", {"20", "VERDE"});
    EXPECT_EQ(nextCode(db(), "Colores", "codigo"), 101);
    exec("DELETE FROM COLORES WHERE Codigo = ?", {"100"});
    EXPECT_EQ(nextCode(db(), "COLORES", "Codigo"), 100);

    // Names become statement text: only described identifiers pass.
    EXPECT_THROW(nextCode(db(), "COLORES; DROP TABLE COLORES", "Codigo"), std::invalid_argument);
    EXPECT_THROW(nextCode(db(), "COLORES", "Codigo) FROM COLORES --"), std::invalid_argument);
    EXPECT_THROW(nextCode(db(), "NO_EXISTE", "Codigo"), std::invalid_argument);
    EXPECT_THROW(nextCode(db(), "COLORES", "NoExiste"), std::invalid_argument);
    EXPECT_EQ(count("COLORES"), 2);
}

TEST_F(Numbering, CountersLiveWhereControlFacturaSays) {
    EXPECT_THROW(takeInvoiceNumber(db(), 1, "CAJA01"), std::logic_error); // needs a transaction
    {
        db::Transaction tx(db());
        EXPECT_EQ(nextInvoiceNumber(db(), 1, "CAJA01"), 101);
        EXPECT_EQ(nextInvoiceNumber(db(), 1, "CAJA01"), 102);
        EXPECT_EQ(nextReturnNumber(db(), 1, "CAJA02"), 10);
        EXPECT_EQ(nextInvoiceNumber(db(), 2, "CAJA01"), 501);
        EXPECT_EQ(nextReturnNumber(db(), 2, "CAJA02"), 41);
        // Neither per register nor company-wide: nothing moves.
        EXPECT_EQ(nextInvoiceNumber(db(), 0, "CAJA01"), 0);
        EXPECT_EQ(nextReturnNumber(db(), 3, "CAJA01"), 0);
        // A serial without a register row.
        EXPECT_EQ(nextInvoiceNumber(db(), 1, "CAJA99"), 0);
        tx.commit();
    }
    EXPECT_EQ(counter("CAJAS", "UltimaFactura", "CAJA01"), 102);
    EXPECT_EQ(counter("CAJAS", "UltimaFactura", "CAJA02"), 300);
    EXPECT_EQ(counter("CAJAS", "UltimaDevolucion", "CAJA01"), 7);
    EXPECT_EQ(counter("CAJAS", "UltimaDevolucion", "CAJA02"), 10);
    EXPECT_EQ(counter("PARAMETROS", "UltimaFactura"), 501);
    EXPECT_EQ(counter("PARAMETROS", "UltimaDevolucion"), 41);
}

TEST_F(Numbering, RegisterDayRecordsTheLastInvoiceOfToday) {
    const QDate today = db::serverNow(db()).date();
    const char* day = "INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, FacturaFinal, "
                      "Status) VALUES (?, ?, ?, ?, ?, ?)";
    exec(day, {"CAJA01", QDateTime(today.addDays(-1), QTime(8, 0)), 1, 90, 100, 2});
    exec(day, {"CAJA01", QDateTime(today, QTime(8, 0)), 1, 101, 0, 0});
    exec(day, {"CAJA02", QDateTime(today, QTime(8, 0)), 1, 301, 0, 0});
    {
        db::Transaction tx(db());
        EXPECT_EQ(nextInvoiceNumber(db(), 1, "CAJA01"), 101);
        tx.commit();
    }
    EXPECT_EQ(
        count("DIARIOCAJA", "Serie = ? AND FacturaFinal = ? AND Status = ?", {"CAJA01", 101, 1}),
        1);
    EXPECT_EQ(
        count("DIARIOCAJA", "Serie = ? AND FacturaFinal = ? AND Status = ?", {"CAJA01", 100, 2}),
        1); // yesterday untouched
    EXPECT_EQ(count("DIARIOCAJA", "Serie = ? AND Status = ?", {"CAJA02", 0}), 1);
}

TEST_F(Numbering, TwoConnectionsNeverShareAnInvoiceNumber) {
    exec("UPDATE PARAMETROS SET UltimaFactura = 0");
    constexpr int kPerThread = 25;
    QMutex mutex;
    QList<long long> taken;
    QStringList failures;
    auto worker = [&](const QString& name) {
        try {
            QSqlDatabase conn;
            {
                QMutexLocker lock(&mutex); // the fixture keeps a list of the names it opened
                conn = testDb().openAnother(name);
            }
            for (int i = 0; i < kPerThread; ++i) {
                db::Transaction tx(conn);
                const long long n = nextInvoiceNumber(conn, kCountersForCompany, "CAJA01");
                tx.commit();
                QMutexLocker lock(&mutex);
                taken << n;
            }
            conn = QSqlDatabase();
            db::closeConnection(name);
        } catch (const std::exception& e) {
            QMutexLocker lock(&mutex);
            failures << QString::fromStdString(e.what());
        }
    };
    std::thread a(worker, QStringLiteral("numeracion_a"));
    std::thread b(worker, QStringLiteral("numeracion_b"));
    a.join();
    b.join();
    ASSERT_TRUE(failures.isEmpty()) << failures.join('\n').toStdString();
    ASSERT_EQ(taken.size(), 2 * kPerThread);
    const QSet<long long> distinct(taken.begin(), taken.end());
    EXPECT_EQ(distinct.size(), 2 * kPerThread);
    EXPECT_EQ(*std::max_element(taken.begin(), taken.end()), 2 * kPerThread);
    EXPECT_EQ(counter("PARAMETROS", "UltimaFactura"), 2 * kPerThread);
}

TEST_F(Numbering, RenumberedInvoiceKeepsItsDateAndVoidsTheOldOne) {
    insertInvoice(100, "CAJA01");
    insertInvoice(100, "CAJA02"); // same number on another register: not touched
    long long fresh = 0;
    {
        db::Transaction tx(db());
        fresh = nextInvoiceNumber(db(), 1, "CAJA01", 100, false);
        tx.commit();
    }
    ASSERT_EQ(fresh, 101);
    EXPECT_EQ(
        dateOf("SELECT Fecha FROM VENTAS WHERE NumeroFactura = ? AND Serie = ?", {101, "CAJA01"}),
        kSold);
    EXPECT_EQ(sumOf("SELECT TotalPago FROM VENTAS WHERE NumeroFactura = ? AND Serie = ?",
                    {101, "CAJA01"}),
              Decimal::fromString(u"110.20"));
    EXPECT_EQ(count("MOVVENTAS", "NumeroFactura = ? AND Serie = ?", {101, "CAJA01"}), 2);
    EXPECT_EQ(sumOf("SELECT SUM(Precio * Cantidad) FROM MOVVENTAS WHERE NumeroFactura = ? AND "
                    "Serie = ?",
                    {101, "CAJA01"}),
              Decimal(100));
    EXPECT_EQ(count("PAGOSVENTA", "NumeroFactura = ? AND Serie = ?", {101, "CAJA01"}), 2);
    EXPECT_EQ(sumOf("SELECT SUM(Monto) FROM PAGOSVENTA WHERE NumeroFactura = ? AND Serie = ?",
                    {101, "CAJA01"}),
              Decimal(50));
    EXPECT_EQ(count("CUENTASXCOBRAR", "Factura = ? AND Serie = ? AND Monto = ?",
                    {101, "CAJA01", "60.20"}),
              1);
    EXPECT_EQ(dateOf("SELECT FechaFactura FROM CUENTASXCOBRAR WHERE Factura = ? AND Serie = ?",
                     {101, "CAJA01"}),
              kSold);

    // The old invoice stays, with every amount and quantity at zero.
    EXPECT_EQ(count("VENTAS", "NumeroFactura = ? AND Serie = ?", {100, "CAJA01"}), 1);
    EXPECT_EQ(sumOf("SELECT TotalMercancia + TotalDescuento + TotalImpuesto + TotalCosto + "
                    "TotalPago FROM VENTAS WHERE NumeroFactura = ? AND Serie = ?",
                    {100, "CAJA01"}),
              Decimal());
    EXPECT_EQ(count("MOVVENTAS", "NumeroFactura = ? AND Serie = ?", {100, "CAJA01"}), 2);
    EXPECT_EQ(sumOf("SELECT SUM(ABS(Precio) + ABS(PrecioLista) + ABS(Costo) + ABS(Impuesto) + "
                    "ABS(Cantidad) + ABS(CantidadDevuelta) + ABS(PorcentajeDescuento)) "
                    "FROM MOVVENTAS WHERE NumeroFactura = ? AND Serie = ?",
                    {100, "CAJA01"}),
              Decimal());
    EXPECT_EQ(sumOf("SELECT SUM(Monto) FROM PAGOSVENTA WHERE NumeroFactura = ? AND Serie = ?",
                    {100, "CAJA01"}),
              Decimal());
    EXPECT_EQ(sumOf("SELECT SUM(Monto) FROM CUENTASXCOBRAR WHERE Factura = ? AND Serie = ?",
                    {100, "CAJA01"}),
              Decimal());
    EXPECT_EQ(count("PAGOSVENTA", "NumeroFactura = ? AND Serie = ?", {100, "CAJA01"}), 2);

    // The other register's invoice 100 is as it was.
    EXPECT_EQ(sumOf("SELECT TotalPago FROM VENTAS WHERE NumeroFactura = ? AND Serie = ?",
                    {100, "CAJA02"}),
              Decimal::fromString(u"110.20"));
    EXPECT_EQ(count("VENTAS", "Serie = ?", {"CAJA02"}), 1);
}

TEST_F(Numbering, RenumberingWithTodayTakesTheServerDateAndTime) {
    insertInvoice(100, "CAJA01");
    const QDateTime before = db::serverNow(db()).addSecs(-1);
    {
        db::Transaction tx(db());
        ASSERT_EQ(nextInvoiceNumber(db(), 2, "CAJA01", 100, true), 501);
        tx.commit();
    }
    const QDateTime after = db::serverNow(db()).addSecs(1);
    for (const QDateTime& dated :
         {dateOf("SELECT Fecha FROM VENTAS WHERE NumeroFactura = ?", {501}),
          dateOf("SELECT Fecha FROM PAGOSVENTA WHERE NumeroFactura = ?", {501}),
          dateOf("SELECT FechaFactura FROM CUENTASXCOBRAR WHERE Factura = ?", {501})}) {
        EXPECT_GE(dated, before);
        EXPECT_LE(dated, after);
    }
    // The old one keeps its own date.
    EXPECT_EQ(dateOf("SELECT Fecha FROM VENTAS WHERE NumeroFactura = ?", {100}), kSold);
}

TEST_F(Numbering, RenumberedReturnKeepsItsLinesAndVoidsTheOldOne) {
    exec("INSERT INTO DEVVENTAS (NumeroDevolucion, Serie, NumeroFactura, Fecha, Vendedor, Cliente, "
         "TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, TipoVenta, InterContable, "
         "Usuario, Status, SerieFactura) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
         {7, "CAJA01", 100, kSold, "V01", "V-123", "40.00", "0", "6.40", "25.00", 1, 0, "ADMIN", 1,
          "CAJA01"});
    exec("INSERT INTO MOVDEVVENTAS (NumeroDevolucion, Serie, Hora, TipoLista, CodigoBarra, Precio, "
         "PrecioLista, Costo, Impuesto, PorcentajeImpuesto, Cantidad, Item, PorcentajeDescuento) "
         "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
         {7, "CAJA01", kSold, "D", "7501", "40.00", "40.00", "25.00", "6.40", "16", "1", 1, "0"});
    {
        db::Transaction tx(db());
        ASSERT_EQ(nextReturnNumber(db(), 1, "CAJA01", 7, false), 8);
        tx.commit();
    }
    EXPECT_EQ(count("DEVVENTAS",
                    "NumeroDevolucion = ? AND NumeroFactura = ? AND "
                    "SerieFactura = ? AND TotalMercancia = ?",
                    {8, 100, "CAJA01", "40.00"}),
              1);
    EXPECT_EQ(dateOf("SELECT Fecha FROM DEVVENTAS WHERE NumeroDevolucion = ?", {8}), kSold);
    EXPECT_EQ(count("MOVDEVVENTAS", "NumeroDevolucion = ? AND Cantidad = ?", {8, "1"}), 1);
    EXPECT_EQ(count("DEVVENTAS", "NumeroDevolucion = ? AND TotalMercancia = ? AND TotalCosto = ?",
                    {7, "0", "0"}),
              1);
    EXPECT_EQ(count("MOVDEVVENTAS", "NumeroDevolucion = ? AND Cantidad = ? AND Precio = ?",
                    {7, "0", "0"}),
              1);
}

TEST_F(Numbering, FailureHalfWayThroughRenumberingChangesNothing) {
    insertInvoice(100, "CAJA01");
    exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, FacturaFinal, Status) "
         "VALUES (?, ?, ?, ?, ?, ?)",
         {"CAJA01", db::dayStart(db::serverNow(db()).date()), 1, 95, 100, 0});
    if (isPostgres()) {
        exec("CREATE FUNCTION falla_pagos() RETURNS trigger AS $$ BEGIN RAISE EXCEPTION 'x'; "
             "END $$ LANGUAGE plpgsql");
        exec("CREATE TRIGGER t_falla_pagos BEFORE INSERT ON PAGOSVENTA FOR EACH ROW EXECUTE "
             "FUNCTION falla_pagos()");
    } else {
        exec("CREATE TRIGGER t_falla_pagos BEFORE INSERT ON PAGOSVENTA BEGIN "
             "SELECT RAISE(ABORT, 'x'); END");
    }
    {
        db::Transaction tx(db());
        EXPECT_THROW(nextInvoiceNumber(db(), 1, "CAJA01", 100, true), DbError);
    }
    EXPECT_EQ(counter("CAJAS", "UltimaFactura", "CAJA01"), 100);
    EXPECT_EQ(count("DIARIOCAJA", "FacturaFinal = ? AND Status = ?", {100, 0}), 1);
    EXPECT_EQ(count("VENTAS"), 1);
    EXPECT_EQ(count("MOVVENTAS"), 2);
    EXPECT_EQ(count("CUENTASXCOBRAR"), 1);
    EXPECT_EQ(count("PAGOSVENTA"), 2);
    EXPECT_EQ(sumOf("SELECT TotalPago FROM VENTAS WHERE NumeroFactura = ?", {100}),
              Decimal::fromString(u"110.20"));
    EXPECT_EQ(sumOf("SELECT SUM(Cantidad) FROM MOVVENTAS WHERE NumeroFactura = ?", {100}),
              Decimal(3));
}

TEST_F(Numbering, BoxesAndDocumentsOfRemissionsAndReceptions) {
    EXPECT_EQ(lastDocumentNumber(db(), BoxDocument::Remission), 0);
    EXPECT_FALSE(documentHasLines(db(), BoxDocument::Reception, 4));
    exec("INSERT INTO REMISION (Numero, Sucursal, Status) VALUES (?, ?, ?)", {9, "002", 0});
    exec("INSERT INTO REMISION (Numero, Sucursal, Status) VALUES (?, ?, ?)", {12, "002", 0});
    exec("INSERT INTO RECEPCION (Numero, Sucursal, Status) VALUES (?, ?, ?)", {4, "001", 0});
    const char* line = "INSERT INTO MOVRECEPCION (Numero, NumeroCaja, Item, CodigoBarra, Cantidad) "
                       "VALUES (?, ?, ?, ?, ?)";
    exec(line, {4, 2, 1, "7501", "1"});
    exec(line, {4, 10, 2, "7502", "1"});
    exec(line, {5, 30, 1, "7502", "1"});
    EXPECT_EQ(lastDocumentNumber(db(), BoxDocument::Remission), 12);
    EXPECT_EQ(lastDocumentNumber(db(), BoxDocument::Reception), 4);
    EXPECT_EQ(lastBoxNumber(db(), BoxDocument::Reception, 4), 10);
    EXPECT_EQ(lastBoxNumber(db(), BoxDocument::Remission, 12), 0);
    EXPECT_TRUE(documentHasLines(db(), BoxDocument::Reception, 4));
    EXPECT_FALSE(documentHasLines(db(), BoxDocument::Remission, 12));
}

TEST_F(Numbering, CounterCorrectionFollowsThePrinterAndNeverLowersReturns) {
    EXPECT_EQ(readSalesCounters(db(), 1, "CAJA02").lastInvoice, 300);
    EXPECT_EQ(readSalesCounters(db(), 2, "CAJA02").lastReturn, 40);
    EXPECT_EQ(readSalesCounters(db(), 1, "CAJA99").lastInvoice, 0);

    try {
        correctSalesCounters(db(), 1, "CAJA01", {120, 7}, 119);
        FAIL() << "a counter that disagrees with the printer was accepted";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("El numero de factura no concuerda con el numero de "
                                           "factura de la impresora...!"));
    }
    try {
        correctSalesCounters(db(), 1, "CAJA01", {120, 6}, 120);
        FAIL() << "a lower return counter was accepted";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("El numero de devolución nuevo debe ser mayor o igual "
                                           "al numero actual...!"));
    }
    EXPECT_EQ(counter("CAJAS", "UltimaFactura", "CAJA01"), 100);

    correctSalesCounters(db(), 1, "CAJA01", {120, 7}, 120); // an equal return number is fine
    EXPECT_EQ(counter("CAJAS", "UltimaFactura", "CAJA01"), 120);
    EXPECT_EQ(counter("CAJAS", "UltimaFactura", "CAJA02"), 300);
    EXPECT_EQ(counter("PARAMETROS", "UltimaFactura"), 500);

    correctSalesCounters(db(), 2, "CAJA01", {600, 45}, 600);
    EXPECT_EQ(counter("PARAMETROS", "UltimaFactura"), 600);
    EXPECT_EQ(counter("PARAMETROS", "UltimaDevolucion"), 45);
}
