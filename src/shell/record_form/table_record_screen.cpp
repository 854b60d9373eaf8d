#include "shell/record_form/table_record_screen.h"

#include "common/dialogs/dialogs.h"
#include "common/dialogs/screen_widgets.h"
#include "common/grid/grid_print.h"
#include "common/grid_ui/grid_view.h"

#include "common/db/sql.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QTextDocument>
#include <algorithm>

namespace orvo::shell {

namespace {

using Kind = RecordField::Kind;

QRadioButton* activeButton(QWidget* group) {
    return group->findChild<QRadioButton*>(group->objectName() + QStringLiteral("Activo"));
}
QRadioButton* inactiveButton(QWidget* group) {
    return group->findChild<QRadioButton*>(group->objectName() + QStringLiteral("Inactivo"));
}

void uncheckAll(QWidget* group) {
    for (QRadioButton* b : {activeButton(group), inactiveButton(group)}) {
        b->setAutoExclusive(false);
        b->setChecked(false);
        b->setAutoExclusive(true);
    }
}

} // namespace

TableRecordScreen::TableRecordScreen(RecordTable table, QSqlDatabase db, QString actingUser,
                                     QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)), m_actingUser(std::move(actingUser)),
      m_table(std::move(table)) {
    setObjectName(m_table.formName);
    setWindowTitle(m_table.caption);
    buildControls();
    installFieldBehaviour();
    enableInputs(false, true);
    guarded(this, [&] { requery(); });
    if (recordCount() > 0)
        afterNavigate();
    connect(this, &RecordScreen::recordStateChanged, this,
            [this] { m_browser->setEnabled(mode() == Mode::Browsing); });
}

void TableRecordScreen::buildControls() {
    auto* layout = new QHBoxLayout(this);
    auto* form = new QFormLayout;
    layout->addLayout(form, 1);
    for (const RecordField& f : m_table.fields) {
        QWidget* control = nullptr;
        switch (f.kind) {
        case Kind::Text:
        case Kind::Integer:
        case Kind::Decimal: {
            auto* e = new QLineEdit(this);
            if (f.size > 0)
                e->setMaxLength(f.size);
            if (f.kind == Kind::Integer)
                e->setValidator(new QRegularExpressionValidator(
                    QRegularExpression(QStringLiteral("-?[0-9]*")), e));
            else if (f.kind == Kind::Decimal)
                e->setValidator(new QRegularExpressionValidator(
                    QRegularExpression(QStringLiteral("-?[0-9]*([.,][0-9]*)?")), e));
            if (f.kind != Kind::Text)
                e->setAlignment(Qt::AlignRight);
            control = e;
            break;
        }
        case Kind::Date: {
            auto* d = new QDateEdit(this);
            d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
            d->setCalendarPopup(true);
            d->setDate(QDate(2000, 1, 1));
            control = d;
            break;
        }
        case Kind::Flag:
            control = new QCheckBox(this);
            break;
        case Kind::Status: {
            auto* box = new QGroupBox(this);
            box->setObjectName(f.control);
            auto* row = new QHBoxLayout(box);
            auto* on = new QRadioButton(QStringLiteral("Activo"), box);
            on->setObjectName(f.control + QStringLiteral("Activo"));
            auto* off = new QRadioButton(QStringLiteral("Inactivo"), box);
            off->setObjectName(f.control + QStringLiteral("Inactivo"));
            row->addWidget(on);
            row->addWidget(off);
            on->setChecked(true);
            form->addRow(f.label, box);
            m_controls.insert(f.column, box);
            continue;
        }
        case Kind::Choice: {
            auto* c = new QComboBox(this);
            guarded(this, [&] {
                db::Sql q(m_db, f.choices);
                q.exec();
                while (q.next())
                    c->addItem(q.value(0).toString() + QStringLiteral(" - ") +
                                   q.value(1).toString(),
                               q.value(0));
            });
            makeSearchable(c);
            c->setCurrentIndex(-1);
            control = c;
            break;
        }
        }
        control->setObjectName(f.control);
        if (f.column == m_table.key)
            markKey(control);
        if (f.required)
            markRequired(control, f.label.toLower());
        form->addRow(f.label, control);
        m_controls.insert(f.column, control);
    }

    m_browser = new grid::GridView(this);
    m_browser->setObjectName(QStringLiteral("grdConsulta"));
    m_browser->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_browser->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_browser->setSelectionMode(QAbstractItemView::SingleSelection);
    m_browser->setFocusPolicy(Qt::NoFocus);
    QList<grid::GridColumn> columns;
    for (const RecordField& f : m_table.fields) {
        grid::GridColumn c;
        c.caption = f.label;
        c.field = f.column;
        switch (f.kind) {
        case Kind::Decimal:
            c.type = grid::GridColumn::Type::Number;
            c.decimals = f.scale;
            break;
        case Kind::Date:
            c.type = grid::GridColumn::Type::Date;
            break;
        case Kind::Flag:
        case Kind::Status:
            c.type = grid::GridColumn::Type::Check;
            break;
        default:
            break;
        }
        columns << c;
    }
    m_browser->setColumns(columns);
    m_browser->horizontalHeader()->setStretchLastSection(true);
    // Room for the columns a user reads (a worker's name and position were cut off).
    m_browser->setMinimumWidth(std::min(720, 100 * int(columns.size())));
    layout->addWidget(m_browser, 1);
    connect(m_browser->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { onBrowserRowChanged(current.row()); });
}

