#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>
#include <compare>
#include <optional>

class QLocale;

namespace orvo {

// Exact decimal number for money, costs, quantities and rates: a signed fixed-point value with
// eight decimals (the widest scale any column uses). Rounding is always explicit and goes half
// away from zero, as a cashier rounds.
class Decimal {
public:
    using Rep = __int128;
    static constexpr int kScale = 8;

    constexpr Decimal() = default;
    constexpr Decimal(int value) : m_units(Rep(value) * kOne) {}
    constexpr Decimal(long value) : m_units(Rep(value) * kOne) {}
    constexpr Decimal(long long value) : m_units(Rep(value) * kOne) {}

    static constexpr Decimal fromUnits(Rep units) {
        Decimal d;
        d.m_units = units;
        return d;
    }
    // Parses "-1234.5", "+7", ".25", "1e3"; '.' is the only decimal separator. nullopt if bad.
    static std::optional<Decimal> parse(QStringView text);
    // Parses or throws std::invalid_argument.
    static Decimal fromString(QStringView text);
    // From a database value: null reads as zero, text is parsed, floating values go through their
    // shortest decimal form (what SQLite stored is what the user typed, rounded to the column).
    static Decimal fromVariant(const QVariant& value);
    static Decimal fromDouble(double value);
    // value / 10^decimals, e.g. fromScaled(1234, 2) == 12.34
    static Decimal fromScaled(long long value, int decimals);

    Rep units() const { return m_units; }
    bool isZero() const { return m_units == 0; }
    bool isNegative() const { return m_units < 0; }

    Decimal rounded(int decimals) const;   // half away from zero
    Decimal truncated(int decimals) const; // toward zero
    Decimal abs() const { return m_units < 0 ? fromUnits(-m_units) : *this; }
    // The value times 10^decimals, rounded to a whole number (cents, thousandths).
    long long scaled(int decimals) const;
    long long toLongLong() const { return scaled(0); }
    double toDouble() const;

    // Shortest exact text ("12.5", "-3", "0.001"); with decimals >= 0, rounded and padded.
    QString toString(int decimals = -1) const;
    // Grouped with the locale's separators, e.g. "1.234.567,89" in es_VE.
    QString toLocaleString(const QLocale& locale, int decimals = 2) const;
    // For binding: the text rounded to the column's scale (both engines take it exactly).
    QVariant toVariant(int decimals) const { return QVariant(toString(decimals)); }

    Decimal operator-() const { return fromUnits(-m_units); }
    Decimal& operator+=(const Decimal& o) {
        m_units += o.m_units;
        return *this;
    }
    Decimal& operator-=(const Decimal& o) {
        m_units -= o.m_units;
        return *this;
    }
    Decimal& operator*=(const Decimal& o) { return *this = *this * o; }
    Decimal& operator/=(const Decimal& o) { return *this = *this / o; }
    friend Decimal operator+(Decimal a, const Decimal& b) { return a += b; }
    friend Decimal operator-(Decimal a, const Decimal& b) { return a -= b; }
    friend Decimal operator*(const Decimal& a, const Decimal& b);
    // Division by zero throws std::domain_error.
    friend Decimal operator/(const Decimal& a, const Decimal& b);
    friend bool operator==(const Decimal& a, const Decimal& b) = default;
    friend std::strong_ordering operator<=>(const Decimal& a, const Decimal& b) {
        return a.m_units <=> b.m_units;
    }

private:
    static constexpr Rep kOne = 100000000;
    Rep m_units = 0;
};

// A number as a user types it: spaces and thousands separators go, and the decimal separator may
// be '.' or ','. With both separators the last one is the decimal one; one separator that occurs
// more than once groups thousands ("1.234,5", "1,234.5", "1.234.567", "36,50", "36.5"). Nothing
// when the text is not a number. `decimals`, when given, receives how many digits were typed after
// the decimal separator (a value with more than eight is rounded to eight).
std::optional<Decimal> parseTypedNumber(const QString& text, int* decimals = nullptr);

} // namespace orvo

Q_DECLARE_METATYPE(orvo::Decimal)
