#include "common/errors/errors.h"
#include "common/security/scrambler.h"
#include "shell/record_form/refusing_trigger.h"
#include "shell/users/group_admin.h"
#include "shell/users/user_admin.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell::users;

namespace {

class UserAdmin : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        for (const auto& [code, name] :
             QList<QPair<QString, QString>>{{"SISTEMAS", "SISTEMAS"},
                                            {"ADMI", "ADMINISTRADOR"},
                                            {"CAJE", "CAJERO"},
                                            {"SUPINVE", "SUPERVISOR DE INVENTARIO"},
                                            {"INVE", "INVENTARIO"},
                                            {"VEND", "VENDEDORES"}})
            exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES (?, ?)", {code, name});
        addUser("ROOT", "SISTEMAS");
        addUser("JEFE", "ADMI");
        addUser("SUPER", "SUPINVE");
        addUser("VENDE", "VEND");
        // Menu: node N1 granted to cashiers, N2 only to Systems.
        exec("INSERT INTO SEG (Nivel, NumNodo, NodoPadre, CodNodo, NomNodo, Orden, EsPadre) "
             "VALUES (1, 1, '', 'N1', 'Ventas', 1, 0)");
        exec("INSERT INTO SEG (Nivel, NumNodo, NodoPadre, CodNodo, NomNodo, Orden, EsPadre) "
             "VALUES (1, 2, '', 'N2', 'Sistema', 2, 0)");
        exec("INSERT INTO GRUPOSEG (CodGrupo, CodNodo, Ver) VALUES ('CAJE', 'N1', 'S')");
        exec("INSERT INTO GRUPOSEG (CodGrupo, CodNodo, Ver) VALUES ('SISTEMAS', 'N2', 'S')");
    }
    void addUser(const QString& code, const QString& group) {
        exec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES (?, ?, ?, "
             "1)",
             {code, code + " nombre", security::scramble("x")});
        exec("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES (?, ?)", {code, group});
    }
    static QStringList names(const QList<Group>& groups) {
        QStringList out;
        for (const Group& g : groups)
            out << g.code;
        out.sort();
        return out;
    }
    static UserRecord user(const QString& code, const QString& group,
                           const QString& password = "clave1") {
        return {code, code + " nombre", password, password, 1, group};
    }
    QString refusal(const std::function<void()>& action) {
        try {
            action();
        } catch (const UserError& e) {
            return e.text();
        }
        return {};
    }
};

} // namespace

TEST_F(UserAdmin, GroupsOfferedFollowTheWorkingUsersRights) {
    EXPECT_EQ(names(offeredGroups(db(), "ROOT")),
              QStringList({"ADMI", "CAJE", "INVE", "SISTEMAS", "SUPINVE", "VEND"}));
    EXPECT_EQ(names(offeredGroups(db(), "JEFE")), QStringList({"ADMI", "CAJE"}));
    EXPECT_EQ(names(offeredGroups(db(), "SUPER")), QStringList({"INVE", "SUPINVE"}));
    EXPECT_EQ(names(offeredGroups(db(), "VENDE")),
              QStringList({"ADMI", "CAJE", "INVE", "SUPINVE", "VEND"}));

    QStringList seenByBoss;
    for (const UserRow& u : visibleUsers(db(), "JEFE"))
        seenByBoss << u.code;
    EXPECT_EQ(seenByBoss, QStringList({"JEFE"}));
    EXPECT_EQ(visibleUsers(db(), "ROOT").size(), 4);
}

