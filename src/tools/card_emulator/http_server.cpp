#include "tools/card_emulator/http_server.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

namespace orvo::tools::card {

namespace {

constexpr qsizetype kMaxHeader = 64 * 1024;
constexpr qsizetype kMaxBody = 1024 * 1024;
const char* const kBuffer = "orvoHttpBuffer";

QByteArray reason(int status) {
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 413:
        return "Payload Too Large";
    default:
        return "Error";
    }
}

HttpResponse plain(int status, const QByteArray& text) {
    HttpResponse r;
    r.status = status;
    r.contentType = "text/plain; charset=utf-8";
    r.body = text;
    return r;
}

} // namespace

HttpServer::HttpServer(Handler handler, QObject* parent)
    : QObject(parent), m_handler(std::move(handler)) {
    connect(&m_server, &QTcpServer::newConnection, this, &HttpServer::onNewConnection);
}

bool HttpServer::listen(quint16 port, QString* error) {
    if (m_server.listen(QHostAddress::LocalHost, port))
        return true;
    if (error)
        *error = m_server.errorString();
    return false;
}

void HttpServer::onNewConnection() {
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void HttpServer::onReadyRead(QTcpSocket* socket) {
    if (socket->property("orvoAnswered").toBool()) {
        socket->readAll();
        return;
    }
    QByteArray buffer = socket->property(kBuffer).toByteArray() + socket->readAll();
    socket->setProperty(kBuffer, buffer);
    const qsizetype headerEnd = buffer.indexOf("\r\n\r\n");
    if (headerEnd < 0) {
        if (buffer.size() > kMaxHeader)
            answer(socket, plain(413, "cabecera demasiado grande"));
        return;
    }
    const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    if (requestLine.size() != 3 || !requestLine.at(2).startsWith("HTTP/1.")) {
        answer(socket, plain(400, "solicitud mal formada"));
        return;
    }
    HttpRequest request;
    request.method = requestLine.at(0);
    request.path = requestLine.at(1).split('?').value(0);
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            request.headers.insert(line.left(colon).trimmed().toLower(),
                                   line.mid(colon + 1).trimmed());
    }
    bool ok = true;
    const qsizetype length = request.headers.contains("content-length")
                                 ? request.headers.value("content-length").toLongLong(&ok)
                                 : 0;
    if (!ok || length < 0 || length > kMaxBody) {
        answer(socket, plain(413, "cuerpo demasiado grande"));
        return;
    }
    if (buffer.size() - headerEnd - 4 < length)
        return; // the rest of the body is still on its way
    request.body = buffer.mid(headerEnd + 4, length);
    answer(socket, m_handler(request));
}

void HttpServer::answer(QTcpSocket* socket, const HttpResponse& response) {
    socket->setProperty("orvoAnswered", true);
    socket->setProperty(kBuffer, QByteArray());
    QByteArray data = "HTTP/1.1 " + QByteArray::number(response.status) + ' ' +
                      reason(response.status) + "\r\nContent-Type: " + response.contentType +
                      "\r\nContent-Length: " + QByteArray::number(response.body.size()) +
                      "\r\nConnection: close\r\n\r\n" + response.body;
    QPointer<QTcpSocket> guard(socket);
    auto send = [guard, data] {
        if (!guard)
            return;
        guard->write(data);
        guard->disconnectFromHost();
    };
    if (m_delayMs > 0)
        QTimer::singleShot(m_delayMs, socket, send);
    else
        send();
}

} // namespace orvo::tools::card
