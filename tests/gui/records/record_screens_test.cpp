#include "common/db/sql.h"
#include "common/grid_ui/grid_view.h"
#include "shell/record_form/master_data.h"
#include "shell/record_form/record_toolbar.h"
#include "shell/record_form/refusing_trigger.h"
#include "shell/record_form/table_record_screen.h"
#include "shell/users/user_screens.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QRadioButton>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <gtest/gtest.h>
#include <memory>

using namespace orvo;
using namespace orvo::shell;
using Action = RecordScreen::Action;

namespace {

class RecordScreensGui : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        m_dialogs = std::make_unique<test::ScriptedDialogs>();
        m_toolbar = std::make_unique<RecordToolbar>();
        m_toolbar->show();
    }
    void TearDown() override {
        EXPECT_TRUE(m_dialogs->allAnswered());
        m_toolbar->setActiveScreen(nullptr);
        m_screen.reset();
        m_toolbar.reset();
        m_dialogs.reset();
        DbTest::TearDown();
    }
    TableRecordScreen* open(const QString& formName) {
        auto* screen = new TableRecordScreen(*masterTable(formName), db(), "ROOT");
        m_screen.reset(screen);
        m_screen->show();
        m_toolbar->setActiveScreen(screen);
        return screen;
    }
    void press(const QString& key) {
        auto* button = m_toolbar->findChild<QToolButton*>("cmd" + key);
        ASSERT_NE(button, nullptr) << key.toStdString();
        ASSERT_TRUE(button->isEnabled()) << key.toStdString() << " is disabled";
        QTest::mouseClick(button, Qt::LeftButton);
    }
    bool enabled(const QString& key) {
        return m_toolbar->findChild<QToolButton*>("cmd" + key)->isEnabled();
    }
    QLineEdit* edit(const QString& name) {
        auto* e = m_screen->findChild<QLineEdit*>(name);
        EXPECT_NE(e, nullptr) << name.toStdString();
        return e;
    }
    void type(const QString& name, const QString& text) {
        QLineEdit* e = edit(name);
        e->setFocus();
        e->selectAll();
        QTest::keyClicks(e, text);
        QTest::keyClick(e, Qt::Key_Return);
    }

    // Create, modify, search and delete through the toolbar, on a code + name + status catalogue.
    void exerciseCatalogue(const QString& formName, const QString& table) {
        open(formName);
        for (const char* key : {"Modificar", "Eliminar", "Buscar", "Imprimir", "Guardar"})
            EXPECT_FALSE(enabled(key)) << key;
        EXPECT_TRUE(enabled("Nuevo"));

        press("Nuevo");
        EXPECT_EQ(edit("txtCodigo")->text(), "001"); // first code of an empty table
        EXPECT_TRUE(m_screen->property("orvoEditing").toBool());
        EXPECT_FALSE(enabled("Nuevo"));
        type("txtNombre", "ROJO");
        press("Guardar");
        EXPECT_EQ(count(table, "Codigo = '001' AND Nombre = 'ROJO' AND Status = 1"), 1);
        EXPECT_FALSE(m_screen->property("orvoEditing").toBool());

        press("Nuevo");
        EXPECT_EQ(edit("txtCodigo")->text(), "002");
        type("txtNombre", "AZUL");
        press("Guardar");
        EXPECT_EQ(count(table), 2);
        EXPECT_EQ(edit("txtCodigo")->text(), "002"); // the saved row is shown

        press("Modificar");
        EXPECT_FALSE(edit("txtCodigo")->isEnabled()); // the key stays as it is
        EXPECT_TRUE(edit("txtNombre")->isEnabled());
        type("txtNombre", "AZUL CLARO");
        QTest::mouseClick(m_screen->findChild<QRadioButton*>("OptStatusInactivo"), Qt::LeftButton);
        press("Guardar");
        EXPECT_EQ(count(table, "Codigo = '002' AND Nombre = 'AZUL CLARO' AND Status = 0"), 1);

        press("Buscar");
        EXPECT_TRUE(edit("txtCodigo")->isEnabled());
        EXPECT_TRUE(edit("txtNombre")->text().isEmpty());
        type("txtNombre", "ROJO");
        press("Buscar");
        EXPECT_EQ(edit("txtCodigo")->text(), "001");
        EXPECT_EQ(edit("txtNombre")->text(), "ROJO");

        m_dialogs->expectQuestion("¿Desea eliminar el registro actual?", true);
        press("Eliminar");
        ASSERT_GE(m_dialogs->messages().size(), 2);
        EXPECT_EQ(m_dialogs->messages()[m_dialogs->messages().size() - 2].title,
                  "Eliminar " + m_screen->windowTitle());
        EXPECT_EQ(m_dialogs->lastText(), "Registro eliminado con exito!");
        EXPECT_EQ(count(table, "Codigo = '001'"), 0);
        EXPECT_EQ(m_screen->recordCount(), 1); // requeried
        EXPECT_EQ(edit("txtCodigo")->text(), "002");
    }

    std::unique_ptr<test::ScriptedDialogs> m_dialogs;
    std::unique_ptr<RecordToolbar> m_toolbar;
    std::unique_ptr<RecordScreen> m_screen;
};

} // namespace

