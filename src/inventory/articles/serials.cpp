#include "inventory/articles/serials.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"

namespace orvo::inventory::serials {

namespace {

const QString kNotActive =
    QStringLiteral(" no existe en el inventario o su estatus es inactivo...!");
const QString kNotInactive =
    QStringLiteral(" no existe en el inventario o su estatus es activo...!");

// Where each type finds its documents and their lines. The number is the first column, then the
// register (or ''), the party code and name and the date.
struct Source {
    QString documents;
    QString lines; // bound with the number (and the register or the supplier)
    bool numericKey;
    enum { None, BySerie, ByParty } second;
};

Source sourceOf(const QString& code) {
    static const QString adjustments = QStringLiteral(
        "SELECT A.Numero, '' AS Serie, T.Codigo AS Tercero, T.Nombre AS NombreTercero, A.Fecha "
        "FROM AJUSTES A LEFT JOIN TIPOAJUSTES T ON T.Codigo = A.TipoAjuste WHERE A.Signo %1 0 "
        "ORDER BY A.Numero DESC");
    static const QString adjustmentLines = QStringLiteral(
        "SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM MOVAJUSTES M LEFT JOIN INVENTARIO I ON "
        "I.CodigoBarra = M.CodigoBarra WHERE M.Numero = ? ORDER BY M.Item");
    if (code == QLatin1String("CO"))
        return {QStringLiteral("SELECT C.Documento, '' AS Serie, P.Codigo AS Tercero, P.Nombre AS "
                               "NombreTercero, C.Fecha FROM COMPRAS C LEFT JOIN PROVEEDORES P ON "
                               "P.Codigo = C.Proveedor ORDER BY C.Fecha DESC"),
                QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM MOVCOMPRAS M LEFT "
                               "JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                               "M.Documento = ? AND M.Proveedor = ? ORDER BY M.Item"),
                false, Source::ByParty};
    if (code == QLatin1String("DC"))
        return {QStringLiteral("SELECT D.Numero, '' AS Serie, P.Codigo AS Tercero, P.Nombre AS "
                               "NombreTercero, D.Fecha FROM DEVCOMPRAS D LEFT JOIN PROVEEDORES P "
                               "ON P.Codigo = D.Proveedor ORDER BY D.Numero DESC"),
                QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM MOVDEVCOMPRAS M "
                               "LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                               "M.Numero = ? ORDER BY M.Item"),
                true, Source::None};
    if (code == QLatin1String("VT"))
        return {QStringLiteral("SELECT V.NumeroFactura, V.Serie, C.Codigo AS Tercero, C.Nombre AS "
                               "NombreTercero, V.Fecha FROM VENTAS V LEFT JOIN CLIENTES C ON "
                               "C.Codigo = V.Cliente ORDER BY V.Fecha DESC"),
                QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM MOVVENTAS M LEFT "
                               "JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                               "M.NumeroFactura = ? AND M.Serie = ? ORDER BY M.Item"),
                true, Source::BySerie};
    if (code == QLatin1String("DV"))
        return {QStringLiteral("SELECT D.NumeroDevolucion, D.Serie, C.Codigo AS Tercero, C.Nombre "
                               "AS NombreTercero, D.Fecha FROM DEVVENTAS D LEFT JOIN CLIENTES C "
                               "ON C.Codigo = D.Cliente ORDER BY D.Fecha DESC"),
                QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM MOVDEVVENTAS M "
                               "LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                               "M.NumeroDevolucion = ? AND M.Serie = ? ORDER BY M.Item"),
                true, Source::BySerie};
    if (code == QLatin1String("AP"))
        return {adjustments.arg(QLatin1String(">")), adjustmentLines, true, Source::None};
    if (code == QLatin1String("AN"))
        return {adjustments.arg(QLatin1String("<")), adjustmentLines, true, Source::None};
    if (code == QLatin1String("TR"))
        return {QStringLiteral("SELECT T.Numero, '' AS Serie, S.Codigo AS Tercero, S.Nombre AS "
                               "NombreTercero, T.Fecha FROM TRANSFERENCIAS T LEFT JOIN SUCURSALES "
                               "S ON S.Codigo = T.CodigoRecibe ORDER BY T.Numero DESC"),
                QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM "
                               "MOVTRANSFERENCIAS M LEFT JOIN INVENTARIO I ON I.CodigoBarra = "
                               "M.CodigoBarra WHERE M.Numero = ? ORDER BY M.Item"),
                true, Source::None};
    if (code == QLatin1String("DT"))
        return {QStringLiteral("SELECT T.Numero, '' AS Serie, S.Codigo AS Tercero, S.Nombre AS "
                               "NombreTercero, T.Fecha FROM DEVTRANSFERENCIAS T LEFT JOIN "
                               "SUCURSALES S ON S.Codigo = T.CodigoEnvia ORDER BY T.Numero DESC"),
                QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad FROM "
                               "MOVDEVTRANSFERENCIAS M LEFT JOIN INVENTARIO I ON I.CodigoBarra = "
                               "M.CodigoBarra WHERE M.Numero = ? ORDER BY M.Item"),
                true, Source::None};
    throw std::invalid_argument("unknown serial movement type");
}

