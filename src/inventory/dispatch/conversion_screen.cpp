#include "inventory/dispatch/conversion_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/dispatch_print.h"
#include "inventory/dispatch/dispatch_widgets.h"
#include "inventory/purchases/document_screen.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::dispatch {

AdjustmentConversionScreen::AdjustmentConversionScreen(QSqlDatabase db, QString userCode,
                                                       QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_userCode(std::move(userCode)) {
    setObjectName(kAdjustmentConversionScreen);
    setWindowTitle(QStringLiteral("Convertir remisión o recepción en ajuste"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    m_source = new QComboBox(this);
    m_source->setObjectName(QStringLiteral("cboTipoDocumento"));
    m_source->addItem(QStringLiteral("Remisión"), int(AdjustmentSource::Remission));
    m_source->addItem(QStringLiteral("Recepción"), int(AdjustmentSource::Reception));
    top->addWidget(new QLabel(QStringLiteral("Documento:"), this));
    top->addWidget(m_source);
    m_number = new QLineEdit(this);
    m_number->setObjectName(QStringLiteral("txtNumero"));
    m_number->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));
    top->addWidget(new QLabel(QStringLiteral("Nº:"), this));
    top->addWidget(m_number);
    m_type = new QComboBox(this);
    m_type->setObjectName(QStringLiteral("cboTipoAjuste"));
    top->addWidget(new QLabel(QStringLiteral("Tipo de ajuste:"), this));
    top->addWidget(m_type, 1);
    QPushButton* run = purchases::screenButton(this, QStringLiteral("cmdConvertir"),
                                               QStringLiteral("Convertir"), Qt::Key_F12);
    top->addWidget(run);
    layout->addLayout(top);
    m_grid = purchases::listTable(this, QStringLiteral("SpreadDetalle"),
                                  {QStringLiteral("Código"), QStringLiteral("Descripción"),
                                   QStringLiteral("Cantidad"), QStringLiteral("Costo"),
                                   QStringLiteral("Total")});
    layout->addWidget(m_grid, 1);
    m_total = new QLabel(this);
    m_total->setObjectName(QStringLiteral("lblTotal"));
    layout->addWidget(m_total);

    fillTypes();
    connect(m_source, &QComboBox::currentIndexChanged, this, [this] {
        fillTypes();
        m_shown = 0;
        m_grid->setRowCount(0);
        m_total->clear();
    });
    connect(m_number, &QLineEdit::returnPressed, this, [this] {
        guarded(this, [&] {
            if (!m_number->text().isEmpty())
                show(m_number->text().toLongLong());
        });
    });
    connect(run, &QPushButton::clicked, this, [this] { guarded(this, [&] { convert(); }); });
    m_source->setFocus();
}

AdjustmentSource AdjustmentConversionScreen::source() const {
    return AdjustmentSource(m_source->currentData().toInt());
}

void AdjustmentConversionScreen::fillTypes() {
    m_type->clear();
    for (const store::AdjustmentType& t : adjustmentTypesFor(m_db, source()))
        m_type->addItem(QString::number(t.code) + QStringLiteral(" - ") + t.name, t.code);
}

void AdjustmentConversionScreen::show(long long number) {
    m_shown = 0;
    m_grid->setRowCount(0);
    m_total->clear();
    const AdjustmentPreview p = previewAdjustment(m_db, source(), number);
    const QLocale locale;
    QList<QStringList> rows;
    for (const store::SummedLine& l : p.lines)
        rows.append({l.barcode, l.name, l.quantity.toLocaleString(locale, 3),
                     l.cost.toLocaleString(locale, 2),
                     (l.quantity * l.cost).rounded(2).toLocaleString(locale, 2)});
    fillGrid(m_grid, rows, 2);
    m_total->setText(QStringLiteral("Sucursal: ") + p.branch + QStringLiteral("    Total: ") +
                     p.total.toLocaleString(locale, 2));
    m_shown = number;
    m_type->setFocus();
}

void AdjustmentConversionScreen::convert() {
    if (m_shown == 0) {
        if (m_number->text().isEmpty())
            throw UserError(QStringLiteral("Indique el número del documento...!"));
        show(m_number->text().toLongLong());
    }
    if (m_type->currentIndex() < 0)
        throw UserError(QStringLiteral("Seleccione un tipo de ajuste...!"));
    const QString what = source() == AdjustmentSource::Remission ? QStringLiteral("la remisión")
                                                                 : QStringLiteral("la recepción");
    if (!dialogs().question(
            this, QStringLiteral("Desea convertir ") + what + QStringLiteral(" en ajuste...?"),
            QStringLiteral("Información"), false))
        return;
    const long long adjustment =
        convertToAdjustment(m_db, source(), m_shown, m_type->currentData().toInt(), m_userCode);
    m_shown = 0;
    m_grid->setRowCount(0);
    m_total->setText(QStringLiteral("Ajuste Nº ") + QString::number(adjustment));
    m_number->clear();
    if (dialogs().question(this,
                           QStringLiteral("Documento convertido en ajuste con exito...!\nDesea "
                                          "imprimir el ajuste?"),
                           QStringLiteral("Información"), false))
        purchases::printDocument(this, adjustmentDocument(m_db, adjustment));
    m_number->setFocus();
}

} // namespace orvo::inventory::dispatch
