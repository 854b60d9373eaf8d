#pragma once

#include "tools/card_emulator/card_terminal.h"
#include "tools/card_emulator/http_server.h"

#include <QObject>
#include <QStringList>
#include <QUrl>
#include <memory>

namespace orvo::tools::card {

struct CardEmulatorOptions {
    quint16 port = 0; // 0: any free port
    QString stateFile;
    QString voucherDir;
    int delayMs = 0;
    TerminalRules rules;
};

// Command-line options of `orvo card-emulator`; false with a message when they are wrong.
bool parseCardEmulatorOptions(const QStringList& args, CardEmulatorOptions* options,
                              QString* error);
QString cardEmulatorUsage();

// The emulated terminal service on 127.0.0.1. Lives on the thread it is started on.
class CardEmulator : public QObject {
    Q_OBJECT
public:
    explicit CardEmulator(CardEmulatorOptions options, QObject* parent = nullptr);
    ~CardEmulator() override;

    // Loads the state and listens; false with a reason.
    Q_INVOKABLE bool start(QString* error);
    Q_INVOKABLE void setDelayMs(int ms);
    QUrl url() const;
    const CardTerminal& terminal() const { return *m_terminal; }

private:
    HttpResponse handle(const HttpRequest& request);

    CardEmulatorOptions m_options;
    std::unique_ptr<CardTerminal> m_terminal;
    std::unique_ptr<HttpServer> m_server;
};

// `orvo card-emulator ...`: prints the address on the first line and serves until stopped.
int runCardEmulator(const QStringList& args);

} // namespace orvo::tools::card
