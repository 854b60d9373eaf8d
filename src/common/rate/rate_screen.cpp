#include "common/rate/rate_screen.h"

#include "common/db/sql.h"
#include "common/dialogs/dialogs.h"
#include "common/dialogs/field_chain.h"
#include "common/dialogs/screen_widgets.h"
#include "common/rate/exchange_rate.h"
#include "common/rate/rate_file.h"
#include "exchange/export/export_store.h"
#include "shell/screens/screen_registry.h"
#include "shell/session/session_context.h"
#include "shell/session/settings_readers.h"
#include "shell/startup/app_home.h"
#include "shell/startup/app_state.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QDir>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::common::rate {

namespace {

QString registeredText(const RegisterResult& r) {
    QString text =
        QStringLiteral("Tasa de cambio ") + rateText(r.value) + QStringLiteral(" registrada...!");
    if (r.repriced)
        text += QStringLiteral("\nSe actualizaron los precios de %1 artículos (tasa anterior "
                               "%2).")
                    .arg(r.articlesRepriced)
                    .arg(rateText(*r.previous));
    if (!r.rateFile.isEmpty())
        text +=
            QStringLiteral("\nArchivo para las tiendas: ") + QDir::toNativeSeparators(r.rateFile);
    return text;
}

} // namespace

QString rateText(const Decimal& value) {
    const QString plain = value.toString();
    const int dot = int(plain.indexOf(QLatin1Char('.')));
    const int decimals = dot < 0 ? 2 : std::max(2, int(plain.size()) - dot - 1);
    return value.toLocaleString(QLocale(QLocale::Spanish, QLocale::Venezuela), decimals);
}

RateScreen::RateScreen(QSqlDatabase db, QString appFolder, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)), m_appFolder(std::move(appFolder)) {
    setObjectName(kRateScreen);
    setWindowTitle(QStringLiteral("Registrar tasa de cambio"));
    m_current = new QLabel(this);
    m_current->setObjectName(QStringLiteral("lblTasaActual"));
    const auto switchBox = [this](const char* name, const QString& text, const char* key) {
        auto* box = new QCheckBox(text, this);
        box->setObjectName(QLatin1String(name));
        connect(box, &QCheckBox::clicked, this, [this, key](bool on) {
            guarded(this, [&] { setRateSwitch(m_db, QLatin1String(key), on); });
            guarded(this, [this] { refresh(); });
        });
        return box;
    };
    m_update = switchBox("chkActTasa",
                         QStringLiteral("Actualizar los precios al registrar la tasa (ActTasa)"),
                         "ActTasa");
    m_export = switchBox("chkExpTasa",
                         QStringLiteral("Generar el archivo de la tasa para las tiendas (ExpTasa)"),
                         "ExpTasa");
    m_import =
        switchBox("chkImpTasa", QStringLiteral("Cargar la tasa recibida de casa matriz (ImpTasa)"),
                  "ImpTasa");
    m_rate = inputField(this, "txtTasaCambio", true);
    m_day = dateField(this, "dtpFecha");
    m_day->setMaximumDate(QDate::currentDate());
    m_register = actionButton(this, "cmdRegistrar", QStringLiteral("Registrar"));
    auto* fromFile = actionButton(this, "cmdCargarArchivo", QStringLiteral("Cargar de archivo..."));
    m_received = actionButton(this, "cmdCargarRecibida", QStringLiteral("Cargar tasa recibida"));
    auto* close = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    m_rates =
        listTable(this, "grdTasas", {QStringLiteral("Fecha"), QStringLiteral("Tasa de cambio")});
    m_rates->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_rates->verticalHeader()->hide();

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Tasa actual:"), m_current);
    form->addRow(QStringLiteral("Tasa de cambio:"), m_rate);
    form->addRow(QStringLiteral("Fecha de la tasa:"), m_day);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_register);
    buttons->addWidget(fromFile);
    buttons->addWidget(m_received);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_update);
    layout->addWidget(m_export);
    layout->addWidget(m_import);
    layout->addLayout(buttons);
    layout->addWidget(new QLabel(QStringLiteral("Tasas registradas"), this));
    layout->addWidget(m_rates);

    chainFields({m_rate, m_day}, m_register);
    // The rate is what one comes to type: it comes first, the store's switches last.
    const QList<QWidget*> order = {m_rate, m_day,    m_register, fromFile, m_received,
                                   close,  m_update, m_export,   m_import, m_rates};
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
    setFocusProxy(m_rate);
    m_rate->setFocus();
    connect(m_register, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { registerTyped(); }); });
    connect(fromFile, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { loadFromFile(); }); });
    connect(m_received, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { loadReceived(); }); });
    connect(close, &QPushButton::clicked, this, [this] { this->close(); });

    guarded(this, [this] {
        refresh();
        if (!currentRate(m_db))
            dialogs().information(this, kRateReminder);
    });
}

