#pragma once

#include "common/decimal/decimal.h"

#include <QSqlDatabase>
#include <QWidget>
#include <functional>

class QCheckBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace orvo::common::rate {

// A rate shown with the decimals it has (at least two) and this country's separators.
QString rateText(const Decimal& value);

// frmRegistrarTasaCambio: the day's rate typed (or read from a file, or the one received from
// head office), registered for today or an earlier day; the past rates below.
class RateScreen : public QWidget {
    Q_OBJECT
public:
    RateScreen(QSqlDatabase db, QString appFolder, QWidget* parent = nullptr);

    // The screen's actions, as its buttons run them.
    void registerTyped();
    void loadFromFile();
    void loadReceived();

    QSize sizeHint() const override { return {760, 600}; }

private:
    void refresh();
    QString recibeFolder() const { return m_appFolder + QStringLiteral("/Recibe"); }

    QSqlDatabase m_db;
    QString m_appFolder;
    QLabel* m_current = nullptr;
    QCheckBox* m_update = nullptr;
    QCheckBox* m_export = nullptr;
    QCheckBox* m_import = nullptr;
    QLineEdit* m_rate = nullptr;
    QDateEdit* m_day = nullptr;
    QPushButton* m_register = nullptr;
    QPushButton* m_received = nullptr;
    QTableWidget* m_rates = nullptr;
};

// frmExportarTasaCambio: head office writes the current rate into the file the stores load.
class RateExportScreen : public QWidget {
    Q_OBJECT
public:
    RateExportScreen(QSqlDatabase db, QWidget* parent = nullptr);
    void exportRate();

private:
    QSqlDatabase m_db;
    QLabel* m_current = nullptr;
};

// What the rate screens borrow from the running program.
struct RateServices {
    std::function<QSqlDatabase()> database;
    std::function<QString()> appFolder;
};
// Adds frmRegistrarTasaCambio and frmExportarTasaCambio to the ScreenRegistry. Without services,
// the shared connection and the application folder.
void registerRateScreens(RateServices services = {});

} // namespace orvo::common::rate