TEST_F(UserAdmin, SavingReplacesMembershipAndScramblesThePassword) {
    saveUser(db(), "ROOT", user("MARIA", "CAJERO", "secreta"), true);
    EXPECT_EQ(scalar("SELECT CodGrupo FROM USUARIOGRUPO WHERE CodUsuario = 'MARIA'").toString(),
              "CAJE");
    const QString stored =
        scalar("SELECT Pasword FROM USUARIOS WHERE CodUsuario = 'MARIA'").toString();
    EXPECT_NE(stored, "secreta");
    EXPECT_EQ(security::unscramble(stored), "secreta");

    // Shortcuts: N1 stays reachable as cashier, N2 never was; another user's are not touched.
    exec("INSERT INTO USUARIOBARRATAREA (CodUsuario, CodNodo) VALUES ('MARIA', 'N1')");
    exec("INSERT INTO USUARIOBARRATAREA (CodUsuario, CodNodo) VALUES ('MARIA', 'N2')");
    exec("INSERT INTO USUARIOBARRATAREA (CodUsuario, CodNodo) VALUES ('ROOT', 'N1')");
    saveUser(db(), "ROOT", user("MARIA", "CAJERO", "otra"), false);
    EXPECT_EQ(count("USUARIOBARRATAREA", "CodUsuario = 'MARIA'"), 1);
    EXPECT_EQ(count("USUARIOBARRATAREA", "CodUsuario = 'MARIA' AND CodNodo = 'N1'"), 1);

    // Moved to another group: one membership, and the cashier shortcut goes.
    saveUser(db(), "ROOT", user("MARIA", "VENDEDORES"), false);
    EXPECT_EQ(count("USUARIOGRUPO", "CodUsuario = 'MARIA'"), 1);
    EXPECT_EQ(scalar("SELECT CodGrupo FROM USUARIOGRUPO WHERE CodUsuario = 'MARIA'").toString(),
              "VEND");
    EXPECT_EQ(count("USUARIOBARRATAREA", "CodUsuario = 'MARIA'"), 0);
    EXPECT_EQ(count("USUARIOBARRATAREA", "CodUsuario = 'ROOT'"), 1);

    QString clear;
    const UserRow row = loadUser(db(), "MARIA", &clear);
    EXPECT_EQ(row.groupName, "VENDEDORES");
    EXPECT_EQ(clear, "clave1");
}

TEST_F(UserAdmin, RefusalsChangeNothing) {
    UserRecord noGroup = user("MARIA", "");
    EXPECT_EQ(refusal([&] { saveUser(db(), "ROOT", noGroup, true); }),
              "¡Debe seleccionar un grupo!");
    UserRecord mismatch = user("MARIA", "CAJERO");
    mismatch.confirmation = "otra";
    EXPECT_EQ(refusal([&] { saveUser(db(), "ROOT", mismatch, true); }),
              "¡Confirmación de clave errada!");
    EXPECT_EQ(refusal([&] { saveUser(db(), "ROOT", user("MARIA", "CAJERO", " "), true); }),
              "¡Debe introducir la clave!");
    EXPECT_EQ(refusal([&] { saveUser(db(), "ROOT", user("JEFE", "CAJERO"), true); }),
              "Registro duplicado!");
    // An administrator cannot hand out Systems, even by calling the logic directly.
    EXPECT_EQ(refusal([&] { saveUser(db(), "JEFE", user("MARIA", "SISTEMAS"), true); }),
              "¡No tiene permiso para asignar el grupo SISTEMAS!");
    // ... nor touch a Systems user.
    EXPECT_FALSE(refusal([&] { saveUser(db(), "JEFE", user("ROOT", "CAJERO"), false); }).isEmpty());
    EXPECT_FALSE(refusal([&] { deleteUser(db(), "JEFE", "ROOT"); }).isEmpty());
    // Nobody logged in, or an inactive user, hands out nothing.
    EXPECT_TRUE(offeredGroups(db(), "").isEmpty());
    EXPECT_EQ(refusal([&] { saveUser(db(), "", user("MARIA", "CAJERO"), true); }),
              "¡Usuario no autorizado!");
    exec("UPDATE USUARIOS SET Status = 0 WHERE CodUsuario = 'VENDE'");
    EXPECT_EQ(refusal([&] { saveUser(db(), "VENDE", user("MARIA", "CAJERO"), true); }),
              "¡Usuario no autorizado!");
    EXPECT_EQ(count("USUARIOS", "CodUsuario = 'MARIA'"), 0);
    EXPECT_EQ(count("USUARIOGRUPO", "CodUsuario = 'JEFE' AND CodGrupo = 'ADMI'"), 1);
    EXPECT_EQ(count("USUARIOGRUPO", "CodUsuario = 'ROOT' AND CodGrupo = 'SISTEMAS'"), 1);
}

