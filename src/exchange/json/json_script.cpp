#include "exchange/json/json_script.h"

#include "exchange/json/json_reader.h"

#include <QRegularExpression>

namespace orvo::exchange::json {

namespace {

const QString kNestingError = QStringLiteral("ERROR: Nesting level exceeded.");

bool compare(const QString& a, const QString& b, const QString& type) {
    const auto da = Decimal::parse(a);
    const auto db = Decimal::parse(b);
    int order = 0;
    if (da && db)
        order = *da < *db ? -1 : (*da > *db ? 1 : 0);
    else
        order = QString::compare(a, b);
    if (type == u"gt")
        return order > 0;
    if (type == u"lt")
        return order < 0;
    if (type == u"gte")
        return order >= 0;
    if (type == u"lte")
        return order <= 0;
    return order == 0; // "eq" and anything unknown
}

} // namespace

QString JsonScript::eval(const QString& scriptText) {
    QString errors;
    const JsonValue script = parseJson(scriptText, &errors);
    if (!errors.isEmpty())
        return QStringLiteral("Parser Error");
    return eval(script);
}

QString JsonScript::eval(const JsonValue& script) {
    m_returned = false;
    m_failed = false;
    m_result.clear();
    const QString last = runBlock(script, 0);
    if (m_failed)
        return kNestingError;
    return m_returned ? m_result : last;
}

QString JsonScript::runBlock(const JsonValue& block, int depth) {
    if (block.isObject())
        return execCommand(block.toObject(), depth + 1);
    if (!block.isArray())
        return evalValue(block, depth);
    QString last;
    for (const JsonValue& item : block.toArray().items()) {
        last = runBlock(item, depth);
        if (stopped())
            break;
    }
    return last;
}

QString JsonScript::evalValue(const JsonValue& value, int depth) {
    switch (value.kind()) {
    case JsonValue::Kind::Object:
    case JsonValue::Kind::Array:
        return runBlock(value, depth);
    case JsonValue::Kind::Text:
        return expand(value.toText(), depth);
    default:
        return value.toText();
    }
}

QString JsonScript::expand(const QString& text, int depth) {
    static const QRegularExpression call(QStringLiteral("<%(\\w+)\\((.*?)\\)%>"));
    if (!text.contains(QStringLiteral("<%")))
        return text;
    QString out;
    qsizetype last = 0;
    auto it = call.globalMatch(text);
    while (it.hasNext()) {
        const auto m = it.next();
        out += text.mid(last, m.capturedStart() - last);
        const QString name = m.captured(1);
        const QString arg = m.captured(2).trimmed();
        if (name == u"get") {
            out += m_variables.value(arg);
        } else if (name == u"input") {
            auto command = std::make_shared<JsonObject>();
            auto args = std::make_shared<JsonObject>();
            args->add(QStringLiteral("prompt"), JsonValue::text(arg));
            command->add(QStringLiteral("input"), JsonValue::object(args));
            out += execCommand(*command, depth + 1);
        } else {
            out += m.captured(0);
        }
        last = m.capturedEnd();
    }
    return out + text.mid(last);
}

QString JsonScript::execCommand(const JsonObject& command, int depth) {
    if (depth > kMaxNesting) {
        m_failed = true;
        return kNestingError;
    }
    QString result;
    for (const auto& [name, args] : command.entries()) {
        if (stopped())
            break;
        const JsonObject& a = args.toObject();
        if (name == u"alert") {
            const QString message = evalValue(a.value(QStringLiteral("message")), depth);
            const QString title = evalValue(a.value(QStringLiteral("title")), depth);
            if (m_host.alert && !stopped())
                m_host.alert(message, title);
            result.clear();
        } else if (name == u"input") {
            const QString prompt = evalValue(a.value(QStringLiteral("prompt")), depth);
            const QString fallback = evalValue(a.value(QStringLiteral("default")), depth);
            result = m_host.input && !stopped() ? m_host.input(prompt, fallback) : fallback;
        } else if (name == u"set") {
            const QString key = evalValue(a.value(QStringLiteral("name")), depth);
            result = evalValue(a.value(QStringLiteral("value")), depth);
            m_variables.insert(key, result);
        } else if (name == u"get") {
            const QString key = args.isObject() ? evalValue(a.value(QStringLiteral("name")), depth)
                                                : evalValue(args, depth);
            result = m_variables.value(key);
        } else if (name == u"return") {
            result = evalValue(args, depth);
            if (!m_failed) {
                m_result = result;
                m_returned = true;
            }
        } else if (name == u"if") {
            const QString v1 = evalValue(a.value(QStringLiteral("value1")), depth);
            const QString v2 = evalValue(a.value(QStringLiteral("value2")), depth);
            const QString type = evalValue(a.value(QStringLiteral("type")), depth);
            const bool yes = compare(v1, v2, type);
            result =
                runBlock(a.value(yes ? QStringLiteral("then") : QStringLiteral("else")), depth);
        } else if (name == u"switch") {
            const QString key = evalValue(a.value(QStringLiteral("case")), depth);
            const JsonObject& items = a.value(QStringLiteral("items")).toObject();
            const JsonValue chosen =
                items.contains(key) ? items.value(key) : items.value(QStringLiteral("default"));
            result = runBlock(chosen, depth);
        }
    }
    return m_failed ? kNestingError : result;
}

} // namespace orvo::exchange::json
