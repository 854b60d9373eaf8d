#pragma once

#include "inventory/articles/articles.h"

#include <QAbstractTableModel>

namespace orvo::inventory {

// The model browser's rows for a virtual table view: only visible cells are ever formatted.
class ModelListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setList(ModelList list);
    const ModelList& list() const { return m_list; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    ModelList m_list;
};

} // namespace orvo::inventory