TEST_F(RecordScreensGui, ColourThroughTheToolbar) {
    exerciseCatalogue("frmColores", "COLORES");
}

TEST_F(RecordScreensGui, BrandThroughTheToolbar) {
    exerciseCatalogue("frmMarcas", "MARCAS");
}

TEST_F(RecordScreensGui, RefusedDeleteShowsTheDatabaseErrorAndKeepsTheRecord) {
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('001', 'ROJO', 1)");
    test::refuseDeleteOf(db(), "COLORES", "Codigo", "001", "Color usado en articulos");
    open("frmColores");
    m_dialogs->expectQuestion("¿Desea eliminar el registro actual?", true);
    press("Eliminar");
    const auto& msgs = m_dialogs->messages();
    ASSERT_EQ(msgs.size(), 3);
    EXPECT_EQ(msgs[1].kind, "error");
    EXPECT_TRUE(msgs[1].text.contains("Color usado en articulos"));
    EXPECT_TRUE(msgs[1].text.contains('\n')); // number, then description
    EXPECT_EQ(msgs[2].text, "Registro no se puede eliminar!");
    EXPECT_EQ(msgs[2].title, "Información");
    EXPECT_EQ(count("COLORES"), 1);
    EXPECT_EQ(edit("txtCodigo")->text(), "001");

    // Answering No deletes nothing and says nothing more.
    m_dialogs->clear();
    m_dialogs->expectQuestion("¿Desea eliminar el registro actual?", false);
    press("Eliminar");
    EXPECT_EQ(m_dialogs->messages().size(), 1);
}

TEST_F(RecordScreensGui, AColourOfAnArticleIsNotDeletedAndSaysSoOnce) {
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('001', 'ROJO', 1)");
    exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, CodigoColor) VALUES ('7591', 'CAMISA', "
         "'001')");
    open("frmColores");
    m_dialogs->expectQuestion("¿Desea eliminar el registro actual?", true);
    press("Eliminar");
    ASSERT_EQ(m_dialogs->texts(), QStringList({"¿Desea eliminar el registro actual?",
                                               "Registro no se puede eliminar!"}));
    EXPECT_EQ(m_dialogs->messages().last().title, "Información");
    EXPECT_EQ(count("COLORES"), 1);

    // Once the article is gone the colour goes too.
    exec("DELETE FROM INVENTARIO");
    m_dialogs->clear();
    m_dialogs->expectQuestion("¿Desea eliminar el registro actual?", true);
    press("Eliminar");
    EXPECT_EQ(m_dialogs->lastText(), "Registro eliminado con exito!");
    EXPECT_EQ(count("COLORES"), 0);
}

TEST_F(RecordScreensGui, FailedSaveKeepsTheModeAndWhatWasTyped) {
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('001', 'ROJO', 1)");
    open("frmColores");
    press("Nuevo");
    EXPECT_EQ(edit("txtCodigo")->text(), "002");
    type("txtCodigo", "001");
    type("txtNombre", "OTRO ROJO");
    press("Guardar");
    EXPECT_EQ(m_dialogs->lastText(), "Registro duplicado!");
    EXPECT_EQ(m_screen->mode(), RecordScreen::Mode::Adding);
    EXPECT_EQ(edit("txtNombre")->text(), "OTRO ROJO");

    type("txtCodigo", "003");
    edit("txtNombre")->clear();
    press("Guardar");
    EXPECT_EQ(m_dialogs->lastText(), "¡Debe introducir nombre!");
    press("Cancelar");
    EXPECT_EQ(m_screen->mode(), RecordScreen::Mode::Browsing);
    EXPECT_FALSE(edit("txtNombre")->isEnabled());
    EXPECT_EQ(edit("txtCodigo")->text(), "001");
    EXPECT_EQ(count("COLORES"), 1);
}

