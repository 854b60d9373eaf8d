#include "tools/card_emulator/card_terminal.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSaveFile>

namespace orvo::tools::card {

namespace {

const QString kApproved = QStringLiteral("00");

QString padded(qint64 n, int width) {
    return QStringLiteral("%1").arg(n, width, 10, QLatin1Char('0'));
}

QString kindTitle(const QString& kind, const QString& cardKind) {
    if (kind == u"adelanto")
        return QStringLiteral("ADELANTO DE EFECTIVO");
    if (kind == u"retiro")
        return QStringLiteral("RETIRO");
    return cardKind == u"CREDITO" ? QStringLiteral("COMPRA CREDITO")
                                  : QStringLiteral("COMPRA DEBITO");
}

} // namespace

std::optional<qint64> parseCents(const QString& text) {
    static const QRegularExpression shape(QStringLiteral("^([0-9]{1,13})(\\.([0-9]{1,2}))?$"));
    const auto m = shape.match(text.trimmed());
    if (!m.hasMatch())
        return std::nullopt;
    const qint64 whole = m.captured(1).toLongLong();
    const QString decimals = m.captured(3).leftJustified(2, QLatin1Char('0'));
    return whole * 100 + decimals.toLongLong();
}

QString formatCents(qint64 cents) {
    return QStringLiteral("%1.%2").arg(cents / 100).arg(padded(cents % 100, 2));
}

CardTerminal::CardTerminal(TerminalRules rules, QString stateFile, QString voucherDir)
    : m_rules(std::move(rules)), m_stateFile(std::move(stateFile)),
      m_voucherDir(std::move(voucherDir)) {}

bool CardTerminal::load(QString* error) {
    QDir().mkpath(m_voucherDir);
    if (m_stateFile.isEmpty() || !QFile::exists(m_stateFile))
        return true;
    QFile f(m_stateFile);
    if (!f.open(QIODevice::ReadOnly)) {
        *error = f.errorString();
        return false;
    }
    QJsonParseError pe;
    const QJsonObject s = QJsonDocument::fromJson(f.readAll(), &pe).object();
    if (pe.error != QJsonParseError::NoError) {
        *error = QStringLiteral("estado ilegible: ") + pe.errorString();
        return false;
    }
    m_lot = s.value(u"numeroLote").toInt(1);
    m_sequence = s.value(u"numSeq").toInt();
    m_authorisation = s.value(u"numeroAutorizacion").toInt();
    m_lastVoucher = s.value(u"ultimoVoucher").toString();
    m_lastClosing = s.value(u"ultimoCierre").toString();
    m_transactions.clear();
    for (const QJsonValue& v : s.value(u"transacciones").toArray()) {
        const QJsonObject o = v.toObject();
        Transaction t;
        t.sequence = o.value(u"numSeq").toInt();
        t.idPayment = o.value(u"idPago").toString();
        t.authorisation = o.value(u"numeroAutorizacion").toString();
        t.kind = o.value(u"tipo").toString();
        t.cardKind = o.value(u"formaPago").toString();
        t.cents = parseCents(o.value(u"monto").toString()).value_or(0);
        t.cedula = o.value(u"cedula").toString();
        t.cardNumber = o.value(u"numeroTarjeta").toString();
        t.status = o.value(u"estado").toString();
        t.voucher = o.value(u"nombreVoucher").toString();
        t.time = QDateTime::fromString(o.value(u"fecha").toString(), Qt::ISODate);
        m_transactions.append(t);
    }
    return true;
}

void CardTerminal::save() {
    if (m_stateFile.isEmpty())
        return;
    QJsonArray list;
    for (const Transaction& t : m_transactions)
        list.append(QJsonObject{{"numSeq", t.sequence},
                                {"idPago", t.idPayment},
                                {"numeroAutorizacion", t.authorisation},
                                {"tipo", t.kind},
                                {"formaPago", t.cardKind},
                                {"monto", formatCents(t.cents)},
                                {"cedula", t.cedula},
                                {"numeroTarjeta", t.cardNumber},
                                {"estado", t.status},
                                {"nombreVoucher", t.voucher},
                                {"fecha", t.time.toString(Qt::ISODate)}});
    const QJsonObject s{{"numeroLote", m_lot},
                        {"numSeq", m_sequence},
                        {"numeroAutorizacion", m_authorisation},
                        {"ultimoVoucher", m_lastVoucher},
                        {"ultimoCierre", m_lastClosing},
                        {"transacciones", list}};
    QSaveFile f(m_stateFile);
    if (f.open(QIODevice::WriteOnly)) {
        f.write(QJsonDocument(s).toJson());
        f.commit();
    }
}

std::optional<QJsonObject> CardTerminal::handle(const QString& operation,
                                                const QJsonObject& request) {
    if (operation == u"pago" || operation == u"adelanto" || operation == u"retiro")
        return transact(operation, request);
    if (operation == u"anulacion" || operation == u"anulacion-secuencia") {
        const bool bySequence = operation == u"anulacion-secuencia";
        const QString wanted = bySequence ? request.value(u"numSeq").toVariant().toString()
                                          : request.value(u"numeroAutorizacion").toString();
        for (Transaction& t : m_transactions) {
            bool isNumber = false;
            const int number = wanted.trimmed().toInt(&isNumber);
            const bool match = bySequence ? isNumber && number == t.sequence
                                          : !t.authorisation.isEmpty() && t.authorisation == wanted;
            if (match && t.status == u"APROBADA")
                return voidTransaction(&t);
        }
        return QJsonObject{{"codRespuesta", "25"},
                           {"mensajeRespuesta", "TRANSACCION NO ENCONTRADA"},
                           {"numeroLote", QString::number(m_lot)}};
    }
    if (operation == u"ultimo-voucher" || operation == u"ultimo-cierre") {
        const QString name = operation == u"ultimo-voucher" ? m_lastVoucher : m_lastClosing;
        if (name.isEmpty())
            return QJsonObject{{"codRespuesta", "25"},
                               {"mensajeRespuesta", "NO HAY VOUCHER"},
                               {"numeroLote", QString::number(m_lot)}};
        return QJsonObject{{"codRespuesta", kApproved},
                           {"mensajeRespuesta", "APROBADA"},
                           {"nombreVoucher", name},
                           {"numeroLote", QString::number(m_lot)}};
    }
    if (operation == u"precierre" || operation == u"cierre")
        return report(operation == u"cierre");
    return std::nullopt;
}

QJsonObject CardTerminal::transact(const QString& kind, const QJsonObject& request) {
    Transaction t;
    t.kind = kind;
    t.idPayment = request.value(u"idPago").toString().trimmed();
    // A payment id already approved is a repeated request: the card is not charged twice.
    for (const Transaction& done : m_transactions)
        if (!t.idPayment.isEmpty() && done.idPayment == t.idPayment && done.status == u"APROBADA")
            return QJsonObject{{"codRespuesta", "94"},
                               {"mensajeRespuesta", "TRANSACCION DUPLICADA"},
                               {"numeroLote", QString::number(m_lot)}};
    t.cardKind = request.value(u"formaPago").toString().toUpper();
    t.cedula = request.value(u"cedula").toString().trimmed();
    t.cardNumber = m_rules.cardNumber;
    t.time = QDateTime::currentDateTime();
    const auto cents = parseCents(request.value(u"monto").toString());
    if (!cents || *cents <= 0 || t.cedula.isEmpty() ||
        (t.cardKind != u"DEBITO" && t.cardKind != u"CREDITO"))
        return QJsonObject{{"codRespuesta", "30"}, {"mensajeRespuesta", "ERROR DE FORMATO"}};
    t.cents = *cents;
    t.sequence = ++m_sequence;

    QString code = kApproved;
    QString message = QStringLiteral("APROBADA");
    if (m_rules.rejectAmountOverCents && t.cents > *m_rules.rejectAmountOverCents) {
        code = QStringLiteral("51");
        message = QStringLiteral("FONDOS INSUFICIENTES");
    } else if (m_rules.rejectCedulas.contains(t.cedula)) {
        code = QStringLiteral("05");
        message = QStringLiteral("NO APROBADA");
    } else {
        for (const QString& prefix : m_rules.rejectCardPrefixes)
            if (!prefix.isEmpty() && t.cardNumber.startsWith(prefix)) {
                code = QStringLiteral("14");
                message = QStringLiteral("TARJETA INVALIDA");
            }
    }
    if (code == kApproved) {
        t.authorisation = padded(++m_authorisation, 6);
        t.status = QStringLiteral("APROBADA");
    } else {
        t.status = QStringLiteral("RECHAZADA");
    }
    QStringList lines = voucherHeader(kindTitle(kind, t.cardKind));
    lines << QStringLiteral("TARJETA: ") + maskedCard(t.cardNumber)
          << QStringLiteral("C.I.: ") + t.cedula
          << QStringLiteral("LOTE: %1  SECUENCIA: %2").arg(padded(m_lot, 4), padded(t.sequence, 6));
    if (!t.authorisation.isEmpty())
        lines << QStringLiteral("AUTORIZACION: ") + t.authorisation;
    lines << QStringLiteral("MONTO: ") + formatCents(t.cents) << QString()
          << (code == kApproved ? QStringLiteral("APROBADA")
                                : QStringLiteral("RECHAZADA: ") + message);
    t.voucher = writeVoucher(
        QStringLiteral("L%1_S%2_%3.txt").arg(padded(m_lot, 4), padded(t.sequence, 6), kind), lines);
    m_transactions.append(t);
    save();
    return answerFor(t, code, message);
}

QJsonObject CardTerminal::voidTransaction(Transaction* t) {
    t->status = QStringLiteral("ANULADA");
    const int sequence = ++m_sequence;
    QStringList lines = voucherHeader(QStringLiteral("ANULACION"));
    lines << QStringLiteral("TARJETA: ") + maskedCard(t->cardNumber)
          << QStringLiteral("LOTE: %1  SECUENCIA: %2").arg(padded(m_lot, 4), padded(sequence, 6))
          << QStringLiteral("SECUENCIA ANULADA: ") + padded(t->sequence, 6)
          << QStringLiteral("AUTORIZACION: ") + t->authorisation
          << QStringLiteral("MONTO: -") + formatCents(t->cents) << QString()
          << QStringLiteral("ANULACION APROBADA");
    const QString name = writeVoucher(
        QStringLiteral("L%1_S%2_anulacion.txt").arg(padded(m_lot, 4), padded(sequence, 6)), lines);
    save();
    Transaction answered = *t;
    answered.sequence = sequence;
    answered.voucher = name;
    return answerFor(answered, kApproved, QStringLiteral("ANULACION APROBADA"));
}

QJsonObject CardTerminal::report(bool close) {
    qint64 approvedCents = 0;
    int approved = 0;
    int voided = 0;
    for (const Transaction& t : m_transactions) {
        if (t.status == u"APROBADA") {
            ++approved;
            approvedCents += t.cents;
        } else if (t.status == u"ANULADA") {
            ++voided;
        }
    }
    QStringList lines = voucherHeader(close ? QStringLiteral("CIERRE DE LOTE")
                                            : QStringLiteral("PRE-CIERRE (CORTE DE PUNTO)"));
    lines << QStringLiteral("LOTE: ") + padded(m_lot, 4)
          << QStringLiteral("TRANSACCIONES APROBADAS: %1").arg(approved)
          << QStringLiteral("TRANSACCIONES ANULADAS: %1").arg(voided)
          << QStringLiteral("TOTAL: ") + formatCents(approvedCents);
    const int lot = m_lot;
    const QString name = writeVoucher(
        QStringLiteral("L%1_%2_%3.txt")
            .arg(padded(lot, 4), close ? QStringLiteral("cierre") : QStringLiteral("precierre"),
                 QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmsszzz"))),
        lines);
    if (close) {
        m_lastClosing = name;
        m_transactions.clear();
        ++m_lot;
    }
    save();
    return QJsonObject{{"codRespuesta", kApproved},          {"mensajeRespuesta", "APROBADA"},
                       {"numeroLote", QString::number(lot)}, {"nombreVoucher", name},
                       {"cantidadTransacciones", approved},  {"monto", formatCents(approvedCents)}};
}

QJsonObject CardTerminal::answerFor(const Transaction& t, const QString& code,
                                    const QString& message) const {
    QJsonObject o{{"codRespuesta", code},
                  {"mensajeRespuesta", message},
                  {"numSeq", padded(t.sequence, 6)},
                  {"numeroLote", QString::number(m_lot)},
                  {"nombreVoucher", t.voucher},
                  {"codigoAdquiriente", m_rules.acquirerCode},
                  {"numeroTarjeta", maskedCard(t.cardNumber)},
                  {"monto", formatCents(t.cents)},
                  {"fecha", t.time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"))}};
    if (code == kApproved)
        o.insert(QStringLiteral("numeroAutorizacion"), t.authorisation);
    return o;
}

QStringList CardTerminal::voucherHeader(const QString& title) const {
    const QDateTime now = QDateTime::currentDateTime();
    return {m_rules.merchant, QStringLiteral("TERMINAL: 00000001"), title,
            QStringLiteral("FECHA: %1  HORA: %2")
                .arg(now.toString(QStringLiteral("dd/MM/yyyy")),
                     now.toString(QStringLiteral("hh:mm:ss")))};
}

QString CardTerminal::maskedCard(const QString& number) const {
    if (number.size() <= 10)
        return number;
    return number.left(6) + QString(number.size() - 10, QLatin1Char('*')) + number.right(4);
}

QString CardTerminal::writeVoucher(const QString& name, const QStringList& lines) {
    QSaveFile f(QDir(m_voucherDir).filePath(name));
    if (f.open(QIODevice::WriteOnly)) {
        f.write(lines.join(QStringLiteral("\r\n")).toUtf8() + "\r\n");
        f.commit();
    }
    m_lastVoucher = name;
    return name;
}

std::optional<QByteArray> CardTerminal::voucher(const QString& name) const {
    // Only plain names of this terminal's folder.
    static const QRegularExpression safe(QStringLiteral("^[A-Za-z0-9_.-]+$"));
    if (!safe.match(name).hasMatch() || name.startsWith(QLatin1Char('.')))
        return std::nullopt;
    QFile f(QDir(m_voucherDir).filePath(name));
    if (!f.open(QIODevice::ReadOnly))
        return std::nullopt;
    return f.readAll();
}

} // namespace orvo::tools::card
