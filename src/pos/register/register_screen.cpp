#include "pos/register/register_screen.h"

#include "common/dialogs/dialogs.h"
#include "pos/register/register_config.h"
#include "shell/session/session_context.h"
#include "shell/startup/user_settings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPrinterInfo>
#include <QVBoxLayout>

namespace orvo::pos::registers {

namespace {

const QString kTitle = QStringLiteral("Configurar Caja");

QLocale amountLocale() {
    return QLocale(QLocale::Spanish, QLocale::Venezuela);
}

// "1.234,50" (or "1234.50") as an amount; nothing when it is not one.
std::optional<Decimal> parseAmount(const QString& typed) {
    QString t = typed.trimmed();
    if (t.isEmpty())
        return Decimal(0);
    const QLocale locale = amountLocale();
    if (t.contains(locale.decimalPoint()))
        t = t.remove(locale.groupSeparator()).replace(locale.decimalPoint(), QStringLiteral("."));
    return Decimal::parse(t);
}

QCheckBox* check(QWidget* parent, const char* name, const QString& text) {
    auto* c = new QCheckBox(text, parent);
    c->setObjectName(QLatin1String(name));
    return c;
}

QLineEdit* edit(QWidget* parent, const char* name) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(QLatin1String(name));
    return e;
}

} // namespace

RegisterScreen::RegisterScreen(QSqlDatabase db, shell::SessionContext& session, QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)), m_session(session) {
    setObjectName(QStringLiteral("frmConfigurarCaja"));
    setWindowTitle(kTitle);

    m_serie = edit(this, "txtSerie");
    m_serie->setMaxLength(10);
    markKey(m_serie);
    m_numero = edit(this, "txtNumero");
    m_numero->setMaxLength(4);
    m_fondoCaja = edit(this, "txtFondoCaja");
    m_fondoCaja->setAlignment(Qt::AlignRight);
    // Which client types each list may invoice is the sale's rule (registerAllowsLetter).
    m_tipoListaPrecio =
        comboWithValues("cboTipoListaPrecio", {{1, QStringLiteral("Detal")},
                                               {2, QStringLiteral("Mayor")},
                                               {3, QStringLiteral("Detal y mayor")},
                                               {4, QStringLiteral("Mayor y detal")}});
    m_tipoVenta = comboWithValues("cboTipoVenta",
                                  {{1, QStringLiteral("Contado")}, {2, QStringLiteral("Crédito")}});
    m_tipoReporte = comboWithValues("cboTipoReporte", {{1, QStringLiteral("Factura fiscal")},
                                                       {2, QStringLiteral("Forma libre")}});
    m_impresoraFiscal = new QComboBox(this);
    m_impresoraFiscal->setObjectName(QStringLiteral("cboImpresoraFiscal"));
    m_permiteDescuento = check(this, "chkPermiteDescuento", QStringLiteral("Permite descuento"));
    m_permiteFacturarOrdenDespacho = check(this, "chkPermiteFacturarOrdenDespacho",
                                           QStringLiteral("Permite facturar órdenes de despacho"));
    m_permiteFacturasExentas =
        check(this, "chkPermiteFacturasExentas", QStringLiteral("Permite facturas exentas"));
    m_permiteAlternarListas = check(this, "chkPermiteAlternarListas",
                                    QStringLiteral("Permite alternar listas de precio"));
    m_cambiarPrecios = check(this, "chkCambiarPrecios", QStringLiteral("Permite cambiar precios"));
    m_requerirAutorizacion =
        check(this, "chkRequerirAutorizacion", QStringLiteral("Requerir autorización"));
    m_permitirFacturaContingencia = check(this, "chkPermitirFacturaContingencia",
                                          QStringLiteral("Permitir factura de contingencia"));
    m_maximoZDiario = edit(this, "txtMaximoZDiario");
    m_maximoZDiario->setAlignment(Qt::AlignRight);

    auto* station = new QGroupBox(QStringLiteral("Esta estación"), this);
    station->setObjectName(QStringLiteral("fraEstacion"));
    m_impresoraFactura = new QComboBox(station);
    m_impresoraFactura->setObjectName(QStringLiteral("cboImpresoraFactura"));
    // An installed printer, or whatever is typed (a .pdf path writes one file per invoice).
    m_impresoraFactura->setEditable(true);
    m_impresoraFactura->setInsertPolicy(QComboBox::NoInsert);
    m_numeroCopias = edit(station, "txtNumeroCopias");
    m_numeroCopias->setAlignment(Qt::AlignRight);
    m_numeroCopias->setMaxLength(3);
    auto* stationNote = new QLabel(
        QStringLiteral("La venta, las devoluciones y los cambios necesitan la impresora de "
                       "facturas de esta estación (facturas de contingencia y en papel): una "
                       "impresora instalada o un archivo .pdf."),
        station);
    stationNote->setWordWrap(true);
    auto* stationForm = new QFormLayout(station);
    stationForm->addRow(stationNote);
    stationForm->addRow(QStringLiteral("Impresora de facturas:"), m_impresoraFactura);
    stationForm->addRow(QStringLiteral("Número de copias:"), m_numeroCopias);
    // Room for a PDF path under the application folder.
    m_impresoraFactura->setMinimumContentsLength(40);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Serie:"), m_serie);
    form->addRow(QStringLiteral("Número de caja:"), m_numero);
    form->addRow(QStringLiteral("Fondo de caja:"), m_fondoCaja);
    form->addRow(QStringLiteral("Lista de precio:"), m_tipoListaPrecio);
    form->addRow(QStringLiteral("Tipo de venta:"), m_tipoVenta);
    form->addRow(QStringLiteral("Tipo de reporte:"), m_tipoReporte);
    form->addRow(QStringLiteral("Impresora fiscal:"), m_impresoraFiscal);
    form->addRow(QStringLiteral("Máximo Z diario:"), m_maximoZDiario);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    for (QCheckBox* c : {m_permiteDescuento, m_permiteFacturarOrdenDespacho,
                         m_permiteFacturasExentas, m_permiteAlternarListas, m_cambiarPrecios,
                         m_requerirAutorizacion, m_permitirFacturaContingencia})
        layout->addWidget(c);
    layout->addWidget(station);
    layout->addStretch();

    connect(m_maximoZDiario, &QLineEdit::textEdited, this,
            [this](const QString& text) { zMaximumEdited(text); });
    connect(m_maximoZDiario, &QLineEdit::editingFinished, this, [this] {
        if (m_maximoZDiario->text().trimmed().isEmpty())
            m_maximoZDiario->setText(QStringLiteral("0"));
    });
    connect(m_numeroCopias, &QLineEdit::textEdited, this,
            [this](const QString& text) { copiesEdited(text); });
    connect(m_numeroCopias, &QLineEdit::editingFinished, this, [this] {
        if (m_numeroCopias->text().trimmed().toInt() < 1)
            m_numeroCopias->setText(QStringLiteral("1"));
    });
    connect(m_fondoCaja, &QLineEdit::editingFinished, this, [this] {
        if (const auto amount = parseAmount(m_fondoCaja->text()))
            m_fondoCaja->setText(amount->toLocaleString(amountLocale(), 2));
    });

    guarded(this, [this] {
        loadPrinters();
        requery();
        if (m_loaded)
            afterNavigate();
        else
            loadStationSettings();
    });
    installFieldBehaviour();
    enableInputs(false, true);
}

