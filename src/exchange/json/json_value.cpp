#include "exchange/json/json_value.h"

namespace orvo::exchange::json {

JsonValue JsonValue::null() {
    JsonValue v;
    v.m_kind = Kind::Null;
    return v;
}

JsonValue JsonValue::boolean(bool value) {
    JsonValue v;
    v.m_kind = Kind::Boolean;
    v.m_bool = value;
    return v;
}

JsonValue JsonValue::text(QString value) {
    JsonValue v;
    v.m_kind = Kind::Text;
    v.m_text = std::move(value);
    return v;
}

JsonValue JsonValue::number(QString literal) {
    JsonValue v;
    v.m_kind = Kind::Number;
    v.m_text = std::move(literal);
    return v;
}

JsonValue JsonValue::object(std::shared_ptr<JsonObject> value) {
    JsonValue v;
    v.m_kind = Kind::Object;
    v.m_object = std::move(value);
    return v;
}

JsonValue JsonValue::array(std::shared_ptr<JsonArray> value) {
    JsonValue v;
    v.m_kind = Kind::Array;
    v.m_array = std::move(value);
    return v;
}

QString JsonValue::toText() const {
    switch (m_kind) {
    case Kind::Text:
    case Kind::Number:
        return m_text;
    case Kind::Boolean:
        return m_bool ? QStringLiteral("true") : QStringLiteral("false");
    case Kind::Null:
        return QStringLiteral("null");
    default:
        return {};
    }
}

std::optional<Decimal> JsonValue::toDecimal() const {
    if (m_kind != Kind::Number && m_kind != Kind::Text)
        return std::nullopt;
    return Decimal::parse(m_text);
}

const JsonObject& JsonValue::toObject() const {
    static const JsonObject empty;
    return m_object ? *m_object : empty;
}

const JsonArray& JsonValue::toArray() const {
    static const JsonArray empty;
    return m_array ? *m_array : empty;
}

bool JsonObject::add(const QString& key, JsonValue value) {
    if (m_index.contains(key))
        return false;
    m_index.insert(key, int(m_entries.size()));
    m_entries.append({key, std::move(value)});
    return true;
}

JsonValue JsonObject::value(const QString& key) const {
    const auto it = m_index.constFind(key);
    return it == m_index.constEnd() ? JsonValue() : m_entries.at(*it).second;
}

QList<QString> JsonObject::keys() const {
    QList<QString> list;
    list.reserve(m_entries.size());
    for (const auto& e : m_entries)
        list.append(e.first);
    return list;
}

JsonValue JsonArray::item(int oneBasedIndex) const {
    if (oneBasedIndex < 1 || oneBasedIndex > m_items.size())
        return {};
    return m_items.at(oneBasedIndex - 1);
}

} // namespace orvo::exchange::json
