#pragma once

#include "inventory/purchases/line_sources.h"
#include "inventory/purchases/purchase_print.h"
#include "inventory/purchases/purchase_types.h"
#include "shell/record_form/record_screen.h"

#include <QSqlDatabase>

class QBoxLayout;
class QDateEdit;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTableWidgetItem;
class QVBoxLayout;

namespace orvo::inventory::purchases {

// What the stock document screens share (purchases, transfers), driven by the record toolbar: the
// browser of documents (grdConsulta) above, the document below with its header, its keying row
// (txtCaja where lines go into boxes, txtCodigo, txtCantidad and, where lines carry one,
// txtPrecio: Enter moves from one to the next and the last adds the line) and its lines with
// their totals. An approved document is read-only: Modify and Delete are not offered for it.
class DocumentScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    int recordCount() const override { return int(m_documents.size()); }
    QSize sizeHint() const override { return {1180, 820}; }
    bool offers(Action action) const override;

    // Shows the document at `row` of the browser.
    void navigateTo(int row);
    const QList<DocumentLine>& keyedLines() const { return m_lines; }
    // Keys one line as the keying row does.
    void keyLine(const QString& barcode, const QString& quantity, const QString& price = {});
    // Removes a line after asking.
    void deleteLine(int row);
    // Writes the current document to a PDF file the user names (cmdPDF).
    void exportPdf();

protected:
    DocumentScreen(QSqlDatabase db, QString userCode, const QString& name, const QString& title,
                   const QString& linesName, bool withPrice, QWidget* parent);

    // Built by the screen's constructor, in this order: header rows (two columns), then finish().
    QFormLayout* header() const { return m_header; }
    QFormLayout* headerRight() const { return m_headerRight; }
    // A typed number: digits and one decimal separator, refused when it is anything else.
    QLineEdit* numberField(const QString& name, int decimals = 2);
    QDateEdit* dateField(const QString& name);
    QLineEdit* textField(const QString& name, int maxLength);
    // A button kept out of the Enter chain; `key` (an F-key) presses it from anywhere on the
    // screen and is shown in its caption.
    QPushButton* button(const QString& name, const QString& text, int key = 0);
    // Lines go into numbered boxes: the keying row starts with the box (txtCaja), each line
    // keyed takes it, and the same barcode in two boxes stays two lines. Before finish().
    void keyIntoBoxes();
    // The browser's column captions (six: number, code, name, date, total, status).
    void setBrowserHeaders(const QStringList& headers);
    // Lines valued at cost, without tax or discount (adjustments): the price column is the unit
    // cost and only the total is shown. Called before finish().
    void valueLinesAtCost() { m_atCost = true; }
    // Adds the keying row, the lines and the totals; installs the keyboard behaviour.
    void finish(QBoxLayout* extraButtons = nullptr);

    // Hooks.
    virtual QList<DocumentSummary> listDocuments() = 0;
    virtual void showDocument(const DocumentSummary& summary) = 0;
    virtual void saveDocument() = 0;
    virtual void deleteDocument(const DocumentSummary& summary) = 0;
    virtual PrintedDocument printedDocument(const DocumentSummary& summary) = 0;
    // A line keyed in the keying row; by default the article with the typed quantity and price.
    virtual DocumentLine lineFor(const QString& barcode, const Decimal& quantity,
                                 const Decimal& price);
    // The header discount the totals show.
    virtual Decimal discountPercent() const { return {}; }
    // After the lines changed (keyed, deleted, loaded).
    virtual void linesChanged() {}
    // What the lines grid shows: its columns and a line's cells. By default a priced document's
    // code, description, quantity, price, tax rate and amount.
    struct Column {
        QString header;
        bool right = false;
    };
    virtual QList<Column> lineColumns() const;
    virtual QStringList lineCells(const DocumentLine& line) const;
    // The totals under the lines (label objectName and caption) and their texts. By default
    // merchandise, discount, tax and total.
    struct TotalField {
        QString name;
        QString caption;
    };
    virtual QList<TotalField> totalFields() const;
    virtual QStringList totalTexts(const QList<DocumentLine>& lines) const;

