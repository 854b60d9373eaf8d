#include "shell/users/user_admin.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/security/scrambler.h"
#include "shell/users/roles.h"

namespace orvo::shell::users {

namespace {

// The WHERE clause over GRUPOS that limits what the acting user may hand out (empty: all).
QString offeredCondition(const QSqlDatabase& db, const QString& actingUser) {
    if (isSystems(db, actingUser))
        return {};
    if (isAdministrator(db, actingUser))
        return QStringLiteral("UPPER(CodGrupo) IN ('ADMI', 'ADMINISTRADOR', 'CAJERO', 'CAJE')");
    if (isInventorySupervisor(db, actingUser))
        return QStringLiteral("UPPER(CodGrupo) IN ('SINV', 'SUPINVE', 'INVE', 'INVENTARIO', "
                              "'OPEREMISIO', 'OPERECEPCI', 'OPEAPRORE')");
    return QStringLiteral("UPPER(CodGrupo) <> 'SISTEMAS'");
}

bool userVisible(const QSqlDatabase& db, const QString& actingUser, const QString& code) {
    const QString condition = offeredCondition(db, actingUser);
    if (condition.isEmpty())
        return true;
    return db::exists(db,
                      QStringLiteral("SELECT CodUsuario FROM USUARIOGRUPO WHERE CodUsuario = ? AND "
                                     "CodGrupo IN (SELECT CodGrupo FROM GRUPOS WHERE ") +
                          condition + QStringLiteral(")"),
                      {code});
}

// Nobody but a known, active user hands out groups.
bool knownUser(const QSqlDatabase& db, const QString& actingUser) {
    return !actingUser.isEmpty() &&
           db::exists(db,
                      QStringLiteral("SELECT CodUsuario FROM USUARIOS WHERE CodUsuario = ? AND "
                                     "Status = 1"),
                      {actingUser});
}

void requireKnownUser(const QSqlDatabase& db, const QString& actingUser) {
    if (!knownUser(db, actingUser))
        throw UserError(QStringLiteral("¡Usuario no autorizado!"));
}

} // namespace

QList<Group> offeredGroups(const QSqlDatabase& db, const QString& actingUser) {
    if (!knownUser(db, actingUser))
        return {};
    const QString condition = offeredCondition(db, actingUser);
    db::Sql q(db, QStringLiteral("SELECT CodGrupo, NombreGrupo FROM GRUPOS") +
                      (condition.isEmpty() ? QString() : QStringLiteral(" WHERE ") + condition) +
                      QStringLiteral(" ORDER BY NombreGrupo"));
    q.exec();
    QList<Group> out;
    while (q.next())
        out.append({q.text("CodGrupo"), q.text("NombreGrupo")});
    return out;
}

QList<UserRow> visibleUsers(const QSqlDatabase& db, const QString& actingUser) {
    if (!knownUser(db, actingUser))
        return {};
    const QString condition = offeredCondition(db, actingUser);
    QString sql = QStringLiteral(
        "SELECT U.CodUsuario, U.NombreUsuario, U.Status, (SELECT MIN(G.NombreGrupo) FROM "
        "USUARIOGRUPO UG INNER JOIN GRUPOS G ON UG.CodGrupo = G.CodGrupo WHERE UG.CodUsuario = "
        "U.CodUsuario) AS NombreGrupo FROM USUARIOS U");
    if (!condition.isEmpty())
        sql += QStringLiteral(" WHERE U.CodUsuario IN (SELECT CodUsuario FROM USUARIOGRUPO WHERE "
                              "CodGrupo IN (SELECT CodGrupo FROM GRUPOS WHERE ") +
               condition + QStringLiteral("))");
    sql += QStringLiteral(" ORDER BY U.NombreUsuario");
    db::Sql q(db, sql);
    q.exec();
    QList<UserRow> out;
    while (q.next())
        out.append({q.text("CodUsuario"), q.text("NombreUsuario"), q.integer("Status"),
                    q.text("NombreGrupo")});
    return out;
}

UserRow loadUser(const QSqlDatabase& db, const QString& code, QString* clearPassword) {
    db::Sql q(db, QStringLiteral(
                      "SELECT U.CodUsuario, U.NombreUsuario, U.Pasword, U.Status, (SELECT "
                      "MIN(G.NombreGrupo) FROM USUARIOGRUPO UG INNER JOIN GRUPOS G ON UG.CodGrupo "
                      "= G.CodGrupo WHERE UG.CodUsuario = U.CodUsuario) AS NombreGrupo FROM "
                      "USUARIOS U WHERE U.CodUsuario = ?"));
    q.bind(code).exec();
    if (!q.next())
        return {};
    if (clearPassword)
        *clearPassword = security::unscramble(q.text("Pasword"));
    return {q.text("CodUsuario"), q.text("NombreUsuario"), q.integer("Status"),
            q.text("NombreGrupo")};
}

void saveUser(const QSqlDatabase& db, const QString& actingUser, const UserRecord& user,
              bool adding) {
    requireKnownUser(db, actingUser);
    if (user.groupName.trimmed().isEmpty())
        throw UserError(QStringLiteral("¡Debe seleccionar un grupo!"));
    // Stored as the login will check it: trimmed, and never empty.
    if (user.password.trimmed().isEmpty())
        throw UserError(QStringLiteral("¡Debe introducir la clave!"));
    if (user.password.trimmed() != user.confirmation.trimmed())
        throw UserError(QStringLiteral("¡Confirmación de clave errada!"));
    bool groupOffered = false;
    for (const Group& g : offeredGroups(db, actingUser))
        groupOffered = groupOffered || g.name == user.groupName;
    if (!groupOffered)
        throw UserError(QStringLiteral("¡No tiene permiso para asignar el grupo ") +
                        user.groupName + QStringLiteral("!"));
    if (!adding && !userVisible(db, actingUser, user.code))
        throw UserError(QStringLiteral("¡No tiene permiso para modificar este usuario!"));

    const QString scrambled = security::scramble(user.password.trimmed());
    db::Transaction tx(db);
    if (adding) {
        if (db::exists(db, QStringLiteral("SELECT CodUsuario FROM USUARIOS WHERE CodUsuario = ?"),
                       {user.code}))
            throw UserError(QStringLiteral("Registro duplicado!"));
        db::execute(db,
                    QStringLiteral("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, "
                                   "Status) VALUES (?, ?, ?, ?)"),
                    {user.code, user.name, scrambled, user.status});
    } else {
        db::execute(db,
                    QStringLiteral("UPDATE USUARIOS SET NombreUsuario = ?, Pasword = ?, Status = "
                                   "? WHERE CodUsuario = ?"),
                    {user.name, scrambled, user.status, user.code});
    }
    db::execute(db, QStringLiteral("DELETE FROM USUARIOGRUPO WHERE CodUsuario = ?"), {user.code});
    db::execute(db,
                QStringLiteral("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) SELECT ?, CodGrupo "
                               "FROM GRUPOS WHERE NombreGrupo = ?"),
                {user.code, user.groupName});
    // Only this user's shortcuts: other users keep theirs whatever this user may reach.
    db::execute(db,
                QStringLiteral("DELETE FROM USUARIOBARRATAREA WHERE CodUsuario = ? AND CodNodo NOT "
                               "IN (SELECT GS.CodNodo FROM GRUPOSEG GS INNER JOIN SEG S ON "
                               "GS.CodNodo = S.CodNodo INNER JOIN USUARIOGRUPO UG ON GS.CodGrupo = "
                               "UG.CodGrupo WHERE UG.CodUsuario = ?)"),
                {user.code, user.code});
    tx.commit();
}

void deleteUser(const QSqlDatabase& db, const QString& actingUser, const QString& code) {
    requireKnownUser(db, actingUser);
    if (code == actingUser)
        throw UserError(QStringLiteral("¡No puede eliminar su propio usuario!"));
    if (!userVisible(db, actingUser, code))
        throw UserError(QStringLiteral("¡No tiene permiso para eliminar este usuario!"));
    db::Transaction tx(db);
    db::execute(db, QStringLiteral("DELETE FROM USUARIOBARRATAREA WHERE CodUsuario = ?"), {code});
    db::execute(db, QStringLiteral("DELETE FROM USUARIOGRUPO WHERE CodUsuario = ?"), {code});
    db::execute(db, QStringLiteral("DELETE FROM USUARIOS WHERE CodUsuario = ?"), {code});
    tx.commit();
}

} // namespace orvo::shell::users
