#include "pos/card/vpos_payment.h"

#include "common/errors/errors.h"
#include "exchange/json/json_reader.h"

#include <QDateTime>
#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <atomic>

namespace orvo::pos::card {

namespace {

const QString kApprovedCode = QStringLiteral("00");

} // namespace

QString formatTerminalAmount(const Decimal& amount) {
    return amount.rounded(2).toString(2).remove(QLatin1Char(','));
}

QString newPaymentId(const QString& serie) {
    // The time to the millisecond keeps ids apart across restarts; the counter within one.
    static std::atomic<int> counter{0};
    return QStringLiteral("%1-%2-%3")
        .arg(serie.trimmed(),
             QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyMMddhhmmsszzz")))
        .arg(++counter % 1000, 3, 10, QLatin1Char('0'));
}

VPosPayment::VPosPayment(TerminalSettings settings, VoucherPrinter* printer)
    : m_settings(std::move(settings)), m_printer(printer) {
    if (!m_settings.voucherFolder.isEmpty()) {
        m_filePrinter = std::make_unique<FileVoucherPrinter>(m_settings.voucherFolder);
        m_printer = m_filePrinter.get();
    }
}

VPosPayment::~VPosPayment() = default;

QString VPosPayment::status() const {
    return m_approved ? QStringLiteral("APROBADO") : QStringLiteral("RECHAZADO");
}

QString VPosPayment::value(const QString& key) const {
    return m_answer.toObject().value(key).toText();
}

QString VPosPayment::transactionInfo() const {
    QStringList parts{status()};
    if (!responseMessage().isEmpty())
        parts << responseMessage();
    if (!m_authorisation.isEmpty() && m_approved)
        parts << QStringLiteral("Autorización ") + m_authorisation;
    if (!m_sequence.isEmpty())
        parts << QStringLiteral("Secuencia ") + m_sequence;
    if (!m_lot.isEmpty())
        parts << QStringLiteral("Lote ") + m_lot;
    if (!cardNumber().isEmpty())
        parts << QStringLiteral("Tarjeta ") + cardNumber();
    return parts.join(QStringLiteral(" - "));
}

bool VPosPayment::pay() {
    return transact(QStringLiteral("pago"));
}
bool VPosPayment::advance() {
    return transact(QStringLiteral("adelanto"));
}
bool VPosPayment::withdraw() {
    return transact(QStringLiteral("retiro"));
}

bool VPosPayment::transact(const QString& operation) {
    const QJsonObject request{{"idPago", m_idPayment},
                              {"cedula", m_cedula.trimmed()},
                              {"formaPago", m_cardKind == CardKind::Credit ? "CREDITO" : "DEBITO"},
                              {"monto", formatTerminalAmount(m_amount)}};
    m_authorisation.clear();
    return call(operation, request, m_settings.oneCopy ? 1 : 2);
}

bool VPosPayment::voidPayment() {
    const QString authorisation = m_authorisation;
    const bool ok =
        call(QStringLiteral("anulacion"),
             QJsonObject{{"numeroAutorizacion", authorisation}, {"idPago", m_idPayment}},
             m_settings.oneCopy ? 1 : 2);
    if (!ok)
        m_authorisation = authorisation; // still the payment to void
    return ok;
}

bool VPosPayment::voidBySequence(const QString& sequence) {
    return call(QStringLiteral("anulacion-secuencia"), QJsonObject{{"numSeq", sequence.trimmed()}},
                m_settings.oneCopy ? 1 : 2);
}

bool VPosPayment::reprintLastVoucher() {
    return call(QStringLiteral("ultimo-voucher"), {}, 1) && m_printError.isEmpty();
}
bool VPosPayment::preClosingReport() {
    return call(QStringLiteral("precierre"), {}, 1);
}
bool VPosPayment::closingReport() {
    return call(QStringLiteral("cierre"), {}, 1);
}
bool VPosPayment::reprintLastClosing() {
    return call(QStringLiteral("ultimo-cierre"), {}, 1);
}

void VPosPayment::resetAnswer() {
    m_rawAnswer.clear();
    m_answer = {};
    m_approved = false;
    m_sequence.clear();
    m_lot.clear();
    m_voucherName.clear();
    m_bankCode.clear();
    m_printError.clear();
}

bool VPosPayment::call(const QString& operation, const QJsonObject& request, int copies) {
    resetAnswer();
    const QByteArray body = QJsonDocument(request).toJson(QJsonDocument::Compact);
    m_rawAnswer =
        QString::fromUtf8(roundTrip(QStringLiteral("POST"), QLatin1Char('/') + operation, body));
    QString errors;
    m_answer = exchange::json::parseJson(m_rawAnswer, &errors);
    if (!m_answer.isObject() || !m_answer.toObject().contains(QStringLiteral("codRespuesta")))
        throw UserError(
            QStringLiteral("La respuesta del punto de venta VPOS no se pudo leer: %1...!")
                .arg(m_rawAnswer.left(200)));
    m_approved = value(QStringLiteral("codRespuesta")) == kApprovedCode;
    m_voucherName = value(QStringLiteral("nombreVoucher"));
    if (m_approved) {
        const QString authorisation = value(QStringLiteral("numeroAutorizacion"));
        if (!authorisation.isEmpty())
            m_authorisation = authorisation;
        m_sequence = value(QStringLiteral("numSeq"));
        m_lot = value(QStringLiteral("numeroLote"));
        m_bankCode = value(QStringLiteral("codigoAdquiriente"));
    }
    printVoucher(copies);
    return m_approved;
}

void VPosPayment::printVoucher(int copies) {
    if (m_voucherName.isEmpty())
        return;
    try {
        if (!m_printer)
            throw UserError(QStringLiteral("No hay impresora para el voucher...!"));
        const QByteArray text =
            roundTrip(QStringLiteral("GET"),
                      QStringLiteral("/vouchers/") +
                          QString::fromLatin1(QUrl::toPercentEncoding(m_voucherName)),
                      {});
        QStringList lines = QString::fromUtf8(text).split(QLatin1Char('\n'));
        for (QString& line : lines)
            if (line.endsWith(QLatin1Char('\r')))
                line.chop(1);
        while (!lines.isEmpty() && lines.last().isEmpty())
            lines.removeLast();
        for (int copy = 1; copy <= copies; ++copy)
            m_printer->printLines(copy == 1 ? lines
                                            : QStringList{QStringLiteral("COPIA CLIENTE")} + lines);
    } catch (const UserError& e) {
        m_printError = e.text();
    } catch (const std::exception& e) {
        m_printError = QString::fromLocal8Bit(e.what());
    }
}

QByteArray VPosPayment::roundTrip(const QString& method, const QString& path,
                                  const QByteArray& body) {
    if (!m_network) {
        m_network = std::make_unique<QNetworkAccessManager>();
        m_network->setProxy(QNetworkProxy::NoProxy); // the terminal is on the store's own network
    }
    QUrl url = m_settings.url;
    url.setPath(url.path().chopped(url.path().endsWith(QLatin1Char('/')) ? 1 : 0) + path,
                QUrl::StrictMode);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    QNetworkReply* reply =
        method == u"GET" ? m_network->get(request) : m_network->post(request, body);
    std::unique_ptr<QNetworkReply> owner(reply);

    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    bool timedOut = false;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        reply->abort();
        loop.quit();
    });
    timer.start(m_settings.timeoutSeconds * 1000);
    if (!reply->isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    timer.stop();

    const QString where = m_settings.url.toString();
    if (timedOut)
        throw UserError(QStringLiteral("El punto de venta VPOS (%1) no respondió en %2 segundos. "
                                       "Verifique en el terminal si la operación se realizó antes "
                                       "de repetirla...!")
                            .arg(where)
                            .arg(m_settings.timeoutSeconds));
    const int httpStatus = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError && httpStatus == 0)
        throw UserError(QStringLiteral("No hay comunicación con el punto de venta VPOS (%1). "
                                       "Verifique que el servicio del terminal esté encendido...!")
                            .arg(where));
    if (httpStatus != 200)
        throw UserError(QStringLiteral("El punto de venta VPOS (%1) respondió con el error %2...!")
                            .arg(where)
                            .arg(httpStatus));
    return reply->readAll();
}

} // namespace orvo::pos::card
