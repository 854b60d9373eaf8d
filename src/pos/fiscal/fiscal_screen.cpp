#include "pos/fiscal/fiscal_screen.h"

#include "common/dialogs/dialogs.h"
#include "pos/fiscal/document_builder.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/protocol/replies.h"
#include "pos/fiscal/register_printer.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::pos::fiscal {

namespace {

QString stateText(FiscalPrinter& p) {
    if (!p.probe())
        throw UserError(QStringLiteral("No existe comunicación con la impresora fiscal...!"));
    const int status = p.status();
    const int error = p.error();
    const auto s1 = p.readS1();
    const auto day = p.openDay();
    if (!s1 || !day)
        throw UserError(p.errorText());
    QStringList out;
    out << QStringLiteral("Puerto: %1").arg(p.portName())
        << QStringLiteral("Serial: %1   RIF: %2").arg(s1->serial, s1->rif)
        << QStringLiteral("Fecha: %1 %2")
               .arg(s1->date.toString(QStringLiteral("dd/MM/yyyy")),
                    s1->time.toString(QStringLiteral("HH:mm:ss")))
        << QStringLiteral("Estado: %1   Error: %2").arg(status).arg(error)
        << QStringLiteral("Última factura: %1").arg(day->lastInvoice)
        << QStringLiteral("Última nota de crédito: %1").arg(day->lastCreditNote)
        << QStringLiteral("Último reporte Z: %1").arg(s1->zCounter)
        << QStringLiteral("Facturas del día: %1   Notas de crédito del día: %2")
               .arg(s1->invoicesToday)
               .arg(s1->creditNotesToday);
    return out.join(QLatin1Char('\n'));
}

// Throws the printer's own words when a call failed.
void require(FiscalPrinter& p, bool ok) {
    if (!ok)
        throw UserError(p.errorText());
}

} // namespace

