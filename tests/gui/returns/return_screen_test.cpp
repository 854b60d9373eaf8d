// The returns screen driven by its controls, on paper (a register without fiscal printer).
#include "pos/returns/exchange_screen.h"
#include "pos/returns/return_screen.h"

#include "common/db/sql.h"
#include "pos/payments/payments_screen.h"
#include "pos/sale/sale.h"
#include "shell/demo/demo_store.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

using namespace orvo;

namespace {

class ReturnScreenTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        shell::demo::seedDemoStore(db());
        exec("UPDATE PARAMETROS SET UsaImpresoraFiscal = 0, ItemsPorFactura = 0");
        exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, FacturaFinal, Status, "
             "Acumulado) VALUES (?, ?, 1, 0, 0, 0, 0)",
             {serie, db::dayStart(db::serverNow(db()).date())});
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
             "CodigoColor, TipoImpuesto, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
             "PrecioPromocion, Existencia, CostoPromedio, Tipo, Status) VALUES ('T0001', "
             "'CAMISA PRUEBA T:S', 'TST-1', '001', 'S', '001', 1, 100, 80, 90, 0, 0, 10, 50.5, 0, "
             "1)");
        ctx.serial = serie;
        shell::loadSession(db(), ctx);
        ctx.userCode = QStringLiteral("CAJERO1");

        pos::sale::SaleDraft draft = pos::sale::newDraft(db(), ctx);
        draft.setClient(*pos::sale::findClient(db(), QStringLiteral("V12345678")));
        draft.setSeller(pos::sale::findSeller(db(), QStringLiteral("003")));
        const auto found = pos::sale::lookupArticles(db(), QStringLiteral("T0001"));
        pos::sale::addArticle(draft, found.at(0), Decimal(3));
        pos::payments::PaymentRow cash;
        cash.way = QStringLiteral("EFECTIVO");
        cash.amount = draft.totals().total;
        draft.setPayments({cash}, draft.totals().total, Decimal(36));
        pos::sale::acceptSale(db(), ctx, draft, nullptr);
    }

    std::unique_ptr<pos::returns::ReturnScreen> open() {
        auto s = std::make_unique<pos::returns::ReturnScreen>(db(), ctx, nullptr);
        s->setPaperPrinter([this](const QString& html, bool, long long) {
            if (!paperWorks)
                return false;
            papers << html;
            return true;
        });
        s->show();
        return s;
    }
    template <class T> static T* find(QWidget& screen, const char* name) {
        T* w = screen.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    static void type(QWidget& screen, const char* name, const QString& text) {
        auto* e = find<QLineEdit>(screen, name);
        e->selectAll();
        QTest::keyClick(e, Qt::Key_Backspace);
        QTest::keyClicks(e, text);
        QTest::keyClick(e, Qt::Key_Return);
    }

    QString serie = QString::fromLatin1(shell::demo::kDemoSerial);
    shell::SessionContext ctx;
    QStringList papers;
    bool paperWorks = true;
};

} // namespace

TEST_F(ReturnScreenTest, KeysAPartialReturnDeletesALineAndSavesTheRest) {
    test::ScriptedDialogs dialogs;
    auto s = open();
    EXPECT_EQ(s->objectName(), "frmDevolucion");
    EXPECT_EQ(s->windowTitle(), "Devolución - (Devolución Nº 1)");

    type(*s, "TxtFactura", "7");
    EXPECT_EQ(dialogs.lastText(), "La factura no se encuentra registrada en esta caja...");
    type(*s, "TxtFactura", "1");
    EXPECT_TRUE(find<QLabel>(*s, "lblTipoCliente")->text().startsWith("CLIENTE TIPO : "));

    auto* grid = find<QTableWidget>(*s, "SpreadDevolucion");
    type(*s, "txtCodigo", "T0001");
    type(*s, "txtCantidad", "5");
    EXPECT_EQ(dialogs.lastText(), "La cantidad a devolver no puede ser mayor a 3...!");
    EXPECT_EQ(grid->rowCount(), 0);
    type(*s, "txtCantidad", "2");
    ASSERT_EQ(grid->rowCount(), 1);
    EXPECT_EQ(grid->item(0, 2)->text(), "2");

    grid->setCurrentCell(0, 0);
    dialogs.expectQuestion("Desea eliminar el item seleccionado?", true);
    QTest::mouseClick(find<QPushButton>(*s, "cmdEliminar"), Qt::LeftButton);
    EXPECT_EQ(grid->rowCount(), 0);
    EXPECT_EQ(dialogs.messages().last().title, "Eliminar item");

    QTest::mouseClick(find<QPushButton>(*s, "cmdAceptar"), Qt::LeftButton);
    EXPECT_EQ(dialogs.lastText(), "Debe especificar al menos un artículo");
    EXPECT_EQ(count("DEVVENTAS"), 0);

    QTest::mouseClick(find<QPushButton>(*s, "cmdDevTotal"), Qt::LeftButton);
    ASSERT_EQ(grid->rowCount(), 1);
    EXPECT_EQ(grid->item(0, 2)->text(), "3");
    QTest::mouseClick(find<QPushButton>(*s, "cmdAceptar"), Qt::LeftButton);
    EXPECT_EQ(count("DEVVENTAS"), 1);
    EXPECT_EQ(Decimal::fromVariant(
                  scalar("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0001'")),
              Decimal(10));
    ASSERT_EQ(papers.size(), 1);
    EXPECT_TRUE(papers.at(0).contains("CAMISA PRUEBA T:S"));
    EXPECT_FALSE(papers.at(0).contains("CONTINGENCIA"));
    EXPECT_EQ(s->windowTitle(), "Devolución - (Devolución Nº 2)");

    type(*s, "TxtFactura", "1");
    EXPECT_EQ(dialogs.lastText(), "La factura fue devuelta en su totalidad...");
}

