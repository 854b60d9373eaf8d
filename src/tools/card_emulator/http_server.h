#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QTcpServer>
#include <functional>

namespace orvo::tools::card {

struct HttpRequest {
    QByteArray method;
    QByteArray path;                       // without the query
    QHash<QByteArray, QByteArray> headers; // names in lower case
    QByteArray body;
};

struct HttpResponse {
    int status = 200;
    QByteArray contentType = "application/json; charset=utf-8";
    QByteArray body;
};

// Just enough HTTP/1.1 for a local service: one request per connection, a body sized by
// Content-Length, the answer sent with "Connection: close". Answers can be held back for a
// while, as a slow terminal does.
class HttpServer : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<HttpResponse(const HttpRequest&)>;

    explicit HttpServer(Handler handler, QObject* parent = nullptr);
    bool listen(quint16 port, QString* error);
    quint16 port() const { return m_server.serverPort(); }
    void setDelayMs(int ms) { m_delayMs = ms; }

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket* socket);
    void answer(QTcpSocket* socket, const HttpResponse& response);

    Handler m_handler;
    QTcpServer m_server;
    int m_delayMs = 0;
};

} // namespace orvo::tools::card