void TableRecordScreen::onBrowserRowChanged(int row) {
    if (mode() != Mode::Browsing || row < 0 || row == m_current)
        return;
    m_current = row;
    afterNavigate();
}

QVariant TableRecordScreen::currentKey() const {
    if (m_current < 0 || m_current >= recordCount())
        return {};
    return m_rows.rows[m_current].value(m_rows.columns.indexOf(m_table.key));
}

bool TableRecordScreen::showKey(const QVariant& key) {
    const int i = m_rows.indexOfKey(key, m_rows.columns.indexOf(m_table.key));
    if (i < 0)
        return false;
    m_current = i;
    m_browser->setActiveCell(i, 0);
    afterNavigate();
    return true;
}

void TableRecordScreen::requery() {
    const QVariant keep = m_keyAfterRequery.isValid() ? m_keyAfterRequery : currentKey();
    const int oldIndex = m_current;
    m_keyAfterRequery = QVariant();
    m_rows = records::load(m_db, m_table);
    fillBrowser();
    int i = keep.isValid() ? m_rows.indexOfKey(keep, m_rows.columns.indexOf(m_table.key)) : -1;
    if (i < 0)
        i = recordCount() == 0 ? -1 : std::clamp(oldIndex, 0, recordCount() - 1);
    m_current = i;
    if (i >= 0)
        m_browser->setActiveCell(i, 0);
    emit recordStateChanged();
}

void TableRecordScreen::fillBrowser() {
    const QSignalBlocker block(m_browser->selectionModel());
    m_browser->gridModel()->setRows(m_rows.rows);
    // Names whole, but no column too wide to leave room for the others.
    m_browser->resizeColumnsToContents();
    for (int c = 0; c < m_browser->gridModel()->columnCount(); ++c)
        m_browser->setColumnWidth(c, std::min(m_browser->columnWidth(c), 260));
}

void TableRecordScreen::afterNavigate() {
    if (m_current < 0 || m_current >= recordCount())
        return;
    const QVariantList& row = m_rows.rows[m_current];
    for (int i = 0; i < m_table.fields.size(); ++i)
        setFieldValue(m_table.fields[i], row.value(i));
}

void TableRecordScreen::setFieldValue(const RecordField& f, const QVariant& value) {
    QWidget* w = m_controls.value(f.column);
    switch (f.kind) {
    case Kind::Text:
    case Kind::Integer:
        static_cast<QLineEdit*>(w)->setText(value.toString());
        break;
    case Kind::Decimal:
        static_cast<QLineEdit*>(w)->setText(
            value.isNull() ? QString() : Decimal::fromVariant(value).toString(f.scale));
        break;
    case Kind::Date:
        static_cast<QDateEdit*>(w)->setDate(value.isNull() ? QDate(2000, 1, 1)
                                                           : value.toDateTime().date());
        break;
    case Kind::Flag:
        static_cast<QCheckBox*>(w)->setChecked(value.toInt() == 1);
        break;
    case Kind::Status:
        (value.toInt() == 1 ? activeButton(w) : inactiveButton(w))->setChecked(true);
        break;
    case Kind::Choice: {
        auto* c = static_cast<QComboBox*>(w);
        c->setCurrentIndex(c->findData(value.toString()));
        break;
    }
    }
}

