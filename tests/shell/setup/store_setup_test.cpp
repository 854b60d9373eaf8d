// A store that is not the demo, from an empty database to the administrator and his cashier.
#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "shell/demo/demo_store.h"
#include "shell/login/login.h"
#include "shell/main_window/menu_tree.h"
#include "shell/session/session_context.h"
#include "shell/setup/store_setup.h"
#include "shell/users/roles.h"
#include "shell/users/user_admin.h"
#include "support/test_db.h"

#include <QSet>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

namespace {

QStringList column(const QSqlDatabase& db, const QString& statement) {
    db::Sql q(db, statement);
    q.exec();
    QStringList out;
    while (q.next())
        out << q.value(0).toString().trimmed();
    return out;
}

// The screens a user's menu offers, as the main window builds it.
QSet<QString> formsOf(const QSqlDatabase& db, const QString& user) {
    QSet<QString> forms;
    std::function<void(const QList<MenuNode>&)> walk = [&](const QList<MenuNode>& nodes) {
        for (const MenuNode& n : nodes) {
            if (!n.form.isEmpty())
                forms.insert(n.form);
            walk(n.children);
        }
    };
    walk(loadUserMenu(db, user, false));
    return forms;
}

QString refusal(const std::function<void()>& action) {
    try {
        action();
    } catch (const UserError& e) {
        return e.text();
    }
    return {};
}

} // namespace

class NewStore : public DbTest {};

TEST_F(NewStore, StartsWithWhatTheProgramRecognisesAndASecondRunAddsNothing) {
    const QStringList done =
        setup::initializeStore(db(), {"BOUTIQUE LA ESQUINA, C.A.", "j 29876543 1", "07"});
    EXPECT_TRUE(done.contains("Empresa creada (PARAMETROS).")) << done.join('\n').toStdString();

    SessionContext ctx;
    ASSERT_TRUE(loadCompany(db(), ctx));
    EXPECT_EQ(ctx.nombre, "BOUTIQUE LA ESQUINA, C.A.");
    EXPECT_EQ(ctx.idEmpresa, "J-29876543-1");
    EXPECT_EQ(ctx.codigo, "07");
    EXPECT_EQ(ctx.controlFactura, 1) << "counters per register";
    EXPECT_EQ(ctx.usaImpresoraFiscal, 1);
    loadStandardTaxRate(db(), ctx);
    EXPECT_EQ(ctx.standardTaxRate, Decimal(16));

    const QStringList ways = column(db(), "SELECT Nombre FROM FORMAPAGO WHERE Status = 1");
    EXPECT_EQ(
        QSet<QString>(ways.begin(), ways.end()),
        QSet<QString>({"EFECTIVO", "EFECTIVO DOLAR", "CHEQUE", "DEPOSITO", "TARJETA DE DEBITO",
                       "TARJETA DE CREDITO", "MULTIPLE", "CUENTA POR COBRAR"}));
    EXPECT_EQ(column(db(), "SELECT Codigo FROM FORMAPAGO WHERE Nombre = 'CHEQUE'"),
              QStringList({"2"}))
        << "the closing looks for undeposited cheques under code 2";
    EXPECT_EQ(column(db(), "SELECT CodGrupo FROM GRUPOS ORDER BY CodGrupo"),
              QStringList({"ADMI", "CAJERO", "SISTEMAS", "SUPINVE"}));
    EXPECT_EQ(count("IMPRESORAFISCAL", "Status = 1"), 1) << "a register needs a printer to name";
    EXPECT_EQ(column(db(), "SELECT Nombre FROM CLIENTES WHERE Codigo = 'V00000000'"),
              QStringList({"CLIENTE CONTADO"}));

    const int nodes = count("SEG"), grants = count("GRUPOSEG"), payWays = count("FORMAPAGO");
    EXPECT_GT(nodes, 50);
    EXPECT_TRUE(setup::initializeStore(db(), {}).isEmpty()) << "nothing was missing";
    EXPECT_EQ(count("SEG"), nodes);
    EXPECT_EQ(count("GRUPOSEG"), grants);
    EXPECT_EQ(count("FORMAPAGO"), payWays);
    EXPECT_EQ(count("IMPUESTOS"), 4);

    // Facts given later correct the company; there is still one row.
    EXPECT_EQ(setup::initializeStore(db(), {"BOUTIQUE LA ESQUINA 2, C.A.", {}, {}}),
              QStringList({"Datos de la empresa actualizados."}));
    EXPECT_EQ(count("PARAMETROS"), 1);
    EXPECT_EQ(scalar("SELECT IDEmpresa FROM PARAMETROS").toString(), "J-29876543-1");
    EXPECT_EQ(refusal([&] {
                  setup::initializeStore(db(), {{}, "J-123", {}});
              }),
              QString::fromUtf8("RIF inválido: escriba la letra, los ocho dígitos y el dígito "
                                "verificador, por ejemplo J-12345678-9...!"));
}

