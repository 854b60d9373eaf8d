#include "shell/login/login.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/security/scrambler.h"

namespace orvo::shell {

using Field = LoginRefused::Field;

LoggedUser checkLogin(const QSqlDatabase& db, const QString& user, const QString& password) {
    const QString code = user.trimmed();
    const QString clear = password.trimmed();
    if (code.isEmpty() || clear.isEmpty())
        throw LoginRefused(QStringLiteral("Introduzca el usuario y su clave de acceso...!"),
                           Field::Password);
    db::Sql q(db, QStringLiteral("SELECT CodUsuario, NombreUsuario, Status FROM USUARIOS "
                                 "WHERE CodUsuario = ? AND Pasword = ?"));
    q.bindAll({code, security::scramble(clear)}).exec();
    if (!q.next())
        throw LoginRefused(QStringLiteral("Usuario ó clave inválida...!"), Field::Password);
    if (q.integer(QStringLiteral("Status")) != 1)
        throw LoginRefused(QStringLiteral("Usuario inactivo...!"), Field::Password);
    return {q.text(QStringLiteral("CodUsuario")).trimmed(),
            q.text(QStringLiteral("NombreUsuario")).trimmed()};
}

void changePassword(const QSqlDatabase& db, const QString& userCode, const QString& current,
                    const QString& newPassword, const QString& confirmation) {
    // The login takes the password trimmed: so is it checked and stored here.
    const QString wanted = newPassword.trimmed();
    if (wanted.isEmpty())
        throw LoginRefused(QStringLiteral("¡Debe introducir la clave nueva!"), Field::NewPassword);
    db::Transaction tx(db);
    const int matched =
        db::execute(db,
                    QStringLiteral("UPDATE USUARIOS SET Pasword = Pasword WHERE CodUsuario = ? AND "
                                   "Pasword = ?"),
                    {userCode, security::scramble(current.trimmed())});
    if (matched == 0)
        throw LoginRefused(QStringLiteral("Clave invalida.... !"), Field::CurrentPassword);
    if (wanted != confirmation.trimmed())
        throw LoginRefused(QStringLiteral("Confirmación de clave invalida... !"),
                           Field::NewPassword);
    db::execute(db, QStringLiteral("UPDATE USUARIOS SET Pasword = ? WHERE CodUsuario = ?"),
                {security::scramble(wanted), userCode});
    tx.commit();
}

} // namespace orvo::shell
