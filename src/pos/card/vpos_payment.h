#pragma once

#include "common/decimal/decimal.h"
#include "exchange/json/json_value.h"
#include "pos/card/terminal_settings.h"
#include "pos/card/voucher_printer.h"

#include <QJsonObject>
#include <QString>
#include <memory>

class QNetworkAccessManager;

namespace orvo::pos::card {

enum class CardKind { Debit, Credit };

// The amount as the terminal takes it: two decimals, '.' as separator, no grouping.
QString formatTerminalAmount(const Decimal& amount);

// A payment id for the terminal of register `serie`, never given twice: the terminal refuses a
// second payment under an id it already approved.
QString newPaymentId(const QString& serie);

// Client of the card terminal service of one register (HTTP + JSON, see docs/card-terminal.md).
// Set the inputs, call one operation; it waits for the answer, keeps it, and prints the voucher
// the terminal names. The operations return whether the terminal approved ("codRespuesta" "00").
// When the terminal cannot be reached, answers late or answers nonsense they throw UserError
// with the reason, and nothing is left approved. A voucher that cannot be printed does not undo
// an approval: printError() says what went wrong.
class VPosPayment {
public:
    // Vouchers go to a FileVoucherPrinter when the settings name a folder, else to `printer`
    // (the fiscal printer), which may be null when there is none.
    explicit VPosPayment(TerminalSettings settings, VoucherPrinter* printer = nullptr);
    ~VPosPayment();
    VPosPayment(const VPosPayment&) = delete;
    VPosPayment& operator=(const VPosPayment&) = delete;

    void setIdPayment(const QString& id) { m_idPayment = id; }
    void setCedula(const QString& cedula) { m_cedula = cedula; }
    void setCardKind(CardKind kind) { m_cardKind = kind; }
    void setAmount(const Decimal& amount) { m_amount = amount; }
    // The payment voidPayment() voids; an approval sets it.
    void setAuthorisationNumber(const QString& number) { m_authorisation = number; }

    bool pay();
    bool advance();
    bool withdraw();
    bool voidPayment();
    bool voidBySequence(const QString& sequence);
    bool reprintLastVoucher();
    bool preClosingReport();   // "Imprimir Pre-Cierre VPOS (CORTE DE PUNTO)"
    bool closingReport();      // "(SEGUNDA OPCION) Cierre de Caja VPOS"
    bool reprintLastClosing(); // "(PRIMERA OPCION) Reimprimir Ultimo Cierre VPOS"

    // The last answer.
    QString status() const; // "APROBADO" or "RECHAZADO"
    bool approved() const { return m_approved; }
    QString merchantJson() const { return m_rawAnswer; } // for PAGOSVENTA.JSON_Merchant
    QString value(const QString& key) const;             // any field of the answer, as text
    QString authorisationNumber() const { return m_authorisation; }
    QString sequenceNumber() const { return m_sequence; }
    QString lot() const { return m_lot; }
    QString voucherName() const { return m_voucherName; }
    QString bankCode() const { return m_bankCode; }
    QString cardNumber() const { return value(QStringLiteral("numeroTarjeta")); }
    QString responseMessage() const { return value(QStringLiteral("mensajeRespuesta")); }
    // One line for the cashier: status, message, authorisation, sequence, lot, card.
    QString transactionInfo() const;
    QString printError() const { return m_printError; }

private:
    bool transact(const QString& operation);
    bool call(const QString& operation, const QJsonObject& request, int copies);
    QByteArray roundTrip(const QString& method, const QString& path, const QByteArray& body);
    void printVoucher(int copies);
    void resetAnswer();

    TerminalSettings m_settings;
    VoucherPrinter* m_printer;
    std::unique_ptr<FileVoucherPrinter> m_filePrinter;
    std::unique_ptr<QNetworkAccessManager> m_network;

    QString m_idPayment;
    QString m_cedula;
    CardKind m_cardKind = CardKind::Debit;
    Decimal m_amount;

    QString m_rawAnswer;
    exchange::json::JsonValue m_answer;
    bool m_approved = false;
    QString m_authorisation;
    QString m_sequence;
    QString m_lot;
    QString m_voucherName;
    QString m_bankCode;
    QString m_printError;
};

} // namespace orvo::pos::card
