#pragma once

#include "exchange/json/json_value.h"

#include <QHash>
#include <QString>
#include <functional>

namespace orvo::exchange::json {

// What a script may ask of whoever runs it. Without an alert nothing is shown; without an input
// the default is taken.
struct ScriptHost {
    std::function<void(const QString& message, const QString& title)> alert;
    std::function<QString(const QString& prompt, const QString& defaultValue)> input;
};

// Runs small scripts written as JSON. A command is an object whose member names the command:
//   {"alert": {"message": m, "title": t}}        shows m
//   {"input": {"prompt": p, "default": d}}       the answer (d when nobody answers)
//   {"set": {"name": n, "value": v}}             stores v under n and gives it
//   {"get": {"name": n}} or {"get": n}           the stored value
//   {"return": v}                                ends the script with v
//   {"if": {"value1": a, "value2": b, "type": "eq|gt|lt|gte|lte", "then": c, "else": c}}
//   {"switch": {"case": v, "items": {"<value>": c, ..., "default": c}}}
// A list of commands runs in order. Values may be commands themselves; texts may embed
// "<%get(name)%>" and "<%input(prompt)%>". Comparisons are numeric when both sides are numbers.
// Scripts nested deeper than 40 commands stop with "ERROR: Nesting level exceeded.".
class JsonScript {
public:
    static constexpr int kMaxNesting = 40;

    explicit JsonScript(ScriptHost host = {}) : m_host(std::move(host)) {}

    // "Parser Error" when the text does not parse cleanly.
    QString eval(const QString& scriptText);
    QString eval(const JsonValue& script);
    // One command at a nesting depth (1 for a top-level command).
    QString execCommand(const JsonObject& command, int depth);

    QString variable(const QString& name) const { return m_variables.value(name); }

private:
    QString evalValue(const JsonValue& value, int depth);
    QString runBlock(const JsonValue& block, int depth);
    QString expand(const QString& text, int depth);
    bool stopped() const { return m_returned || m_failed; }

    ScriptHost m_host;
    QHash<QString, QString> m_variables;
    bool m_returned = false;
    bool m_failed = false;
    QString m_result;
};

} // namespace orvo::exchange::json
