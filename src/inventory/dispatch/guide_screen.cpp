#include "inventory/dispatch/guide_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/dispatch_print.h"
#include "inventory/dispatch/dispatch_widgets.h"
#include "inventory/purchases/document_screen.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::dispatch {

namespace {

QString statusText(int status) {
    return status == 0 ? QStringLiteral("ABIERTA") : QStringLiteral("APROBADA");
}

} // namespace

GuideScreen::GuideScreen(QSqlDatabase db, QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)) {
    setObjectName(kGuideScreen);
    setWindowTitle(QStringLiteral("Guia de Despacho"));
    auto* outer = new QVBoxLayout(this);
    auto* split = new QSplitter(Qt::Vertical, this);
    outer->addWidget(split);
    m_browser = purchases::listTable(split, QStringLiteral("grdConsulta"),
                                     {QStringLiteral("Número"), QStringLiteral("Fecha"),
                                      QStringLiteral("Conductor"), QStringLiteral("Vehículo"),
                                      QStringLiteral("Estatus")});
    connect(m_browser, &QTableWidget::cellClicked, this, [this](int row) {
        if (!isEditing())
            guarded(this, [&] { navigateTo(row); });
    });
    auto* body = new QWidget(split);
    auto* bodyLayout = new QHBoxLayout(body);
    auto* head = new QGroupBox(QStringLiteral("Guia de Despacho"), body);
    auto* form = new QFormLayout(head);
    m_number = new QLineEdit(head);
    m_number->setObjectName(QStringLiteral("txtNumero"));
    m_number->setReadOnly(true);
    m_number->setFocusPolicy(Qt::NoFocus);
    markKey(m_number);
    form->addRow(QStringLiteral("Número"), m_number);
    m_date = new QDateEdit(QDate::currentDate(), head);
    m_date->setObjectName(QStringLiteral("dtpFecha"));
    m_date->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    form->addRow(QStringLiteral("Fecha"), m_date);
    m_driver = new QComboBox(head);
    m_driver->setObjectName(QStringLiteral("cboConductor"));
    for (const Choice& c : drivers(m_db))
        m_driver->addItem(c.name + QStringLiteral(" (") + c.code + QStringLiteral(")"), c.code);
    markRequired(m_driver, QStringLiteral("el conductor"));
    form->addRow(QStringLiteral("Conductor"), m_driver);
    m_vehicle = new QComboBox(head);
    m_vehicle->setObjectName(QStringLiteral("cboVehiculo"));
    for (const Choice& c : vehicles(m_db))
        m_vehicle->addItem(c.code + QStringLiteral(" - ") + c.name, c.code);
    markRequired(m_vehicle, QStringLiteral("el vehículo"));
    form->addRow(QStringLiteral("Vehículo"), m_vehicle);
    m_note = new QLineEdit(head);
    m_note->setObjectName(QStringLiteral("txtObservacion"));
    m_note->setMaxLength(255);
    form->addRow(QStringLiteral("Observación"), m_note);
    m_state = new QLabel(head);
    m_state->setObjectName(QStringLiteral("lblStatus"));
    form->addRow(QStringLiteral("Estatus"), m_state);
    bodyLayout->addWidget(head, 2);

    auto* list = new QGroupBox(QStringLiteral("Remisiones"), body);
    auto* listLayout = new QVBoxLayout(list);
    auto* keying = new QHBoxLayout;
    m_remission = new QLineEdit(list);
    m_remission->setObjectName(QStringLiteral("txtRemision"));
    m_remission->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));
    keying->addWidget(new QLabel(QStringLiteral("Remisión Nº:"), list));
    keying->addWidget(m_remission, 1);
    listLayout->addLayout(keying);
    m_remissions = purchases::listTable(list, QStringLiteral("SpreadRemisiones"),
                                        {QStringLiteral("Remisión"), QStringLiteral("Destino"),
                                         QStringLiteral("Cajas"), QStringLiteral("Unidades")});
    m_remissions->installEventFilter(this);
    listLayout->addWidget(m_remissions, 1);
    auto* buttons = new QHBoxLayout;
    QPushButton* approveButton = purchases::screenButton(this, QStringLiteral("cmdAprobar"),
                                                         QStringLiteral("Aprobar"), Qt::Key_F12);
    connect(approveButton, &QPushButton::clicked, this, [this] { perform(Action::Approve); });
    buttons->addWidget(approveButton);
    QPushButton* pdf =
        purchases::screenButton(this, QStringLiteral("cmdPDF"), QStringLiteral("PDF"));
    connect(pdf, &QPushButton::clicked, this, [this] {
        guarded(this, [&] {
            if (m_guide.number > 0)
                purchases::writePdf(this, guideDocument(m_db, m_guide.number));
        });
    });
    buttons->addWidget(pdf);
    buttons->addStretch();
    listLayout->addLayout(buttons);
    bodyLayout->addWidget(list, 3);
    split->setStretchFactor(1, 3);

    installFieldBehaviour();
    m_remission->installEventFilter(this);
    connect(this, &RecordScreen::recordStateChanged, this,
            [this] { m_remission->setEnabled(isEditing()); });
    enableInputs(false, true);
    requery();
    if (recordCount() > 0)
        navigateTo(0);
    m_remission->setEnabled(false);
}