FiscalScreen::FiscalScreen(QSqlDatabase db, FiscalPrinterThread& printer, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_printer(printer) {
    setObjectName(QStringLiteral("frmImpresoraFiscal"));
    setWindowTitle(QStringLiteral("Impresora Fiscal"));

    m_state = new QPlainTextEdit(this);
    m_state->setObjectName(QStringLiteral("txtEstado"));
    m_state->setReadOnly(true);

    const auto button = [this](const char* name, const QString& text) {
        auto* b = new QPushButton(text, this);
        b->setObjectName(QString::fromLatin1(name));
        m_buttons << b;
        return b;
    };
    const auto date = [this](const char* name) {
        auto* d = new QDateEdit(QDate::currentDate(), this);
        d->setObjectName(QString::fromLatin1(name));
        d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
        d->setCalendarPopup(true);
        return d;
    };

    QPushButton* state = button("cmdEstado", QStringLiteral("Leer estado"));
    QPushButton* x = button("cmdReporteX", QStringLiteral("Reporte X"));
    QPushButton* z = button("cmdReporteZ", QStringLiteral("Reporte Z"));
    m_from = date("dtpDesde");
    m_to = date("dtpHasta");
    m_detailed = new QCheckBox(QStringLiteral("Detallado"), this);
    m_detailed->setObjectName(QStringLiteral("chkDetallado"));
    QPushButton* memory = button("cmdMemoriaFiscal", QStringLiteral("Imprimir memoria fiscal"));
    QPushButton* lines = button("cmdEncabezado", QStringLiteral("Programar encabezado y pie"));
    m_effective = date("dtpVigencia");
    QPushButton* rates = button("cmdTasas", QStringLiteral("Actualizar tasas"));

    auto* reports = new QHBoxLayout;
    reports->addWidget(state);
    reports->addWidget(x);
    reports->addWidget(z);
    auto* range = new QGroupBox(QStringLiteral("Memoria fiscal"), this);
    auto* rangeForm = new QFormLayout(range);
    rangeForm->addRow(QStringLiteral("Desde:"), m_from);
    rangeForm->addRow(QStringLiteral("Hasta:"), m_to);
    rangeForm->addRow(m_detailed, memory);
    auto* program = new QGroupBox(QStringLiteral("Programación (después de un Z)"), this);
    auto* programForm = new QFormLayout(program);
    programForm->addRow(lines);
    programForm->addRow(QStringLiteral("Vigencia de las tasas:"), m_effective);
    programForm->addRow(rates);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(reports);
    layout->addWidget(range);
    layout->addWidget(program);
    layout->addWidget(m_state);

    connect(state, &QPushButton::clicked, this,
            [this] { run(QStringLiteral("Leyendo la impresora fiscal..."), stateText); });
    connect(x, &QPushButton::clicked, this, [this] {
        run(QStringLiteral("Imprimiendo el reporte X..."), [](FiscalPrinter& p) {
            require(p, p.printXReport());
            return stateText(p);
        });
    });
    connect(z, &QPushButton::clicked, this, [this] {
        if (!dialogs().question(this, QStringLiteral("Desea imprimir el reporte Z?")))
            return;
        run(QStringLiteral("Imprimiendo el reporte Z..."), [](FiscalPrinter& p) {
            require(p, p.printZReport());
            require(p, p.waitUntilReady(30000));
            const auto last = p.lastZ();
            require(p, last.has_value());
            return zReportText(*last);
        });
    });
    connect(memory, &QPushButton::clicked, this, [this] {
        const QDate from = m_from->date();
        const QDate to = m_to->date();
        const bool detailed = m_detailed->isChecked();
        run(QStringLiteral("Imprimiendo la memoria fiscal..."), [=](FiscalPrinter& p) {
            const auto records = p.zReportsByDate(from, to);
            require(p, records.has_value());
            require(p, p.printFiscalMemoryByDate(from, to, detailed));
            QStringList out;
            for (const protocol::ZReport& z : *records)
                out << zReportText(z);
            return out.join(QStringLiteral("\n\n"));
        });
    });
    connect(lines, &QPushButton::clicked, this, [this] {
        guarded(this, [this] {
            const QList<ProgrammedLine> l = headerFooterLines(m_db, QDate::currentDate());
            run(QStringLiteral("Programando el encabezado y el pie..."), [l](FiscalPrinter& p) {
                require(p, p.programLines(l));
                QStringList out;
                for (const ProgrammedLine& line : l)
                    out << QStringLiteral("PH%1 %2")
                               .arg(line.number, 2, 10, QLatin1Char('0'))
                               .arg(line.text);
                return out.join(QLatin1Char('\n'));
            });
        });
    });
    connect(rates, &QPushButton::clicked, this, [this] {
        guarded(this, [this] {
            const RateTable table = loadRateTable(m_db);
            QList<int> hundredths;
            for (const Decimal& r : table)
                hundredths << int(r.scaled(2));
            const QDate effective = m_effective->date();
            run(QStringLiteral("Actualizando Tasas en la impresora Fiscal"),
                [hundredths, effective](FiscalPrinter& p) {
                    if (!p.updateTaxRates(hundredths, effective)) {
                        if (p.error() == 80)
                            throw UserError(QStringLiteral(
                                "Las tasas no están vigentes en la fecha de la impresora...!"));
                        throw UserError(p.errorText());
                    }
                    const auto s3 = p.readS3();
                    require(p, s3.has_value());
                    QStringList out;
                    for (int i = 0; i < 3; ++i)
                        out << QStringLiteral("Tasa %1: %2%")
                                   .arg(i + 1)
                                   .arg(s3->rates[i].hundredths / 100.0, 0, 'f', 2);
                    return out.join(QLatin1Char('\n'));
                });
        });
    });
}

void FiscalScreen::setBusy(bool busy) {
    m_busy = busy;
    for (QPushButton* b : m_buttons)
        b->setEnabled(!busy);
}

void FiscalScreen::run(const QString& what, std::function<QString(FiscalPrinter&)> job) {
    if (m_busy)
        return;
    setBusy(true);
    m_state->setPlainText(what);
    m_printer
        .call([job = std::move(job)](FiscalPrinter& p) {
            ensureOpen(p);
            return job(p);
        })
        .then(this, [this](QFuture<QString> result) {
            setBusy(false);
            m_state->clear();
            guarded(this, [&] { m_state->setPlainText(result.result()); });
            emit finished();
        });
}

} // namespace orvo::pos::fiscal
