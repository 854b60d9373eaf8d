#pragma once

#include "inventory/stock/stock_card.h"

#include <QSqlDatabase>
#include <QWidget>
#include <optional>

class QDateEdit;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::stock {

// frmReporteKardex, "Kardex de Inventario": a barcode (txtCodigoBarra, F2 lists them) or a model
// (txtReferencia and txtMarca, F3 lists them), the days (DtpDesde, DtpHasta), then cmdConsultar
// (F5): every document of the period with the balance after it (grdKardex) and the total of each
// kind of document (grdResumen). cmdImprimir prints it, cmdPDF writes it to a PDF file.
class StockCardScreen : public QWidget {
    Q_OBJECT
public:
    explicit StockCardScreen(QSqlDatabase db, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {1100, 700}; }

    void query();
    void chooseBarcode();
    void chooseModel();
    void printCard();
    void exportPdf();
    const std::optional<StockCard>& card() const { return m_card; }

private:
    void showCard(const StockCard& card);

    QSqlDatabase m_db;
    QLineEdit* m_barcode;
    QLineEdit* m_reference;
    QLineEdit* m_brand;
    QDateEdit* m_from;
    QDateEdit* m_to;
    QLabel* m_description;
    QLabel* m_opening;
    QLabel* m_closing;
    QLabel* m_stock;
    QTableWidget* m_rows;
    QTableWidget* m_kinds;
    std::optional<StockCard> m_card;
};

} // namespace orvo::inventory::stock