TEST_F(NewStore, TheAdministratorLogsInAndCreatesACashierWhoSeesTheTill) {
    setup::initializeStore(db(), {});
    EXPECT_FALSE(setup::hasActiveUser(db()));
    EXPECT_EQ(setup::saveAdministrator(db(), {"JEFE", "ANA JEFE", "s3creta"}),
              setup::AdministratorOutcome::Created);
    EXPECT_TRUE(setup::hasActiveUser(db()));
    EXPECT_EQ(checkLogin(db(), "JEFE", "s3creta").name, "ANA JEFE");
    EXPECT_TRUE(users::isAdministrator(db(), "JEFE"));
    EXPECT_TRUE(users::isSystems(db(), "JEFE"));
    const QSet<QString> adminForms = formsOf(db(), "JEFE");
    for (const char* form :
         {"FrmUsuario", "frmConfigurarCaja", "frmImpresorasFiscales", "frmAperturaCaja"})
        EXPECT_TRUE(adminForms.contains(form)) << form;

    // The user screen's rules let him hand out the cashier group.
    users::UserRecord cashier{"MARIA", "MARIA CAJERA", "1111", "1111", 1, "CAJERO"};
    users::saveUser(db(), "JEFE", cashier, true);
    EXPECT_EQ(checkLogin(db(), "MARIA", "1111").code, "MARIA");
    const QSet<QString> cashierForms = formsOf(db(), "MARIA");
    EXPECT_TRUE(cashierForms.contains("frmFacturacion"));
    EXPECT_TRUE(cashierForms.contains("frmCierreCaja"));
    EXPECT_FALSE(cashierForms.contains("FrmUsuario"));
    EXPECT_FALSE(cashierForms.contains("frmConfigurarCaja"));

    // Run again for the same code: a forgotten password is replaced, an inactive user returns.
    exec("UPDATE USUARIOS SET Status = 0 WHERE CodUsuario = 'JEFE'");
    EXPECT_EQ(setup::saveAdministrator(db(), {"JEFE", {}, "otra"}),
              setup::AdministratorOutcome::PasswordChanged);
    EXPECT_EQ(checkLogin(db(), "JEFE", "otra").name, "ANA JEFE") << "the name stays";
    EXPECT_EQ(refusal([&] { checkLogin(db(), "JEFE", "s3creta"); }),
              QString::fromUtf8("Usuario ó clave inválida...!"));
    EXPECT_EQ(count("USUARIOGRUPO", "CodUsuario = 'JEFE'"), 2);
}

TEST_F(NewStore, AFirstStartThatIsRefusedWritesNothing) {
    const setup::Administrator admin{"JEFE", "ANA", "s3creta"};
    const auto start = [&](const setup::CompanyFacts& company, const setup::Administrator& a,
                           const QString& confirmation) {
        return refusal([&] { setup::startStore(db(), company, a, confirmation); });
    };
    EXPECT_EQ(start({"", "J-29876543-1", "01"}, admin, "s3creta"),
              QString::fromUtf8("Debe indicar el nombre de la empresa...!"));
    EXPECT_EQ(start({"LA ESQUINA", "", "01"}, admin, "s3creta"),
              QString::fromUtf8("Debe indicar el RIF de la empresa...!"));
    EXPECT_TRUE(start({"LA ESQUINA", "29876543", "01"}, admin, "s3creta").startsWith("RIF inv"));
    EXPECT_EQ(start({"LA ESQUINA", "J-29876543-1", "01"}, admin, "s3cret"),
              QString::fromUtf8("¡Confirmación de clave errada!"));
    EXPECT_EQ(start({"LA ESQUINA", "J-29876543-1", "01"}, {"JEFE", "ANA", "  "}, "  "),
              QString::fromUtf8("La clave no puede estar vacía...!"));
    EXPECT_EQ(count("PARAMETROS"), 0);
    EXPECT_EQ(count("USUARIOS"), 0);
    EXPECT_EQ(count("SEG"), 0);

    EXPECT_TRUE(start({"LA ESQUINA", "J-29876543-1", "01"}, admin, "s3creta").isEmpty());
    EXPECT_EQ(checkLogin(db(), "JEFE", "s3creta").code, "JEFE");
    EXPECT_EQ(scalar("SELECT Nombre FROM PARAMETROS").toString(), "LA ESQUINA");
}

TEST_F(NewStore, TheDemoFillsAStoreThatOnlyHasTheBasicsButNotOneOfItsOwn) {
    setup::initializeStore(db(), {});
    shell::demo::seedDemoStore(db());
    EXPECT_TRUE(shell::demo::isDemoStore(db()));
    EXPECT_EQ(count("FORMAPAGO"), 8);
    EXPECT_EQ(count("PARAMETROS"), 1);
    EXPECT_EQ(count("IMPRESORAFISCAL"), 1);
}

TEST_F(NewStore, TheDemoRefusesAStoreOfAnotherCompany) {
    setup::initializeStore(db(), {"LA ESQUINA", "J-29876543-1", "01"});
    EXPECT_EQ(refusal([&] { shell::demo::seedDemoStore(db()); }),
              QString::fromUtf8("La base de datos ya tiene datos; la tienda de demostración "
                                "necesita una base vacía."));
    EXPECT_EQ(count("INVENTARIO"), 0);
    EXPECT_EQ(scalar("SELECT Nombre FROM PARAMETROS").toString(), "LA ESQUINA");
}
