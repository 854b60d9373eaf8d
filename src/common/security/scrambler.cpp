#include "common/security/scrambler.h"

#include <QStringList>
#include <stdexcept>

namespace orvo::security {

namespace {
// Ten distinct symbols, none a digit nor "?", so the file format stays as it always was.
constexpr char16_t kAlphabet[10] = {u'h', u'$', u'T', u'q', u'@', u'L', u'w', u'!', u'R', u'z'};

// Windows-1252's characters at 128-159: the single-byte codes the program has always stored for
// them (the euro sign is 128).
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The character's stored code: its single-byte code where it has one, otherwise its own
// (UTF-16) code, which is above 255 and so never taken for another character.
int codeOf(QChar ch) {
    const char16_t u = ch.unicode();
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return u;
    for (int i = 0; i < 32; ++i)
        if (kCp1252High[i] == u)
            return 0x80 + i;
    return u;
}

QChar charOf(int code) {
    if (code >= 0x80 && code < 0xA0)
        return QChar(kCp1252High[code - 0x80]);
    return QChar(char16_t(code));
}

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
        for (QChar digit : QString::number(codeOf(ch)))
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
        if (ok && code <= 0xFFFF)
            out += charOf(code);
    }
    return out;
}

} // namespace orvo::security