bool RegisterScreen::offers(Action action) const {
    switch (action) {
    case Action::New:
    case Action::Modify:
    case Action::Save:
    case Action::Cancel:
    case Action::Exit:
        return true;
    default:
        return false;
    }
}

QComboBox* RegisterScreen::comboWithValues(const char* name,
                                           const QList<std::pair<int, QString>>& items) {
    auto* combo = new QComboBox(this);
    combo->setObjectName(QLatin1String(name));
    for (const auto& [value, text] : items)
        combo->addItem(text, value);
    return combo;
}

void RegisterScreen::selectValue(QComboBox* combo, int value) {
    int index = combo->findData(value);
    if (index < 0 && value != 0) {
        // A value this screen does not list is kept as it is.
        combo->addItem(QString::number(value), value);
        index = combo->count() - 1;
    }
    combo->setCurrentIndex(index);
}

void RegisterScreen::loadPrinters() {
    m_impresoraFiscal->clear();
    for (const FiscalPrinterChoice& p : activeFiscalPrinters(m_db))
        m_impresoraFiscal->addItem(p.name, p.id);
}

void RegisterScreen::loadStationSettings() {
    m_impresoraFactura->clear();
    m_impresoraFactura->addItems(QPrinterInfo::availablePrinterNames());
    // A station without a printer is offered a PDF file under the application folder.
    QString printer = shell::settings::invoicePrinter();
    if (printer.isEmpty())
        printer = m_impresoraFactura->count() > 0 ? m_impresoraFactura->itemText(0)
                                                  : shell::settings::defaultInvoicePdf();
    m_impresoraFactura->setCurrentText(printer);
    m_numeroCopias->setText(QString::number(shell::settings::invoiceCopies()));
    m_lastCopiesText = m_numeroCopias->text();
}

void RegisterScreen::requery() {
    m_loaded = !m_session.serial.isEmpty() && readRegisterConfig(m_db, m_session.serial);
}