QVariant TableRecordScreen::fieldValue(const RecordField& f) const {
    QWidget* w = m_controls.value(f.column);
    switch (f.kind) {
    case Kind::Text:
    case Kind::Integer:
        return static_cast<QLineEdit*>(w)->text().trimmed();
    case Kind::Decimal:
        return static_cast<QLineEdit*>(w)->text().trimmed().replace(u',', u'.');
    case Kind::Date:
        return QDateTime(static_cast<QDateEdit*>(w)->date(), QTime(0, 0));
    case Kind::Flag:
        return static_cast<QCheckBox*>(w)->isChecked() ? 1 : 0;
    case Kind::Status:
        if (activeButton(w)->isChecked())
            return 1;
        return inactiveButton(w)->isChecked() ? QVariant(0) : QVariant();
    case Kind::Choice: {
        auto* c = static_cast<QComboBox*>(w);
        takeTypedChoice(c);
        return c->currentIndex() < 0 ? QVariant(QString()) : c->currentData();
    }
    }
    return {};
}

QList<QPair<QString, QVariant>> TableRecordScreen::typedValues() const {
    QList<QPair<QString, QVariant>> out;
    for (const RecordField& f : m_table.fields)
        out.append({f.column, fieldValue(f)});
    return out;
}

void TableRecordScreen::newRecord() {
    RecordScreen::newRecord();
    for (const RecordField& f : m_table.fields)
        if (f.kind == Kind::Status)
            activeButton(m_controls.value(f.column))->setChecked(true);
}

QString TableRecordScreen::proposedKey() const {
    if (m_table.codeWidth <= 0)
        return {};
    return records::nextCode(m_db, m_table.table, m_table.key, m_table.codeWidth);
}

void TableRecordScreen::save() {
    const bool adding = mode() == Mode::Adding;
    const auto values = typedValues();
    records::save(m_db, m_table, m_actingUser, values, adding);
    for (const auto& [column, value] : values)
        if (column == m_table.key)
            m_keyAfterRequery = value;
}

void TableRecordScreen::remove() {
    records::remove(m_db, m_table, m_actingUser, currentKey());
}

void TableRecordScreen::beginSearch() {
    RecordScreen::beginSearch();
    for (const RecordField& f : m_table.fields) {
        if (f.kind == Kind::Status)
            uncheckAll(m_controls.value(f.column));
        else if (f.kind == Kind::Date) // dates take part in a search only when one is typed
            static_cast<QDateEdit*>(m_controls.value(f.column))->setDate(QDate(2000, 1, 1));
    }
}

void TableRecordScreen::runSearch() {
    QList<QPair<QString, QVariant>> criteria;
    for (const RecordField& f : m_table.fields) {
        QVariant v = fieldValue(f);
        if (f.kind == Kind::Flag)
            continue; // an unticked box is no criterion
        if (f.kind == Kind::Date && v.toDateTime().date() == QDate(2000, 1, 1))
            continue;
        criteria.append({f.column, v});
    }
    const QVariant key = records::find(m_db, m_table, criteria);
    m_keyAfterRequery = key.isValid() ? key : currentKey();
    requery();
    afterNavigate();
    if (!key.isValid())
        dialogs().information(
            this, QStringLiteral("No existe ningún valor similar al\nelemento buscado."));
}

QString TableRecordScreen::catalogueHtml() const {
    QStringList headers;
    QList<bool> right;
    for (const RecordField& f : m_table.fields) {
        headers << f.label;
        right << (f.kind == Kind::Integer || f.kind == Kind::Decimal);
    }
    QList<QStringList> rows;
    const grid::GridModel* model = m_browser->gridModel();
    for (int r = 0; r < model->rowCount(); ++r) {
        QStringList line;
        for (int c = 0; c < m_table.fields.size(); ++c) {
            const Kind k = m_table.fields[c].kind;
            if (k == Kind::Status)
                line << (model->value(r, c).toInt() == 1 ? QStringLiteral("Activo")
                                                         : QStringLiteral("Inactivo"));
            else if (k == Kind::Flag)
                line << (model->value(r, c).toInt() == 1 ? QStringLiteral("Sí")
                                                         : QStringLiteral("No"));
            else
                line << model->displayText(r, c);
        }
        rows << line;
    }
    return grid::tableHtml(headers, rows, right);
}

void TableRecordScreen::print() {
    const QString title = m_table.reportTitle.isEmpty() ? m_table.caption : m_table.reportTitle;
    QPrinter printer;
    if (!choosePrinter(this, printer, title))
        return;
    QTextDocument doc;
    doc.setHtml(catalogueHtml());
    grid::printDocument(printer, doc, title);
}

} // namespace orvo::shell
