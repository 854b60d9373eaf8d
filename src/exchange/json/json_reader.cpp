#include "exchange/json/json_reader.h"

#include "exchange/json/string_builder.h"

#include <QRegularExpression>

namespace orvo::exchange::json {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

bool isNumberChar(QChar c) {
    return QStringView(u"+-0123456789.eE").contains(c);
}

// Where a bad token ends: the characters that start or end something else.
bool isDelimiter(QChar c) {
    return QStringView(u",:[]{}()\"' \t\r\n/").contains(c);
}

bool isWellShapedNumber(const QString& literal) {
    static const QRegularExpression shape(
        QStringLiteral("^[+-]?([0-9]+(\\.[0-9]*)?|\\.[0-9]+)([eE][+-]?[0-9]+)?$"));
    return shape.match(literal).hasMatch();
}

int hexValue(QStringView digits) {
    if (digits.size() != 4)
        return -1;
    int value = 0;
    for (QChar c : digits) {
        const int d = c.isDigit()                ? c.unicode() - u'0'
                      : (c >= u'a' && c <= u'f') ? c.unicode() - u'a' + 10
                      : (c >= u'A' && c <= u'F') ? c.unicode() - u'A' + 10
                                                 : -1;
        if (d < 0)
            return -1;
        value = value * 16 + d;
    }
    return value;
}

// Lone surrogates cannot be shown or stored; pairs are left as they are.
QString repairSurrogates(const QString& s) {
    QString out = s;
    for (qsizetype i = 0; i < out.size(); ++i) {
        const QChar c = out.at(i);
        if (c.isHighSurrogate()) {
            if (i + 1 < out.size() && out.at(i + 1).isLowSurrogate())
                ++i;
            else
                out[i] = QChar::ReplacementCharacter;
        } else if (c.isLowSurrogate()) {
            out[i] = QChar::ReplacementCharacter;
        }
    }
    return out;
}

} // namespace

JsonValue parseJson(const QString& text, QString* errorText) {
    JsonReader reader;
    JsonValue value = reader.parse(text);
    if (errorText)
        *errorText = reader.errorText();
    return value;
}

JsonValue JsonReader::parse(const QString& text) {
    m_text = text;
    m_pos = 0;
    m_errors.clear();
    skipBlanks();
    const QChar c = current();
    if (c == u'{')
        return parseObject();
    if (c == u'[')
        return parseArray();
    m_errors = QStringLiteral("Invalid JSON");
    return {};
}

void JsonReader::addError(const QString& what) {
    m_errors += what + kCrLf;
}

void JsonReader::skipBlanks() {
    bool lineComment = false;
    bool blockComment = false;
    while (!atEnd()) {
        const QChar c = m_text.at(m_pos);
        const QChar next = m_pos + 1 < m_text.size() ? m_text.at(m_pos + 1) : QChar();
        if (lineComment) {
            if (c == u'\r' || c == u'\n')
                lineComment = false;
            ++m_pos;
        } else if (blockComment) {
            if (c == u'*' && next == u'/') {
                blockComment = false;
                m_pos += 2;
            } else {
                ++m_pos;
            }
        } else if (c == u'/' && next == u'/') {
            lineComment = true;
            m_pos += 2;
        } else if (c == u'/' && next == u'*') {
            blockComment = true;
            m_pos += 2;
        } else if (c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'(' || c == u')' ||
                   c == u'/' || c == u'*') {
            ++m_pos;
        } else {
            return;
        }
    }
}

void JsonReader::skipBadToken() {
    while (!atEnd() && !isDelimiter(current()))
        ++m_pos;
}

JsonValue JsonReader::parseValue() {
    skipBlanks();
    const QChar c = current();
    if (c == u'{')
        return parseObject();
    if (c == u'[')
        return parseArray();
    if (c == u'"' || c == u'\'')
        return parseText();
    if (c == u't' || c == u'f')
        return parseBoolean();
    if (c == u'n')
        return parseNull();
    return parseNumber();
}

template <class ReadElement>
JsonValue JsonReader::parseCollection(JsonValue result, QChar open, QChar close,
                                      const QString& kind, ReadElement readElement) {
    if (current() != open) {
        addError(QStringLiteral("Invalid %1 at position %2 : %3")
                     .arg(kind)
                     .arg(position())
                     .arg(restOfText()));
        return result;
    }
    ++m_pos;
    for (;;) {
        skipBlanks();
        if (current() == close) {
            ++m_pos;
            return result;
        }
        if (current() == u',') {
            ++m_pos;
            skipBlanks();
        }
        if (atEnd()) {
            addError(QStringLiteral("Missing '%1': ").arg(close) + m_text.right(20));
            return result;
        }
        if (!readElement())
            return result;
    }
}

