// The exchange rate screen, and the monetary reconversion as the register's opening runs it.
#include "pos/cash/cash_fixture.h"

#include "common/rate/rate_screen.h"
#include "pos/cash/opening_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/session/session_context.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace orvo;

namespace {

template <class T> T* child(QWidget& w, const char* name) {
    T* c = w.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(c, nullptr) << name;
    return c;
}

void type(QWidget& w, const char* name, const QString& text) {
    auto* e = child<QLineEdit>(w, name);
    e->selectAll();
    QTest::keyClicks(e, text);
}

class RateScreenTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO INVENTARIO (CodigoBarra, Referencia, CodigoMarca, PrecioDetal, "
             "PrecioMayor, PrecioAfiliado, PrecioPromocion) VALUES ('A1', 'R1', 'M1', 73, 60, "
             "70, 0)");
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES ('ActTasa', '01', "
             "'TRUE'), ('ImpTasa', '01', 'TRUE')");
        common::rate::registerRateScreens(
            {[this] { return db(); }, [this] { return m_home.path(); }});
    }
    std::unique_ptr<QWidget> open(const char* name) {
        std::unique_ptr<QWidget> w(shell::ScreenRegistry::instance().create(name, nullptr));
        EXPECT_TRUE(w) << name;
        if (w)
            w->show();
        return w;
    }
    QTemporaryDir m_home;
};

} // namespace

TEST_F(RateScreenTest, ATypedRateRepricesTheCatalogueAndJoinsThePastRates) {
    test::ScriptedDialogs dialogs;
    {
        // Nothing registered yet: the reminder.
        auto screen = open("frmRegistrarTasaCambio");
        EXPECT_EQ(dialogs.lastText(),
                  "Por favor asegurese de tener la tasa de cambio registrada correctamente.");
    }
    exec("INSERT INTO TASA_CAMBIO (Fecha, Valor) VALUES (?, 36.5)",
         {QDateTime::currentDateTime().addDays(-1)});
    dialogs.clear();
    auto screen = open("frmRegistrarTasaCambio");
    EXPECT_EQ(screen->objectName(), "frmRegistrarTasaCambio");
    EXPECT_TRUE(dialogs.messages().isEmpty());
    // The rate is typed first; the store's switches come after the buttons.
    screen->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(screen.get()));
    EXPECT_EQ(QApplication::focusWidget(), child<QLineEdit>(*screen, "txtTasaCambio"));
    EXPECT_EQ(child<QLineEdit>(*screen, "txtTasaCambio")->nextInFocusChain(),
              child<QDateEdit>(*screen, "dtpFecha"));
    auto* rates = child<QTableWidget>(*screen, "grdTasas");
    EXPECT_EQ(rates->rowCount(), 1);
    EXPECT_TRUE(child<QLabel>(*screen, "lblTasaActual")->text().startsWith("36,50"));

    // The switches are kept in TABLA_VALORES as they are ticked.
    auto* update = child<QCheckBox>(*screen, "chkActTasa");
    ASSERT_TRUE(update->isChecked());
    EXPECT_FALSE(child<QCheckBox>(*screen, "chkExpTasa")->isChecked());
    QTest::mouseClick(update, Qt::LeftButton);
    EXPECT_EQ(scalar("SELECT Descripcion FROM TABLA_VALORES WHERE IdTabla = 'ActTasa'").toString(),
              "FALSE");
    QTest::mouseClick(update, Qt::LeftButton);
    EXPECT_EQ(scalar("SELECT Descripcion FROM TABLA_VALORES WHERE IdTabla = 'ActTasa'").toString(),
              "TRUE");

    type(*screen, "txtTasaCambio", "cuarenta");
    QTest::mouseClick(child<QPushButton>(*screen, "cmdRegistrar"), Qt::LeftButton);
    EXPECT_EQ(dialogs.lastText(), "Introduzca una tasa de cambio válida...!");

    // Keyboard only: the rate, Enter, the day (today), Enter.
    type(*screen, "txtTasaCambio", "40,15");
    dialogs.expectQuestion("Desea registrar la tasa de cambio 40,15...?", true);
    QTest::keyClick(child<QLineEdit>(*screen, "txtTasaCambio"), Qt::Key_Return);
    QTest::keyClick(child<QDateEdit>(*screen, "dtpFecha"), Qt::Key_Return);
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(dialogs.lastText(), "Tasa de cambio 40,15 registrada...!\nSe actualizaron los "
                                  "precios de 1 artículos (tasa anterior 36,50).");
    EXPECT_EQ(rates->rowCount(), 2);
    EXPECT_EQ(rates->item(0, 1)->text(), "40,15");
    // 73 / 36.5 * 40.15
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PrecioDetal FROM INVENTARIO")),
              Decimal(8030) / 100);
}

