#include "shell/users/user_screens.h"

#include "common/dialogs/dialogs.h"
#include "common/grid/grid_print.h"
#include "common/grid_ui/grid_view.h"
#include "shell/record_form/table_record_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/users/group_admin.h"
#include "shell/users/roles.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPrinter>
#include <QRadioButton>
#include <QTextDocument>

namespace orvo::shell::users {

namespace {

void requireSystems(const QSqlDatabase& db, const QString& user) {
    if (!isSystems(db, user))
        throw UserError(QStringLiteral("¡Solo el grupo de sistemas puede modificar esta tabla!"));
}

} // namespace

const RecordTable& groupTable() {
    static const RecordTable t = [] {
        RecordTable g;
        g.formName = QStringLiteral("FrmGrupoUsuario");
        g.caption = QStringLiteral("Grupos de usuarios");
        g.table = QStringLiteral("GRUPOS");
        g.key = QStringLiteral("CodGrupo");
        g.fields = {
            {"CodGrupo", "txtCodGrupo", "Código", RecordField::Kind::Text, 20, 0, true},
            {"NombreGrupo", "txtNombreGrupo", "Nombre", RecordField::Kind::Text, 60, 0, true}};
        g.reportTitle = QStringLiteral("Grupos");
        g.writeGuard = requireSystems;
        return g;
    }();
    return t;
}

const RecordTable& menuStructureTable() {
    static const RecordTable t = [] {
        using Kind = RecordField::Kind;
        RecordTable s;
        s.formName = QStringLiteral("FrmEstructura");
        s.caption = QStringLiteral("Estructura del menú");
        s.table = QStringLiteral("SEG");
        s.key = QStringLiteral("CodNodo");
        s.fields = {{"CodNodo", "txtCodNodo", "Código del nodo", Kind::Text, 30, 0, true},
                    {"NomNodo", "txtNomNodo", "Título", Kind::Text, 100, 0, true},
                    {"Nivel", "txtNivel", "Nivel", Kind::Integer, 0, 0, true},
                    {"NodoPadre", "txtNodoPadre", "Nodo padre", Kind::Text, 30},
                    {"NumNodo", "txtNumNodo", "Número", Kind::Integer},
                    {"Orden", "txtOrden", "Orden", Kind::Integer},
                    {"Imagen", "txtImagen", "Imagen", Kind::Text, 60},
                    {"Forma", "txtForma", "Pantalla", Kind::Text, 60},
                    {"EsPadre", "chkEsPadre", "Es carpeta", Kind::Flag}};
        s.reportTitle = QStringLiteral("Estructura del menú");
        s.writeGuard = requireSystems;
        return s;
    }();
    return t;
}

UserScreen::UserScreen(QSqlDatabase db, QString actingUser, QWidget* parent)
    : RecordScreen(parent), m_db(std::move(db)), m_actingUser(std::move(actingUser)) {
    setObjectName(QStringLiteral("FrmUsuario"));
    setWindowTitle(QStringLiteral("Usuarios"));
    auto* layout = new QHBoxLayout(this);
    auto* form = new QFormLayout;
    layout->addLayout(form, 1);
    m_code = new QLineEdit(this);
    m_code->setObjectName(QStringLiteral("txtCodigo"));
    m_code->setMaxLength(20);
    markKey(m_code);
    markRequired(m_code, QStringLiteral("el código del usuario"));
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("txtNombre"));
    m_name->setMaxLength(60);
    markRequired(m_name, QStringLiteral("el nombre del usuario"));
    m_password = new QLineEdit(this);
    m_password->setObjectName(QStringLiteral("txtClave"));
    m_password->setEchoMode(QLineEdit::Password);
    m_confirmation = new QLineEdit(this);
    m_confirmation->setObjectName(QStringLiteral("TxtVerificarClave"));
    m_confirmation->setEchoMode(QLineEdit::Password);
    auto* statusBox = new QGroupBox(this);
    statusBox->setObjectName(QStringLiteral("OptStatus"));
    auto* statusRow = new QHBoxLayout(statusBox);
    m_active = new QRadioButton(QStringLiteral("Activo"), statusBox);
    m_active->setObjectName(QStringLiteral("OptStatusActivo"));
    m_inactive = new QRadioButton(QStringLiteral("Inactivo"), statusBox);
    m_inactive->setObjectName(QStringLiteral("OptStatusInactivo"));
    statusRow->addWidget(m_active);
    statusRow->addWidget(m_inactive);
    m_active->setChecked(true);
    m_group = new QComboBox(this);
    m_group->setObjectName(QStringLiteral("cboGrupo"));
    form->addRow(QStringLiteral("Código"), m_code);
    form->addRow(QStringLiteral("Nombre"), m_name);
    form->addRow(QStringLiteral("Clave"), m_password);
    form->addRow(QStringLiteral("Verificar clave"), m_confirmation);
    form->addRow(QStringLiteral("Status"), statusBox);
    form->addRow(QStringLiteral("Grupo"), m_group);

