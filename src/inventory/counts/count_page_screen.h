#pragma once

#include "inventory/counts/count_types.h"
#include "shell/record_form/record_screen.h"

#include <QHash>
#include <QSet>
#include <QSqlDatabase>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace orvo::inventory::counts {

// frmTomaFisica1, frmTomaFisica2 and frmTomaParcial: the pages (zones) of a count go through the
// record toolbar (Nuevo proposes the next page number); the page shown is counted from the
// scanner: every barcode read into txtCodigo with Enter counts one unit (or the quantity in
// txtCantidad, F2; "12*barcode" counts twelve) and is written at once, so nothing is lost with the
// machine. Delete on a line removes it; F12 approves the page; the record toolbar prints its count
// sheet. The first count also sets how many counting passes the store makes (cmdConteos).
class CountPageScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    enum class Kind { First, Second, Partial };

    CountPageScreen(QSqlDatabase db, QString userCode, Kind kind, QWidget* parent = nullptr);

    int recordCount() const override { return int(m_pages.size()); }
    QSize sizeHint() const override { return {1100, 800}; }
    bool offers(Action action) const override;

    void navigateTo(int row);
    // What the scanner does: a barcode, optionally "quantity*barcode", with the quantity field's
    // count when none is given.
    void scanCode(const QString& text);
    void approve() override;
    void removeLine(int row);
    void exportPdf();
    void chooseCountPasses();
    void refresh();
    int currentPage() const;

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;
    void cancelRecord() override;
    void beginSearch() override;
    void runSearch() override;
    QString proposedKey() const override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Pass pass() const { return m_kind == Kind::Second ? Pass::Second : Pass::First; }
    const PageSummary* current() const;
    void showPage(const CountPage& page);
    void showLine(const CountLine& line);
    void showTotals();
    void updateEditability();
    void keyTakesTyping(bool typing);
    bool pageOpen() const;

    QSqlDatabase m_db;
    QString m_userCode;
    Kind m_kind;
    QList<PageSummary> m_pages;
    int m_current = -1;
    int m_pending = 0;
    CountPage m_page;
    QHash<QString, int> m_rowOf; // barcode -> line row
    QSet<QString> m_warnedZeroCost;

    QTableWidget* m_browser = nullptr;
    QLineEdit* m_number = nullptr;
    QLineEdit* m_note = nullptr;
    QLabel* m_state = nullptr;
    QLabel* m_passes = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
    QLabel* m_article = nullptr;
    QLabel* m_totals = nullptr;
    QTableWidget* m_grid = nullptr;
    QList<QPushButton*> m_countButtons;
};

} // namespace orvo::inventory::counts
