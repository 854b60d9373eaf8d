#include "shell/users/roles.h"

#include "common/db/sql.h"

namespace orvo::shell::users {

namespace {

// Membership of `userCode` in a group meeting `condition` (written over G.CodGrupo and
// G.NombreGrupo, upper-cased, against upper-case literals).
bool memberWhere(const QSqlDatabase& db, const QString& userCode, const QString& condition) {
    return db::exists(
        db,
        QStringLiteral("SELECT UG.CodUsuario FROM USUARIOGRUPO UG INNER JOIN GRUPOS "
                       "G ON UG.CodGrupo = G.CodGrupo WHERE UG.CodUsuario = ? AND (") +
            condition + QStringLiteral(")"),
        {userCode});
}

} // namespace

bool isAdministrator(const QSqlDatabase& db, const QString& userCode) {
    return memberWhere(db, userCode,
                       QStringLiteral("UPPER(G.CodGrupo) = 'ADMI' OR UPPER(G.NombreGrupo) = "
                                      "'ADMINISTRADOR'"));
}

bool isSystems(const QSqlDatabase& db, const QString& userCode) {
    // Through USUARIOS as well: a membership left behind by a deleted user does not count.
    return db::exists(db,
                      QStringLiteral("SELECT U.CodUsuario FROM USUARIOS U INNER JOIN USUARIOGRUPO "
                                     "UG ON U.CodUsuario = UG.CodUsuario INNER JOIN GRUPOS G ON "
                                     "G.CodGrupo = UG.CodGrupo WHERE U.CodUsuario = ? AND "
                                     "(UPPER(G.CodGrupo) = 'SISTEMAS')"),
                      {userCode});
}

bool isInventorySupervisor(const QSqlDatabase& db, const QString& userCode) {
    return memberWhere(db, userCode,
                       QStringLiteral("UPPER(G.CodGrupo) = 'SUPINVE' OR UPPER(G.CodGrupo) = "
                                      "'SINVE' OR UPPER(G.NombreGrupo) = 'SUPERVISOR DE "
                                      "INVENTARIO'"));
}

bool maySeeCosts(const QSqlDatabase& db, const QString& userCode) {
    return memberWhere(db, userCode,
                       QStringLiteral("UPPER(G.CodGrupo) = 'SISTEMAS' OR UPPER(G.NombreGrupo) = "
                                      "'SIST' OR UPPER(G.NombreGrupo) = 'COSTO' OR "
                                      "UPPER(G.NombreGrupo) = 'COSTOS' OR UPPER(G.NombreGrupo) = "
                                      "'VER COSTOS'"));
}

bool maySeePrices(const QSqlDatabase& db, const QString& userCode) {
    return memberWhere(
        db, userCode,
        QStringLiteral("UPPER(G.CodGrupo) = 'SISTEMAS' OR UPPER(G.NombreGrupo) = 'SIST' OR "
                       "UPPER(G.NombreGrupo) = 'PRECIOS' OR UPPER(G.NombreGrupo) = 'VER PRECIOS' "
                       "OR UPPER(G.CodGrupo) = 'ADMI' OR UPPER(G.NombreGrupo) = 'ADMINISTRADOR'"));
}

bool mayCheckRemissions(const QSqlDatabase& db, const QString& userCode) {
    return memberWhere(db, userCode,
                       QStringLiteral("UPPER(G.CodGrupo) = 'CHEQREMI' OR UPPER(G.NombreGrupo) = "
                                      "'SISTEMAS' OR UPPER(G.CodGrupo) = 'SISTEMAS'"));
}

bool mayUncheckRemissions(const QSqlDatabase& db, const QString& userCode) {
    return memberWhere(db, userCode,
                       QStringLiteral("UPPER(G.CodGrupo) = 'DCHEQREMI' OR UPPER(G.NombreGrupo) = "
                                      "'SISTEMAS' OR UPPER(G.CodGrupo) = 'SISTEMAS'"));
}

} // namespace orvo::shell::users
