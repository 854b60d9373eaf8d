#pragma once

#include "shell/startup/server_config.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace orvo::shell {

// frmConfServidor: where the store database is. In start-up mode it opens the shared connection
// itself; in change mode it tests the new settings first, asks, and then replaces the connection.
// Either way a working configuration is written to data/srvsql.txt.
class ServerConfigScreen : public QDialog {
    Q_OBJECT
public:
    enum class Mode { Startup, Change };

    ServerConfigScreen(Mode mode, const ServerConfig& current, QWidget* parent = nullptr,
                       const QString& configPath = {}, const QString& dataDir = {});

    Mode mode() const { return m_mode; }
    // Why the last connection failed (the server's own words), shown under the fields.
    void showFailure(const QString& reason);

signals:
    // Change mode: the shared connection now points at the new database.
    void connectionChanged();

private:
    void acceptSettings();
    void updateAuthFields();
    ServerConfig enteredConfig() const;
    bool eventFilter(QObject* watched, QEvent* event) override;

    Mode m_mode;
    QString m_configPath;
    QString m_dataDir;
    QLineEdit* m_server;
    QLineEdit* m_database;
    QRadioButton* m_integrated;
    QRadioButton* m_passwordAuth;
    QLineEdit* m_user;
    QLineEdit* m_password;
    QLabel* m_status;
    QPushButton* m_accept;
    QPushButton* m_cancel;
};

} // namespace orvo::shell
