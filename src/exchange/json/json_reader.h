#pragma once

#include "exchange/json/json_value.h"

#include <QString>

namespace orvo::exchange::json {

// A forgiving reader for the JSON the card terminal and hand-written files produce. It never
// throws: it returns what it could build and lists what was wrong in errorText(), one line per
// problem ending in CR LF, in the order met ("Invalid JSON" alone, without a line break, when
// the text is neither an object nor a list).
//
// Accepted beyond strict JSON: /* */ and // comments, parentheses read as blanks, keys and texts
// in single quotes, unquoted keys, members and items without commas between them.
// Numbers keep their exact text (JsonValue::toDecimal converts); a number cut by the end of the
// text stays an empty value. A duplicate key keeps the first value and ends that object.
// "\uXXXX" gives one UTF-16 unit, so a surrogate pair written as two escapes becomes one
// character; a surrogate left without its partner becomes U+FFFD.
// A misspelt literal or a bad number is reported and skipped up to the next delimiter, so one
// mistake gives one message.
class JsonReader {
public:
    // An object or a list; an empty value when the text is neither.
    JsonValue parse(const QString& text);
    // Empty after a clean parse.
    const QString& errorText() const { return m_errors; }

private:
    void skipBlanks();
    bool atEnd() const { return m_pos >= m_text.size(); }
    QChar current() const { return atEnd() ? QChar() : m_text.at(m_pos); }
    QString restOfText() const { return m_text.mid(m_pos); }
    int position() const { return int(m_pos) + 1; }
    void addError(const QString& what);
    void skipBadToken();

    JsonValue parseValue();
    JsonValue parseObject();
    JsonValue parseArray();
    // The frame both share: the opening character, elements separated by commas (a missing or
    // doubled comma is forgiven), the closing one. `readElement` reads one element and returns
    // false to stop at an error it reported.
    template <class ReadElement>
    JsonValue parseCollection(JsonValue result, QChar open, QChar close, const QString& kind,
                              ReadElement readElement);
    QString parseKey();
    JsonValue parseText();
    JsonValue parseNumber();
    JsonValue parseBoolean();
    JsonValue parseNull();

    QString m_text;
    qsizetype m_pos = 0;
    QString m_errors;
};

// Shortcut: parses and hands back the error text.
JsonValue parseJson(const QString& text, QString* errorText = nullptr);

} // namespace orvo::exchange::json
