#include "common/security/scrambler.h"

#include <QStringList>
#include <stdexcept>

namespace orvo::security {

namespace {
// Ten distinct symbols, none a digit nor "?", so the file format stays as it always was.
constexpr char16_t kAlphabet[10] = {u'h', u'$', u'T', u'q', u'@', u'L', u'w', u'!', u'R', u'z'};

int digitOf(QChar symbol) {
    for (int i = 0; i < 10; ++i)
        if (kAlphabet[i] == symbol.unicode())
            return i;
    return -1;
}
} // namespace

QString scramble(const QString& clear) {
    if (clear.size() > 255)
        throw std::overflow_error("Desbordamiento");
    QString out;
    for (QChar ch : clear) {
        // The stored code is the character's single-byte (Latin-1) code.
        const int code = ch.unicode() <= 0xFF ? ch.unicode() : int('?');
        for (QChar digit : QString::number(code))
            out += QChar(kAlphabet[digit.unicode() - u'0']);
        out += u'?';
    }
    return out;
}

QString unscramble(const QString& scrambled) {
    QString out;
    const auto groups = scrambled.split(u'?', Qt::SkipEmptyParts);
    for (const QString& group : groups) {
        int code = 0;
        bool ok = !group.isEmpty();
        for (QChar symbol : group) {
            const int d = digitOf(symbol);
            if (d < 0) {
                ok = false;
                break;
            }
            code = code * 10 + d;
        }
        if (ok && code <= 0xFF)
            out += QChar(code);
    }
    return out;
}

} // namespace orvo::security