TEST_F(RecordScreensGui, CataloguePrintsToPdf) {
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('001', 'ROJO', 1)");
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('002', 'AZUL', 0)");
    open("frmColores");
    const QString pdf = QDir(test::processTempDir()).filePath("colores.pdf");
    QFile::remove(pdf);
    m_dialogs->expectPrinter(pdf);
    press("Imprimir");
    QFile f(pdf);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_TRUE(f.read(5).startsWith("%PDF-"));
    EXPECT_GT(f.size(), 1000);
    const QString html = static_cast<TableRecordScreen*>(m_screen.get())->catalogueHtml();
    EXPECT_TRUE(html.contains("AZUL"));
    EXPECT_TRUE(html.contains("Inactivo"));
}

TEST_F(RecordScreensGui, SalirAsksWhileAdding) {
    open("frmColores");
    press("Nuevo");
    m_dialogs->expectQuestion("Esta incluyendo un nuevo registro en Colores ¿Desea cancelar la "
                              "operación?",
                              false);
    press("Salir");
    EXPECT_TRUE(m_screen->isVisible());
    EXPECT_EQ(m_screen->mode(), RecordScreen::Mode::Adding);
    m_dialogs->expectQuestion("Esta incluyendo un nuevo registro en Colores", true);
    press("Salir");
    EXPECT_FALSE(m_screen->isVisible());
    EXPECT_EQ(m_toolbar->activeScreen(), nullptr);
}

TEST_F(RecordScreensGui, EveryMasterScreenOpensOnAnEmptyDatabase) {
    for (const RecordTable& t : masterTables()) {
        TableRecordScreen screen(t, db(), "ROOT");
        EXPECT_EQ(screen.objectName(), t.formName);
        EXPECT_EQ(screen.recordCount(), 0) << t.formName.toStdString();
        EXPECT_TRUE(m_dialogs->messages().isEmpty())
            << t.formName.toStdString() << ": " << m_dialogs->lastText().toStdString();
    }
}

TEST_F(RecordScreensGui, UserScreenOffersOnlyWhatTheAdministratorMayGive) {
    exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES ('SISTEMAS', 'SISTEMAS')");
    exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES ('ADMI', 'ADMINISTRADOR')");
    exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES ('CAJE', 'CAJERO')");
    exec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES ('JEFE', "
         "'Jefe', '', 1)");
    exec("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES ('JEFE', 'ADMI')");
    m_screen = std::make_unique<users::UserScreen>(db(), "JEFE");
    m_screen->show();
    m_toolbar->setActiveScreen(m_screen.get());
    auto* groups = m_screen->findChild<QComboBox*>("cboGrupo");
    ASSERT_NE(groups, nullptr);
    EXPECT_EQ(groups->count(), 2);
    EXPECT_EQ(groups->findText("SISTEMAS"), -1);

    press("Nuevo");
    type("txtCodigo", "ANA");
    type("txtNombre", "Ana Perez");
    type("txtClave", "abc");
    type("TxtVerificarClave", "abd");
    groups->setCurrentIndex(groups->findText("CAJERO"));
    press("Guardar");
    EXPECT_EQ(m_dialogs->lastText(), "¡Confirmación de clave errada!");
    EXPECT_EQ(count("USUARIOS", "CodUsuario = 'ANA'"), 0);
    type("TxtVerificarClave", "abc");
    press("Guardar");
    EXPECT_EQ(count("USUARIOGRUPO", "CodUsuario = 'ANA' AND CodGrupo = 'CAJE'"), 1);
    EXPECT_EQ(m_screen->recordCount(), 2);
}

