#include "pos/fiscal_screens/fiscal_operations_screen.h"

#include "pos/fiscal_screens/fiscal_operations.h"
#include "shell/session/session_context.h"

#include <QDateEdit>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace orvo::pos::fiscal_screens {

namespace {

QDateEdit* dateEdit(QWidget* parent, const char* name, const QDate& date) {
    auto* d = new QDateEdit(date, parent);
    d->setObjectName(QLatin1String(name));
    d->setCalendarPopup(true);
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    return d;
}

QLineEdit* digitsEdit(QWidget* parent, const char* name) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(QLatin1String(name));
    e->setMaxLength(6);
    e->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), e));
    return e;
}

QRadioButton* option(QWidget* parent, const char* name, const QString& text, bool checked) {
    auto* o = new QRadioButton(text, parent);
    o->setObjectName(QLatin1String(name));
    o->setChecked(checked);
    return o;
}

// "16", "16,5" or "16.50" as hundredths of a percent.
int rateHundredths(const QString& typed) {
    const auto d =
        Decimal::parse(QString(typed.trimmed()).replace(QLatin1Char(','), QLatin1Char('.')));
    if (!d || d->isNegative() || *d >= Decimal(100))
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"));
    return int(d->scaled(2));
}

} // namespace

FiscalOperationsScreen::FiscalOperationsScreen(QSqlDatabase db,
                                               const shell::SessionContext& session,
                                               fiscal::FiscalPrinterThread& printer,
                                               QWidget* parent)
    : PrinterScreen(printer, parent), m_db(std::move(db)), m_session(session) {
    setObjectName(QStringLiteral("frmOperacionesFiscales"));
    setWindowTitle(QStringLiteral("Operaciones de la Impresora Fiscal"));

    auto* grid = new QGridLayout;
    grid->addWidget(reportsBox(), 0, 0);
    grid->addWidget(rangeBox(), 0, 1);
    grid->addWidget(programmingBox(), 1, 0);
    grid->addWidget(readingBox(), 1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(statusLabel());

    guarded(this, [this] {
        const QList<int> rates = storeTaxRates(m_db);
        for (int i = 0; i < m_rates.size() && i < rates.size(); ++i)
            m_rates[i]->setText(Decimal::fromScaled(rates[i], 2).toString(2));
    });
}

QPushButton* FiscalOperationsScreen::button(const char* name, const QString& text) {
    auto* b = new QPushButton(text, this);
    b->setObjectName(QLatin1String(name));
    addActionControl(b);
    return b;
}

QWidget* FiscalOperationsScreen::reportsBox() {
    auto* box = new QGroupBox(QStringLiteral("Reportes diarios"), this);
    auto* x = button("cmdReporteX", QStringLiteral("Reporte X"));
    auto* z = button("cmdReporteZ", QStringLiteral("Reporte Z"));
    connect(x, &QPushButton::clicked, this, [this] { xReport(); });
    connect(z, &QPushButton::clicked, this, [this] { zReport(); });
    auto* l = new QVBoxLayout(box);
    l->addWidget(x);
    l->addWidget(z);
    l->addStretch();
    return box;
}

QWidget* FiscalOperationsScreen::rangeBox() {
    auto* box = new QGroupBox(QStringLiteral("Reporte de memoria fiscal por rango"), this);
    const QDate today = QDate::currentDate();
    m_byDates = option(box, "optPorFecha", QStringLiteral("Por fechas"), true);
    m_byNumbers = option(box, "optPorNumero", QStringLiteral("Por números de Z"), false);
    auto* kind = new QWidget(box);
    m_detailed = option(kind, "optDetallado", QStringLiteral("Detallado"), true);
    m_summary = option(kind, "optResumido", QStringLiteral("Resumido"), false);
    auto* kindLayout = new QHBoxLayout(kind);
    kindLayout->setContentsMargins(0, 0, 0, 0);
    kindLayout->addWidget(m_detailed);
    kindLayout->addWidget(m_summary);
    m_fromDate = dateEdit(box, "dtpDesde", today.addDays(1 - today.day()));
    m_toDate = dateEdit(box, "dtpHasta", today);
    m_fromNumber = digitsEdit(box, "txtDesde");
    m_toNumber = digitsEdit(box, "txtHasta");
    auto* print = button("cmdReportePorRango", QStringLiteral("Imprimir"));
    connect(print, &QPushButton::clicked, this, [this] { rangeReport(); });

    auto* by = new QWidget(box);
    auto* byLayout = new QHBoxLayout(by);
    byLayout->setContentsMargins(0, 0, 0, 0);
    byLayout->addWidget(m_byDates);
    byLayout->addWidget(m_byNumbers);
    auto* f = new QFormLayout(box);
    f->addRow(by);
    f->addRow(QStringLiteral("Desde la fecha:"), m_fromDate);
    f->addRow(QStringLiteral("Hasta la fecha:"), m_toDate);
    f->addRow(QStringLiteral("Desde el Z:"), m_fromNumber);
    f->addRow(QStringLiteral("Hasta el Z:"), m_toNumber);
    f->addRow(kind);
    f->addRow(print);
    const auto follow = [this] {
        const bool dates = m_byDates->isChecked();
        m_fromDate->setEnabled(dates);
        m_toDate->setEnabled(dates);
        m_fromNumber->setEnabled(!dates);
        m_toNumber->setEnabled(!dates);
    };
    connect(m_byDates, &QRadioButton::toggled, this, follow);
    follow();
    return box;
}

QWidget* FiscalOperationsScreen::programmingBox() {
    auto* box = new QGroupBox(QStringLiteral("Programación"), this);
    auto* lines = button("cmdProgramarEncabezado", QStringLiteral("Programar encabezado y pie"));
    connect(lines, &QPushButton::clicked, this, [this] { programLines(); });
    auto* f = new QFormLayout(box);
    f->addRow(lines);
    for (int i = 1; i <= 3; ++i) {
        auto* e = new QLineEdit(box);
        e->setObjectName(QStringLiteral("txtTasa%1").arg(i));
        e->setAlignment(Qt::AlignRight);
        m_rates << e;
        f->addRow(QStringLiteral("Tasa %1 (%):").arg(i), e);
    }
    m_ratesDate = dateEdit(box, "dtpFechaTasas", QDate::currentDate());
    f->addRow(QStringLiteral("Vigentes desde:"), m_ratesDate);
    auto* rates = button("cmdActualizarTasas", QStringLiteral("Actualizar tasas"));
    connect(rates, &QPushButton::clicked, this, [this] { updateRates(); });
    f->addRow(rates);
    return box;
}

QWidget* FiscalOperationsScreen::readingBox() {
    auto* box = new QGroupBox(QStringLiteral("Contadores y visor"), this);
    auto* read = button("cmdLeerContadores", QStringLiteral("Leer contadores"));
    connect(read, &QPushButton::clicked, this, [this] { readCounters(); });
    m_counters = new QPlainTextEdit(box);
    m_counters->setObjectName(QStringLiteral("txtContadores"));
    m_counters->setReadOnly(true);
    m_display1 = new QLineEdit(QStringLiteral("ORVO"), box);
    m_display1->setObjectName(QStringLiteral("txtVisor1"));
    m_display1->setMaxLength(20);
    m_display2 = new QLineEdit(QStringLiteral("PRUEBA DE VISOR"), box);
    m_display2->setObjectName(QStringLiteral("txtVisor2"));
    m_display2->setMaxLength(20);
    auto* display = button("cmdProbarVisor", QStringLiteral("Probar visor"));
    connect(display, &QPushButton::clicked, this, [this] { testDisplay(); });
    auto* l = new QVBoxLayout(box);
    l->addWidget(read);
    l->addWidget(m_counters);
    l->addWidget(m_display1);
    l->addWidget(m_display2);
    l->addWidget(display);
    return box;
}

void FiscalOperationsScreen::xReport() {
    runOnPrinter(
        QStringLiteral("Imprimiendo el reporte X..."),
        [](fiscal::FiscalPrinter& p) { printXReport(p); },
        [this] { statusLabel()->setText(QStringLiteral("Reporte X impreso.")); });
}

void FiscalOperationsScreen::zReport() {
    if (isBusy())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea realizar el reporte Z...?"),
                            QStringLiteral("Información"), false))
        return;
    runOnPrinter(
        QStringLiteral("Imprimiendo el reporte Z..."),
        [](fiscal::FiscalPrinter& p) { printZReport(p); },
        [this] {
            statusLabel()->setText(QStringLiteral("Reporte Z impreso."));
            if (!m_session.serial.isEmpty())
                recordZOnRegisterDay(m_db, m_session.serial, QDate::currentDate());
        });
}

