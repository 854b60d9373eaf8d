#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace orvo::tools::card {

// How the emulated bank decides.
struct TerminalRules {
    std::optional<qint64> rejectAmountOverCents; // amounts above this are refused (funds)
    QStringList rejectCedulas;                   // card holders the bank refuses
    QStringList rejectCardPrefixes;              // cards the bank does not accept
    QString cardNumber = QStringLiteral("4540123456781234"); // the card "swiped" at the terminal
    QString merchant = QStringLiteral("COMERCIO DE PRUEBA");
    QString acquirerCode = QStringLiteral("0105");
};

// The card terminal's bank side: numbers transactions, approves or refuses them, voids them,
// closes the lot and writes every voucher as a text file. Lot, sequence, authorisation and the
// open lot's transactions survive a restart through the state file.
class CardTerminal {
public:
    CardTerminal(TerminalRules rules, QString stateFile, QString voucherDir);

    // Reads the state file when it exists; false with a reason when it cannot be read.
    bool load(QString* error);
    // One operation: "pago", "adelanto", "retiro", "anulacion", "anulacion-secuencia",
    // "ultimo-voucher", "precierre", "cierre", "ultimo-cierre". nullopt for an unknown one.
    std::optional<QJsonObject> handle(const QString& operation, const QJsonObject& request);
    // The text of a voucher this terminal wrote, by the name given in an answer.
    std::optional<QByteArray> voucher(const QString& name) const;

    int lot() const { return m_lot; }
    int sequence() const { return m_sequence; }
    QString voucherDir() const { return m_voucherDir; }

private:
    struct Transaction {
        int sequence = 0;
        QString idPayment; // the register's id of the payment
        QString authorisation;
        QString kind; // pago, adelanto, retiro
        QString cardKind;
        qint64 cents = 0;
        QString cedula;
        QString cardNumber;
        QString status; // APROBADA, RECHAZADA, ANULADA
        QString voucher;
        QDateTime time;
    };

    QJsonObject transact(const QString& kind, const QJsonObject& request);
    QJsonObject voidTransaction(Transaction* t);
    QJsonObject report(bool close);
    QJsonObject answerFor(const Transaction& t, const QString& code, const QString& message) const;
    QString writeVoucher(const QString& name, const QStringList& lines);
    QStringList voucherHeader(const QString& title) const;
    QString maskedCard(const QString& number) const;
    void save();

    TerminalRules m_rules;
    QString m_stateFile;
    QString m_voucherDir;
    int m_lot = 1;
    int m_sequence = 0;
    int m_authorisation = 0;
    QString m_lastVoucher;
    QString m_lastClosing;
    QList<Transaction> m_transactions; // of the open lot
};

// "150.00" → 15000; digits with at most two decimals and a '.' only, as the terminal takes them.
std::optional<qint64> parseCents(const QString& text);
QString formatCents(qint64 cents);

} // namespace orvo::tools::card