TEST_F(RecordScreensGui, GroupScreenGrantsMenuNodes) {
    exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES ('SISTEMAS', 'SISTEMAS')");
    exec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES ('ROOT', "
         "'Root', '', 1)");
    exec("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES ('ROOT', 'SISTEMAS')");
    exec("INSERT INTO SEG (Nivel, NumNodo, NodoPadre, CodNodo, NomNodo, Orden, EsPadre) VALUES "
         "(1, 1, '', 'N1', 'Ventas', 1, 0)");
    exec("INSERT INTO SEG (Nivel, NumNodo, NodoPadre, CodNodo, NomNodo, Orden, EsPadre) VALUES "
         "(1, 2, '', 'N2', 'Compras', 2, 0)");
    auto* screen = new users::GroupScreen(db(), "ROOT");
    m_screen.reset(screen);
    screen->show();
    m_toolbar->setActiveScreen(screen);
    EXPECT_EQ(screen->objectName(), "FrmGrupoUsuario");
    EXPECT_FALSE(screen->grants()->isEnabled());

    press("Nuevo");
    type("txtCodGrupo", "BODEGA");
    type("txtNombreGrupo", "BODEGUEROS");
    ASSERT_EQ(screen->grants()->gridModel()->rowCount(), 2);
    EXPECT_TRUE(screen->grants()->isEnabled());
    const QModelIndex ver = screen->grants()->gridModel()->index(1, 2);
    screen->grants()->gridModel()->setData(ver, Qt::Checked, Qt::CheckStateRole);
    press("Guardar");
    EXPECT_EQ(count("GRUPOSEG", "CodGrupo = 'BODEGA'"), 1);
    EXPECT_EQ(count("GRUPOSEG", "CodGrupo = 'BODEGA' AND CodNodo = 'N2' AND Ver = 'S'"), 1);
    EXPECT_EQ(edit("txtCodGrupo")->text(), "BODEGA");
    EXPECT_EQ(screen->grants()->gridModel()->value(1, 2).toInt(), 1);
}

TEST_F(RecordScreensGui, ClientWithTypesDatesFlagsAndPercent) {
    exec("INSERT INTO TIPOSCLIENTE (Codigo, Descripcion, Status) VALUES ('01', 'DETAL', 1)");
    exec("INSERT INTO TIPOSCLIENTE (Codigo, Descripcion, Status) VALUES ('02', 'MAYOR', 1)");
    exec("INSERT INTO TIPOSCLIENTE (Codigo, Descripcion, Status) VALUES ('03', 'VIEJO', 0)");
    open("frmClientes");
    auto* kind = m_screen->findChild<QComboBox*>("cboTipo");
    ASSERT_NE(kind, nullptr);
    EXPECT_EQ(kind->count(), 2); // only active types are offered
    press("Nuevo");
    EXPECT_TRUE(edit("txtCodigo")->text().isEmpty()); // clients are keyed by their RIF
    type("txtCodigo", "J-12345678-9");
    type("txtNombre", "COMERCIAL O'HARA");
    type("txtPorcentajeUtilidad", "12,5");
    kind->setCurrentIndex(kind->findData("02"));
    m_screen->findChild<QDateEdit*>("dtpFechaIngreso")->setDate(QDate(2024, 2, 29));
    m_screen->findChild<QCheckBox*>("chkCatalogo")->setChecked(true);
    press("Guardar");
    ASSERT_EQ(count("CLIENTES"), 1) << m_dialogs->lastText().toStdString();
    db::Sql q(db(), "SELECT Nombre, Tipo, Catalogo, Status, PorcentajeUtilidad, FechaIngreso, "
                    "TipoContribuyente FROM CLIENTES WHERE Codigo = ?");
    q.bind(QString("J-12345678-9")).exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.text("Nombre"), "COMERCIAL O'HARA");
    EXPECT_EQ(q.text("Tipo"), "02");
    EXPECT_EQ(q.integer("Catalogo"), 1);
    EXPECT_EQ(q.integer("Status"), 1);
    EXPECT_EQ(q.decimal("PorcentajeUtilidad"), Decimal::fromString(u"12.5"));
    EXPECT_EQ(q.dateTime("FechaIngreso").date(), QDate(2024, 2, 29));
    EXPECT_EQ(q.text("TipoContribuyente"), "");

    // Shown back as stored.
    press("Modificar");
    EXPECT_EQ(edit("txtPorcentajeUtilidad")->text(), "12.50");
    EXPECT_EQ(kind->currentData().toString(), "02");
    press("Cancelar");
}

