#include "pos/cash/cash_movements.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "pos/register/day_state.h"

namespace orvo::pos::cash {

using db::Sql;

namespace {

const QString kCheque = QStringLiteral("2"); // PAGOSVENTA.FormaPago of a cheque
constexpr int kDeposited = 2;                // PAGOSVENTA.Status of a deposited cheque

// Withdrawals and deposits belong to a day that is open and not yet closed.
void requireOpenDay(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    registers::checkDayOpen(db, serial, day);
}

} // namespace

int addWithdrawal(const QSqlDatabase& db, const QString& serial, const QDate& day,
                  const Withdrawal& w, const QString& user, const QDateTime& now) {
    if (w.monto <= Decimal(0))
        throw UserError(QStringLiteral("El monto de la salida debe ser mayor a cero...!"));
    if (w.descripcion.trimmed().isEmpty())
        throw UserError(QStringLiteral("Debe indicar la descripción de la salida...!"));
    db::Transaction tx(db);
    requireOpenDay(db, serial, day);
    if (!w.codigoContable.trimmed().isEmpty()) {
        Sql a(db, QStringLiteral("SELECT ManejaDocumentos, TieneAcreedor FROM CTACONTABLE "
                                 "WHERE Codigo = ? AND Status = 1"));
        a.bind(w.codigoContable.trimmed()).exec();
        if (!a.next())
            throw UserError(QStringLiteral("La cuenta contable no existe...!"));
        if (a.integer(QStringLiteral("TieneAcreedor")) == 1 && w.acreedor.trimmed().isEmpty())
            throw UserError(QStringLiteral("Debe indicar el acreedor...!"));
        if (a.integer(QStringLiteral("ManejaDocumentos")) == 1 && w.documento.trimmed().isEmpty())
            throw UserError(QStringLiteral("Debe indicar el documento...!"));
    }
    // The day's date with the time of the withdrawal, so that the day's range finds it.
    const QDateTime fecha(day, now.time());
    const int number = int(common::insertNumbered(
        db,
        {QStringLiteral("SALIDASCAJA"), QStringLiteral("Numero"), QStringLiteral("Serie"), serial},
        [&](long long next) {
            Sql i(db, QStringLiteral("INSERT INTO SALIDASCAJA (Numero, Serie, Fecha, "
                                     "CodigoContable, Acreedor, Documento, Descripcion, Monto, "
                                     "Usuario, Status) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0)"));
            i.bind(next)
                .bind(serial)
                .bind(fecha)
                .bind(w.codigoContable.trimmed())
                .bind(w.acreedor.trimmed())
                .bind(w.documento.trimmed())
                .bind(w.descripcion.trimmed())
                .bind(w.monto, 2)
                .bind(user)
                .exec();
        }));
    tx.commit();
    return number;
}

void removeWithdrawal(const QSqlDatabase& db, const QString& serial, int number) {
    db::Transaction tx(db);
    Sql q(db, QStringLiteral("SELECT Fecha, Status FROM SALIDASCAJA WHERE Serie = ? AND "
                             "Numero = ?"));
    q.bind(serial).bind(number).exec();
    if (!q.next())
        throw UserError(QStringLiteral("No existe la salida de caja %1...!").arg(number));
    if (q.integer(QStringLiteral("Status")) != 0)
        throw UserError(
            QStringLiteral("La salida de caja %1 pertenece a un día cerrado...!").arg(number));
    requireOpenDay(db, serial, q.dateTime(QStringLiteral("Fecha")).date());
    db::execute(db, QStringLiteral("DELETE FROM SALIDASCAJA WHERE Serie = ? AND Numero = ?"),
                {serial, number});
    tx.commit();
}

QList<Withdrawal> withdrawalsOf(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    Sql q(db, QStringLiteral("SELECT Numero, Fecha, CodigoContable, Acreedor, Documento, "
                             "Descripcion, Monto, Status FROM SALIDASCAJA WHERE Serie = ? AND "
                             "Fecha >= ? AND Fecha < ? ORDER BY Numero"));
    q.bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day)).exec();
    QList<Withdrawal> out;
    while (q.next()) {
        Withdrawal w;
        w.numero = q.integer(QStringLiteral("Numero"));
        w.fecha = q.dateTime(QStringLiteral("Fecha"));
        w.codigoContable = q.text(QStringLiteral("CodigoContable"));
        w.acreedor = q.text(QStringLiteral("Acreedor"));
        w.documento = q.text(QStringLiteral("Documento"));
        w.descripcion = q.text(QStringLiteral("Descripcion"));
        w.monto = q.decimal(QStringLiteral("Monto"));
        w.status = q.integer(QStringLiteral("Status"));
        out.append(w);
    }
    return out;
}