TEST_F(ReturnScreenTest, ACreditNoteThatDidNotPrintGoesOutBeforeTheNextReturn) {
    test::ScriptedDialogs dialogs;
    auto s = open();
    const auto returnOne = [&] {
        type(*s, "TxtFactura", "1");
        type(*s, "txtCodigo", "T0001");
        type(*s, "txtCantidad", "1");
        QTest::mouseClick(find<QPushButton>(*s, "cmdAceptar"), Qt::LeftButton);
    };
    const auto printed = [&](int number) {
        return scalar("SELECT Impresa FROM DEVVENTAS WHERE NumeroDevolucion = ? AND Serie = ?",
                      {number, serie})
            .toInt();
    };

    paperWorks = false;
    returnOne();
    EXPECT_TRUE(dialogs.texts().contains("La devolución 1 fue guardada pero no se pudo imprimir: "
                                         "Debe configurar la impresora para facturar...!"))
        << dialogs.texts().join(" | ").toStdString();
    EXPECT_EQ(count("DEVVENTAS"), 1);
    EXPECT_EQ(printed(1), 0);

    // Still no paper: the next return is not saved while the first one waits.
    returnOne();
    EXPECT_EQ(dialogs.lastText(), "La devolución 1 fue guardada pero no se pudo imprimir: Debe "
                                  "configurar la impresora para facturar...!");
    EXPECT_EQ(count("DEVVENTAS"), 1);
    EXPECT_EQ(find<QTableWidget>(*s, "SpreadDevolucion")->rowCount(), 1);

    paperWorks = true;
    dialogs.clear();
    QTest::mouseClick(find<QPushButton>(*s, "cmdAceptar"), Qt::LeftButton);
    for (const auto& m : dialogs.messages())
        EXPECT_FALSE(m.text.contains("no se pudo imprimir")) << m.text.toStdString();
    ASSERT_EQ(papers.size(), 2);
    EXPECT_TRUE(papers.at(0).contains("NOTA DE CREDITO: 00000001"));
    EXPECT_TRUE(papers.at(1).contains("NOTA DE CREDITO: 00000002"));
    EXPECT_EQ(count("DEVVENTAS"), 2);
    EXPECT_EQ(printed(1), 1);
    EXPECT_EQ(printed(2), 1);
    EXPECT_EQ(s->windowTitle(), "Devolución - (Devolución Nº 3)");

    // Both printed: the third return prints only its own.
    returnOne();
    EXPECT_EQ(papers.size(), 3);
    EXPECT_TRUE(papers.at(2).contains("NOTA DE CREDITO: 00000003"));
}

TEST_F(ReturnScreenTest, TheExchangeShowsTheDifferenceAndWritesNothingUntilItIsPaid) {
    test::ScriptedDialogs dialogs;
    pos::returns::ExchangeScreen s(db(), ctx, nullptr);
    s.show();
    EXPECT_EQ(s.objectName(), "frmCambiosDeMercancia");
    type(s, "TxtFactura", "9");
    EXPECT_EQ(dialogs.lastText(), "La factura no se encuentra registrada en esta caja...!");
    type(s, "TxtFactura", "1");
    QTest::mouseClick(find<QPushButton>(s, "cmdDevTotal"), Qt::LeftButton);
    EXPECT_EQ(find<QTableWidget>(s, "SpreadDevolucion")->rowCount(), 1);
    type(s, "txtArticulo", "4*T0001");
    ASSERT_EQ(find<QTableWidget>(s, "SpreadFacturacion")->rowCount(), 1);
    EXPECT_EQ(find<QLabel>(s, "lblTotalDevuelto")->text(), "Devuelve: 348,00");
    EXPECT_EQ(find<QLabel>(s, "lblTotal")->text(), "Lleva: 464,00");
    EXPECT_EQ(find<QLabel>(s, "lblDiferencia")->text(), "A pagar: 116,00");

    // Aceptar asks for the difference first; left unpaid, nothing is written.
    bool asked = false;
    QTimer::singleShot(0, [&] {
        auto* pay = qobject_cast<pos::payments::PaymentsScreen*>(QApplication::activeModalWidget());
        ASSERT_NE(pay, nullptr);
        asked = true;
        EXPECT_EQ(pay->findChild<QLabel*>("lblTotalFactura")->text(), "116,00");
        pay->reject();
    });
    QTest::mouseClick(find<QPushButton>(s, "cmdAceptar"), Qt::LeftButton);
    EXPECT_TRUE(asked);
    EXPECT_EQ(count("DEVVENTAS"), 0);
    EXPECT_EQ(count("VENTAS"), 1);

    // Taking less than what comes back leaves an amount to hand back.
    type(s, "txtArticulo", "T0001");
    EXPECT_EQ(find<QLabel>(s, "lblDiferencia")->text(), "A pagar: 232,00");
    find<QTableWidget>(s, "SpreadFacturacion")->setFocus();
    find<QTableWidget>(s, "SpreadFacturacion")->setCurrentCell(0, 0);
    dialogs.expectQuestion("Desea eliminar el item seleccionado?", true);
    QTest::mouseClick(find<QPushButton>(s, "cmdEliminar"), Qt::LeftButton);
    EXPECT_EQ(find<QLabel>(s, "lblDiferencia")->text(), "A devolver: 232,00");
}
