#pragma once

#include <QDialog>

namespace orvo::shell {

// frmAcercaDe: the program, its version and the database it works on.
class AboutScreen : public QDialog {
    Q_OBJECT
public:
    explicit AboutScreen(QWidget* parent = nullptr);
};

} // namespace orvo::shell
