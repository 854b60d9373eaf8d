#include "pos/fiscal/protocol/replies.h"

#include "pos/fiscal/protocol/frame.h"

namespace orvo::pos::fiscal::protocol {

namespace {

class Writer {
public:
    Writer& raw(QByteArrayView text) {
        m_out.append(text);
        return *this;
    }
    Writer& lf() {
        m_out.append(kLf);
        return *this;
    }
    Writer& number(qint64 value, int width) {
        m_out.append(
            QByteArray::number(value < 0 ? -value : value).rightJustified(width, '0', true));
        return lf();
    }
    // Sign position (space or '-') followed by width - 1 digits.
    Writer& signedNumber(qint64 value, int width) {
        m_out.append(value < 0 ? '-' : ' ');
        m_out.append(
            QByteArray::number(value < 0 ? -value : value).rightJustified(width - 1, '0', true));
        return lf();
    }
    Writer& text(const QString& value, int width) {
        m_out.append(value.toLatin1().leftJustified(width, ' ', true));
        return lf();
    }
    Writer& field(QByteArrayView value) {
        m_out.append(value);
        return lf();
    }
    QByteArray take() { return std::move(m_out); }

private:
    QByteArray m_out;
};

class Reader {
public:
    explicit Reader(const QByteArray& data) : m_data(data) {}
    bool ok() const { return m_ok; }
    bool atEnd() const { return m_pos >= m_data.size(); }
    QByteArray take(int width) {
        if (!m_ok || m_pos + width > m_data.size()) {
            m_ok = false;
            return {};
        }
        QByteArray v = m_data.mid(m_pos, width);
        m_pos += width;
        return v;
    }
    void expectLf() {
        if (!m_ok || m_pos >= m_data.size() || m_data[m_pos] != kLf)
            m_ok = false;
        else
            ++m_pos;
    }
    QByteArray field(int width) {
        QByteArray v = take(width);
        expectLf();
        return v;
    }
    qint64 number(int width) { return digits(field(width)); }
    qint64 signedNumber(int width) {
        const QByteArray v = field(width);
        if (!m_ok)
            return 0;
        if (v[0] != ' ' && v[0] != '-' && v[0] != '+') {
            m_ok = false;
            return 0;
        }
        const qint64 n = digits(v.mid(1));
        return v[0] == '-' ? -n : n;
    }
    QString text(int width) { return QString::fromLatin1(field(width)).trimmed(); }
    qint64 digits(const QByteArray& v) {
        if (!m_ok)
            return 0;
        for (char c : v) {
            if (c < '0' || c > '9') {
                m_ok = false;
                return 0;
            }
        }
        return v.toLongLong();
    }

private:
    const QByteArray& m_data;
    qsizetype m_pos = 0;
    bool m_ok = true;
};

QByteArray hhmmss(const QTime& t) {
    return t.toString(QStringLiteral("HHmmss")).toLatin1();
}
QByteArray hhmm(const QTime& t) {
    return t.isValid() ? t.toString(QStringLiteral("HHmm")).toLatin1() : QByteArray("0000");
}
QByteArray yymmdd(const QDate& d) {
    return d.isValid() ? d.toString(QStringLiteral("yyMMdd")).toLatin1() : QByteArray("000000");
}
QDate parseYyMmDd(const QByteArray& v) {
    if (v == "000000")
        return {};
    return QDate(2000 + v.left(2).toInt(), v.mid(2, 2).toInt(), v.mid(4, 2).toInt());
}
QTime parseHhMm(const QByteArray& v) {
    if (v == "0000")
        return {};
    return QTime(v.left(2).toInt(), v.mid(2, 2).toInt());
}

void writeTotals(Writer& w, const DocumentTotals& t) {
    w.number(t.exempt, 13);
    for (int i = 0; i < 3; ++i)
        w.number(t.base[i], 13).number(t.tax[i], 13);
}
DocumentTotals readTotals(Reader& r) {
    DocumentTotals t;
    t.exempt = r.number(13);
    for (int i = 0; i < 3; ++i) {
        t.base[i] = r.number(13);
        t.tax[i] = r.number(13);
    }
    return t;
}

} // namespace

QString dateDdMmYy(const QDate& d) {
    return d.toString(QStringLiteral("ddMMyy"));
}

QDate parseDdMmYy(QStringView text) {
    if (text.size() != 6)
        return {};
    return QDate(2000 + text.mid(4, 2).toInt(), text.mid(2, 2).toInt(), text.left(2).toInt());
}

qint64 DocumentTotals::total() const {
    qint64 sum = exempt;
    for (int i = 0; i < 3; ++i)
        sum += base[i] + tax[i];
    return sum;
}

QByteArray buildS1(const S1Status& s) {
    Writer w;
    w.raw("S1").number(s.cashier, 2);
    w.number(s.dailySubtotal, 17)
        .number(s.lastInvoice, 8)
        .number(s.invoicesToday, 5)
        .number(s.lastDebitNote, 8)
        .number(s.debitNotesToday, 5)
        .number(s.lastCreditNote, 8)
        .number(s.creditNotesToday, 5)
        .number(s.lastNonFiscal, 8)
        .number(s.nonFiscalToday, 5)
        .number(s.fiscalReportCounter, 4)
        .number(s.zCounter, 4)
        .text(s.rif, 11)
        .text(s.serial, 10)
        .field(hhmmss(s.time))
        .field(dateDdMmYy(s.date).toLatin1());
    return w.take();
}

std::optional<S1Status> parseS1(const QByteArray& data) {
    Reader r(data);
    if (r.take(2) != "S1")
        return std::nullopt;
    S1Status s;
    s.cashier = int(r.number(2));
    s.dailySubtotal = r.number(17);
    s.lastInvoice = int(r.number(8));
    s.invoicesToday = int(r.number(5));
    s.lastDebitNote = int(r.number(8));
    s.debitNotesToday = int(r.number(5));
    s.lastCreditNote = int(r.number(8));
    s.creditNotesToday = int(r.number(5));
    s.lastNonFiscal = int(r.number(8));
    s.nonFiscalToday = int(r.number(5));
    s.fiscalReportCounter = int(r.number(4));
    s.zCounter = int(r.number(4));
    s.rif = r.text(11);
    s.serial = r.text(10);
    s.time = QTime::fromString(QString::fromLatin1(r.field(6)), QStringLiteral("HHmmss"));
    s.date = parseDdMmYy(QString::fromLatin1(r.field(6)));
    if (!r.ok() || !r.atEnd() || !s.date.isValid() || !s.time.isValid())
        return std::nullopt;
    return s;
}

QByteArray buildS2(const S2Document& s) {
    Writer w;
    w.field("S2")
        .signedNumber(s.taxBases, 13)
        .signedNumber(s.taxes, 13)
        .signedNumber(s.reserved, 13)
        .number(s.articles, 6)
        .signedNumber(s.payable, 13)
        .number(s.payments, 4)
        .number(s.documentType, 1);
    return w.take();
}

std::optional<S2Document> parseS2(const QByteArray& data) {
    Reader r(data);
    if (r.field(2) != "S2")
        return std::nullopt;
    S2Document s;
    s.taxBases = r.signedNumber(13);
    s.taxes = r.signedNumber(13);
    s.reserved = r.signedNumber(13);
    s.articles = int(r.number(6));
    s.payable = r.signedNumber(13);
    s.payments = int(r.number(4));
    s.documentType = int(r.number(1));
    if (!r.ok() || !r.atEnd())
        return std::nullopt;
    return s;
}

QByteArray buildSV(const SvModel& s) {
    QByteArray out("SV");
    out.append(kLf);
    out.append(s.model.toLatin1().leftJustified(3, ' ', true));
    out.append(kLf);
    out.append(s.country.toLatin1().leftJustified(2, ' ', true));
    return out;
}

std::optional<SvModel> parseSV(const QByteArray& data) {
    Reader r(data);
    if (r.field(2) != "SV")
        return std::nullopt;
    SvModel s;
    s.model = r.text(3);
    s.country = QString::fromLatin1(r.take(2)).trimmed();
    if (!r.ok() || !r.atEnd())
        return std::nullopt;
    return s;
}

QByteArray buildS3(const S3Settings& s) {
    QByteArray out("S3");
    for (const TaxRate& t : s.rates) {
        out.append(QByteArray::number(t.type).right(1));
        out.append(QByteArray::number(t.hundredths).rightJustified(4, '0', true));
    }
    for (int f : s.flags)
        out.append(QByteArray::number(f).rightJustified(2, '0', true));
    out.append(kLf);
    return out;
}

std::optional<S3Settings> parseS3(const QByteArray& data) {
    Reader r(data);
    if (r.take(2) != "S3")
        return std::nullopt;
    S3Settings s;
    for (TaxRate& t : s.rates) {
        t.type = int(r.digits(r.take(1)));
        t.hundredths = int(r.digits(r.take(4)));
    }
    for (int& f : s.flags)
        f = int(r.digits(r.take(2)));
    r.expectLf();
    if (!r.ok() || !r.atEnd())
        return std::nullopt;
    return s;
}

QByteArray buildReport(const ZReport& z) {
    Writer w;
    w.number(z.zNumber, 4)
        .field(yymmdd(z.zDate))
        .field(hhmm(z.zTime))
        .number(z.lastInvoice, 8)
        .field(yymmdd(z.lastInvoiceDate))
        .field(hhmm(z.lastInvoiceTime))
        .number(z.lastDebitNote, 8)
        .number(z.lastCreditNote, 8)
        .number(z.lastNonFiscal, 8);
    writeTotals(w, z.invoices);
    writeTotals(w, z.debitNotes);
    writeTotals(w, z.creditNotes);
    if (z.withIgtf) {
        for (const IgtfTotals* t : {&z.invoiceIgtf, &z.debitNoteIgtf, &z.creditNoteIgtf})
            w.number(t->base, 18).number(t->igtf, 18);
    }
    return w.take();
}

std::optional<ZReport> parseReport(const QByteArray& data) {
    Reader r(data);
    ZReport z;
    z.zNumber = int(r.number(4));
    z.zDate = parseYyMmDd(r.field(6));
    z.zTime = parseHhMm(r.field(4));
    z.lastInvoice = int(r.number(8));
    z.lastInvoiceDate = parseYyMmDd(r.field(6));
    z.lastInvoiceTime = parseHhMm(r.field(4));
    z.lastDebitNote = int(r.number(8));
    z.lastCreditNote = int(r.number(8));
    z.lastNonFiscal = int(r.number(8));
    z.invoices = readTotals(r);
    z.debitNotes = readTotals(r);
    z.creditNotes = readTotals(r);
    if (r.ok() && !r.atEnd()) {
        z.withIgtf = true;
        for (IgtfTotals* t : {&z.invoiceIgtf, &z.debitNoteIgtf, &z.creditNoteIgtf}) {
            t->base = r.number(18);
            t->igtf = r.number(18);
        }
    }
    if (!r.ok() || !r.atEnd())
        return std::nullopt;
    return z;
}

} // namespace orvo::pos::fiscal::protocol
