// A master row that articles or documents still name is not deleted, on both engines: every
// reference the program knows is tried with a row of its table, and the same row deleted once
// nothing names it any more.
#include "common/db/sql.h"
#include "common/schema/references.h"
#include "common/schema/schema.h"
#include "shell/record_form/record_table.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;

namespace {

class MasterInUse : public test::DbTest {
protected:
    // A value of the column's type.
    static QVariant sample(const schema::Column& c, const QString& text) {
        switch (c.type) {
        case schema::Type::Text:
        case schema::Type::Memo:
            return text;
        case schema::Type::DateTime:
            return QDateTime(QDate(2026, 3, 2), QTime(10, 0));
        default:
            return 7;
        }
    }
    // A row of `table` with `column` = `value`: its key and required columns get samples.
    void insertRow(const QString& table, const QString& column, const QVariant& value) {
        const schema::Table* t = schema::findTable(table);
        ASSERT_NE(t, nullptr) << table.toStdString();
        QStringList names{t->column(column)->name};
        QVariantList values{value};
        for (const schema::Column& c : t->columns) {
            const bool needed = c.notNull || t->primaryKey.contains(c.name, Qt::CaseInsensitive);
            if (!needed || c.type == schema::Type::Identity ||
                c.name.compare(column, Qt::CaseInsensitive) == 0)
                continue;
            names << c.name;
            values << sample(c, QStringLiteral("1"));
        }
        db::Sql q(db(), QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                            .arg(t->name, names.join(u','),
                                 QStringList(names.size(), QStringLiteral("?")).join(u',')));
        for (const QVariant& v : values)
            q.bind(v);
        q.exec();
    }
    // The record screens' delete, for any master table.
    static RecordTable recordTableOf(const schema::Reference& r) {
        RecordTable t;
        t.table = r.master;
        t.key = r.key;
        return t;
    }
};

TEST_F(MasterInUse, EveryKnownReferenceRefusesTheDeleteUntilItIsGone) {
    for (const schema::Reference& r : schema::references()) {
        SCOPED_TRACE((r.master + " <- " + r.table + "." + r.column).toStdString());
        const schema::Table* master = schema::findTable(r.master);
        ASSERT_NE(master, nullptr);
        const QVariant key = sample(*master->column(r.key), QStringLiteral("K9"));
        insertRow(r.master, r.key, key);
        insertRow(r.table, r.column, key);
        const RecordTable t = recordTableOf(r);
        try {
            records::remove(db(), t, QStringLiteral("ROOT"), key);
            ADD_FAILURE() << "deleted while in use";
        } catch (const RecordInUse& e) {
            EXPECT_EQ(e.text(), QStringLiteral("Registro no se puede eliminar!"));
            EXPECT_EQ(e.usedBy().toUpper(), r.table.toUpper());
        }
        EXPECT_EQ(count(master->name, master->column(r.key)->name + " = ?", {key}), 1);

        db::execute(db(), QStringLiteral("DELETE FROM %1").arg(r.table));
        records::remove(db(), t, QStringLiteral("ROOT"), key);
        EXPECT_EQ(count(master->name, master->column(r.key)->name + " = ?", {key}), 0);
    }
}

} // namespace