void FiscalOperationsScreen::rangeReport() {
    RangeReport r;
    r.byDates = m_byDates->isChecked();
    r.detailed = m_detailed->isChecked();
    r.fromDate = m_fromDate->date();
    r.toDate = m_toDate->date();
    r.fromNumber = m_fromNumber->text().toInt();
    r.toNumber = m_toNumber->text().toInt();
    runOnPrinter(
        QStringLiteral("Imprimiendo el reporte de memoria fiscal..."),
        [r](fiscal::FiscalPrinter& p) { printRangeReport(p, r); },
        [this] { statusLabel()->setText(QStringLiteral("Reporte de memoria fiscal impreso.")); });
}

void FiscalOperationsScreen::programLines() {
    guarded(this, [this] {
        const QList<fiscal::ProgrammedLine> lines = storeHeaderFooter(m_db, QDate::currentDate());
        runOnPrinter(
            QStringLiteral("Programando el encabezado y el pie..."),
            [lines](fiscal::FiscalPrinter& p) { programHeaderFooter(p, lines); },
            [this] { statusLabel()->setText(QStringLiteral("Encabezado y pie programados.")); });
    });
}

void FiscalOperationsScreen::updateRates() {
    guarded(this, [this] {
        QList<int> rates;
        for (QLineEdit* e : m_rates)
            rates << rateHundredths(e->text());
        const QDate effective = m_ratesDate->date();
        runOnPrinter(
            QStringLiteral("Actualizando Tasas en la impresora Fiscal"),
            [rates, effective](fiscal::FiscalPrinter& p) { updateTaxRates(p, rates, effective); },
            [this] { statusLabel()->setText(QStringLiteral("Tasas actualizadas.")); });
    });
}

void FiscalOperationsScreen::readCounters() {
    runOnPrinter(
        QStringLiteral("Leyendo los contadores de la impresora fiscal..."),
        [](fiscal::FiscalPrinter& p) { return fiscal_screens::readCounters(p); },
        [this](const PrinterCounters& c) { m_counters->setPlainText(countersText(c)); });
}

void FiscalOperationsScreen::testDisplay() {
    const QString upper = m_display1->text();
    const QString lower = m_display2->text();
    runOnPrinter(
        QStringLiteral("Escribiendo en el visor..."),
        [upper, lower](fiscal::FiscalPrinter& p) { fiscal_screens::testDisplay(p, upper, lower); },
        [this] { statusLabel()->setText(QStringLiteral("Visor probado.")); });
}

} // namespace orvo::pos::fiscal_screens