void RegisterScreen::afterNavigate() {
    const auto c = readRegisterConfig(m_db, m_session.serial);
    if (!c)
        return;
    m_serie->setText(c->serie);
    m_numero->setText(QString::number(c->numero));
    m_fondoCaja->setText(c->fondoCaja.toLocaleString(amountLocale(), 2));
    selectValue(m_tipoListaPrecio, c->tipoListaPrecio);
    selectValue(m_tipoVenta, c->tipoVenta);
    selectValue(m_tipoReporte, c->tipoReporte);
    m_permiteDescuento->setChecked(c->permiteDescuento);
    m_permiteFacturarOrdenDespacho->setChecked(c->permiteFacturarOrdenDespacho);
    m_permiteFacturasExentas->setChecked(c->permiteFacturasExentas);
    m_permiteAlternarListas->setChecked(c->permiteAlternarListas);
    m_cambiarPrecios->setChecked(c->cambiarPrecios);
    m_requerirAutorizacion->setChecked(c->requerirAutorizacion);
    m_impresoraFiscal->setCurrentIndex(m_impresoraFiscal->findData(c->idImpresoraFiscal));
    m_permitirFacturaContingencia->setChecked(c->permitirFacturaContingencia);
    m_maximoZDiario->setText(QString::number(c->maximoZDiario));
    m_lastZText = m_maximoZDiario->text();
    loadStationSettings();
}

void RegisterScreen::newRecord() {
    RecordScreen::newRecord();
    loadPrinters();
    // The emptied lists start at their first choice: a register is never saved with none.
    for (QComboBox* c : {m_tipoListaPrecio, m_tipoVenta, m_tipoReporte, m_impresoraFiscal})
        c->setCurrentIndex(c->count() > 0 ? 0 : -1);
    m_numero->setText(QString::number(nextRegisterNumber(m_db)));
    m_fondoCaja->setText(Decimal(0).toLocaleString(amountLocale(), 2));
    m_maximoZDiario->setText(QStringLiteral("0"));
    m_lastZText = m_maximoZDiario->text();
    loadStationSettings();
}

void RegisterScreen::zMaximumEdited(const QString& text) {
    if (isDigitsOnly(text.trimmed())) {
        m_lastZText = text;
        return;
    }
    m_maximoZDiario->setText(m_lastZText);
    dialogs().information(this, QStringLiteral("Solo se permiten Valores numericos"));
}

void RegisterScreen::copiesEdited(const QString& text) {
    if (isDigitsOnly(text.trimmed())) {
        m_lastCopiesText = text;
        return;
    }
    m_numeroCopias->setText(m_lastCopiesText);
    dialogs().information(this, QStringLiteral("Solo se permiten Valores numericos"));
}

void RegisterScreen::save() {
    RegisterConfig c;
    c.serie = m_serie->text().trimmed();
    bool numberOk = false;
    c.numero = m_numero->text().trimmed().toInt(&numberOk);
    if (!numberOk || !isDigitsOnly(m_numero->text().trimmed()))
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"), kTitle);
    const auto fondo = parseAmount(m_fondoCaja->text());
    if (!fondo)
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"), kTitle);
    c.fondoCaja = *fondo;
    c.tipoListaPrecio = m_tipoListaPrecio->currentData().toInt();
    c.tipoVenta = m_tipoVenta->currentData().toInt();
    c.tipoReporte = m_tipoReporte->currentData().toInt();
    c.permiteDescuento = m_permiteDescuento->isChecked();
    c.permiteFacturarOrdenDespacho = m_permiteFacturarOrdenDespacho->isChecked();
    c.permiteFacturasExentas = m_permiteFacturasExentas->isChecked();
    c.permiteAlternarListas = m_permiteAlternarListas->isChecked();
    c.cambiarPrecios = m_cambiarPrecios->isChecked();
    c.requerirAutorizacion = m_requerirAutorizacion->isChecked();
    c.idImpresoraFiscal = m_impresoraFiscal->currentData().toInt();
    c.permitirFacturaContingencia = m_permitirFacturaContingencia->isChecked();
    c.maximoZDiario = parseDailyZMaximum(m_maximoZDiario->text());

    const QString invoicePrinter = m_impresoraFactura->currentText().trimmed();
    if (invoicePrinter.isEmpty())
        throw UserError(QStringLiteral("Debe indicar la impresora de facturas de esta estación "
                                       "(una impresora o un archivo .pdf)...!"),
                        kTitle);

    const bool creating = mode() == Mode::Adding;
    if (saveRegisterConfig(m_db, c, creating, false) == SaveOutcome::NeedsOverwriteApproval) {
        if (!dialogs().question(
                this, QStringLiteral("La serie de caja ya existe... Desea sobreescribirla...?"),
                kTitle, false))
            return; // the stored register stays as it was
        saveRegisterConfig(m_db, c, creating, true);
    }
    bindWorkstation(m_db, c.serie, m_session);
    if (invoicePrinter.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        QDir().mkpath(QFileInfo(invoicePrinter).absolutePath());
    shell::settings::saveInvoicePrinter(invoicePrinter);
    shell::settings::saveInvoiceCopies(m_numeroCopias->text().trimmed().toInt());
    emit registerBound();
}

} // namespace orvo::pos::registers
