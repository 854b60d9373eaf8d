#include "exchange/json/json_reader.h"

#include <gtest/gtest.h>

using namespace orvo::exchange::json;
using orvo::Decimal;

// Readable failures.
inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace {

struct Parsed {
    JsonValue value;
    QString errors;
};

Parsed parse(const QString& text) {
    Parsed p;
    p.value = parseJson(text, &p.errors);
    return p;
}

} // namespace

TEST(JsonReader, EmptyOrBlankTextIsNotJson) {
    for (const QString& text : {QString(), QStringLiteral("   \t\r\n"), QStringLiteral("abc"),
                                QStringLiteral("/* only a comment */")}) {
        const Parsed p = parse(text);
        EXPECT_TRUE(p.value.isEmpty()) << text.toStdString();
        EXPECT_EQ(p.errors, QStringLiteral("Invalid JSON")) << text.toStdString();
    }
    Parsed p = parse(QStringLiteral("[]"));
    ASSERT_TRUE(p.value.isArray());
    EXPECT_EQ(p.value.toArray().count(), 0);
    EXPECT_EQ(p.errors, QString());
    p = parse(QStringLiteral(" {} "));
    ASSERT_TRUE(p.value.isObject());
    EXPECT_EQ(p.value.toObject().count(), 0);
    EXPECT_EQ(p.errors, QString());
}

TEST(JsonReader, ReadsATerminalAnswerWithEveryKindOfValue) {
    const Parsed p = parse(QStringLiteral(
        R"({"codRespuesta":"00","numSeq":42,"monto":1234.56,"ok":true,"no":false,"nada":null,)"
        R"("lista":[1,"dos",{"tres":3}],"grande":12345678901234567890.12345678901})"));
    EXPECT_EQ(p.errors, QString());
    const JsonObject& o = p.value.toObject();
    EXPECT_EQ(o.keys(), (QList<QString>{"codRespuesta", "numSeq", "monto", "ok", "no", "nada",
                                        "lista", "grande"}));
    EXPECT_EQ(o.value("codRespuesta").toText(), QStringLiteral("00"));
    EXPECT_EQ(o.value("numSeq").kind(), JsonValue::Kind::Number);
    EXPECT_EQ(o.value("monto").toDecimal(), Decimal::fromString(u"1234.56"));
    EXPECT_TRUE(o.value("ok").toBool());
    EXPECT_EQ(o.value("no").kind(), JsonValue::Kind::Boolean);
    EXPECT_FALSE(o.value("no").toBool());
    EXPECT_TRUE(o.value("nada").isNull());
    // Numbers keep the digits they were written with, beyond what a double holds.
    EXPECT_EQ(o.value("grande").toText(), QStringLiteral("12345678901234567890.12345678901"));
    const JsonArray& list = o.value("lista").toArray();
    ASSERT_EQ(list.count(), 3);
    EXPECT_EQ(list.item(1).toText(), QStringLiteral("1"));
    EXPECT_EQ(list.item(2).toText(), QStringLiteral("dos"));
    EXPECT_EQ(list.item(3).toObject().value("tres").toDecimal(), Decimal(3));
    EXPECT_TRUE(list.item(0).isEmpty());
    EXPECT_TRUE(list.item(4).isEmpty());
    EXPECT_TRUE(o.value("missing").isEmpty());
}

TEST(JsonReader, ToleratesMissingCommasSingleQuotesAndBareKeys) {
    Parsed p = parse(QStringLiteral("{\"a\":1 \"b\":2}"));
    EXPECT_EQ(p.errors, QString());
    EXPECT_EQ(p.value.toObject().keys(), (QList<QString>{"a", "b"}));
    EXPECT_EQ(p.value.toObject().value("b").toText(), QStringLiteral("2"));

    p = parse(QStringLiteral("{'clave':'va\"lor', otra : 'x'}"));
    EXPECT_EQ(p.errors, QString());
    EXPECT_EQ(p.value.toObject().value("clave").toText(), QStringLiteral("va\"lor"));
    EXPECT_EQ(p.value.toObject().value("otra").toText(), QStringLiteral("x"));

    p = parse(QStringLiteral("[1 2 'tres']"));
    EXPECT_EQ(p.errors, QString());
    EXPECT_EQ(p.value.toArray().count(), 3);
}

TEST(JsonReader, DuplicateKeyKeepsTheFirstValueAndIsReported) {
    const Parsed p = parse(QStringLiteral("{\"a\":1,\"a\":2}"));
    EXPECT_EQ(p.value.toObject().count(), 1);
    EXPECT_EQ(p.value.toObject().value("a").toText(), QStringLiteral("1"));
    EXPECT_EQ(
        p.errors,
        QStringLiteral("This key is already associated with an element of this collection: a\r\n"));
}

TEST(JsonReader, CommentsAndParenthesesAreBlanks) {
    Parsed p = parse(QStringLiteral("[1,(2),3]"));
    EXPECT_EQ(p.errors, QString());
    ASSERT_EQ(p.value.toArray().count(), 3);
    EXPECT_EQ(p.value.toArray().item(2).toText(), QStringLiteral("2"));

    p = parse(QStringLiteral("/* encabezado\n {no} */ {\"a\": /* en medio */ 1} // fin\n"));
    EXPECT_EQ(p.errors, QString());
    EXPECT_EQ(p.value.toObject().value("a").toText(), QStringLiteral("1"));

    p = parse(QStringLiteral("{// linea\r\"a\":1}"));
    EXPECT_EQ(p.errors, QString());
    EXPECT_EQ(p.value.toObject().count(), 1);
}

