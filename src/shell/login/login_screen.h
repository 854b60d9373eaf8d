#pragma once

#include "shell/login/login.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace orvo::shell {

// VerificarClave: user code and password. Accepted when the user may work; the caller then opens
// the session for loggedUser(). The last user code is remembered in the Login setting when the
// remember box is ticked.
class LoginScreen : public QDialog {
    Q_OBJECT
public:
    explicit LoginScreen(QWidget* parent = nullptr);

    const LoggedUser& loggedUser() const { return m_user; }

private:
    void tryLogin();
    bool eventFilter(QObject* watched, QEvent* event) override;

    QLineEdit* m_userEdit;
    QLineEdit* m_passwordEdit;
    QCheckBox* m_remember;
    LoggedUser m_user;
};

} // namespace orvo::shell
