#include "tools/fiscal_emulator/fiscal_memory.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace orvo::tools::fiscal {

namespace {

QJsonArray toJson(const wire::DocumentTotals& t) {
    QJsonArray a{double(t.exempt)};
    for (int i = 0; i < 3; ++i) {
        a.append(double(t.base[i]));
        a.append(double(t.tax[i]));
    }
    return a;
}

wire::DocumentTotals totalsFromJson(const QJsonValue& v) {
    const QJsonArray a = v.toArray();
    wire::DocumentTotals t;
    if (a.size() != 7)
        return t;
    t.exempt = qint64(a[0].toDouble());
    for (int i = 0; i < 3; ++i) {
        t.base[i] = qint64(a[1 + 2 * i].toDouble());
        t.tax[i] = qint64(a[2 + 2 * i].toDouble());
    }
    return t;
}

QJsonArray toJson(const wire::IgtfTotals& t) {
    return QJsonArray{double(t.base), double(t.igtf)};
}

wire::IgtfTotals igtfFromJson(const QJsonValue& v) {
    const QJsonArray a = v.toArray();
    if (a.size() != 2)
        return {};
    return {qint64(a[0].toDouble()), qint64(a[1].toDouble())};
}

QJsonObject toJson(const wire::ZReport& z) {
    QJsonObject o{
        {"numero", z.zNumber},
        {"fecha", z.zDate.toString(Qt::ISODate)},
        {"hora", z.zTime.toString(QStringLiteral("HH:mm"))},
        {"ultimaFactura", z.lastInvoice},
        {"fechaUltimaFactura", z.lastInvoiceDate.toString(Qt::ISODate)},
        {"horaUltimaFactura", z.lastInvoiceTime.toString(QStringLiteral("HH:mm"))},
        {"ultimaNotaDebito", z.lastDebitNote},
        {"ultimaNotaCredito", z.lastCreditNote},
        {"ultimoNoFiscal", z.lastNonFiscal},
        {"facturas", toJson(z.invoices)},
        {"notasDebito", toJson(z.debitNotes)},
        {"notasCredito", toJson(z.creditNotes)},
    };
    if (z.withIgtf) {
        o.insert("igtfFacturas", toJson(z.invoiceIgtf));
        o.insert("igtfNotasDebito", toJson(z.debitNoteIgtf));
        o.insert("igtfNotasCredito", toJson(z.creditNoteIgtf));
    }
    return o;
}

wire::ZReport zFromJson(const QJsonObject& o) {
    wire::ZReport z;
    z.zNumber = o.value("numero").toInt();
    z.zDate = QDate::fromString(o.value("fecha").toString(), Qt::ISODate);
    z.zTime = QTime::fromString(o.value("hora").toString(), QStringLiteral("HH:mm"));
    z.lastInvoice = o.value("ultimaFactura").toInt();
    z.lastInvoiceDate = QDate::fromString(o.value("fechaUltimaFactura").toString(), Qt::ISODate);
    z.lastInvoiceTime =
        QTime::fromString(o.value("horaUltimaFactura").toString(), QStringLiteral("HH:mm"));
    z.lastDebitNote = o.value("ultimaNotaDebito").toInt();
    z.lastCreditNote = o.value("ultimaNotaCredito").toInt();
    z.lastNonFiscal = o.value("ultimoNoFiscal").toInt();
    z.invoices = totalsFromJson(o.value("facturas"));
    z.debitNotes = totalsFromJson(o.value("notasDebito"));
    z.creditNotes = totalsFromJson(o.value("notasCredito"));
    z.withIgtf = o.contains("igtfFacturas");
    z.invoiceIgtf = igtfFromJson(o.value("igtfFacturas"));
    z.debitNoteIgtf = igtfFromJson(o.value("igtfNotasDebito"));
    z.creditNoteIgtf = igtfFromJson(o.value("igtfNotasCredito"));
    return z;
}

QJsonObject mapToJson(const QMap<int, QString>& m) {
    QJsonObject o;
    for (auto it = m.begin(); it != m.end(); ++it)
        o.insert(QString::number(it.key()), it.value());
    return o;
}

QMap<int, QString> mapFromJson(const QJsonValue& v) {
    QMap<int, QString> m;
    const QJsonObject o = v.toObject();
    for (auto it = o.begin(); it != o.end(); ++it)
        m.insert(it.key().toInt(), it.value().toString());
    return m;
}

} // namespace

wire::ZReport FiscalMemory::openDay() const {
    wire::ZReport r;
    if (!zHistory.isEmpty()) {
        r.zNumber = zHistory.last().zNumber;
        r.zDate = zHistory.last().zDate;
        r.zTime = zHistory.last().zTime;
    }
    r.lastInvoice = lastInvoice;
    if (lastInvoiceAt.isValid()) {
        r.lastInvoiceDate = lastInvoiceAt.date();
        r.lastInvoiceTime = QTime(lastInvoiceAt.time().hour(), lastInvoiceAt.time().minute());
    }
    r.lastDebitNote = lastDebitNote;
    r.lastCreditNote = lastCreditNote;
    r.lastNonFiscal = lastNonFiscal;
    r.invoices = invoiceTotals;
    r.creditNotes = creditNoteTotals;
    r.withIgtf = igtfEnabled();
    if (r.withIgtf) {
        r.invoiceIgtf = invoiceIgtf;
        r.creditNoteIgtf = creditNoteIgtf;
    }
    return r;
}