TEST_F(UserAdmin, DeleteTakesMembershipAndShortcutsInOneTransaction) {
    saveUser(db(), "JEFE", user("CAJ1", "CAJERO"), true);
    exec("INSERT INTO USUARIOBARRATAREA (CodUsuario, CodNodo) VALUES ('CAJ1', 'N1')");
    deleteUser(db(), "JEFE", "CAJ1");
    EXPECT_EQ(count("USUARIOS", "CodUsuario = 'CAJ1'"), 0);
    EXPECT_EQ(count("USUARIOGRUPO", "CodUsuario = 'CAJ1'"), 0);
    EXPECT_EQ(count("USUARIOBARRATAREA", "CodUsuario = 'CAJ1'"), 0);

    // The database refuses the last statement: nothing of the delete stays.
    saveUser(db(), "JEFE", user("CAJ2", "CAJERO"), true);
    test::refuseDeleteOf(db(), "USUARIOS", "CodUsuario", "CAJ2", "Usuario con movimientos");
    try {
        deleteUser(db(), "JEFE", "CAJ2");
        FAIL() << "the database should refuse";
    } catch (const DbError& e) {
        EXPECT_FALSE(e.number().isEmpty());
        EXPECT_TRUE(e.text().contains("Usuario con movimientos")) << e.text().toStdString();
    }
    EXPECT_EQ(count("USUARIOS", "CodUsuario = 'CAJ2'"), 1);
    EXPECT_EQ(count("USUARIOGRUPO", "CodUsuario = 'CAJ2'"), 1);
}

TEST_F(UserAdmin, GroupsAndTheirMenuGrantsAreWrittenTogetherBySystemsOnly) {
    saveGroup(db(), "ROOT", "BODEGA", "BODEGUEROS", {"N1"}, true);
    EXPECT_EQ(count("GRUPOSEG", "CodGrupo = 'BODEGA' AND CodNodo = 'N1' AND Ver = 'S'"), 1);
    saveGroup(db(), "ROOT", "BODEGA", "ALMACEN", {"N2"}, false);
    EXPECT_EQ(scalar("SELECT NombreGrupo FROM GRUPOS WHERE CodGrupo = 'BODEGA'").toString(),
              "ALMACEN");
    EXPECT_EQ(count("GRUPOSEG", "CodGrupo = 'BODEGA'"), 1);
    QStringList granted;
    for (const NodeGrant& g : groupGrants(db(), "BODEGA"))
        if (g.granted)
            granted << g.node;
    EXPECT_EQ(granted, QStringList({"N2"}));
    EXPECT_EQ(groupGrants(db(), "BODEGA").size(), 2); // every node is listed

    // An administrator may not, even through the logic.
    EXPECT_EQ(refusal([&] {
                  saveGroup(db(), "JEFE", "BODEGA", "X", {"N1", "N2"}, false);
              }),
              "¡Solo el grupo de sistemas puede modificar esta tabla!");
    EXPECT_EQ(count("GRUPOSEG", "CodGrupo = 'BODEGA'"), 1);
    EXPECT_EQ(refusal([&] { saveGroup(db(), "ROOT", "CAJE", "OTRA", {}, true); }),
              "Registro duplicado!");

    EXPECT_EQ(refusal([&] { deleteGroup(db(), "ROOT", "CAJE"); }).isEmpty(), true); // no members
    EXPECT_EQ(refusal([&] { deleteGroup(db(), "ROOT", "ADMI"); }),
              "¡El grupo tiene usuarios asignados!");
    deleteGroup(db(), "ROOT", "BODEGA");
    EXPECT_EQ(count("GRUPOS", "CodGrupo = 'BODEGA'"), 0);
    EXPECT_EQ(count("GRUPOSEG", "CodGrupo = 'BODEGA'"), 0);
}
