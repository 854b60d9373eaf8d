#include "tools/card_emulator/card_emulator.h"

#include "tools/common/run_until_stopped.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QTextStream>

namespace orvo::tools::card {

QString cardEmulatorUsage() {
    return QStringLiteral(
        "uso: orvo card-emulator [--port N] [--state ARCHIVO] [--vouchers CARPETA]\n"
        "       [--reject-amount-over MONTO] [--reject-cedula CEDULA]... [--reject-card "
        "PREFIJO]...\n"
        "       [--card NUMERO] [--merchant NOMBRE] [--delay-ms N]");
}

bool parseCardEmulatorOptions(const QStringList& args, CardEmulatorOptions* options,
                              QString* error) {
    CardEmulatorOptions o;
    o.voucherDir = QDir::current().filePath(QStringLiteral("vouchers"));
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& name = args.at(i);
        if (i + 1 >= args.size()) {
            *error = QStringLiteral("Falta el valor de %1").arg(name);
            return false;
        }
        const QString value = args.at(++i);
        bool ok = true;
        if (name == u"--port") {
            const uint port = value.toUInt(&ok);
            ok = ok && port <= 65535;
            o.port = quint16(port);
        } else if (name == u"--state") {
            o.stateFile = value;
        } else if (name == u"--vouchers") {
            o.voucherDir = value;
        } else if (name == u"--delay-ms") {
            o.delayMs = value.toInt(&ok);
            ok = ok && o.delayMs >= 0;
        } else if (name == u"--reject-amount-over") {
            const auto cents = parseCents(value);
            ok = cents.has_value();
            o.rules.rejectAmountOverCents = cents;
        } else if (name == u"--reject-cedula") {
            o.rules.rejectCedulas << value.trimmed();
        } else if (name == u"--reject-card") {
            o.rules.rejectCardPrefixes << value.trimmed();
        } else if (name == u"--card") {
            o.rules.cardNumber = value.trimmed();
            ok = !o.rules.cardNumber.isEmpty();
        } else if (name == u"--merchant") {
            o.rules.merchant = value;
        } else {
            *error = QStringLiteral("Opción desconocida: %1").arg(name);
            return false;
        }
        if (!ok) {
            *error = QStringLiteral("Valor no válido para %1: %2").arg(name, value);
            return false;
        }
    }
    *options = o;
    return true;
}

CardEmulator::CardEmulator(CardEmulatorOptions options, QObject* parent)
    : QObject(parent), m_options(std::move(options)),
      m_terminal(std::make_unique<CardTerminal>(m_options.rules, m_options.stateFile,
                                                m_options.voucherDir)) {}

CardEmulator::~CardEmulator() = default;

bool CardEmulator::start(QString* error) {
    if (!m_terminal->load(error))
        return false;
    m_server = std::make_unique<HttpServer>([this](const HttpRequest& r) { return handle(r); });
    m_server->setDelayMs(m_options.delayMs);
    return m_server->listen(m_options.port, error);
}

void CardEmulator::setDelayMs(int ms) {
    m_options.delayMs = ms;
    if (m_server)
        m_server->setDelayMs(ms);
}

QUrl CardEmulator::url() const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server ? m_server->port() : 0));
}

HttpResponse CardEmulator::handle(const HttpRequest& request) {
    HttpResponse response;
    const QString path = QString::fromUtf8(request.path);
    if (path.startsWith(u"/vouchers/")) {
        if (request.method != "GET") {
            response.status = 405;
            return response;
        }
        const auto text = m_terminal->voucher(QUrl::fromPercentEncoding(request.path.mid(10)));
        if (!text) {
            response.status = 404;
            return response;
        }
        response.contentType = "text/plain; charset=utf-8";
        response.body = *text;
        return response;
    }
    if (request.method != "POST") {
        response.status = 405;
        return response;
    }
    QJsonParseError pe;
    const QJsonDocument doc = request.body.trimmed().isEmpty()
                                  ? QJsonDocument(QJsonObject())
                                  : QJsonDocument::fromJson(request.body, &pe);
    if (!request.body.trimmed().isEmpty() &&
        (pe.error != QJsonParseError::NoError || !doc.isObject())) {
        response.body = QJsonDocument(QJsonObject{{"codRespuesta", "30"},
                                                  {"mensajeRespuesta", "ERROR DE FORMATO"}})
                            .toJson(QJsonDocument::Compact);
        return response;
    }
    const auto answer = m_terminal->handle(path.mid(1), doc.object());
    if (!answer) {
        response.status = 404;
        response.body = R"({"codRespuesta":"12","mensajeRespuesta":"OPERACION DESCONOCIDA"})";
        return response;
    }
    response.body = QJsonDocument(*answer).toJson(QJsonDocument::Compact);
    return response;
}

int runCardEmulator(const QStringList& args) {
    QTextStream out(stdout);
    QTextStream err(stderr);
    CardEmulatorOptions options;
    QString error;
    if (!parseCardEmulatorOptions(args, &options, &error)) {
        err << error << Qt::endl << cardEmulatorUsage() << Qt::endl;
        return 2;
    }
    CardEmulator emulator(options);
    if (!emulator.start(&error)) {
        err << "No se pudo iniciar el emulador del punto de venta: " << error << Qt::endl;
        return 1;
    }
    out << emulator.url().toString() << Qt::endl << Qt::flush;
    err << "Vouchers en " << QDir(options.voucherDir).absolutePath() << Qt::endl;
    return runUntilStopped(*QCoreApplication::instance());
}

} // namespace orvo::tools::card
