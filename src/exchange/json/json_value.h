#pragma once

#include "common/decimal/decimal.h"

#include <QHash>
#include <QList>
#include <QString>
#include <memory>
#include <optional>
#include <utility>

namespace orvo::exchange::json {

class JsonObject;
class JsonArray;

// One value of a parsed text. Objects and lists are shared, as the reader hands out one tree
// and callers only read it. Empty stands for a value the reader could not build (a number cut
// by the end of the text, a misspelt literal).
class JsonValue {
public:
    enum class Kind { Empty, Null, Boolean, Text, Number, Object, Array };

    JsonValue() = default;
    static JsonValue null();
    static JsonValue boolean(bool value);
    static JsonValue text(QString value);
    // A number keeps the exact characters it was written with.
    static JsonValue number(QString literal);
    static JsonValue object(std::shared_ptr<JsonObject> value);
    static JsonValue array(std::shared_ptr<JsonArray> value);

    Kind kind() const { return m_kind; }
    bool isEmpty() const { return m_kind == Kind::Empty; }
    bool isNull() const { return m_kind == Kind::Null; }
    bool isObject() const { return m_kind == Kind::Object; }
    bool isArray() const { return m_kind == Kind::Array; }

    bool toBool() const { return m_kind == Kind::Boolean && m_bool; }
    // Texts as written; numbers as their literal; true/false/null as their words; else empty.
    QString toText() const;
    // The number (or a text holding one) as an exact decimal; nullopt when it is not one or does
    // not fit.
    std::optional<Decimal> toDecimal() const;
    // Empty shared objects for anything that is not an object / a list, so lookups chain.
    const JsonObject& toObject() const;
    const JsonArray& toArray() const;
    std::shared_ptr<JsonObject> objectPtr() const { return m_object; }
    std::shared_ptr<JsonArray> arrayPtr() const { return m_array; }

private:
    Kind m_kind = Kind::Empty;
    bool m_bool = false;
    QString m_text;
    std::shared_ptr<JsonObject> m_object;
    std::shared_ptr<JsonArray> m_array;
};

// Keys are unique and keep the order they were added in.
class JsonObject {
public:
    int count() const { return int(m_entries.size()); }
    bool contains(const QString& key) const { return m_index.contains(key); }
    // False (and nothing changes) when the key is already there.
    bool add(const QString& key, JsonValue value);
    // The value of a key, or an empty value.
    JsonValue value(const QString& key) const;
    QList<QString> keys() const;
    const QList<std::pair<QString, JsonValue>>& entries() const { return m_entries; }

private:
    QList<std::pair<QString, JsonValue>> m_entries;
    QHash<QString, int> m_index;
};

// A list counted from 1.
class JsonArray {
public:
    int count() const { return int(m_items.size()); }
    void append(JsonValue value) { m_items.append(std::move(value)); }
    // Item 1..count(); an empty value outside.
    JsonValue item(int oneBasedIndex) const;
    const QList<JsonValue>& items() const { return m_items; }

private:
    QList<JsonValue> m_items;
};

} // namespace orvo::exchange::json
