#include "exchange/json/json_reader.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>

using namespace orvo::exchange::json;

namespace {

// Walks the whole tree, so a broken value is touched and not only built.
int countNodes(const JsonValue& v, int depth = 0) {
    if (depth > 100000)
        return 0;
    int n = 1;
    for (const auto& e : v.toObject().entries())
        n += countNodes(e.second, depth + 1);
    for (const JsonValue& item : v.toArray().items())
        n += countNodes(item, depth + 1);
    (void)v.toText();
    (void)v.toDecimal();
    return n;
}

} // namespace

// Random and mutated texts: the reader must always come back, without throwing, and report
// something whenever it returns no tree.
TEST(JsonReaderFuzz, NeverThrowsOrHangs) {
    const QList<QString> seeds = {
        QStringLiteral(R"({"codRespuesta":"00","numeroAutorizacion":"123456","numSeq":"15",)"
                       R"("numeroLote":"3","nombreVoucher":"v.txt","monto":12.5})"),
        QStringLiteral("[1, (2), 'tres', {a: true, b: null}, /* c */ [\"\\u00e9\\ud83d\\ude00\"]]"),
        QStringLiteral("{'x': [1e3, -0.5, .25], // fin\n 'y': {\"z\": false}}"),
    };
    const QString alphabet =
        QStringLiteral("{}[]():,'\"\\/*-+.eE0123456789tfnrulaseu \t\r\nx\u00e9");
    QRandomGenerator rng(20261121);
    int withTree = 0;
    for (int i = 0; i < 20000; ++i) {
        QString text;
        if (i % 3 == 0) {
            const int length = int(rng.bounded(60));
            for (int k = 0; k < length; ++k)
                text += alphabet.at(rng.bounded(int(alphabet.size())));
        } else {
            text = seeds.at(rng.bounded(int(seeds.size())));
            const int edits = 1 + int(rng.bounded(6));
            for (int k = 0; k < edits && !text.isEmpty(); ++k) {
                const int at = int(rng.bounded(int(text.size())));
                switch (rng.bounded(4)) {
                case 0:
                    text.remove(at, 1 + int(rng.bounded(4)));
                    break;
                case 1:
                    text.insert(at, alphabet.at(rng.bounded(int(alphabet.size()))));
                    break;
                case 2:
                    text[at] = alphabet.at(rng.bounded(int(alphabet.size())));
                    break;
                default:
                    text.truncate(at);
                    break;
                }
            }
        }
        JsonReader reader;
        JsonValue value;
        ASSERT_NO_THROW(value = reader.parse(text)) << text.toStdString();
        if (value.isEmpty())
            ASSERT_EQ(reader.errorText(), QStringLiteral("Invalid JSON")) << text.toStdString();
        else
            ++withTree;
        ASSERT_GE(countNodes(value), 1);
    }
    EXPECT_GT(withTree, 5000); // the mutations must mostly reach past the first character
}