bool GuideScreen::offers(Action action) const {
    if ((action == Action::Modify || action == Action::Delete || action == Action::Approve) &&
        m_guide.status != 0)
        return false;
    return true;
}

bool GuideScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (enter && watched == m_remission) {
            guarded(this, [&] { addRemission(m_remission->text()); });
            return true;
        }
        if (key->key() == Qt::Key_Delete && watched == m_remissions && isEditing()) {
            const int row = m_remissions->currentRow();
            if (row >= 0 && row < m_guide.remissions.size()) {
                m_guide.remissions.removeAt(row);
                showRemissions();
            }
            return true;
        }
    }
    return RecordScreen::eventFilter(watched, event);
}

void GuideScreen::requery() {
    if (m_pending == 0 && m_current >= 0 && m_current < m_guides.size())
        m_pending = m_guides[m_current].number;
    m_guides = listGuides(m_db);
    QList<QStringList> rows;
    m_current = m_guides.isEmpty() ? -1 : 0;
    for (int r = 0; r < m_guides.size(); ++r) {
        const GuideSummary& g = m_guides[r];
        rows.append({QString::number(g.number), g.date.toString(QStringLiteral("dd/MM/yyyy")),
                     g.driverName, g.vehicle, statusText(g.status)});
        if (g.number == m_pending)
            m_current = r;
    }
    fillGrid(m_browser, rows);
    m_pending = 0;
}

void GuideScreen::navigateTo(int row) {
    if (row < 0 || row >= recordCount())
        return;
    m_current = row;
    afterNavigate();
}

void GuideScreen::afterNavigate() {
    m_guide = Guide();
    if (m_current >= 0 && m_current < m_guides.size()) {
        m_browser->selectRow(m_current);
        if (const auto g = loadGuide(m_db, m_guides[m_current].number))
            m_guide = *g;
    }
    showGuide();
    emit recordStateChanged();
}

void GuideScreen::showGuide() {
    m_number->setText(m_guide.number > 0 ? QString::number(m_guide.number) : QString());
    if (m_guide.date.isValid())
        m_date->setDate(m_guide.date.date());
    m_driver->setCurrentIndex(m_driver->findData(m_guide.driver));
    m_vehicle->setCurrentIndex(m_vehicle->findData(m_guide.vehicle));
    m_note->setText(m_guide.note);
    m_state->setText(m_guide.number > 0 ? statusText(m_guide.status) : QString());
    showRemissions();
}

void GuideScreen::showRemissions() {
    const QLocale locale;
    QList<QStringList> rows;
    for (const GuideRemission& r : m_guide.remissions)
        rows.append({QString::number(r.number), r.branch + QStringLiteral(" ") + r.branchName,
                     QString::number(r.boxes), r.units.toLocaleString(locale, 3)});
    fillGrid(m_remissions, rows);
}

void GuideScreen::addRemission(const QString& number) {
    if (!isEditing() || number.trimmed().isEmpty())
        return;
    dispatch::addRemission(m_db, m_guide, number.toLongLong());
    m_remission->clear();
    showRemissions();
}

void GuideScreen::approve() {
    if (m_guide.number == 0)
        return;
    if (!dialogs().question(this, QStringLiteral("Desea Aprobar la Guia de Despacho?"),
                            QStringLiteral("Información"), false))
        return;
    approveGuide(m_db, m_guide.number);
    m_pending = m_guide.number;
    requery();
    afterNavigate();
}

void GuideScreen::save() {
    Guide g = m_guide;
    g.number = mode() == Mode::Adding ? 0 : m_guide.number;
    g.date = QDateTime(m_date->date(), QTime(0, 0));
    g.driver = m_driver->currentData().toString();
    g.vehicle = m_vehicle->currentData().toString();
    g.note = m_note->text();
    m_pending = saveGuide(m_db, g);
}

void GuideScreen::remove() {
    if (m_guide.number == 0)
        throw UserError(QStringLiteral("Registro no se puede eliminar!"));
    deleteGuide(m_db, m_guide.number);
    m_current = -1;
}

void GuideScreen::print() {
    if (m_guide.number > 0)
        purchases::printDocument(this, guideDocument(m_db, m_guide.number));
}

void GuideScreen::newRecord() {
    RecordScreen::newRecord();
    m_guide = Guide();
    m_date->setDate(QDate::currentDate());
    for (QComboBox* c : {m_driver, m_vehicle})
        c->setCurrentIndex(c->count() > 0 ? 0 : -1);
    m_state->setText(QStringLiteral("ABIERTA"));
    showRemissions();
    m_remission->setEnabled(true);
    m_driver->setFocus();
}

void GuideScreen::cancelRecord() {
    RecordScreen::cancelRecord();
    afterNavigate();
}

} // namespace orvo::inventory::dispatch