    // What the screen shows of the current document.
    void setLines(const QList<DocumentLine>& lines);
    void setStatus(int status);
    int status() const { return m_status; }
    void showProgress(const QString& text);
    // The box the keying row fills (1 when lines are not boxed or nothing is typed).
    long long currentBox() const;
    void setCurrentBox(long long box);
    // The document to show after the next requery (its number).
    void selectAfterRequery(const QString& number, const QString& supplier = {});
    const DocumentSummary* current() const;
    void refreshLines();
    void refreshTotals();
    static Decimal parsed(const QLineEdit* field);
    static void setNumber(QLineEdit* field, const Decimal& value, int decimals = 2);

    // RecordScreen.
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;
    void modifyRecord() override;
    void cancelRecord() override;
    void beginSearch() override;
    void runSearch() override;

    QSqlDatabase m_db;
    QString m_userCode;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_quantity = nullptr;
    QLineEdit* m_price = nullptr;
    QLineEdit* m_box = nullptr;
    QTableWidget* m_grid = nullptr;
    QVBoxLayout* m_form = nullptr;

private:
    void addKeyedLine();
    void barcodeEntered();
    // Read-only keys (numbers the program gives) take typing only while searching.
    void keysTakeTyping(bool typing);
    // The first field the user can type in gets the cursor.
    void focusFirstEditable();
    void updateEditability();
    bool eventFilter(QObject* watched, QEvent* event) override;

    QString m_linesName;
    bool m_withPrice;
    bool m_boxed = false;
    bool m_atCost = false;
    QList<DocumentSummary> m_documents;
    QList<DocumentLine> m_lines;
    int m_current = -1;
    int m_status = kOpen;
    QPair<QString, QString> m_pending;
    QTableWidget* m_browser = nullptr;
    QFormLayout* m_header = nullptr;
    QFormLayout* m_headerRight = nullptr;
    QLabel* m_article = nullptr;
    QLabel* m_state = nullptr;
    QLabel* m_progress = nullptr;
    QList<QLabel*> m_totals;
};

// A read-only list of whole rows, one selected at a time; column `stretch` takes the width left
// (all columns share the width when it is negative).
QTableWidget* listTable(QWidget* parent, const QString& name, const QStringList& headers,
                        int stretch = -1);
// A cell of such a list, numbers right-aligned.
QTableWidgetItem* listCell(const QString& text, bool right = false);

// A screen button outside the Enter chain, pressed by `key` (0: none) anywhere on `screen`.
QPushButton* screenButton(QWidget* screen, const QString& name, const QString& text, int key = 0);
// Asks for a dBase file (from Recibe/ by default); empty when none is chosen.
QString chooseDbfFile(QWidget* parent, const QString& caption);
// Asks for a packing list (MOVITRAN.DBF) and reads it; the articles it may not bring are written
// to "Articulos no existentes.txt" and offered for viewing. Nothing when no file is chosen.
QList<DocumentLine> loadPackingList(QWidget* parent, const QSqlDatabase& db, PackingCheck check);
// Tells the user how many articles were left out (written to "Articulos no existentes.txt") and
// offers to show the file.
void offerMissingArticles(QWidget* parent, const QList<PackingList::Missing>& missing);
// Asks which sister company (EMPRESAS) to read from; nothing when cancelled. UserError when
// there is none.
std::optional<SisterCompany> chooseSisterCompany(QWidget* parent, const QSqlDatabase& db);
// Prints a purchase document on the printer the user chooses (or a PDF file).
void printDocument(QWidget* parent, const PrintedDocument& document);
// Writes it to a PDF file the user names.
void writePdf(QWidget* parent, const PrintedDocument& document);

} // namespace orvo::inventory::purchases
