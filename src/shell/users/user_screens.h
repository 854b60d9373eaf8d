#pragma once

#include "shell/record_form/master_data.h"
#include "shell/record_form/record_screen.h"
#include "shell/record_form/table_record_screen.h"
#include "shell/users/user_admin.h"

#include <QSqlDatabase>

class QLineEdit;
class QComboBox;
class QRadioButton;

namespace orvo::grid {
class GridView;
}

namespace orvo::shell::users {

// FrmUsuario: users with their group. It does its own Buscar, Nuevo, Guardar, Modificar, Eliminar
// and Cancelar over the users the working user may see; the rights are checked again by the logic.
class UserScreen : public RecordScreen {
    Q_OBJECT
public:
    UserScreen(QSqlDatabase db, QString actingUser, QWidget* parent = nullptr);
    int recordCount() const override { return int(m_users.size()); }
    QString currentCode() const;

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;
    void runSearch() override;

private:
    QSqlDatabase m_db;
    QString m_actingUser;
    QList<UserRow> m_users;
    int m_current = -1;
    QString m_codeAfterRequery;
    QLineEdit* m_code;
    QLineEdit* m_name;
    QLineEdit* m_password;
    QLineEdit* m_confirmation;
    QRadioButton* m_active;
    QRadioButton* m_inactive;
    QComboBox* m_group;
    grid::GridView* m_browser;
};

// The group editor (FrmGrupoUsuario): GRUPOS with the menu nodes the group may see (GRUPOSEG),
// written together. Only Systems may write.
class GroupScreen : public TableRecordScreen {
    Q_OBJECT
public:
    GroupScreen(QSqlDatabase db, QString actingUser, QWidget* parent = nullptr);
    grid::GridView* grants() const { return m_grants; }

protected:
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void newRecord() override;
    void cancelRecord() override;

private:
    void loadGrants(const QString& groupCode);
    grid::GridView* m_grants;
};

// The menu structure editor (FrmEstructura): a plain record screen over SEG that only Systems may
// write.
const RecordTable& groupTable();
const RecordTable& menuStructureTable();

void registerUserScreens(const ScreenServices& services);

} // namespace orvo::shell::users
