#include "inventory/purchases/comparison_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/purchases/purchase_print.h"
#include "inventory/purchases/receptions.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::purchases {

ComparisonScreen::ComparisonScreen(QSqlDatabase db, QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)) {
    setObjectName(kComparisonScreen);
    setWindowTitle(QStringLiteral("Comparar recepción con compra"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    m_number = new QLineEdit(this);
    m_number->setObjectName(QStringLiteral("txtRecepcion"));
    m_number->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));
    top->addWidget(new QLabel(QStringLiteral("Recepción Nº:"), this));
    top->addWidget(m_number);
    auto* run = new QPushButton(QStringLiteral("Comparar"), this);
    run->setObjectName(QStringLiteral("cmdComparar"));
    top->addWidget(run);
    auto* print = new QPushButton(QStringLiteral("Imprimir"), this);
    print->setObjectName(QStringLiteral("cmdImprimir"));
    top->addWidget(print);
    auto* pdf = new QPushButton(QStringLiteral("PDF"), this);
    pdf->setObjectName(QStringLiteral("cmdPDF"));
    top->addWidget(pdf);
    top->addStretch();
    layout->addLayout(top);
    m_grid = new QTableWidget(0, 5, this);
    m_grid->setObjectName(QStringLiteral("SpreadComparacion"));
    m_grid->setHorizontalHeaderLabels({QStringLiteral("Código"), QStringLiteral("Descripción"),
                                       QStringLiteral("Recibido"), QStringLiteral("Facturado"),
                                       QStringLiteral("Diferencia")});
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->verticalHeader()->hide();
    m_grid->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_grid->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    layout->addWidget(m_grid, 1);
    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("lblResumen"));
    layout->addWidget(m_summary);
    auto go = [this] {
        guarded(this, [&] {
            if (!m_number->text().isEmpty())
                compare(m_number->text().toLongLong());
        });
    };
    connect(m_number, &QLineEdit::returnPressed, this, go);
    connect(run, &QPushButton::clicked, this, go);
    connect(print, &QPushButton::clicked, this, [this] { perform(Action::Print); });
    connect(pdf, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            if (m_reception > 0)
                writePdf(this, comparisonDocument(m_db, m_reception));
        });
    });
}

bool ComparisonScreen::offers(Action action) const {
    return action == Action::Print || action == Action::Exit;
}

void ComparisonScreen::compare(long long reception) {
    if (!loadReception(m_db, reception))
        throw UserError(QStringLiteral("La recepción ") + QString::number(reception) +
                        QStringLiteral(" no existe...!"));
    m_reception = reception;
    m_lines = compareReception(m_db, reception);
    const QLocale locale;
    m_grid->setRowCount(0);
    m_grid->setRowCount(int(m_lines.size()));
    int differing = 0;
    for (int r = 0; r < m_lines.size(); ++r) {
        const ComparisonLine& l = m_lines[r];
        const QStringList cells = {l.barcode, l.name, l.counted.toLocaleString(locale, 2),
                                   l.invoiced.toLocaleString(locale, 2),
                                   l.difference().toLocaleString(locale, 2)};
        for (int c = 0; c < cells.size(); ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            if (c >= 2)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            if (!l.difference().isZero())
                item->setForeground(QColor(Qt::red));
            m_grid->setItem(r, c, item);
        }
        if (!l.difference().isZero())
            ++differing;
    }
    m_summary->setText(differing == 0 ? QStringLiteral("La recepción coincide con lo facturado.")
                                      : QString::number(differing) +
                                            QStringLiteral(" artículo(s) con diferencias."));
    emit recordStateChanged();
}

void ComparisonScreen::print() {
    if (m_reception > 0)
        printDocument(this, comparisonDocument(m_db, m_reception));
}

} // namespace orvo::inventory::purchases
