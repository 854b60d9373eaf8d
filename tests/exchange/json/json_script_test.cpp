#include "exchange/json/json_script.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace orvo::exchange::json;

TEST(JsonScript, RunsCommandsInOrderUntilReturn) {
    QStringList shown;
    ScriptHost host;
    host.alert = [&](const QString& m, const QString& t) { shown << t + ":" + m; };
    host.input = [](const QString& prompt, const QString&) {
        return prompt == "Monto" ? "150" : "";
    };
    JsonScript script(host);
    const QString result = script.eval(QStringLiteral(R"([
        {"set": {"name": "monto", "value": {"input": {"prompt": "Monto", "default": "0"}}}},
        {"if": {"value1": {"get": "monto"}, "value2": "99.5", "type": "gt",
                "then": {"alert": {"message": "Alto: <%get(monto)%>", "title": "Aviso"}},
                "else": {"alert": {"message": "Bajo", "title": "Aviso"}}}},
        {"switch": {"case": {"get": "monto"},
                    "items": {"150": {"return": "ciento cincuenta"}, "default": {"return": "otro"}}}},
        {"alert": {"message": "no se llega aqui"}}
    ])"));
    EXPECT_EQ(result, QStringLiteral("ciento cincuenta"));
    EXPECT_EQ(shown, QStringList{QStringLiteral("Aviso:Alto: 150")});
    EXPECT_EQ(script.variable("monto"), QStringLiteral("150"));

    // Numbers compare as numbers ("9" < "10"), other texts as texts.
    EXPECT_EQ(
        script.eval(QStringLiteral(
            R"({"if": {"value1": 9, "value2": "10", "type": "lt", "then": {"return": "si"}}})")),
        QStringLiteral("si"));
    EXPECT_EQ(
        script.eval(QStringLiteral(
            R"({"if": {"value1": "b", "value2": "a", "type": "lte", "else": {"return": "no"}}})")),
        QStringLiteral("no"));
    EXPECT_EQ(script.eval(QStringLiteral("{\"return\": tru}")), QStringLiteral("Parser Error"));
}

TEST(JsonScript, StopsWhenNestedTooDeep) {
    auto nested = [](int levels) {
        QString text = QStringLiteral("{\"return\": \"fondo\"}");
        for (int i = 1; i < levels; ++i)
            text = QStringLiteral("{\"if\": {\"value1\": 1, \"value2\": 1, \"type\": \"eq\", "
                                  "\"then\": %1}}")
                       .arg(text);
        return text;
    };
    JsonScript script;
    EXPECT_EQ(script.eval(nested(40)), QStringLiteral("fondo"));
    EXPECT_EQ(script.eval(nested(41)), QStringLiteral("ERROR: Nesting level exceeded."));
}
