#pragma once

#include "inventory/counts/count_types.h"
#include "inventory/counts/physical_adjustment.h"

#include <QSqlDatabase>
#include <QWidget>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableWidget;

namespace orvo::inventory::stock {
class JobProgress;
}

namespace orvo::inventory::counts {

// frmTomaFisica3: every page with where its three counts stand. F3 prepares count 3 of the page
// from counts 1 and 2; where the teams differ the third count is scanned or typed (txtCodigo,
// Enter, txtCantidad, Enter); F12 approves it; the sheet prints with the three quantities.
class FinalCountScreen : public QWidget {
    Q_OBJECT
public:
    FinalCountScreen(QSqlDatabase db, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {1100, 800}; }

    void refresh();
    void selectPage(int page);
    int currentPage() const;
    void prepare();
    void keyCode(const QString& code);
    void keyQuantity(const QString& quantity);
    void approve();
    void print();
    void exportPdf();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showPage();

    QSqlDatabase m_db;
    QList<PageProgress> m_pages;
    std::optional<FinalPage> m_final;
    QString m_keyed; // the barcode whose third count is being typed
    QTableWidget* m_browser = nullptr;
    QTableWidget* m_grid = nullptr;
    QLabel* m_state = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
    QLabel* m_article = nullptr;
};

// frmAprobarConteosEnLotes: the open count-1 pages with their totals; Space ticks, F3 ticks all,
// F12 approves the ticked ones in sequence with a progress bar. Only with one counting pass.
class BatchApprovalScreen : public QWidget {
    Q_OBJECT
public:
    BatchApprovalScreen(QSqlDatabase db, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {900, 600}; }

    void refresh();
    void tickAll();
    void approve();

private:
    QSqlDatabase m_db;
    QTableWidget* m_grid = nullptr;
    QLabel* m_message = nullptr;
    QProgressBar* m_bar = nullptr;
};

// frmAjusteFisicoLogico and frmAjusteFisicoLogicoParcial: what the count found against the book
// stock, and F5 that closes it. The store-wide one backs the database up first and runs as a job
// with its progress; the partial one generates the two adjustments.
class PhysicalAdjustmentScreen : public QWidget {
    Q_OBJECT
public:
    PhysicalAdjustmentScreen(QSqlDatabase db, QString userCode, bool partial,
                             QWidget* parent = nullptr);
    QSize sizeHint() const override { return {1000, 700}; }

    void refresh();
    void process();
    bool isRunning() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void processAll();
    void processPartial();

    QSqlDatabase m_db;
    QString m_userCode;
    bool m_partial;
    QTableWidget* m_grid = nullptr;
    QLabel* m_result = nullptr;
    stock::JobProgress* m_progress = nullptr;
    QPushButton* m_process = nullptr;
};

} // namespace orvo::inventory::counts