    m_browser = new grid::GridView(this);
    m_browser->setObjectName(QStringLiteral("grdConsulta"));
    m_browser->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_browser->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_browser->setFocusPolicy(Qt::NoFocus);
    m_browser->setColumns({{QStringLiteral("Código")},
                           {QStringLiteral("Nombre")},
                           {QStringLiteral("Grupo")},
                           {QStringLiteral("Status"), grid::GridColumn::Type::Check}});
    m_browser->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(m_browser, 1);
    connect(m_browser->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& i) {
                if (mode() == Mode::Browsing && i.row() >= 0 && i.row() != m_current) {
                    m_current = i.row();
                    guarded(this, [&] { afterNavigate(); });
                }
            });
    connect(this, &RecordScreen::recordStateChanged, this,
            [this] { m_browser->setEnabled(mode() == Mode::Browsing); });

    installFieldBehaviour();
    enableInputs(false, true);
    guarded(this, [&] {
        for (const Group& g : offeredGroups(m_db, m_actingUser))
            m_group->addItem(g.name, g.code);
        m_group->setCurrentIndex(-1);
        requery();
        if (recordCount() > 0)
            afterNavigate();
    });
}

QString UserScreen::currentCode() const {
    return m_current >= 0 && m_current < m_users.size() ? m_users[m_current].code : QString();
}

void UserScreen::requery() {
    const QString keep = m_codeAfterRequery.isEmpty() ? currentCode() : m_codeAfterRequery;
    m_codeAfterRequery.clear();
    m_users = visibleUsers(m_db, m_actingUser);
    QList<QVariantList> rows;
    int found = -1;
    for (int i = 0; i < m_users.size(); ++i) {
        const UserRow& u = m_users[i];
        rows << QVariantList{u.code, u.name, u.groupName, u.status};
        if (u.code == keep)
            found = i;
    }
    {
        const QSignalBlocker block(m_browser->selectionModel());
        m_browser->gridModel()->setRows(rows);
    }
    if (found < 0)
        found = m_users.isEmpty() ? -1 : std::clamp(m_current, 0, int(m_users.size()) - 1);
    m_current = found;
    if (found >= 0)
        m_browser->setActiveCell(found, 0);
    emit recordStateChanged();
}

void UserScreen::afterNavigate() {
    const QString code = currentCode();
    if (code.isEmpty())
        return;
    QString clear;
    const UserRow u = loadUser(m_db, code, &clear);
    m_code->setText(u.code);
    m_name->setText(u.name);
    m_password->setText(clear);
    m_confirmation->setText(clear);
    (u.status == 1 ? m_active : m_inactive)->setChecked(true);
    m_group->setCurrentIndex(m_group->findText(u.groupName));
}

void UserScreen::newRecord() {
    RecordScreen::newRecord();
    m_active->setChecked(true);
}

void UserScreen::save() {
    UserRecord u;
    u.code = m_code->text().trimmed();
    u.name = m_name->text().trimmed();
    u.password = m_password->text();
    u.confirmation = m_confirmation->text();
    u.status = m_active->isChecked() ? 1 : 0;
    u.groupName = m_group->currentIndex() >= 0 ? m_group->currentText() : QString();
    if (!u.groupName.isEmpty() && u.password != u.confirmation) {
        m_confirmation->setFocus();
        m_confirmation->selectAll();
    }
    saveUser(m_db, m_actingUser, u, mode() == Mode::Adding);
    m_codeAfterRequery = u.code;
}

void UserScreen::remove() {
    deleteUser(m_db, m_actingUser, currentCode());
}

