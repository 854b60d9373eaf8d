#include "shell/record_form/record_table.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "common/schema/references.h"

namespace orvo::shell {

const RecordField* RecordTable::field(const QString& column) const {
    for (const RecordField& f : fields)
        if (f.column.compare(column, Qt::CaseInsensitive) == 0)
            return &f;
    return nullptr;
}

int RecordRows::indexOfKey(const QVariant& key, int keyColumn) const {
    for (int i = 0; i < rows.size(); ++i)
        if (rows[i].value(keyColumn).toString() == key.toString())
            return i;
    return -1;
}

namespace records {

namespace {

QString columnList(const RecordTable& t) {
    QStringList cols;
    for (const RecordField& f : t.fields)
        cols << f.column;
    return cols.join(QStringLiteral(", "));
}

// Code '0' is a reserved row of text-keyed catalogues: never shown or edited.
QString reservedFilter(const RecordTable& t) {
    return t.numericKey ? QString() : t.key + QStringLiteral(" <> '0'");
}

QVariant typed(const RecordField& f, const QVariant& v) {
    if (!v.isValid() || v.isNull() || (v.typeId() == QMetaType::QString && v.toString().isEmpty()))
        return f.kind == RecordField::Kind::Text || f.kind == RecordField::Kind::Choice
                   ? QVariant(QString())
                   : QVariant();
    switch (f.kind) {
    case RecordField::Kind::Integer:
    case RecordField::Kind::Flag:
    case RecordField::Kind::Status:
        return QVariant(v.toLongLong());
    case RecordField::Kind::Decimal:
        return QVariant(v.toString());
    default:
        return v;
    }
}

} // namespace

QString selectStatement(const RecordTable& t) {
    const QString filter = reservedFilter(t);
    return QStringLiteral("SELECT ") + columnList(t) + QStringLiteral(" FROM ") + t.table +
           (filter.isEmpty() ? QString() : QStringLiteral(" WHERE ") + filter) +
           QStringLiteral(" ORDER BY ") + t.key;
}

RecordRows load(const QSqlDatabase& db, const RecordTable& t) {
    RecordRows out;
    for (const RecordField& f : t.fields)
        out.columns << f.column;
    db::Sql q(db, selectStatement(t));
    q.exec();
    while (q.next()) {
        QVariantList row;
        row.reserve(t.fields.size());
        for (const RecordField& f : t.fields)
            row << q.value(f.column);
        out.rows << row;
    }
    return out;
}

QVariant find(const QSqlDatabase& db, const RecordTable& t,
              const QList<QPair<QString, QVariant>>& criteria) {
    QStringList where;
    QVariantList values;
    if (const QString filter = reservedFilter(t); !filter.isEmpty())
        where << filter;
    for (const auto& [column, value] : criteria) {
        const RecordField* f = t.field(column);
        if (!f || !value.isValid() || value.toString().trimmed().isEmpty())
            continue;
        where << f->column + QStringLiteral(" = ?");
        values << typed(*f, f->isNumeric() ? QVariant(value.toString().trimmed()) : value);
    }
    db::Sql q(db, QStringLiteral("SELECT ") + t.key + QStringLiteral(" FROM ") + t.table +
                      (where.isEmpty()
                           ? QString()
                           : QStringLiteral(" WHERE ") + where.join(QStringLiteral(" AND "))) +
                      QStringLiteral(" ORDER BY ") + t.key + QStringLiteral(" LIMIT 1"));
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    return q.next() ? q.value(0) : QVariant();
}

QString nextCode(const QSqlDatabase& db, const QString& table, const QString& column, int width) {
    return QStringLiteral("%1").arg(common::nextCode(db, table, column), width, 10,
                                    QLatin1Char('0'));
}

void save(const QSqlDatabase& db, const RecordTable& t, const QString& actingUser,
          const QList<QPair<QString, QVariant>>& values, bool adding) {
    if (t.writeGuard)
        t.writeGuard(db, actingUser);
    QVariant key;
    QStringList cols;
    QVariantList bound;
    for (const auto& [column, value] : values) {
        const RecordField* f = t.field(column);
        if (!f)
            continue;
        if (f->column == t.key)
            key = typed(*f, value);
        cols << f->column;
        bound << typed(*f, value);
    }
    if (!key.isValid() || key.toString().trimmed().isEmpty())
        throw UserError(QStringLiteral("¡Debe introducir ") + t.keyField()->label.toLower() +
                        QStringLiteral("!"));
    if (!t.numericKey && key.toString() == QLatin1String("0"))
        throw UserError(QStringLiteral("Registro duplicado!"));

    db::Transaction tx(db);
    if (adding) {
        if (db::exists(db,
                       QStringLiteral("SELECT ") + t.key + QStringLiteral(" FROM ") + t.table +
                           QStringLiteral(" WHERE ") + t.key + QStringLiteral(" = ?"),
                       {key}))
            throw UserError(QStringLiteral("Registro duplicado!"));
        QStringList marks;
        for (int i = 0; i < cols.size(); ++i)
            marks << QStringLiteral("?");
        db::Sql q(db, QStringLiteral("INSERT INTO ") + t.table + QStringLiteral(" (") +
                          cols.join(QStringLiteral(", ")) + QStringLiteral(") VALUES (") +
                          marks.join(QStringLiteral(", ")) + QStringLiteral(")"));
        for (const QVariant& v : bound)
            q.bind(v);
        q.exec();
    } else {
        QStringList sets;
        QVariantList setValues;
        for (int i = 0; i < cols.size(); ++i) {
            if (cols[i] == t.key)
                continue;
            sets << cols[i] + QStringLiteral(" = ?");
            setValues << bound[i];
        }
        db::Sql q(db, QStringLiteral("UPDATE ") + t.table + QStringLiteral(" SET ") +
                          sets.join(QStringLiteral(", ")) + QStringLiteral(" WHERE ") + t.key +
                          QStringLiteral(" = ?"));
        for (const QVariant& v : setValues)
            q.bind(v);
        q.bind(key).exec();
    }
    tx.commit();
}

void remove(const QSqlDatabase& db, const RecordTable& t, const QString& actingUser,
            const QVariant& key) {
    if (t.writeGuard)
        t.writeGuard(db, actingUser);
    db::Transaction tx(db);
    const QString user = schema::usedBy(db, t.table, key);
    if (!user.isEmpty())
        throw RecordInUse(user);
    db::execute(db,
                QStringLiteral("DELETE FROM ") + t.table + QStringLiteral(" WHERE ") + t.key +
                    QStringLiteral(" = ?"),
                {key});
    tx.commit();
}

} // namespace records

} // namespace orvo::shell
