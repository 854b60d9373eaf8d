#pragma once

#include "inventory/dispatch/guides.h"
#include "shell/record_form/record_screen.h"

#include <QSqlDatabase>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::dispatch {

// frmGuiaDespacho: the guide's driver (cboConductor), vehicle (cboVehiculo) and observation go
// through the record toolbar; txtRemision + Enter lists an approved remission, Supr takes it off;
// Aprobar (F12) closes the guide.
class GuideScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    GuideScreen(QSqlDatabase db, QWidget* parent = nullptr);

    int recordCount() const override { return int(m_guides.size()); }
    QSize sizeHint() const override { return {1100, 760}; }
    bool offers(Action action) const override;
    void navigateTo(int row);
    void addRemission(const QString& number);
    void approve() override;

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;
    void cancelRecord() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showGuide();
    void showRemissions();

    QSqlDatabase m_db;
    QList<GuideSummary> m_guides;
    int m_current = -1;
    long long m_pending = 0;
    Guide m_guide;

    QTableWidget* m_browser = nullptr;
    QLineEdit* m_number = nullptr;
    QDateEdit* m_date = nullptr;
    QComboBox* m_driver = nullptr;
    QComboBox* m_vehicle = nullptr;
    QLineEdit* m_note = nullptr;
    QLabel* m_state = nullptr;
    QLineEdit* m_remission = nullptr;
    QTableWidget* m_remissions = nullptr;
};

} // namespace orvo::inventory::dispatch