void RateScreen::refresh() {
    const auto rates = pastRates(m_db);
    m_current->setText(rates.isEmpty()
                           ? QStringLiteral("(sin tasa registrada)")
                           : rateText(rates.first().valor) + QStringLiteral("  (") +
                                 rates.first().fecha.toString(QStringLiteral("dd/MM/yyyy hh:mm")) +
                                 QLatin1Char(')'));
    m_rates->setRowCount(int(rates.size()));
    for (int r = 0; r < rates.size(); ++r) {
        m_rates->setItem(
            r, 0,
            new QTableWidgetItem(rates[r].fecha.toString(QStringLiteral("dd/MM/yyyy hh:mm:ss"))));
        auto* value = new QTableWidgetItem(rateText(rates[r].valor));
        value->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_rates->setItem(r, 1, value);
    }
    const bool importing = shell::exchangeRateImportEnabled(m_db);
    m_update->setChecked(shell::exchangeRateUpdateEnabled(m_db));
    m_export->setChecked(shell::exchangeRateExportEnabled(m_db));
    m_import->setChecked(importing);
    m_received->setEnabled(importing && !pendingRateFile(recibeFolder()).isEmpty());
}

void RateScreen::registerTyped() {
    const auto value = parseTypedRate(m_rate->text());
    if (!value) {
        m_rate->setFocus();
        m_rate->selectAll();
        throw UserError(QStringLiteral("Introduzca una tasa de cambio válida...!"));
    }
    QString question = QStringLiteral("Desea registrar la tasa de cambio ") + rateText(*value);
    if (m_day->date() < QDate::currentDate())
        question += QStringLiteral(" del dia ") + m_day->date().toString(u"dd/MM/yyyy");
    question += QStringLiteral("...?");
    if (shell::exchangeRateUpdateEnabled(m_db) && m_day->date() == QDate::currentDate())
        question =
            QStringLiteral("Se actualizaran los precios de todos los articulos.\n") + question;
    if (!dialogs().question(this, question, QStringLiteral("Tasa de cambio"), true))
        return;
    const RegisterResult r = registerRate(m_db, {*value, m_day->date(), true});
    m_rate->clear();
    refresh();
    dialogs().information(this, registeredText(r));
}

void RateScreen::loadFromFile() {
    const QString path =
        dialogs().openFileName(this, QStringLiteral("Archivo de tasa de cambio"), m_appFolder,
                               QStringLiteral("Texto (*.txt);;Todos los archivos (*)"));
    if (path.isEmpty())
        return;
    m_rate->setText(rateText(readRateFile(path)));
    registerTyped();
}

void RateScreen::loadReceived() {
    const auto r = loadReceivedRate(m_db, recibeFolder());
    refresh();
    if (r)
        dialogs().information(this, registeredText(*r));
}

RateExportScreen::RateExportScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(QStringLiteral("frmExportarTasaCambio"));
    setWindowTitle(QStringLiteral("Exportar tasa de cambio"));
    m_current = new QLabel(this);
    m_current->setObjectName(QStringLiteral("lblTasaActual"));
    auto* exportButton = actionButton(this, "cmdExportar", QStringLiteral("Exportar"));
    auto* close = actionButton(this, "cmdSalir", QStringLiteral("Salir"));
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Tasa actual:"), m_current);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(exportButton);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    layout->addStretch();
    connect(exportButton, &QPushButton::clicked, this,
            [this] { guarded(this, [this] { exportRate(); }); });
    connect(close, &QPushButton::clicked, this, [this] { this->close(); });
    guarded(this, [this] {
        const auto rate = currentRate(m_db);
        m_current->setText(rate ? rateText(*rate) : QStringLiteral("(sin tasa registrada)"));
    });
}

void RateExportScreen::exportRate() {
    const auto rate = currentRate(m_db);
    if (!rate)
        throw UserError(kRateReminder);
    const QString file = writeRateFile(*rate, exchange::exporting::exportFolder(m_db));
    dialogs().information(this, QStringLiteral("Tasa de cambio ") + rateText(*rate) +
                                    QStringLiteral(" exportada en ") +
                                    QDir::toNativeSeparators(file) + QStringLiteral("...!"));
}

void registerRateScreens(RateServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.appFolder)
        s.appFolder = [] {
            return shell::session().appFolder.isEmpty() ? shell::appHome()
                                                        : shell::session().appFolder;
        };
    auto& r = shell::ScreenRegistry::instance();
    r.add(kRateScreen,
          [s](QWidget* parent) { return new RateScreen(s.database(), s.appFolder(), parent); });
    r.add(QStringLiteral("frmExportarTasaCambio"),
          [s](QWidget* parent) { return new RateExportScreen(s.database(), parent); });
}

} // namespace orvo::common::rate
