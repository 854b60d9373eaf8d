#include "pos/fiscal_screens/fiscal_operations_screen.h"

#include "pos/fiscal_screens/fiscal_operations.h"
#include "shell/session/session_context.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
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
    grid->addWidget(igtfBox(), 2, 0, 1, 2);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(statusLabel());

    guarded(this, [this] {
        const QList<int> rates = storeTaxRates(m_db);
        for (int i = 0; i < m_rates.size() && i < rates.size(); ++i)
            m_rates[i]->setText(Decimal::fromScaled(rates[i], 2).toString(2));
        loadMeans();
        m_igtf->setChecked(registerIgtf(m_db, m_session.serial).enabled);
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

QWidget* FiscalOperationsScreen::igtfBox() {
    auto* box = new QGroupBox(QStringLiteral("IGTF y medios de pago"), this);
    m_means = new QTableWidget(0, 3, box);
    m_means->setObjectName(QStringLiteral("SpreadMediosPago"));
    m_means->setHorizontalHeaderLabels(
        {QStringLiteral("Forma de pago"), QStringLiteral("Medio"), QStringLiteral("Nombre")});
    m_means->horizontalHeader()->setStretchLastSection(true);
    m_means->verticalHeader()->hide();
    m_means->setMinimumSize(460, 240);
    auto* save = button("cmdGuardarMedios", QStringLiteral("Guardar y programar medios"));
    connect(save, &QPushButton::clicked, this, [this] { saveMeans(); });
    m_igtf =
        new QCheckBox(QStringLiteral("Cobrar IGTF en esta caja (divisas, medios 20 a 24)"), box);
    m_igtf->setObjectName(QStringLiteral("chkIGTF"));
    auto* apply = button("cmdAplicarIGTF", QStringLiteral("Aplicar IGTF"));
    connect(apply, &QPushButton::clicked, this, [this] { applyIgtf(); });
    auto* side = new QVBoxLayout;
    side->addWidget(save);
    side->addWidget(m_igtf);
    side->addWidget(apply);
    side->addStretch();
    auto* l = new QHBoxLayout(box);
    l->addWidget(m_means, 3);
    l->addLayout(side, 2);
    return box;
}

void FiscalOperationsScreen::loadMeans() {
    const QList<fiscal::WayMeans> rows = storePaymentMeans(m_db).rows();
    m_means->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r) {
        auto* way = new QTableWidgetItem(rows[r].wayName);
        way->setData(Qt::UserRole, rows[r].way);
        way->setFlags(way->flags() & ~Qt::ItemIsEditable);
        m_means->setItem(r, 0, way);
        m_means->setItem(
            r, 1,
            new QTableWidgetItem(QStringLiteral("%1").arg(rows[r].means, 2, 10, QLatin1Char('0'))));
        m_means->setItem(r, 2, new QTableWidgetItem(rows[r].name));
    }
    m_means->resizeColumnsToContents();
}

void FiscalOperationsScreen::saveMeans() {
    guarded(this, [this] {
        QList<fiscal::WayMeans> rows;
        for (int r = 0; r < m_means->rowCount(); ++r) {
            fiscal::WayMeans m;
            m.way = m_means->item(r, 0)->data(Qt::UserRole).toInt();
            m.wayName = m_means->item(r, 0)->text();
            bool ok = false;
            m.means = m_means->item(r, 1)->text().trimmed().toInt(&ok);
            if (!ok)
                m.means = 0;
            m.name = m_means->item(r, 2)->text().trimmed();
            rows << m;
        }
        saveStorePaymentMeans(m_db, rows);
        loadMeans();
        const auto names = storePaymentMeans(m_db).names();
        runOnPrinter(
            QStringLiteral("Programando los medios de pago..."),
            [names](fiscal::FiscalPrinter& p) { programPaymentMeans(p, names); },
            [this] { statusLabel()->setText(QStringLiteral("Medios de pago programados.")); });
    });
}

void FiscalOperationsScreen::applyIgtf() {
    guarded(this, [this] {
        if (m_session.serial.isEmpty())
            throw UserError(QStringLiteral("Debe configurar la caja...!"));
        IgtfChoice choice = registerIgtf(m_db, m_session.serial);
        choice.enabled = m_igtf->isChecked();
        const auto names = storePaymentMeans(m_db).names();
        runOnPrinter(
            QStringLiteral("Programando el IGTF en la impresora fiscal..."),
            [choice, names](fiscal::FiscalPrinter& p) {
                setPrinterIgtf(p, choice);
                if (choice.enabled)
                    programPaymentMeans(p, names);
            },
            [this, choice] {
                recordRegisterIgtf(m_db, m_session.serial, choice.enabled);
                statusLabel()->setText(choice.enabled ? QStringLiteral("IGTF activado.")
                                                      : QStringLiteral("IGTF desactivado."));
            });
    });
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