TEST_F(RecordScreensGui, AWorkersPositionIsFoundByTypingPartOfItsName) {
    for (const auto& [code, name] : QList<QPair<QString, QString>>{
             {"001", "GERENTE"}, {"002", "CAJERO"}, {"003", "VENDEDOR"}, {"004", "VIGILANTE"}})
        exec("INSERT INTO CARGOS (Codigo, Nombre, Status) VALUES (?, ?, 1)", {code, name});
    open("frmTrabajadores");
    // Leaving the field is what takes the choice: the screen must have the keyboard.
    m_screen->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_screen.get()));
    auto* position = m_screen->findChild<QComboBox*>("cboCargo");
    ASSERT_NE(position, nullptr);
    press("Nuevo");
    type("txtCedula", "V-12345678");
    type("txtNombre", "ANA PEREZ");
    // Enter after a piece of the name that only one position holds takes that one and moves on.
    position->setFocus();
    QTest::keyClicks(position, "ndedo");
    QTest::keyClick(position, Qt::Key_Return);
    EXPECT_EQ(position->currentData().toString(), "003");
    EXPECT_EQ(position->currentText(), "003 - VENDEDOR");
    EXPECT_FALSE(position->hasFocus());
    press("Guardar");
    ASSERT_EQ(count("TRABAJADORES", "Cedula = 'V-12345678' AND Cargo = '003'"), 1)
        << m_dialogs->lastText().toStdString();

    // What several positions hold chooses none of them; the code typed in full chooses one.
    press("Modificar");
    position->setFocus();
    position->lineEdit()->selectAll();
    QTest::keyClicks(position, "ER"); // GERENTE, CAJERO
    QTest::keyClick(position, Qt::Key_Return);
    EXPECT_EQ(position->currentIndex(), -1);
    EXPECT_TRUE(position->currentText().isEmpty());
    position->setFocus();
    QTest::keyClicks(position, "001 - gerente");
    QTest::keyClick(position, Qt::Key_Return);
    EXPECT_EQ(position->currentData().toString(), "001");
    press("Guardar");
    EXPECT_EQ(count("TRABAJADORES", "Cedula = 'V-12345678' AND Cargo = '001'"), 1);
}

TEST_F(RecordScreensGui, TheToolbarAnswersTheKeyboard) {
    // As in the main window: the toolbar and the screen share one top-level window.
    QWidget host;
    auto* layout = new QVBoxLayout(&host);
    auto* toolbar = new RecordToolbar(&host);
    auto* screen = new TableRecordScreen(*masterTable("frmColores"), db(), "ROOT");
    layout->addWidget(toolbar);
    layout->addWidget(screen);
    toolbar->setActiveScreen(screen);
    host.show();
    host.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&host));
    auto* name = screen->findChild<QLineEdit*>("txtNombre");
    ASSERT_NE(name, nullptr);

    QTest::keySequence(&host, QKeySequence("Ctrl+N"));
    ASSERT_TRUE(screen->property("orvoEditing").toBool());
    name->setFocus();
    QTest::keyClicks(name, "VERDE");
    // From inside a line edit, as a clerk types it.
    QTest::keySequence(host.windowHandle(), QKeySequence("Ctrl+G"));
    EXPECT_EQ(count("COLORES", "Nombre = 'VERDE'"), 1);
    EXPECT_FALSE(screen->property("orvoEditing").toBool());

    QTest::keySequence(host.windowHandle(), QKeySequence("Ctrl+M"));
    EXPECT_TRUE(screen->property("orvoEditing").toBool());
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, "ROJO");
    QTest::keySequence(host.windowHandle(), QKeySequence("Ctrl+Shift+C"));
    EXPECT_FALSE(screen->property("orvoEditing").toBool());
    EXPECT_EQ(count("COLORES", "Nombre = 'VERDE'"), 1);
    EXPECT_TRUE(toolbar->action(Action::New)->toolTip().endsWith("(Ctrl+N)"));
    toolbar->setActiveScreen(nullptr);
}

TEST_F(RecordScreensGui, ToolbarFollowsTheActiveSubWindow) {
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('001', 'ROJO', 1)");
    QMdiArea area;
    auto* colours = new TableRecordScreen(*masterTable("frmColores"), db(), "ROOT");
    auto* plain = new QWidget;
    plain->setObjectName("frmOtra");
    QMdiSubWindow* colourWindow = area.addSubWindow(colours);
    QMdiSubWindow* plainWindow = area.addSubWindow(plain);
    area.show();
    m_toolbar->setActiveScreen(colourWindow); // a sub-window stands for its screen
    EXPECT_EQ(m_toolbar->activeScreen(), colours);
    EXPECT_TRUE(enabled("Modificar"));
    EXPECT_FALSE(m_toolbar->action(Action::Approve)->isVisible());

    m_toolbar->setActiveScreen(plainWindow);
    for (const char* key : {"Nuevo", "Modificar", "Eliminar", "Buscar", "Guardar"})
        EXPECT_FALSE(enabled(key)) << key;
    EXPECT_TRUE(enabled("Salir"));
    press("Salir");
    EXPECT_EQ(area.subWindowList().size(), 1);
    EXPECT_EQ(m_toolbar->activeScreen(), nullptr);

    // Salir with nothing open leaves the decision to the main window.
    bool asked = false;
    QObject::connect(m_toolbar.get(), &RecordToolbar::exitRequested, [&] { asked = true; });
    press("Salir");
    EXPECT_TRUE(asked);
}