TEST_F(RateScreenTest, TheRateReceivedFromHeadOfficeIsLoadedFromItsButton) {
    test::ScriptedDialogs dialogs;
    exec("INSERT INTO TASA_CAMBIO (Fecha, Valor) VALUES (?, 36.5)",
         {QDateTime::currentDateTime().addDays(-1)});
    {
        auto screen = open("frmRegistrarTasaCambio");
        EXPECT_FALSE(child<QPushButton>(*screen, "cmdCargarRecibida")->isEnabled());
    }
    QDir().mkpath(m_home.filePath("Recibe"));
    QFile f(m_home.filePath("Recibe/TasaCambio.txt"));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("36.5\r\n");
    f.close();
    auto screen = open("frmRegistrarTasaCambio");
    auto* load = child<QPushButton>(*screen, "cmdCargarRecibida");
    ASSERT_TRUE(load->isEnabled());
    QTest::mouseClick(load, Qt::LeftButton);
    EXPECT_TRUE(dialogs.lastText().startsWith("Tasa de cambio 36,50 registrada...!"));
    EXPECT_FALSE(load->isEnabled());
    EXPECT_FALSE(QFile::exists(m_home.filePath("Recibe/TasaCambio.txt")));
    EXPECT_EQ(count("TASA_CAMBIO"), 2);
}

namespace {

class OpeningReconversion : public test::CashTest {};

} // namespace

TEST_F(OpeningReconversion, TheOpeningDividesEveryAmountAfterItsWarningsAndThenOpens) {
    exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES ('ReCon', '01', ?), "
         "('ReVal', '01', '1000')",
         {QDate::currentDate().toString("dd/MM/yyyy")});
    exec("INSERT INTO INVENTARIO (CodigoBarra, Referencia, CodigoMarca, PrecioDetal, "
         "CostoPromedio) VALUES ('A1', 'R1', 'M1', 125000, 61000.5)");
    exec("INSERT INTO SALIDASCAJA (Numero, Serie, Fecha, Monto) VALUES (1, ?, ?, 2500000)",
         {kSerial, QDateTime::currentDateTime().addDays(-3)});
    shell::SessionContext session;
    session.serial = kSerial;
    session.registerConfigured = true;
    session.controlFactura = 1;
    session.userCode = "ANA";

    test::ScriptedDialogs dialogs;
    pos::cash::OpeningScreen opening(db(), session, *m_printer);
    opening.show();
    QSignalSpy done(&opening, &pos::cash::OpeningScreen::openingFinished);
    QTest::mouseClick(child<QPushButton>(opening, "cmdAperturar"), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(done.count(), 1, 60000);
    EXPECT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(dialogs.texts(),
              QStringList({"Esta a punto de iniciar el proceso de reconversion monetaria. Este "
                           "proceso durara varios minutos.",
                           "Este es un proceso delicado, por favor asegurese de tener el sistema "
                           "abierto solo en la caja principal.",
                           "La duracion del proceso depende del largo de la historia de la "
                           "sucursal, Por favor, sea paciente.",
                           "El proceso ha finalizado satisfactoriamente. Se procedera con la "
                           "apertura.",
                           "Por favor verifique los precios, ante cualquier anomalia comuniquese "
                           "con Sistemas"}));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PrecioDetal FROM INVENTARIO")), Decimal(125));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT CostoPromedio FROM INVENTARIO")),
              Decimal::fromString(u"61.0005"));
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Monto FROM SALIDASCAJA")), Decimal(25));
    EXPECT_EQ(
        Decimal::fromVariant(scalar("SELECT FondoCaja FROM CAJAS WHERE Serie = ?", {kSerial})),
        Decimal::fromString(u"0.1"));
    EXPECT_EQ(count("DIARIOCAJA", "Serie = ?", {kSerial}), 1);
    EXPECT_EQ(scalar("SELECT Descripcion FROM TABLA_VALORES WHERE IdTabla = 'ReRea'").toString(),
              "1");

    // The next opening (after deleting this one) does not divide again.
    dialogs.clear();
    exec("DELETE FROM DIARIOCAJA");
    QTest::mouseClick(child<QPushButton>(opening, "cmdAperturar"), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(done.count(), 2, 60000);
    EXPECT_TRUE(dialogs.texts().isEmpty()) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT PrecioDetal FROM INVENTARIO")), Decimal(125));
}