void UserScreen::runSearch() {
    // Among the users this screen may show, by the typed code or name.
    const QString code = m_code->text().trimmed();
    const QString name = m_name->text().trimmed();
    for (const UserRow& u : m_users) {
        if ((code.isEmpty() || u.code.compare(code, Qt::CaseInsensitive) == 0) &&
            (name.isEmpty() || u.name.contains(name, Qt::CaseInsensitive)) &&
            !(code.isEmpty() && name.isEmpty())) {
            m_codeAfterRequery = u.code;
            requery();
            afterNavigate();
            return;
        }
    }
    afterNavigate();
    dialogs().information(this,
                          QStringLiteral("No existe ningún valor similar al\nelemento buscado."));
}

void UserScreen::print() {
    QPrinter printer;
    if (!choosePrinter(this, printer, windowTitle()))
        return;
    QList<QStringList> rows;
    for (const UserRow& u : m_users)
        rows << QStringList{u.code, u.name, u.groupName,
                            u.status == 1 ? QStringLiteral("Activo") : QStringLiteral("Inactivo")};
    QTextDocument doc;
    doc.setHtml(grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Nombre"),
                                 QStringLiteral("Grupo"), QStringLiteral("Status")},
                                rows));
    grid::printDocument(printer, doc, QStringLiteral("Usuarios"));
}

GroupScreen::GroupScreen(QSqlDatabase db, QString actingUser, QWidget* parent)
    : TableRecordScreen(groupTable(), std::move(db), std::move(actingUser), parent),
      m_grants(new grid::GridView(this)) {
    m_grants->setObjectName(QStringLiteral("grdOpciones"));
    m_grants->setColumns({{QStringLiteral("Nodo"), grid::GridColumn::Type::Text, 0, true},
                          {QStringLiteral("Opción del menú")},
                          {QStringLiteral("Ver"), grid::GridColumn::Type::Check, 0, false, true}});
    m_grants->horizontalHeader()->setStretchLastSection(true);
    m_grants->setEnabled(false);
    layout()->addWidget(m_grants);
    connect(this, &RecordScreen::recordStateChanged, this,
            [this] { m_grants->setEnabled(isEditing()); });
    guarded(this, [&] { afterNavigate(); });
}

void GroupScreen::loadGrants(const QString& groupCode) {
    QList<QVariantList> rows;
    for (const NodeGrant& g : groupGrants(m_db, groupCode))
        rows << QVariantList{g.node, QString(2 * std::max(0, g.level - 1), u' ') + g.caption,
                             g.granted ? 1 : 0};
    m_grants->gridModel()->setRows(rows);
}

void GroupScreen::afterNavigate() {
    TableRecordScreen::afterNavigate();
    loadGrants(currentKey().toString());
}

void GroupScreen::newRecord() {
    TableRecordScreen::newRecord();
    loadGrants(QString());
}

void GroupScreen::cancelRecord() {
    TableRecordScreen::cancelRecord();
    loadGrants(currentKey().toString());
}

void GroupScreen::save() {
    QString code;
    QString name;
    for (const auto& [column, value] : typedValues())
        (column == QLatin1String("CodGrupo") ? code : name) = value.toString();
    QStringList granted;
    const grid::GridModel* m = m_grants->gridModel();
    for (int r = 0; r < m->rowCount(); ++r)
        if (m->value(r, 2).toInt() == 1)
            granted << m->value(r, 0).toString();
    saveGroup(m_db, m_actingUser, code, name, granted, mode() == Mode::Adding);
    keepKeyAfterRequery(code);
}

void GroupScreen::remove() {
    deleteGroup(m_db, m_actingUser, currentKey().toString());
}

void registerUserScreens(const ScreenServices& services) {
    auto& registry = ScreenRegistry::instance();
    registry.add(QStringLiteral("FrmUsuario"), [services](QWidget* parent) -> QWidget* {
        return new UserScreen(services.database(), services.userCode(), parent);
    });
    registry.add(groupTable().formName, [services](QWidget* parent) -> QWidget* {
        return new GroupScreen(services.database(), services.userCode(), parent);
    });
    registry.add(menuStructureTable().formName, [services](QWidget* parent) -> QWidget* {
        return new TableRecordScreen(menuStructureTable(), services.database(), services.userCode(),
                                     parent);
    });
}

} // namespace orvo::shell::users