QList<PendingCheque> pendingCheques(const QSqlDatabase& db, const QString& serial,
                                    const QDate& day) {
    Sql q(db, QStringLiteral("SELECT NumeroFactura, Item, Documento, Banco, Monto FROM PAGOSVENTA "
                             "WHERE Serie = ? AND Fecha >= ? AND Fecha < ? AND FormaPago = ? AND "
                             "COALESCE(Status, 0) <> ? ORDER BY NumeroFactura, Item"));
    q.bind(serial)
        .bind(db::dayStart(day))
        .bind(db::nextDayStart(day))
        .bind(kCheque)
        .bind(kDeposited)
        .exec();
    QList<PendingCheque> out;
    while (q.next())
        out.append({q.integer(QStringLiteral("NumeroFactura")), q.integer(QStringLiteral("Item")),
                    q.text(QStringLiteral("Documento")), q.text(QStringLiteral("Banco")),
                    q.decimal(QStringLiteral("Monto"))});
    return out;
}

Decimal addDeposit(const QSqlDatabase& db, const QString& serial, const QDate& day,
                   const Deposit& d, const QString& user, const QDateTime& now) {
    const QString number = d.numeroDeposito.trimmed();
    if (number.isEmpty())
        throw UserError(QStringLiteral("Debe indicar el número del depósito...!"));
    if (d.totalEfectivo < Decimal(0))
        throw UserError(QStringLiteral("El monto en efectivo no puede ser negativo...!"));
    if (d.totalEfectivo.isZero() && d.cheques.isEmpty())
        throw UserError(QStringLiteral("El depósito no tiene monto...!"));
    db::Transaction tx(db);
    requireOpenDay(db, serial, day);
    if (!db::exists(db,
                    QStringLiteral("SELECT 1 FROM CTABANCOS WHERE Codigo = ? AND Status = 1 AND "
                                   "COALESCE(PuntoVenta, 0) <> 1"),
                    {d.cuentaBanco}))
        throw UserError(QStringLiteral("Debe seleccionar la cuenta bancaria...!"));
    if (db::exists(db,
                   QStringLiteral("SELECT 1 FROM DEPOSITOS WHERE NumeroDeposito = ? AND "
                                  "CuentaBanco = ?"),
                   {number, d.cuentaBanco}))
        throw UserError(QStringLiteral("Ya existe el depósito %1 en esa cuenta...!").arg(number));

    // Each cheque is taken as stored and only while it is still undeposited.
    Decimal cheques;
    Sql mark(db, QStringLiteral("UPDATE PAGOSVENTA SET Status = ? WHERE Serie = ? AND "
                                "NumeroFactura = ? AND Item = ? AND FormaPago = ? AND "
                                "COALESCE(Status, 0) <> ?"));
    Sql read(db, QStringLiteral("SELECT Documento, Banco, Monto FROM PAGOSVENTA WHERE Serie = ? "
                                "AND NumeroFactura = ? AND Item = ?"));
    Sql line(db, QStringLiteral("INSERT INTO MOVDEPOSITOS (NumeroDeposito, CuentaBanco, Serie, "
                                "Item, Factura, Cheque, Banco, Monto) VALUES (?, ?, ?, ?, ?, ?, "
                                "?, ?)"));
    int item = 0;
    for (const PendingCheque& c : d.cheques) {
        mark.bind(kDeposited)
            .bind(serial)
            .bind(c.factura)
            .bind(c.item)
            .bind(kCheque)
            .bind(kDeposited);
        mark.exec();
        if (mark.rowsAffected() != 1)
            throw UserError(QStringLiteral("El cheque %1 de la factura %2 ya fue depositado...!")
                                .arg(c.cheque)
                                .arg(c.factura));
        read.bind(serial).bind(c.factura).bind(c.item).exec();
        read.next();
        const Decimal amount = read.decimal(QStringLiteral("Monto"));
        cheques = cheques + amount;
        line.bind(number)
            .bind(d.cuentaBanco)
            .bind(serial)
            .bind(++item)
            .bind(c.factura)
            .bind(read.text(QStringLiteral("Documento")))
            .bind(read.text(QStringLiteral("Banco")))
            .bind(amount, 2)
            .exec();
    }
    Sql h(db, QStringLiteral("INSERT INTO DEPOSITOS (NumeroDeposito, CuentaBanco, Serie, Fecha, "
                             "TotalEfectivo, TotalCheques, Observacion, Usuario, Status) "
                             "VALUES (?, ?, ?, ?, ?, ?, ?, ?, 0)"));
    h.bind(number)
        .bind(d.cuentaBanco)
        .bind(serial)
        .bind(QDateTime(day, now.time()))
        .bind(d.totalEfectivo, 2)
        .bind(cheques, 2)
        .bind(d.observacion.trimmed())
        .bind(user)
        .exec();
    tx.commit();
    return cheques;
}

