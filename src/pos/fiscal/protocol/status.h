#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <optional>

// The two status bytes every printer reply carries, and the numbers the program reports for them.
namespace orvo::pos::fiscal::protocol {

// STS1 bits (0x40 is always set).
inline constexpr quint8 kSts1Base = 0x40;
inline constexpr quint8 kSts1FiscalMode = 0x20;
inline constexpr quint8 kSts1MemoryNearlyFull = 0x10;
inline constexpr quint8 kSts1MemoryFull = 0x08;
inline constexpr quint8 kSts1BufferFull = 0x04;
inline constexpr quint8 kSts1NonFiscalOpen = 0x02;
inline constexpr quint8 kSts1FiscalOpen = 0x01;

// STS2 values.
inline constexpr quint8 kSts2NoError = 0x40;
inline constexpr quint8 kSts2PaperOut = 0x41;
inline constexpr quint8 kSts2Mechanical = 0x42;
inline constexpr quint8 kSts2PaperOutAndMechanical = 0x43;
inline constexpr quint8 kSts2Drawer = 0x48;
inline constexpr quint8 kSts2InvalidValue = 0x50;
inline constexpr quint8 kSts2InvalidRate = 0x54;
inline constexpr quint8 kSts2NoDirectives = 0x58;
inline constexpr quint8 kSts2InvalidCommand = 0x5C;
inline constexpr quint8 kSts2FiscalError = 0x60;
inline constexpr quint8 kSts2MemoryError = 0x64;
inline constexpr quint8 kSts2MemoryFull = 0x6C;

// Status numbers.
inline constexpr int kStatusNoAnswer = 0;
inline constexpr int kStatusReady = 4; // fiscal mode, idle

// Error numbers the driver reports itself.
inline constexpr int kErrorBufferFull = 112;
inline constexpr int kErrorPort = 128;
inline constexpr int kErrorNoAnswer = 137;
inline constexpr int kErrorCheckByte = 144;
inline constexpr int kErrorInternal = 145;
inline constexpr int kErrorFile = 153;

// 1..12 from STS1 (buffer-full bit ignored); 0 when no mask matches.
int statusNumber(quint8 sts1);
// Status numbers by what they say, whatever the mode and the state of the fiscal memory.
inline bool isIdle(int status) {
    return status == 1 || status == 4 || status == 7 || status == 10;
}
inline bool isFiscalDocumentOpen(int status) {
    return status == 2 || status == 5 || status == 8 || status == 11;
}
inline bool isNonFiscalDocumentOpen(int status) {
    return status == 3 || status == 6 || status == 9 || status == 12;
}
inline bool isMemoryNearlyFull(int status) {
    return status >= 7 && status <= 9;
}
inline bool isMemoryFull(int status) {
    return status >= 10 && status <= 12;
}

// The configuration flag that enables IGTF (PJ5001): foreign-currency means 20..24 and the
// closing "199".
inline constexpr int kIgtfFlag = 50;
inline constexpr int kFirstForeignMeans = 20;
inline constexpr int kLastForeignMeans = 24;
// From STS2; 112 when STS1 says the buffer is full.
int errorNumber(quint8 sts1, quint8 sts2);

struct StatusBytes {
    quint8 sts1 = 0;
    quint8 sts2 = 0;
};
// The data of a status probe reply: exactly the two bytes.
std::optional<StatusBytes> parseStatus(const QByteArray& frameData);
QByteArray statusData(StatusBytes status);

} // namespace orvo::pos::fiscal::protocol
