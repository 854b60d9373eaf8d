#include "common/decimal/decimal.h"

#include <QLocale>
#include <limits>
#include <stdexcept>

namespace orvo {
namespace {

using Rep = Decimal::Rep;

constexpr Rep pow10(int n) {
    Rep r = 1;
    for (int i = 0; i < n; ++i)
        r *= 10;
    return r;
}

// Divides rounding half away from zero.
Rep divRound(Rep num, Rep den) {
    if (den < 0) {
        num = -num;
        den = -den;
    }
    Rep q = num / den;
    Rep r = num % den;
    if (r < 0)
        r = -r;
    if (r * 2 >= den)
        q += (num < 0) ? -1 : 1;
    return q;
}

QString digitsOf(Rep v) {
    if (v == 0)
        return QStringLiteral("0");
    QString s;
    while (v > 0) {
        s.prepend(QChar(u'0' + int(v % 10)));
        v /= 10;
    }
    return s;
}

// A whole-number read of an amount with decimals fails (ok = false) rather than rounding behind
// the caller's back, as QString("2.5").toInt() does.
template <typename Int> bool toWholeNumber(const Decimal& d, Int* out) {
    if (d.truncated(0) != d || d < Decimal(std::numeric_limits<Int>::min()) ||
        d > Decimal(std::numeric_limits<Int>::max()))
        return false;
    *out = Int(d.toLongLong());
    return true;
}

// Values picked from lists and grids travel in QVariants: this lets toString(), toLongLong(),
// toInt() and toDouble() read a Decimal, and value<Decimal>() read text. Every program that
// handles a Decimal links this file, so registering here covers them all.
bool registerVariantConversions() {
    const QMetaType decimal = QMetaType::fromType<Decimal>();
    const auto from = [](const void* src) -> const Decimal& {
        return *static_cast<const Decimal*>(src);
    };
    QMetaType::registerConverterFunction(
        [from](const void* src, void* dst) {
            *static_cast<QString*>(dst) = from(src).toString();
            return true;
        },
        decimal, QMetaType::fromType<QString>());
    QMetaType::registerConverterFunction(
        [from](const void* src, void* dst) {
            return toWholeNumber(from(src), static_cast<qlonglong*>(dst));
        },
        decimal, QMetaType::fromType<qlonglong>());
    QMetaType::registerConverterFunction(
        [from](const void* src, void* dst) {
            return toWholeNumber(from(src), static_cast<int*>(dst));
        },
        decimal, QMetaType::fromType<int>());
    QMetaType::registerConverterFunction(
        [from](const void* src, void* dst) {
            *static_cast<double*>(dst) = from(src).toDouble();
            return true;
        },
        decimal, QMetaType::fromType<double>());
    QMetaType::registerConverterFunction(
        [](const void* src, void* dst) {
            const auto parsed = Decimal::parse(static_cast<const QString*>(src)->trimmed());
            if (parsed)
                *static_cast<Decimal*>(dst) = *parsed;
            return parsed.has_value();
        },
        QMetaType::fromType<QString>(), decimal);
    return true;
}

[[maybe_unused]] const bool kVariantConversions = registerVariantConversions();

} // namespace

std::optional<Decimal> Decimal::parse(QStringView text) {
    QStringView t = text.trimmed();
    if (t.isEmpty())
        return std::nullopt;
    bool negative = false;
    qsizetype i = 0;
    if (t[0] == u'-' || t[0] == u'+') {
        negative = t[0] == u'-';
        ++i;
    }
    Rep intPart = 0;
    Rep fracPart = 0;
    int fracDigits = 0;
    bool anyDigit = false;
    bool extraNonZero = false; // digits beyond the scale decide rounding
    int roundDigit = -1;
    for (; i < t.size() && t[i].isDigit(); ++i) {
        intPart = intPart * 10 + (t[i].unicode() - u'0');
        anyDigit = true;
        if (intPart > pow10(29))
            return std::nullopt;
    }
    if (i < t.size() && t[i] == u'.') {
        ++i;
        for (; i < t.size() && t[i].isDigit(); ++i) {
            anyDigit = true;
            const int d = t[i].unicode() - u'0';
            if (fracDigits < kScale) {
                fracPart = fracPart * 10 + d;
                ++fracDigits;
            } else if (roundDigit < 0) {
                roundDigit = d;
            } else if (d != 0) {
                extraNonZero = true;
            }
        }
    }
    if (!anyDigit)
        return std::nullopt;
    int exponent = 0;
    if (i < t.size() && (t[i] == u'e' || t[i] == u'E')) {
        ++i;
        bool expNeg = false;
        if (i < t.size() && (t[i] == u'-' || t[i] == u'+')) {
            expNeg = t[i] == u'-';
            ++i;
        }
        bool expDigit = false;
        for (; i < t.size() && t[i].isDigit(); ++i) {
            exponent = exponent * 10 + (t[i].unicode() - u'0');
            expDigit = true;
            if (exponent > 40)
                return std::nullopt;
        }
        if (!expDigit)
            return std::nullopt;
        if (expNeg)
            exponent = -exponent;
    }
    if (i != t.size())
        return std::nullopt;
    (void)extraNonZero;
    Rep units = intPart * kOne + fracPart * pow10(kScale - fracDigits);
    if (roundDigit >= 5)
        units += 1;
    if (exponent > 0) {
        if (exponent > 29)
            return std::nullopt;
        units *= pow10(exponent);
    } else if (exponent < 0) {
        units = divRound(units, pow10(-exponent));
    }
    return fromUnits(negative ? -units : units);
}

Decimal Decimal::fromString(QStringView text) {
    auto d = parse(text);
    if (!d)
        throw std::invalid_argument("not a decimal number: " + text.toString().toStdString());
    return *d;
}

Decimal Decimal::fromDouble(double value) {
    return fromString(QString::number(value, 'g', QLocale::FloatingPointShortest));
}

Decimal Decimal::fromVariant(const QVariant& value) {
    if (value.isNull() || !value.isValid())
        return {};
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
        return fromDouble(value.toDouble());
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        return Decimal(value.toLongLong());
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar:
        return fromUnits(Rep(value.toULongLong()) * kOne);
    case QMetaType::Bool:
        return Decimal(value.toBool() ? 1 : 0);
    default:
        break;
    }
    if (value.canConvert<Decimal>() && value.userType() == qMetaTypeId<Decimal>())
        return value.value<Decimal>();
    const QString text = value.toString();
    if (text.trimmed().isEmpty())
        return {};
    return fromString(text);
}