JsonValue JsonReader::parseObject() {
    auto object = std::make_shared<JsonObject>();
    return parseCollection(JsonValue::object(object), u'{', u'}', QStringLiteral("Object"), [&] {
        const QString key = parseKey();
        JsonValue value = parseValue();
        if (object->add(key, std::move(value)))
            return true;
        addError(QStringLiteral("This key is already associated with an element of this "
                                "collection: ") +
                 key);
        return false;
    });
}

JsonValue JsonReader::parseArray() {
    auto array = std::make_shared<JsonArray>();
    return parseCollection(JsonValue::array(array), u'[', u']', QStringLiteral("Array"), [&] {
        const qsizetype before = m_pos;
        array->append(parseValue());
        if (m_pos == before)
            ++m_pos; // a stray delimiter such as '}' or ':' in a list: never read it twice
        return true;
    });
}

QString JsonReader::parseKey() {
    skipBlanks();
    QString key;
    const QChar c = current();
    if (c == u'"' || c == u'\'') {
        key = parseText().toText();
    } else {
        const qsizetype colon = m_text.indexOf(u':', m_pos);
        const qsizetype end = colon < 0 ? m_text.size() : colon;
        key = m_text.mid(m_pos, end - m_pos).trimmed();
        m_pos = end;
    }
    skipBlanks();
    if (current() == u':')
        ++m_pos;
    else
        addError(
            QStringLiteral("Invalid Key at position %1 : %2").arg(position()).arg(restOfText()));
    return key;
}

JsonValue JsonReader::parseText() {
    const QChar quote = current();
    ++m_pos;
    StringBuilder sb;
    sb.setChunkSize(256);
    while (!atEnd()) {
        const QChar c = m_text.at(m_pos);
        if (c == quote) {
            ++m_pos;
            break;
        }
        if (c != u'\\') {
            sb.append(c);
            ++m_pos;
            continue;
        }
        // An escape: the backslash and what follows it.
        if (m_pos + 1 >= m_text.size()) {
            ++m_pos;
            break;
        }
        const QChar e = m_text.at(m_pos + 1);
        m_pos += 2;
        switch (e.unicode()) {
        case u'"':
        case u'\\':
        case u'/':
        case u'\'':
            sb.append(e);
            break;
        case u'b':
            sb.append(QChar(8));
            break;
        case u'f':
            sb.append(QChar(12));
            break;
        case u'n':
            sb.append(QChar(u'\n'));
            break;
        case u'r':
            sb.append(QChar(u'\r'));
            break;
        case u't':
            sb.append(QChar(u'\t'));
            break;
        case u'u': {
            const int code = hexValue(QStringView(m_text).mid(m_pos, 4));
            if (code >= 0) {
                sb.append(QChar(char16_t(code)));
                m_pos += 4;
            }
            break; // a bad code drops the escape and reads on
        }
        default:
            break; // an unknown escape drops both characters
        }
    }
    return JsonValue::text(repairSurrogates(sb.toString()));
}

JsonValue JsonReader::parseNumber() {
    const qsizetype start = m_pos;
    while (!atEnd() && isNumberChar(current()))
        ++m_pos;
    if (atEnd())
        return {}; // the text was cut short inside the number
    const QString literal = m_text.mid(start, m_pos - start);
    if (!isWellShapedNumber(literal)) {
        m_pos = start;
        addError(
            QStringLiteral("Invalid Number at position %1 : %2").arg(position()).arg(restOfText()));
        skipBadToken();
        return {};
    }
    return JsonValue::number(literal);
}

JsonValue JsonReader::parseBoolean() {
    if (QStringView(m_text).mid(m_pos, 4) == u"true") {
        m_pos += 4;
        return JsonValue::boolean(true);
    }
    if (QStringView(m_text).mid(m_pos, 5) == u"false") {
        m_pos += 5;
        return JsonValue::boolean(false);
    }
    addError(
        QStringLiteral("Invalid Boolean at position %1 : %2").arg(position()).arg(restOfText()));
    skipBadToken();
    return {};
}

JsonValue JsonReader::parseNull() {
    if (QStringView(m_text).mid(m_pos, 4) == u"null") {
        m_pos += 4;
        return JsonValue::null();
    }
    addError(
        QStringLiteral("Invalid null value at position %1 : %2").arg(position()).arg(restOfText()));
    skipBadToken();
    return {};
}

} // namespace orvo::exchange::json
