#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

// What a new store needs before anyone can work in it, shared by `orvo db init`, the first-start
// screen and the demo store.
namespace orvo::shell::setup {

// Who the store is (PARAMETROS). An empty field keeps what the row holds, or the default of a
// new row.
struct CompanyFacts {
    QString nombre; // Nombre
    QString rif;    // IDEmpresa, as "J-12345678-9"
    QString codigo; // Codigo: the store's code, which names its exchange packages
};

// Writes, each only when it is missing: the company row, the standard groups (ADMI, SISTEMAS,
// CAJERO, SUPINVE) with the menu tree and their grants, the payment ways the program recognises
// by name, the tax codes 1 to 4, a fiscal printer for the registers, the transfer settings, the
// client types and the cash client. Given company facts update an existing row. Runs inside the
// caller's transaction; returns one line per part it wrote, for the operator.
QStringList writeStoreBasics(const QSqlDatabase& db, const CompanyFacts& company);
// The same in its own transaction.
QStringList initializeStore(const QSqlDatabase& db, const CompanyFacts& company);

// The standard groups that are missing (by code, ignoring case).
void writeStandardGroups(const QSqlDatabase& db);
// The menu tree and each standard group's grants, on a store whose menu is empty.
void writeStandardMenu(const QSqlDatabase& db);

// "J-12345678-9", "j123456789" and "J 12345678 9" are one RIF: a letter V, E, J, P, G or C,
// eight digits and a check digit. Returns it as "J-12345678-9"; throws UserError otherwise.
QString checkedRif(const QString& typed);

// Whether some user may log in (USUARIOS.Status 1).
bool hasActiveUser(const QSqlDatabase& db);

struct Administrator {
    QString code;
    QString name;
    QString password; // clear; stored scrambled
};
enum class AdministratorOutcome { Created, PasswordChanged };

// A store's first start, as one transaction: the company's name and RIF (both required here),
// what a new store starts with, and its administrator. The password must equal `confirmation`.
void startStore(const QSqlDatabase& db, const CompanyFacts& company, const Administrator& admin,
                const QString& confirmation);

// The store's administrator: a new user, or an existing one whose password is replaced and who
// becomes active, in the groups ADMI and SISTEMAS (every screen, every group to hand out). One
// transaction. An empty code or password is refused with UserError.
AdministratorOutcome saveAdministrator(const QSqlDatabase& db, const Administrator& admin);

} // namespace orvo::shell::setup
