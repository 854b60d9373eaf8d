#include "shell/users/group_admin.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "shell/users/roles.h"

namespace orvo::shell::users {

namespace {

void requireSystems(const QSqlDatabase& db, const QString& actingUser) {
    if (!isSystems(db, actingUser))
        throw UserError(QStringLiteral("¡Solo el grupo de sistemas puede modificar esta tabla!"));
}

} // namespace

QList<NodeGrant> groupGrants(const QSqlDatabase& db, const QString& groupCode) {
    db::Sql q(db, QStringLiteral("SELECT S.CodNodo, S.NomNodo, S.Nivel, (SELECT MAX(GS.Ver) FROM "
                                 "GRUPOSEG GS WHERE GS.CodNodo = S.CodNodo AND GS.CodGrupo = ?) "
                                 "AS Ver FROM SEG S WHERE S.NomNodo <> '_' ORDER BY S.Nivel, "
                                 "S.Orden, S.NumNodo"));
    q.bind(groupCode).exec();
    QList<NodeGrant> out;
    while (q.next())
        out.append({q.text("CodNodo"), q.text("NomNodo"), q.integer("Nivel"),
                    q.text("Ver") == QLatin1String("S")});
    return out;
}

void saveGroup(const QSqlDatabase& db, const QString& actingUser, const QString& code,
               const QString& name, const QStringList& grantedNodes, bool adding) {
    requireSystems(db, actingUser);
    if (code.trimmed().isEmpty())
        throw UserError(QStringLiteral("¡Debe introducir código!"));
    if (name.trimmed().isEmpty())
        throw UserError(QStringLiteral("¡Debe introducir nombre!"));
    db::Transaction tx(db);
    if (adding) {
        if (db::exists(db, QStringLiteral("SELECT CodGrupo FROM GRUPOS WHERE CodGrupo = ?"),
                       {code}))
            throw UserError(QStringLiteral("Registro duplicado!"));
        db::execute(db, QStringLiteral("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES (?, ?)"),
                    {code, name});
    } else {
        db::execute(db, QStringLiteral("UPDATE GRUPOS SET NombreGrupo = ? WHERE CodGrupo = ?"),
                    {name, code});
    }
    db::execute(db, QStringLiteral("DELETE FROM GRUPOSEG WHERE CodGrupo = ?"), {code});
    db::Sql insert(db, QStringLiteral("INSERT INTO GRUPOSEG (CodGrupo, CodNodo, Ver) VALUES (?, ?, "
                                      "'S')"));
    for (const QString& node : grantedNodes)
        insert.bind(code).bind(node).exec();
    tx.commit();
}

void deleteGroup(const QSqlDatabase& db, const QString& actingUser, const QString& code) {
    requireSystems(db, actingUser);
    if (db::exists(db, QStringLiteral("SELECT CodUsuario FROM USUARIOGRUPO WHERE CodGrupo = ?"),
                   {code}))
        throw UserError(QStringLiteral("¡El grupo tiene usuarios asignados!"));
    db::Transaction tx(db);
    db::execute(db, QStringLiteral("DELETE FROM GRUPOSEG WHERE CodGrupo = ?"), {code});
    db::execute(db, QStringLiteral("DELETE FROM OPCIONESGRUPO WHERE CodGrupo = ?"), {code});
    db::execute(db, QStringLiteral("DELETE FROM GRUPOS WHERE CodGrupo = ?"), {code});
    tx.commit();
}

} // namespace orvo::shell::users