TEST(JsonReader, MisspeltLiteralsAreReportedWithPositionAndRest) {
    Parsed p = parse(QStringLiteral("{\"a\": tru}"));
    EXPECT_EQ(p.errors, QStringLiteral("Invalid Boolean at position 7 : tru}\r\n"));
    ASSERT_TRUE(p.value.toObject().contains("a"));
    EXPECT_TRUE(p.value.toObject().value("a").isEmpty());

    p = parse(QStringLiteral("[tRue, nul, false]"));
    EXPECT_EQ(p.errors, QStringLiteral("Invalid Boolean at position 2 : tRue, nul, false]\r\n"
                                       "Invalid null value at position 8 : nul, false]\r\n"));
    ASSERT_EQ(p.value.toArray().count(), 3);
    EXPECT_FALSE(p.value.toArray().item(3).toBool());
    EXPECT_EQ(p.value.toArray().item(3).kind(), JsonValue::Kind::Boolean);

    p = parse(QStringLiteral("[1.2.3, x, 4, True]"));
    EXPECT_EQ(p.errors, QStringLiteral("Invalid Number at position 2 : 1.2.3, x, 4, True]\r\n"
                                       "Invalid Number at position 9 : x, 4, True]\r\n"
                                       "Invalid Number at position 15 : True]\r\n"));
    EXPECT_EQ(p.value.toArray().item(3).toText(), QStringLiteral("4"));
}

TEST(JsonReader, TextCutShortAndMissingClosersKeepWhatWasRead) {
    // A number cut by the end of the text cannot be trusted: its value stays empty.
    Parsed p = parse(QStringLiteral("[12"));
    ASSERT_EQ(p.value.toArray().count(), 1);
    EXPECT_TRUE(p.value.toArray().item(1).isEmpty());
    EXPECT_EQ(p.errors, QStringLiteral("Missing ']': [12\r\n"));

    const QString longText = QStringLiteral("{\"numeroAutorizacion\":\"123456\",\"numSeq\":\"7");
    p = parse(longText);
    EXPECT_EQ(p.value.toObject().value("numeroAutorizacion").toText(), QStringLiteral("123456"));
    EXPECT_EQ(p.value.toObject().value("numSeq").toText(), QStringLiteral("7"));
    EXPECT_EQ(p.errors, QStringLiteral("Missing '}': ") + longText.right(20) + "\r\n");

    // Errors of nested values come in the order they were met.
    p = parse(QStringLiteral("{\"a\":[nulo, {\"b\":1"));
    EXPECT_EQ(p.errors, QStringLiteral("Invalid null value at position 7 : nulo, {\"b\":1\r\n"
                                       "Missing '}': {\"a\":[nulo, {\"b\":1\r\n"
                                       "Missing ']': {\"a\":[nulo, {\"b\":1\r\n"
                                       "Missing '}': {\"a\":[nulo, {\"b\":1\r\n"));
}

TEST(JsonReader, KeyWithoutColonIsReported) {
    const Parsed p = parse(QStringLiteral("{\"a\" 1}"));
    EXPECT_EQ(p.errors, QStringLiteral("Invalid Key at position 6 : 1}\r\n"));
    EXPECT_EQ(p.value.toObject().value("a").toText(), QStringLiteral("1"));
}

TEST(JsonReader, Escapes) {
    Parsed p =
        parse(QStringLiteral(R"(["\"\\\/\'", "a\bb\fc\nd\re\tf", "\q\u00e9\u00F1", "\u20AC"])"));
    EXPECT_EQ(p.errors, QString());
    const JsonArray& a = p.value.toArray();
    EXPECT_EQ(a.item(1).toText(), QStringLiteral("\"\\/'"));
    EXPECT_EQ(a.item(2).toText(), QString::fromUtf8("a\bb\fc\nd\re\tf"));
    EXPECT_EQ(a.item(3).toText(), QString::fromUtf8("éñ")); // \q drops both characters
    EXPECT_EQ(a.item(4).toText(), QString::fromUtf8("€"));

    // A pair of surrogate escapes is one character; a lone one cannot be kept as it is.
    p = parse(QStringLiteral(R"(["\ud83d\ude00", "x\ud83dy", "\ude00", "\u12", "\uzzzz"])"));
    const JsonArray& b = p.value.toArray();
    EXPECT_EQ(b.item(1).toText(), QString::fromUtf8("😀"));
    EXPECT_EQ(b.item(1).toText().toUcs4().size(), 1);
    EXPECT_EQ(b.item(2).toText(), QString::fromUtf8("x\uFFFDy"));
    EXPECT_EQ(b.item(3).toText(), QString::fromUtf8("\uFFFD"));
    EXPECT_EQ(b.item(4).toText(), QStringLiteral("12"));
    EXPECT_EQ(b.item(5).toText(), QStringLiteral("zzzz"));

    // A text cut by the end keeps what was collected.
    p = parse(QStringLiteral("['abc"));
    EXPECT_EQ(p.value.toArray().item(1).toText(), QStringLiteral("abc"));
}

TEST(JsonReader, ErrorTextIsEmptiedByTheNextParse) {
    JsonReader reader;
    reader.parse(QStringLiteral("[tru]"));
    EXPECT_FALSE(reader.errorText().isEmpty());
    reader.parse(QStringLiteral("[true]"));
    EXPECT_EQ(reader.errorText(), QString());
}
