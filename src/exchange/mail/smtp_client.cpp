#include "exchange/mail/smtp_client.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <curl/curl.h>
#include <memory>
#include <mutex>

namespace orvo::exchange::mail {

namespace {

void initCurl() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

// A header value in RFC 2047 form when it is not plain ASCII.
QByteArray headerText(const QString& text) {
    bool ascii = true;
    for (QChar c : text)
        ascii = ascii && c.unicode() < 128 && c.unicode() >= 32;
    if (ascii)
        return text.toLatin1();
    return "=?UTF-8?B?" + text.toUtf8().toBase64() + "?=";
}

QByteArray rfc2822Date() {
    const QDateTime now = QDateTime::currentDateTime();
    const QLocale c = QLocale::c();
    const int offset = now.offsetFromUtc() / 60;
    return (c.toString(now, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss ")) +
            QStringLiteral("%1%2%3")
                .arg(offset < 0 ? QLatin1Char('-') : QLatin1Char('+'))
                .arg(qAbs(offset) / 60, 2, 10, QLatin1Char('0'))
                .arg(qAbs(offset) % 60, 2, 10, QLatin1Char('0')))
        .toLatin1();
}

struct CurlDeleter {
    void operator()(CURL* c) const { curl_easy_cleanup(c); }
    void operator()(curl_slist* l) const { curl_slist_free_all(l); }
    void operator()(curl_mime* m) const { curl_mime_free(m); }
};

} // namespace

QString sendMail(const SmtpAccount& account, const SmtpMessage& message, int timeoutSeconds) {
    initCurl();
    for (const QString& a : message.attachments)
        if (!QFileInfo(a).isFile())
            return QStringLiteral("No se encuentra el archivo anexo %1").arg(a);
    std::unique_ptr<CURL, CurlDeleter> curl(curl_easy_init());
    if (!curl)
        return QStringLiteral("No se pudo iniciar el cliente de correo");
    CURL* c = curl.get();
    const int port = account.port > 0 ? account.port : 25;
    // Port 465 speaks TLS from the start; any other asks for STARTTLS when the server offers it.
    const QByteArray url =
        (port == 465 ? QByteArrayLiteral("smtps://") : QByteArrayLiteral("smtp://")) +
        account.host.trimmed().toUtf8() + ':' + QByteArray::number(port);
    curl_easy_setopt(c, CURLOPT_URL, url.constData());
    curl_easy_setopt(c, CURLOPT_USE_SSL, long(CURLUSESSL_TRY));
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT, 30L);
    curl_easy_setopt(c, CURLOPT_TIMEOUT, long(timeoutSeconds));
    const QByteArray user = account.user.toUtf8();
    const QByteArray password = account.password.toUtf8();
    if (!user.isEmpty()) {
        curl_easy_setopt(c, CURLOPT_USERNAME, user.constData());
        curl_easy_setopt(c, CURLOPT_PASSWORD, password.constData());
    }
    const QByteArray from = '<' + account.fromAddress.toUtf8() + '>';
    curl_easy_setopt(c, CURLOPT_MAIL_FROM, from.constData());
    const QByteArray to = '<' + message.to.trimmed().toUtf8() + '>';
    std::unique_ptr<curl_slist, CurlDeleter> recipients(curl_slist_append(nullptr, to.constData()));
    curl_easy_setopt(c, CURLOPT_MAIL_RCPT, recipients.get());

    const QByteArray fromHeader =
        "From: " +
        (account.fromName.trimmed().isEmpty() ? QByteArray()
                                              : headerText(account.fromName.trimmed()) + ' ') +
        from;
    const QByteArray toHeader = "To: " + to;
    const QByteArray subjectHeader = "Subject: " + headerText(message.subject);
    const QByteArray dateHeader = "Date: " + rfc2822Date();
    curl_slist* h = nullptr;
    for (const QByteArray* line : {&dateHeader, &fromHeader, &toHeader, &subjectHeader})
        h = curl_slist_append(h, line->constData());
    std::unique_ptr<curl_slist, CurlDeleter> headers(h);
    curl_easy_setopt(c, CURLOPT_HTTPHEADER, headers.get());

    std::unique_ptr<curl_mime, CurlDeleter> mime(curl_mime_init(c));
    curl_mimepart* text = curl_mime_addpart(mime.get());
    const QByteArray body = message.body.toUtf8();
    curl_mime_data(text, body.constData(), size_t(body.size()));
    curl_mime_type(text, "text/plain; charset=UTF-8");
    curl_mime_encoder(text, "quoted-printable");
    for (const QString& a : message.attachments) {
        curl_mimepart* part = curl_mime_addpart(mime.get());
        curl_mime_filedata(part, QFile::encodeName(a).constData());
        curl_mime_type(part, "application/octet-stream");
        curl_mime_encoder(part, "base64");
    }
    curl_easy_setopt(c, CURLOPT_MIMEPOST, mime.get());

    char error[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, error);
    const CURLcode rc = curl_easy_perform(c);
    if (rc == CURLE_OK)
        return {};
    const QString detail = QString::fromUtf8(error).trimmed();
    return detail.isEmpty() ? QString::fromUtf8(curl_easy_strerror(rc)) : detail;
}

} // namespace orvo::exchange::mail
