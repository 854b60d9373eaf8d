#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// The cash of an open day: withdrawals (SALIDASCAJA), bank deposits of cash and cheques
// (DEPOSITOS, MOVDEPOSITOS) and their confirmation against the bank (CONFIRMACION_DEPOSITO).
namespace orvo::pos::cash {

struct Withdrawal {
    int numero = 0;
    QString codigoContable; // CTACONTABLE.Codigo, optional
    QString acreedor;
    QString documento;
    QString descripcion;
    Decimal monto;
    QDateTime fecha;
    int status = 0; // 1 once the day is closed
};

// Records a withdrawal on the register's open day `day` in one transaction and returns its
// number (the register's next). The day must be open; the amount positive; a description is
// required; an account must exist and, when it asks for them, the creditor and the document.
int addWithdrawal(const QSqlDatabase& db, const QString& serial, const QDate& day,
                  const Withdrawal& w, const QString& user, const QDateTime& now);
// Removes a withdrawal of an open day before the closing settles it.
void removeWithdrawal(const QSqlDatabase& db, const QString& serial, int number);
QList<Withdrawal> withdrawalsOf(const QSqlDatabase& db, const QString& serial, const QDate& day);

// A sale cheque of the day (PAGOSVENTA way 2) not yet deposited.
struct PendingCheque {
    int factura = 0;
    int item = 0;
    QString cheque; // Documento
    QString banco;
    Decimal monto;
};
QList<PendingCheque> pendingCheques(const QSqlDatabase& db, const QString& serial,
                                    const QDate& day);

struct Deposit {
    QString numeroDeposito;
    QString cuentaBanco; // CTABANCOS.Codigo
    Decimal totalEfectivo;
    QString observacion;
    QList<PendingCheque> cheques; // chosen from pendingCheques()
};

// Records a deposit of the open day in one transaction: header, one line per cheque, and each
// cheque's payment marked deposited (Status 2). Returns the cheques' total.
Decimal addDeposit(const QSqlDatabase& db, const QString& serial, const QDate& day,
                   const Deposit& d, const QString& user, const QDateTime& now);

struct DepositRow {
    QString numeroDeposito;
    QString cuentaBanco;
    QString serie;
    QDateTime fecha;
    Decimal totalEfectivo;
    Decimal totalCheques;
    int status = 0;
    // Its confirmation, when there is one.
    std::optional<int> confirmationStatus;
    Decimal montoConfirmado;
    QDateTime fechaConfirmada;
    QString nota;
};
// Every register's deposits of the days [from, to], with their confirmation.
QList<DepositRow> depositsBetween(const QSqlDatabase& db, const QDate& from, const QDate& to);
QList<DepositRow> depositsOf(const QSqlDatabase& db, const QString& serial, const QDate& day);

struct Confirmation {
    QString numeroDeposito;
    QString cuentaBanco;
    QDate fechaDeposito; // the bank's date
    Decimal monto;       // what the bank credited
    QString nota;
    int status = 1; // 1 confirmed, 0 annulled
};
// Confirms (or annuls) a deposit against the bank in one transaction: the CONFIRMACION_DEPOSITO
// row is updated or inserted, and each change is copied to CONFIRMACION_DEPOSITO_AUD with the
// user. An amount other than the deposit's needs a note.
void confirmDeposit(const QSqlDatabase& db, const Confirmation& c, const QString& user,
                    const QDateTime& now);

// CTABANCOS accounts that take deposits (active, not points of sale): code and name.
QList<std::pair<QString, QString>> depositAccounts(const QSqlDatabase& db);

} // namespace orvo::pos::cash