namespace {
QList<DepositRow> readDeposits(Sql& q) {
    QList<DepositRow> out;
    while (q.next()) {
        DepositRow r;
        r.numeroDeposito = q.text(QStringLiteral("NumeroDeposito"));
        r.cuentaBanco = q.text(QStringLiteral("CuentaBanco"));
        r.serie = q.text(QStringLiteral("Serie"));
        r.fecha = q.dateTime(QStringLiteral("Fecha"));
        r.totalEfectivo = q.decimal(QStringLiteral("TotalEfectivo"));
        r.totalCheques = q.decimal(QStringLiteral("TotalCheques"));
        r.status = q.integer(QStringLiteral("Status"));
        if (!q.isNull(QStringLiteral("EstadoConfirmacion"))) {
            r.confirmationStatus = q.integer(QStringLiteral("EstadoConfirmacion"));
            r.montoConfirmado = q.decimal(QStringLiteral("MontoConfirmado"));
            r.fechaConfirmada = q.dateTime(QStringLiteral("FechaDeposito"));
            r.nota = q.text(QStringLiteral("Nota"));
        }
        out.append(r);
    }
    return out;
}

const QString kDepositSelect = QStringLiteral(
    "SELECT D.NumeroDeposito, D.CuentaBanco, D.Serie, D.Fecha, D.TotalEfectivo, D.TotalCheques, "
    "D.Status, C.Status AS EstadoConfirmacion, C.Monto AS MontoConfirmado, C.FechaDeposito, "
    "C.Nota FROM DEPOSITOS D LEFT JOIN CONFIRMACION_DEPOSITO C ON C.NumeroDeposito = "
    "D.NumeroDeposito AND C.CodigoBanco = D.CuentaBanco ");
} // namespace

QList<DepositRow> depositsBetween(const QSqlDatabase& db, const QDate& from, const QDate& to) {
    Sql q(db, kDepositSelect + QStringLiteral("WHERE D.Fecha >= ? AND D.Fecha < ? "
                                              "ORDER BY D.Fecha, D.Serie, D.NumeroDeposito"));
    q.bind(db::dayStart(from)).bind(db::nextDayStart(to)).exec();
    return readDeposits(q);
}