bool FiscalMemory::load(const QString& path, QString* error) {
    QFile f(path);
    if (!f.exists())
        return true;
    if (!f.open(QIODevice::ReadOnly)) {
        *error = f.errorString();
        return false;
    }
    QJsonParseError pe;
    const QJsonDocument doc = QJsonDocument::fromJson(f.readAll(), &pe);
    if (pe.error != QJsonParseError::NoError || !doc.isObject()) {
        *error = pe.errorString();
        return false;
    }
    const QJsonObject o = doc.object();
    serial = o.value("serial").toString(serial);
    rif = o.value("rif").toString(rif);
    model = o.value("modelo").toString(model);
    country = o.value("pais").toString(country);
    clockOffsetSecs = qint64(o.value("desfaseReloj").toDouble());
    lastInvoice = o.value("ultimaFactura").toInt();
    lastCreditNote = o.value("ultimaNotaCredito").toInt();
    lastDebitNote = o.value("ultimaNotaDebito").toInt();
    lastNonFiscal = o.value("ultimoNoFiscal").toInt();
    invoicesToday = o.value("facturasDelDia").toInt();
    creditNotesToday = o.value("notasCreditoDelDia").toInt();
    nonFiscalToday = o.value("noFiscalesDelDia").toInt();
    xCounter = o.value("contadorX").toInt();
    fiscalReportCounter = o.value("contadorMemoriaFiscal").toInt();
    zCounter = o.value("contadorZ").toInt();
    lastInvoiceAt = QDateTime::fromString(o.value("horaUltimaFactura").toString(), Qt::ISODate);
    zJustMade = o.value("zRecienHecho").toBool(true);
    invoiceTotals = totalsFromJson(o.value("totalesFacturas"));
    creditNoteTotals = totalsFromJson(o.value("totalesNotasCredito"));
    invoiceIgtf = igtfFromJson(o.value("igtfFacturas"));
    creditNoteIgtf = igtfFromJson(o.value("igtfNotasCredito"));
    igtfRate = o.value("tasaIGTF").toInt();
    lines = mapFromJson(o.value("lineas"));
    const QJsonArray r = o.value("tasas").toArray();
    for (int i = 0; i < 3 && i < r.size(); ++i)
        rates[i] = {r[i].toObject().value("tipo").toInt(1), r[i].toObject().value("tasa").toInt()};
    const QJsonArray fl = o.value("banderas").toArray();
    for (int i = 0; i < 64 && i < fl.size(); ++i)
        flags[i] = fl[i].toInt();
    paymentNames = mapFromJson(o.value("mediosPago"));
    zHistory.clear();
    for (const QJsonValue& z : o.value("reportesZ").toArray())
        zHistory.append(zFromJson(z.toObject()));
    return true;
}

bool FiscalMemory::save(const QString& path, QString* error) const {
    QJsonArray r;
    for (const wire::TaxRate& t : rates)
        r.append(QJsonObject{{"tipo", t.type}, {"tasa", t.hundredths}});
    QJsonArray fl;
    for (int f : flags)
        fl.append(f);
    QJsonArray zs;
    for (const wire::ZReport& z : zHistory)
        zs.append(toJson(z));
    const QJsonObject o{
        {"serial", serial},
        {"rif", rif},
        {"modelo", model},
        {"pais", country},
        {"desfaseReloj", double(clockOffsetSecs)},
        {"ultimaFactura", lastInvoice},
        {"ultimaNotaCredito", lastCreditNote},
        {"ultimaNotaDebito", lastDebitNote},
        {"ultimoNoFiscal", lastNonFiscal},
        {"facturasDelDia", invoicesToday},
        {"notasCreditoDelDia", creditNotesToday},
        {"noFiscalesDelDia", nonFiscalToday},
        {"contadorX", xCounter},
        {"contadorMemoriaFiscal", fiscalReportCounter},
        {"contadorZ", zCounter},
        {"horaUltimaFactura", lastInvoiceAt.toString(Qt::ISODate)},
        {"zRecienHecho", zJustMade},
        {"totalesFacturas", toJson(invoiceTotals)},
        {"totalesNotasCredito", toJson(creditNoteTotals)},
        {"igtfFacturas", toJson(invoiceIgtf)},
        {"igtfNotasCredito", toJson(creditNoteIgtf)},
        {"tasaIGTF", igtfRate},
        {"lineas", mapToJson(lines)},
        {"tasas", r},
        {"banderas", fl},
        {"mediosPago", mapToJson(paymentNames)},
        {"reportesZ", zs},
    };
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly)) {
        *error = f.errorString();
        return false;
    }
    f.write(QJsonDocument(o).toJson());
    if (!f.commit()) {
        *error = f.errorString();
        return false;
    }
    return true;
}

} // namespace orvo::tools::fiscal
