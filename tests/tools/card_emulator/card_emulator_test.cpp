#include "emulator_thread.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo::tools::card;
using orvo::test::EmulatorThread;

namespace {

// Sends raw bytes, in pieces when asked, and returns the whole answer.
QByteArray rawExchange(const QUrl& url, const QList<QByteArray>& pieces) {
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), quint16(url.port()));
    EXPECT_TRUE(socket.waitForConnected(5000));
    for (const QByteArray& piece : pieces) {
        socket.write(piece);
        socket.waitForBytesWritten(5000);
        QThread::msleep(20);
    }
    QByteArray answer;
    while (socket.state() == QAbstractSocket::ConnectedState && socket.waitForReadyRead(5000))
        answer += socket.readAll();
    return answer + socket.readAll();
}

QByteArray post(const QString& path, const QByteArray& body) {
    return "POST " + path.toUtf8() +
           " HTTP/1.1\r\nHost: x\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body;
}

QJsonObject jsonOf(const QByteArray& answer) {
    return QJsonDocument::fromJson(answer.mid(answer.indexOf("\r\n\r\n") + 4)).object();
}

} // namespace

TEST(CardEmulator, Options) {
    CardEmulatorOptions o;
    QString error;
    ASSERT_TRUE(parseCardEmulatorOptions({"--port", "8765", "--reject-amount-over", "1000",
                                          "--reject-cedula", "V1", "--reject-cedula", "V2",
                                          "--reject-card", "4111", "--delay-ms", "50"},
                                         &o, &error));
    EXPECT_EQ(o.port, 8765);
    EXPECT_EQ(o.rules.rejectAmountOverCents, 100000);
    EXPECT_EQ(o.rules.rejectCedulas, (QStringList{"V1", "V2"}));
    EXPECT_EQ(o.rules.rejectCardPrefixes, QStringList{"4111"});
    EXPECT_EQ(o.delayMs, 50);
    EXPECT_FALSE(parseCardEmulatorOptions({"--reject-amount-over", "1.000,00"}, &o, &error));
    EXPECT_EQ(error, QStringLiteral("Valor no válido para --reject-amount-over: 1.000,00"));
    EXPECT_FALSE(parseCardEmulatorOptions({"--port"}, &o, &error));
    EXPECT_FALSE(parseCardEmulatorOptions({"--colour", "red"}, &o, &error));
}

TEST(CardEmulator, SpeaksPlainHttpAndRefusesWhatItShould) {
    QTemporaryDir dir;
    CardEmulatorOptions o;
    o.voucherDir = dir.filePath("v");
    o.stateFile = dir.filePath("state.json");
    o.rules.rejectCardPrefixes = {"4540"};
    EmulatorThread emulator(o);

    // A request that arrives in pieces is answered once whole.
    const QByteArray request =
        post("/pago", R"({"cedula":"V1","formaPago":"DEBITO","monto":"12.5"})");
    const QByteArray answer =
        rawExchange(emulator.url(), {request.left(10), request.mid(10, 60), request.mid(70)});
    EXPECT_TRUE(answer.startsWith("HTTP/1.1 200 OK\r\n")) << answer.constData();
    const QJsonObject paid = jsonOf(answer);
    EXPECT_EQ(paid.value("codRespuesta").toString(), QStringLiteral("14")); // card refused
    EXPECT_EQ(paid.value("mensajeRespuesta").toString(), QStringLiteral("TARJETA INVALIDA"));
    EXPECT_EQ(paid.value("monto").toString(), QStringLiteral("12.50"));
    EXPECT_FALSE(paid.contains("numeroAutorizacion"));

    // Amounts the way the register sends them only; anything else is a format error.
    for (const QByteArray& body :
         {QByteArray(R"({"cedula":"V1","formaPago":"DEBITO","monto":"1,234.00"})"),
          QByteArray(R"({"cedula":"","formaPago":"DEBITO","monto":"1.00"})"),
          QByteArray(R"({"cedula":"V1","formaPago":"EFECTIVO","monto":"1.00"})"),
          QByteArray("{no es json")})
        EXPECT_EQ(jsonOf(rawExchange(emulator.url(), {post("/pago", body)}))
                      .value("codRespuesta")
                      .toString(),
                  QStringLiteral("30"))
            << body.constData();

    EXPECT_TRUE(rawExchange(emulator.url(), {post("/reembolso", "{}")}).startsWith("HTTP/1.1 404"));
    EXPECT_TRUE(rawExchange(emulator.url(), {"GARBAGE\r\n\r\n"}).startsWith("HTTP/1.1 400"));
    EXPECT_TRUE(
        rawExchange(emulator.url(), {"GET /pago HTTP/1.1\r\n\r\n"}).startsWith("HTTP/1.1 405"));
    // Vouchers are served from their folder only.
    const QString voucher = paid.value("nombreVoucher").toString();
    EXPECT_TRUE(
        rawExchange(emulator.url(), {"GET /vouchers/" + voucher.toUtf8() + " HTTP/1.1\r\n\r\n"})
            .contains("RECHAZADA: TARJETA INVALIDA"));
    EXPECT_TRUE(rawExchange(emulator.url(), {"GET /vouchers/..%2Fstate.json HTTP/1.1\r\n\r\n"})
                    .startsWith("HTTP/1.1 404"));
}
