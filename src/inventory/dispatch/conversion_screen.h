#pragma once

#include "inventory/dispatch/conversions.h"

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace orvo::inventory::dispatch {

// frmConvRemRecAjuste: cboTipoDocumento (remission or reception), txtNumero + Enter shows what the
// adjustment will carry, cboTipoAjuste, cmdConvertir (F12) asks and converts, then offers the
// adjustment's print.
class AdjustmentConversionScreen : public QWidget {
    Q_OBJECT
public:
    AdjustmentConversionScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {1000, 650}; }
    void show(long long number);
    void convert();

private:
    AdjustmentSource source() const;
    void fillTypes();

    QSqlDatabase m_db;
    QString m_userCode;
    long long m_shown = 0;
    QComboBox* m_source = nullptr;
    QLineEdit* m_number = nullptr;
    QComboBox* m_type = nullptr;
    QTableWidget* m_grid = nullptr;
    QLabel* m_total = nullptr;
};

} // namespace orvo::inventory::dispatch
