#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

namespace orvo::inventory {

// The common data of a model (Referencia + CodigoMarca): what every variant row repeats.
struct ArticleModel {
    QString reference;
    QString brand;
    QString name; // the model name; variant names are built from it
    QString category;
    QString manufacturer;
    int taxCode = 1;
    Decimal taxRate; // IMPUESTOS.PorcentajeImpuesto of taxCode, as loaded
    Decimal reorderPoint;
    QString note;
    Decimal retailPrice; // before tax
    Decimal wholesalePrice;
    Decimal memberPrice;
    bool promotion = false;
    Decimal promotionPrice;
    QDate promotionStart{2000, 1, 1};
    QDate promotionEnd{2000, 1, 1};
    Decimal initialCost;
    Decimal averageCost;
    Decimal lastCost;
    Decimal dollarCost;
    int type = 0;   // 0 goods, 1 service
    int status = 1; // 1 active, 0 inactive
    bool serialized = false;
    bool fractional = false; // sold by weight or measure (INVENTARIO.Fraccionable)
};

struct GridColour {
    QString code;
    QString name;
};

// The size-by-colour grid of a model: sizes down, colours across, a barcode (or nothing) per cell.
class ModelGrid {
public:
    const QStringList& sizes() const { return m_sizes; }
    const QList<GridColour>& colours() const { return m_colours; }
    int rowCount() const { return int(m_sizes.size()); }
    int columnCount() const { return int(m_colours.size()); }

    QString barcode(int row, int column) const { return m_cells[row][column]; }
    void setBarcode(int row, int column, const QString& barcode);

    // Appends when the size (colour) is not there yet; returns its row (column).
    int addSize(const QString& size);
    int addColour(const GridColour& colour);
    void insertSize(int row, const QString& size);
    void insertColour(int column, const GridColour& colour);
    void removeSize(int row);
    void removeColour(int column);
    int rowOf(const QString& size) const { return int(m_sizes.indexOf(size)); }
    int columnOf(const QString& colourCode) const;

    // Cells holding a barcode.
    int variantCount() const;
    // Where `barcode` already sits, other than (row, column); {-1, -1} when nowhere.
    QPair<int, int> find(const QString& barcode, int exceptRow = -1, int exceptColumn = -1) const;

private:
    QStringList m_sizes;
    QList<GridColour> m_colours;
    QVector<QVector<QString>> m_cells; // [row][column]
};

// A model as the screen shows it: its data, its grid and whether it is being created.
struct LoadedModel {
    ArticleModel model;
    ModelGrid grid;
};

// One variant row of INVENTARIO, as the sale and document screens find it.
struct Article {
    QString barcode;
    QString name;
    QString reference;
    QString brand;
    QString size;
    QString colour;
    QString category;
    int taxCode = 0;
    Decimal taxRate;
    Decimal retailPrice; // before tax
    Decimal wholesalePrice;
    Decimal memberPrice;
    bool promotion = false;
    Decimal promotionPrice;
    QDate promotionStart;
    QDate promotionEnd;
    Decimal averageCost;
    Decimal lastCost;
    Decimal stock;
    int type = 0;
    int status = 1;
    bool serialized = false;
};

// Who writes, for LOG_ARTICULOS.
struct ArticleWriter {
    QString userCode;
    QString workstation;
    QString address;
    QString screen;

    // This workstation (host name, first non-loopback IPv4 address).
    static ArticleWriter here(const QString& userCode, const QString& screen);
};

} // namespace orvo::inventory
