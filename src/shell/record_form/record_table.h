#pragma once

#include "common/errors/errors.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>
#include <functional>

namespace orvo::shell {

// One column of a table-driven record screen: which control shows it and how.
struct RecordField {
    enum class Kind {
        Text,    // line edit
        Integer, // line edit accepting digits; compared as a number when searching
        Decimal, // line edit with `scale` decimals
        Date,    // date picker
        Flag,    // check box, 1 / 0
        Status,  // option buttons "Activo" / "Inactivo", 1 / 0
        Choice,  // combo box of codes from `choices` (SELECT code, description ...)
    };
    QString column;  // as in the table
    QString control; // objectName of the control
    QString label;   // caption beside the control
    Kind kind = Kind::Text;
    int size = 0;  // maximum length of a text
    int scale = 0; // decimals of a Decimal
    bool required = false;
    QString choices; // for Choice: a query giving code and description, active rows only

    bool isNumeric() const {
        return kind == Kind::Integer || kind == Kind::Decimal || kind == Kind::Flag ||
               kind == Kind::Status;
    }
};

// A master table maintained through a record screen: a few lines of description each.
struct RecordTable {
    QString formName;          // screen objectName, "frmColores"
    QString caption;           // window title, "Colores"
    QString table;             // "COLORES"
    QString key;               // key column, "Codigo"
    QList<RecordField> fields; // the key among them
    int codeWidth = 0;         // > 0: Nuevo proposes the next numeric code with this many digits
    bool numericKey = false;   // the key column is a number (IMPUESTOS, TIPO_DESPACHO)
    QString reportTitle;       // catalogue report title, "Colores"
    // Checked by every write before anything changes (acting user, table); throws UserError.
    std::function<void(const QSqlDatabase&, const QString&)> writeGuard;

    const RecordField* field(const QString& column) const;
    const RecordField* keyField() const { return field(key); }
};

// The rows of a record screen's query set (rcsConsulta): every field, key order, reserved code
// '0' left out.
struct RecordRows {
    QList<QString> columns;
    QList<QVariantList> rows;
    int indexOfKey(const QVariant& key, int keyColumn) const;
};

// A master row still named by articles or documents: its delete is refused and nothing changes.
class RecordInUse : public UserError {
public:
    explicit RecordInUse(QString usedBy)
        : UserError(QStringLiteral("Registro no se puede eliminar!")), m_usedBy(std::move(usedBy)) {
    }
    const QString& usedBy() const { return m_usedBy; }

private:
    QString m_usedBy;
};

namespace records {

QString selectStatement(const RecordTable& t);
RecordRows load(const QSqlDatabase& db, const RecordTable& t);

// Key of the first row (key order) whose fields equal every given value; empty values are
// ignored, numeric fields compare as numbers, text fields as text. Invalid QVariant: none.
QVariant find(const QSqlDatabase& db, const RecordTable& t,
              const QList<QPair<QString, QVariant>>& criteria);

// Next code from the numbering service, with leading zeros to `width` ("001").
QString nextCode(const QSqlDatabase& db, const QString& table, const QString& column, int width);

// Insert (adding) or update of one row: values by column. "Registro duplicado!" when the key
// exists already. One transaction.
void save(const QSqlDatabase& db, const RecordTable& t, const QString& actingUser,
          const QList<QPair<QString, QVariant>>& values, bool adding);

// Deletes the row with `key`. A row other tables still name throws RecordInUse; a refusal of the
// database throws DbError. One transaction.
void remove(const QSqlDatabase& db, const RecordTable& t, const QString& actingUser,
            const QVariant& key);

} // namespace records

} // namespace orvo::shell