// Guarded status change: true when the serial was in the state the update expects.
bool setStatus(const QSqlDatabase& db, const SerialLine& line, int from, int to) {
    return db::execute(db,
                       QStringLiteral("UPDATE CODIGOSERIAL SET Status = ? WHERE CodigoBarra = ? "
                                      "AND Serial = ? AND Status = ?"),
                       {to, line.barcode, line.serial, from}) > 0;
}

bool serialExists(const QSqlDatabase& db, const SerialLine& line) {
    return db::execute(db,
                       QStringLiteral("UPDATE CODIGOSERIAL SET Status = Status WHERE CodigoBarra "
                                      "= ? AND Serial = ?"),
                       {line.barcode, line.serial}) > 0;
}

void insertSerial(const QSqlDatabase& db, const SerialLine& line) {
    db::execute(db,
                QStringLiteral("INSERT INTO CODIGOSERIAL(CodigoBarra, Serial, Status) VALUES "
                               "(?, ?, 1)"),
                {line.barcode, line.serial});
}

// Applies one line; false when the serial is not in the state its type needs.
bool apply(const QSqlDatabase& db, Effect effect, const SerialLine& line) {
    switch (effect) {
    case Effect::InsertNew:
        if (serialExists(db, line))
            return false;
        insertSerial(db, line);
        return true;
    case Effect::Deactivate:
        return setStatus(db, line, 1, 0);
    case Effect::Reactivate:
        return setStatus(db, line, 0, 1);
    case Effect::ReactivateOrInsert:
        if (setStatus(db, line, 0, 1))
            return true;
        if (serialExists(db, line))
            return false;
        insertSerial(db, line);
        return true;
    }
    return false;
}

SerialDocument documentFrom(const db::Sql& q) {
    SerialDocument d;
    d.number = q.integer("Numero");
    d.date = q.dateTime("Fecha");
    d.type = q.text("TipoMovimiento");
    d.document = q.text("Documento");
    d.party = q.text("Tercero");
    d.note = q.text("Observacion");
    d.user = q.text("Usuario");
    d.status = q.integer("Status");
    return d;
}

} // namespace

const QList<MovementType>& movementTypes() {
    static const QList<MovementType> types = {
        {QStringLiteral("CO"), QStringLiteral("COMPRAS"), QStringLiteral("COMPRAS"),
         Effect::InsertNew, QStringLiteral(" ya existe en el inventario...!")},
        // Deactivates, yet speaks of an active serial: kept as the stores know it.
        {QStringLiteral("DC"), QStringLiteral("DEVOLUCIONES DE COMPRAS"),
         QStringLiteral("DEVCOMPRAS"), Effect::Deactivate, kNotInactive},
        {QStringLiteral("VT"), QStringLiteral("VENTAS"), QStringLiteral("VENTAS"),
         Effect::Deactivate, kNotActive},
        {QStringLiteral("DV"), QStringLiteral("DEVOLUCIONES DE VENTAS"),
         QStringLiteral("DEVVENTAS"), Effect::Reactivate, kNotInactive},
        {QStringLiteral("AP"), QStringLiteral("AJUSTES POSITIVOS"), QStringLiteral("AJUSTES"),
         Effect::ReactivateOrInsert,
         QStringLiteral(" existe en el inventario y su estatus es activo...!")},
        {QStringLiteral("AN"), QStringLiteral("AJUSTES NEGATIVOS"), QStringLiteral("AJUSTES"),
         Effect::Deactivate, kNotActive},
        {QStringLiteral("TR"), QStringLiteral("TRANSFERENCIAS"), QStringLiteral("TRANSFERENCIAS"),
         Effect::Deactivate, kNotActive},
        {QStringLiteral("DT"), QStringLiteral("DEVOLUCIONES DE TRANSFERENCIAS"),
         QStringLiteral("DEVTRANSFERENCIAS"), Effect::Reactivate, kNotInactive},
    };
    return types;
}

const MovementType* movementType(const QString& code) {
    for (const MovementType& t : movementTypes())
        if (t.code == code)
            return &t;
    return nullptr;
}

