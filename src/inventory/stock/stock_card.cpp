#include "inventory/stock/stock_card.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "common/grid/grid_print.h"
#include "inventory/stock/movements.h"

#include <QLocale>
#include <QMap>
#include <algorithm>

namespace orvo::inventory::stock {

namespace {

// A document's signed quantity for the subject.
struct Movement {
    QDateTime date;
    int kind = 0; // index in movementKinds()
    QString document;
    Decimal quantity;
};

// What a physical-logical adjustment saw of the subject.
struct Count {
    Decimal book;    // ExistenciaLogica
    Decimal counted; // ExistenciaFisica
    Decimal difference;
};

QString subjectFilter(const CardSubject& s, const QString& line) {
    return s.isModel() ? QStringLiteral("I.Referencia = ? AND I.CodigoMarca = ?")
                       : line + QStringLiteral(".CodigoBarra = ?");
}

void bindSubject(db::Sql& q, const CardSubject& s) {
    if (s.isModel())
        q.bind(s.reference).bind(s.brand);
    else
        q.bind(s.barcode);
}

// The subject's documents dated in [from, to), oldest first, one row per document and kind.
QList<Movement> movements(const QSqlDatabase& db, const CardSubject& s, const QDateTime& from,
                          const QDateTime& to) {
    if (from >= to)
        return {};
    const QList<MovementKind>& kinds = movementKinds();
    QStringList parts;
    for (int i = 0; i < kinds.size(); ++i) {
        const MovementKind& k = kinds[i];
        parts << QStringLiteral("SELECT %1 AS Clase, H.Fecha AS Fecha, %2 AS Documento, "
                                "SUM(M.Cantidad) AS Cantidad FROM %3 M INNER JOIN %4 H ON %5 "
                                "INNER JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                                "%6 AND H.Fecha >= ? AND H.Fecha < ? AND %7 GROUP BY H.Fecha, %8")
                     .arg(i)
                     .arg(k.label, k.lines, k.header, k.join, k.filter,
                          subjectFilter(s, QStringLiteral("M")), k.key);
    }
    db::Sql q(db, parts.join(QStringLiteral(" UNION ALL ")) +
                      QStringLiteral(" ORDER BY Fecha, Clase, Documento"));
    for (int i = 0; i < kinds.size(); ++i) {
        q.bind(from).bind(to);
        bindSubject(q, s);
    }
    q.exec();
    QList<Movement> out;
    while (q.next()) {
        Movement m;
        m.kind = q.integer(QStringLiteral("Clase"));
        m.date = q.dateTime(QStringLiteral("Fecha"));
        m.document = q.text(QStringLiteral("Documento"));
        m.quantity = q.decimal(QStringLiteral("Cantidad")) * Decimal(kinds[m.kind].sign);
        out << m;
    }
    return out;
}

Decimal sum(const QList<Movement>& list) {
    Decimal total;
    for (const Movement& m : list)
        total += m.quantity;
    return total;
}

// Every physical-logical adjustment with what it saw of the subject (nothing: an article that did
// not exist then, so it counted 0).
QMap<QDateTime, Count> counts(const QSqlDatabase& db, const CardSubject& s) {
    QMap<QDateTime, Count> out;
    for (const QDateTime& at : countMoments(db))
        out.insert(at, Count());
    db::Sql q(db, QStringLiteral("SELECT F.FechaAjuste, SUM(F.ExistenciaLogica) AS Logica, "
                                 "SUM(F.ExistenciaFisica) AS Fisica, SUM(F.Ajuste) AS Ajuste FROM "
                                 "FISICOLOGICO F INNER JOIN INVENTARIO I ON I.CodigoBarra = "
                                 "F.CodigoBarra WHERE ") +
                      subjectFilter(s, QStringLiteral("F")) +
                      QStringLiteral(" GROUP BY F.FechaAjuste"));
    bindSubject(q, s);
    q.exec();
    while (q.next())
        out.insert(q.dateTime(QStringLiteral("FechaAjuste")),
                   {q.decimal(QStringLiteral("Logica")), q.decimal(QStringLiteral("Fisica")),
                    q.decimal(QStringLiteral("Ajuste"))});
    return out;
}

QString amount(const Decimal& d) {
    return d.toLocaleString(QLocale(), 2);
}

} // namespace

StockCard stockCard(const QSqlDatabase& db, const CardSubject& subject, const QDate& from,
                    const QDate& to) {
    if (!from.isValid() || !to.isValid() || from > to)
        throw UserError(QStringLiteral("La fecha inicial no puede ser mayor a la fecha "
                                       "final...!"));
    StockCard card;
    card.subject = subject;
    card.from = from;
    card.to = to;
    {
        db::Sql q(db, QStringLiteral("SELECT COUNT(*) AS N, MAX(I.Nombre) AS Nombre, "
                                     "SUM(I.Existencia) AS Existencia, "
                                     "SUM(COALESCE(I.ExistenciaInicial, 0)) AS Inicial FROM "
                                     "INVENTARIO I WHERE ") +
                          subjectFilter(subject, QStringLiteral("I")));
        bindSubject(q, subject);
        q.exec();
        q.next();
        if (q.integer(QStringLiteral("N")) == 0)
            throw UserError(subject.isModel()
                                ? QStringLiteral("La referencia ") + subject.reference +
                                      QStringLiteral(" de la marca ") + subject.brand +
                                      QStringLiteral(" no existe en el inventario...!")
                                : QStringLiteral("El código ") + subject.barcode +
                                      QStringLiteral(" no existe en el inventario...!"));
        card.description = q.text(QStringLiteral("Nombre"));
        card.stock = q.decimal(QStringLiteral("Existencia"));
        card.opening = q.decimal(QStringLiteral("Inicial"));
    }
    const QDateTime start = db::dayStart(from);
    const QDateTime end = db::nextDayStart(to);
    const QMap<QDateTime, Count> seen = counts(db, subject);

    // The balance when the period starts.
    auto before = seen.upperBound(start); // first count after the start
    if (before != seen.begin()) {
        const auto last = std::prev(before);
        card.opening = last->counted + sum(movements(db, subject, last.key(), start));
    } else if (before != seen.end()) {
        card.opening = before->book - sum(movements(db, subject, start, before.key()));
    } else {
        card.opening += sum(movements(db, subject, stockPeriod(db).from, start));
    }

    // The period: counts first when a document bears the same moment.
    const QList<MovementKind>& kinds = movementKinds();
    QMap<int, Decimal> totals;
    Decimal counted;
    bool anyCount = false;
    Decimal balance = card.opening;
    const QList<Movement> period = movements(db, subject, start, end);
    auto count = seen.lowerBound(start);
    auto addCount = [&] {
        balance = count->counted;
        card.rows << CardRow{count.key(), kPhysicalCountName, QString(), count->difference,
                             balance};
        counted += count->difference;
        anyCount = true;
        ++count;
    };
    for (const Movement& m : period) {
        while (count != seen.end() && count.key() < end && count.key() <= m.date)
            addCount();
        balance += m.quantity;
        card.rows << CardRow{m.date, kinds[m.kind].name, m.document, m.quantity, balance};
        totals[m.kind] += m.quantity;
    }
    while (count != seen.end() && count.key() < end)
        addCount();
    card.closing = balance;
    for (int i = 0; i < kinds.size(); ++i)
        card.byKind << CardKindTotal{kinds[i].name, totals.value(i)};
    if (anyCount)
        card.byKind << CardKindTotal{kPhysicalCountName, counted};
    return card;
}

PrintedCard printedCard(const StockCard& card) {
    PrintedCard p;
    p.title = QStringLiteral("Kardex de Inventario");
    const QString day = QStringLiteral("dd/MM/yyyy");
    const QString subject = card.subject.isModel()
                                ? QStringLiteral("Referencia ") + card.subject.reference +
                                      QStringLiteral(", marca ") + card.subject.brand
                                : card.subject.barcode;
    p.html = grid::fieldsHtml(
        {{card.subject.isModel() ? QStringLiteral("Modelo") : QStringLiteral("Código de barras"),
          subject},
         {QStringLiteral("Descripción"), card.description},
         {QStringLiteral("Desde"), card.from.toString(day)},
         {QStringLiteral("Hasta"), card.to.toString(day)},
         {QStringLiteral("Saldo inicial"), amount(card.opening)},
         {QStringLiteral("Saldo final"), amount(card.closing)},
         {QStringLiteral("Existencia actual"), amount(card.stock)}});
    QList<QStringList> rows;
    for (const CardRow& r : card.rows)
        rows.append({r.date.toString(QStringLiteral("dd/MM/yyyy HH:mm")), r.kind, r.document,
                     amount(r.quantity), amount(r.balance)});
    p.html += grid::tableHtml({QStringLiteral("Fecha"), QStringLiteral("Documento"),
                               QStringLiteral("Número"), QStringLiteral("Cantidad"),
                               QStringLiteral("Saldo")},
                              rows, {false, false, false, true, true});
    rows.clear();
    for (const CardKindTotal& t : card.byKind)
        rows.append({t.kind, amount(t.quantity)});
    p.html += QStringLiteral("<p><b>Movimientos por tipo de documento</b></p>") +
              grid::tableHtml({QStringLiteral("Tipo de documento"), QStringLiteral("Cantidad")},
                              rows, {false, true});
    return p;
}

QString barcodeCatalogSql() {
    return QStringLiteral("SELECT I.CodigoBarra, I.Nombre, I.Referencia, I.CodigoMarca, "
                          "I.Existencia, I.FechaPrimerMovimiento, (SELECT MAX(F.FechaAjuste) FROM "
                          "FISICOLOGICO F) AS UltimoAjuste FROM INVENTARIO I ORDER BY "
                          "I.CodigoBarra");
}

QString modelCatalogSql() {
    return QStringLiteral("SELECT I.Referencia, I.CodigoMarca, MAX(I.Nombre) AS Nombre, "
                          "SUM(I.Existencia) AS Existencia, MIN(I.FechaPrimerMovimiento) AS "
                          "FechaPrimerMovimiento, (SELECT MAX(F.FechaAjuste) FROM FISICOLOGICO F) "
                          "AS UltimoAjuste FROM INVENTARIO I GROUP BY I.Referencia, "
                          "I.CodigoMarca ORDER BY I.Referencia, I.CodigoMarca");
}

} // namespace orvo::inventory::stock