QList<DepositRow> depositsOf(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    Sql q(db, kDepositSelect + QStringLiteral("WHERE D.Serie = ? AND D.Fecha >= ? AND D.Fecha < ? "
                                              "ORDER BY D.NumeroDeposito"));
    q.bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day)).exec();
    return readDeposits(q);
}

void confirmDeposit(const QSqlDatabase& db, const Confirmation& c, const QString& user,
                    const QDateTime& now) {
    if (!c.fechaDeposito.isValid())
        throw UserError(QStringLiteral("Debe indicar la fecha del depósito en el banco...!"));
    db::Transaction tx(db);
    Sql d(db, QStringLiteral("SELECT Fecha, TotalEfectivo, TotalCheques FROM DEPOSITOS WHERE "
                             "NumeroDeposito = ? AND CuentaBanco = ?"));
    d.bind(c.numeroDeposito).bind(c.cuentaBanco).exec();
    if (!d.next())
        throw UserError(QStringLiteral("No existe el depósito %1...!").arg(c.numeroDeposito));
    const Decimal deposited =
        d.decimal(QStringLiteral("TotalEfectivo")) + d.decimal(QStringLiteral("TotalCheques"));
    if (c.status == 1 && c.monto != deposited && c.nota.trimmed().isEmpty())
        throw UserError(QStringLiteral(
            "El monto confirmado difiere del depositado, debe indicar una nota...!"));
    const QDateTime saleDay = d.dateTime(QStringLiteral("Fecha"));

    Sql u(db, QStringLiteral("UPDATE CONFIRMACION_DEPOSITO SET FechaRegistro = ?, "
                             "FechaDeposito = ?, FechaVenta = ?, Monto = ?, Nota = ?, Status = ? "
                             "WHERE NumeroDeposito = ? AND CodigoBanco = ?"));
    u.bind(now)
        .bind(c.fechaDeposito)
        .bind(saleDay)
        .bind(c.monto, 2)
        .bind(c.nota.trimmed())
        .bind(c.status)
        .bind(c.numeroDeposito)
        .bind(c.cuentaBanco)
        .exec();
    if (u.rowsAffected() == 0) {
        Sql i(db, QStringLiteral("INSERT INTO CONFIRMACION_DEPOSITO (FechaRegistro, "
                                 "FechaDeposito, FechaVenta, NumeroDeposito, CodigoBanco, Monto, "
                                 "Nota, Status) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
        i.bind(now)
            .bind(c.fechaDeposito)
            .bind(saleDay)
            .bind(c.numeroDeposito)
            .bind(c.cuentaBanco)
            .bind(c.monto, 2)
            .bind(c.nota.trimmed())
            .bind(c.status)
            .exec();
    }
    // The audit keeps every version of the row, with who wrote it.
    db::execute(db,
                QStringLiteral("INSERT INTO CONFIRMACION_DEPOSITO_AUD (ID, FechaRegistro, "
                               "FechaDeposito, FechaVenta, NumeroDeposito, CodigoBanco, Monto, "
                               "Nota, Status, Usuario) SELECT ID, FechaRegistro, FechaDeposito, "
                               "FechaVenta, NumeroDeposito, CodigoBanco, Monto, Nota, Status, ? "
                               "FROM CONFIRMACION_DEPOSITO WHERE NumeroDeposito = ? AND "
                               "CodigoBanco = ?"),
                {user, c.numeroDeposito, c.cuentaBanco});
    tx.commit();
}

QList<std::pair<QString, QString>> depositAccounts(const QSqlDatabase& db) {
    Sql q(db, QStringLiteral("SELECT Codigo, Nombre FROM CTABANCOS WHERE Status = 1 AND "
                             "COALESCE(PuntoVenta, 0) <> 1 ORDER BY Nombre"));
    q.exec();
    QList<std::pair<QString, QString>> out;
    while (q.next())
        out.append({q.text(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre"))});
    return out;
}

} // namespace orvo::pos::cash