QList<SourceDocument> sourceDocuments(const QSqlDatabase& db, const QString& typeCode) {
    db::Sql q(db, sourceOf(typeCode).documents);
    q.exec();
    QList<SourceDocument> out;
    while (q.next())
        out.append({q.value(0).toString(), q.text("Serie"), q.text("Tercero"),
                    q.text("NombreTercero"), q.dateTime("Fecha")});
    return out;
}

QList<SourceLine> sourceLines(const QSqlDatabase& db, const QString& typeCode,
                              const SourceDocument& document) {
    const Source s = sourceOf(typeCode);
    db::Sql q(db, s.lines);
    if (s.numericKey)
        q.bind(document.number.toLongLong());
    else
        q.bind(document.number);
    if (s.second == Source::BySerie)
        q.bind(document.serie);
    else if (s.second == Source::ByParty)
        q.bind(document.party);
    q.exec();
    QList<SourceLine> out;
    while (q.next())
        out.append({q.text("CodigoBarra"), q.text("Nombre"), q.decimal("Cantidad")});
    return out;
}

void addScannedSerial(QList<SerialLine>& lines, const QString& barcode, const QString& serial) {
    const QString s = serial.trimmed();
    for (const SerialLine& l : lines)
        if (l.serial == s)
            throw UserError(QStringLiteral("Ya el serial esta incluido...!"));
    lines.append({barcode.trimmed(), s});
}

int saveSerialDocument(const QSqlDatabase& db, SerialDocument doc, bool approve) {
    if (doc.lines.isEmpty())
        throw UserError(QStringLiteral("La información debe contener al menos un item...!"));
    const MovementType* type = movementType(doc.type);
    if (!type)
        throw std::invalid_argument("unknown serial movement type");
    db::Transaction tx(db);
    if (doc.number == 0) {
        doc.number = int(common::insertNumbered(
            db, {QStringLiteral("SERIALES"), QStringLiteral("Numero")}, [&](long long number) {
                db::execute(db,
                            QStringLiteral("INSERT INTO SERIALES(Numero, Fecha, TipoMovimiento, "
                                           "Documento, Tercero, Observacion, Usuario, Status) "
                                           "VALUES (?, ") +
                                db::nowExpression(db) + QStringLiteral(", ?, ?, ?, ?, ?, 0)"),
                            {number, doc.type, doc.document, doc.party, doc.note, doc.user});
            }));
    } else {
        // An approved document is read-only: the guard leaves it untouched.
        const int touched = db::execute(db,
                                        QStringLiteral("UPDATE SERIALES SET Usuario = ?, "
                                                       "Observacion = ? WHERE Numero = ? AND "
                                                       "Status = 0"),
                                        {doc.user, doc.note, doc.number});
        if (touched == 0)
            throw UserError(QStringLiteral("El documento ya fue aprobado...!"));
    }
    db::execute(db, QStringLiteral("DELETE FROM MOVSERIALES WHERE Numero = ?"), {doc.number});
    db::Sql line(db, QStringLiteral("INSERT INTO MOVSERIALES(Numero, CodigoBarra, Serial, Item) "
                                    "VALUES (?, ?, ?, ?)"));
    int item = 0;
    for (const SerialLine& l : doc.lines)
        line.bind(doc.number).bind(l.barcode).bind(l.serial).bind(++item).exec();
    if (approve) {
        for (const SerialLine& l : doc.lines)
            if (!apply(db, type->effect, l))
                throw UserError(QStringLiteral("El serial ") + l.serial + type->failure);
        db::execute(db, QStringLiteral("UPDATE SERIALES SET Status = 1 WHERE Numero = ?"),
                    {doc.number});
    }
    tx.commit();
    return doc.number;
}

std::optional<SerialDocument> loadSerialDocument(const QSqlDatabase& db, int number) {
    db::Sql q(db, QStringLiteral("SELECT Numero, Fecha, TipoMovimiento, Documento, Tercero, "
                                 "Observacion, Usuario, Status FROM SERIALES WHERE Numero = ?"));
    q.bind(number).exec();
    if (!q.next())
        return std::nullopt;
    SerialDocument d = documentFrom(q);
    db::Sql l(db, QStringLiteral("SELECT CodigoBarra, Serial FROM MOVSERIALES WHERE Numero = ? "
                                 "ORDER BY Item"));
    l.bind(number).exec();
    while (l.next())
        d.lines.append({l.text("CodigoBarra"), l.text("Serial")});
    return d;
}

QList<SerialDocument> listSerialDocuments(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Numero, Fecha, TipoMovimiento, Documento, Tercero, "
                                 "Observacion, Usuario, Status FROM SERIALES ORDER BY Numero "
                                 "DESC"));
    q.exec();
    QList<SerialDocument> out;
    while (q.next())
        out.append(documentFrom(q));
    return out;
}

} // namespace orvo::inventory::serials
