#include "inventory/articles/model_list_model.h"

#include <QLocale>

namespace orvo::inventory {

namespace {
enum Column { kReference, kBrand, kName, kVariants, kStock, kPrice, kCost };
}

void ModelListModel::setList(ModelList list) {
    beginResetModel();
    m_list = std::move(list);
    endResetModel();
}

int ModelListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_list.rows.size());
}

int ModelListModel::columnCount(const QModelIndex& parent) const {
    if (parent.isValid())
        return 0;
    return kStock + 1 + (m_list.withPrices ? 1 : 0) + (m_list.withCosts ? 1 : 0);
}

QVariant ModelListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::TextAlignmentRole))
        return {};
    int column = index.column();
    if (column == kPrice && !m_list.withPrices)
        column = kCost;
    if (role == Qt::TextAlignmentRole)
        return column >= kVariants ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    const ModelRow& r = m_list.rows[index.row()];
    const QLocale locale;
    switch (column) {
    case kReference:
        return r.reference;
    case kBrand:
        return r.brandName.isEmpty() ? r.brand : r.brandName;
    case kName:
        return r.name;
    case kVariants:
        return r.variants;
    case kStock:
        return r.stock.toLocaleString(locale, 2);
    case kPrice:
        return r.retailPrice.toLocaleString(locale, 2);
    case kCost:
        return r.averageCost.toLocaleString(locale, 2);
    }
    return {};
}

QVariant ModelListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (section == kPrice && !m_list.withPrices)
        section = kCost;
    static const QStringList captions = {"Referencia",    "Marca",      "Nombre",
                                         "Variaciones",   "Existencia", "Precio Detal",
                                         "Costo Promedio"};
    return captions.value(section);
}

} // namespace orvo::inventory
