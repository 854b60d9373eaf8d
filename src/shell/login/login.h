#pragma once

#include "common/errors/errors.h"

#include <QSqlDatabase>
#include <QString>

namespace orvo::shell {

struct LoggedUser {
    QString code;
    QString name;
};

// A refused login or password change; `field` says where the user corrects it.
class LoginRefused : public UserError {
public:
    enum class Field { User, Password, CurrentPassword, NewPassword };
    LoginRefused(QString text, Field field) : UserError(std::move(text)), m_field(field) {}
    Field field() const { return m_field; }

private:
    Field m_field;
};

// Checks a user code and password against USUARIOS. The typed password is scrambled and compared
// in the query; stored passwords are never decoded. Throws LoginRefused.
LoggedUser checkLogin(const QSqlDatabase& db, const QString& user, const QString& password);

// Changes the user's own password. The current one is tested with a no-op update, the way the
// store databases have always been checked. Throws LoginRefused.
void changePassword(const QSqlDatabase& db, const QString& userCode, const QString& current,
                    const QString& newPassword, const QString& confirmation);

} // namespace orvo::shell
