#pragma once

#include <QDialog>

class QLineEdit;

namespace orvo::shell {

// frmCambiarClave: the logged-in user changes his own password.
class ChangePasswordScreen : public QDialog {
    Q_OBJECT
public:
    explicit ChangePasswordScreen(QWidget* parent = nullptr);

private:
    void changeIt();

    QLineEdit* m_current;
    QLineEdit* m_new;
    QLineEdit* m_confirm;
};

} // namespace orvo::shell