Decimal Decimal::fromScaled(long long value, int decimals) {
    if (decimals < 0 || decimals > kScale)
        throw std::invalid_argument("scale out of range");
    return fromUnits(Rep(value) * pow10(kScale - decimals));
}

Decimal Decimal::rounded(int decimals) const {
    if (decimals >= kScale)
        return *this;
    const Rep step = pow10(kScale - decimals);
    return fromUnits(divRound(m_units, step) * step);
}

Decimal Decimal::truncated(int decimals) const {
    if (decimals >= kScale)
        return *this;
    const Rep step = pow10(kScale - decimals);
    return fromUnits((m_units / step) * step);
}

long long Decimal::scaled(int decimals) const {
    const Rep step = pow10(kScale - decimals);
    return static_cast<long long>(divRound(m_units, step));
}

double Decimal::toDouble() const {
    return toString().toDouble();
}

QString Decimal::toString(int decimals) const {
    Rep v = m_units;
    int shown = kScale;
    if (decimals >= 0 && decimals < kScale) {
        v = divRound(v, pow10(kScale - decimals));
        shown = decimals;
    }
    const bool negative = v < 0;
    if (negative)
        v = -v;
    const Rep one = pow10(shown);
    QString out = digitsOf(v / one);
    QString frac = shown > 0 ? digitsOf(v % one).rightJustified(shown, u'0') : QString();
    if (decimals < 0) {
        while (frac.endsWith(u'0'))
            frac.chop(1);
    } else if (decimals > kScale) {
        frac += QString(decimals - kScale, u'0');
    }
    if (!frac.isEmpty())
        out += u'.' + frac;
    if (negative && v != 0)
        out.prepend(u'-');
    return out;
}

QString Decimal::toLocaleString(const QLocale& locale, int decimals) const {
    const QString plain = toString(decimals);
    const bool negative = plain.startsWith(u'-');
    const QString body = negative ? plain.mid(1) : plain;
    const qsizetype dot = body.indexOf(u'.');
    const QString intDigits = dot < 0 ? body : body.left(dot);
    QString grouped;
    const QString sep = locale.groupSeparator();
    for (qsizetype i = 0; i < intDigits.size(); ++i) {
        if (i > 0 && (intDigits.size() - i) % 3 == 0)
            grouped += sep;
        grouped += intDigits[i];
    }
    if (dot >= 0)
        grouped += locale.decimalPoint() + body.mid(dot + 1);
    return negative ? locale.negativeSign() + grouped : grouped;
}

Decimal operator*(const Decimal& a, const Decimal& b) {
    return Decimal::fromUnits(divRound(a.m_units * b.m_units, Decimal::kOne));
}

Decimal operator/(const Decimal& a, const Decimal& b) {
    if (b.m_units == 0)
        throw std::domain_error("division by zero");
    return Decimal::fromUnits(divRound(a.m_units * Decimal::kOne, b.m_units));
}

std::optional<Decimal> parseTypedNumber(const QString& text, int* decimals) {
    QString t = text.trimmed();
    t.remove(QLatin1Char(' '));
    t.remove(QChar(0xA0));
    const qsizetype dot = t.lastIndexOf(QLatin1Char('.'));
    const qsizetype comma = t.lastIndexOf(QLatin1Char(','));
    QChar decimal;
    if (dot >= 0 && comma >= 0)
        decimal = dot > comma ? QLatin1Char('.') : QLatin1Char(',');
    else if (dot >= 0 && t.count(QLatin1Char('.')) == 1)
        decimal = QLatin1Char('.');
    else if (comma >= 0 && t.count(QLatin1Char(',')) == 1)
        decimal = QLatin1Char(',');
    QString normal;
    for (const QChar c : std::as_const(t)) {
        if (c == decimal)
            normal += QLatin1Char('.');
        else if (c != QLatin1Char('.') && c != QLatin1Char(','))
            normal += c;
    }
    if (decimals) {
        const qsizetype point = normal.indexOf(QLatin1Char('.'));
        *decimals = point < 0 ? 0 : int(normal.size() - point - 1);
    }
    return Decimal::parse(normal);
}

} // namespace orvo
