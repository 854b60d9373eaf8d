#include "pos/fiscal/protocol/status.h"

#include <array>
#include <utility>

namespace orvo::pos::fiscal::protocol {

int statusNumber(quint8 sts1) {
    static constexpr std::array<std::pair<quint8, int>, 12> kMasks = {{{0x6A, 12},
                                                                       {0x69, 11},
                                                                       {0x68, 10},
                                                                       {0x72, 9},
                                                                       {0x71, 8},
                                                                       {0x70, 7},
                                                                       {0x62, 6},
                                                                       {0x61, 5},
                                                                       {0x60, 4},
                                                                       {0x42, 3},
                                                                       {0x41, 2},
                                                                       {0x40, 1}}};
    const quint8 b = sts1 & quint8(~kSts1BufferFull);
    for (const auto& [mask, number] : kMasks) {
        if ((b & mask) == mask)
            return number;
    }
    return kStatusNoAnswer;
}

int errorNumber(quint8 sts1, quint8 sts2) {
    if (sts1 & kSts1BufferFull)
        return kErrorBufferFull;
    static constexpr std::array<std::pair<quint8, int>, 11> kMasks = {{{0x6C, 108},
                                                                       {0x64, 100},
                                                                       {0x60, 96},
                                                                       {0x5C, 92},
                                                                       {0x58, 88},
                                                                       {0x54, 84},
                                                                       {0x50, 80},
                                                                       {0x43, 3},
                                                                       {0x42, 2},
                                                                       {0x41, 1},
                                                                       {0x40, 0}}};
    for (const auto& [mask, number] : kMasks) {
        if ((sts2 & mask) == mask)
            return number;
    }
    return 0;
}

std::optional<StatusBytes> parseStatus(const QByteArray& frameData) {
    if (frameData.size() != 2)
        return std::nullopt;
    return StatusBytes{quint8(frameData[0]), quint8(frameData[1])};
}

QByteArray statusData(StatusBytes status) {
    QByteArray d;
    d.append(char(status.sts1));
    d.append(char(status.sts2));
    return d;
}

} // namespace orvo::pos::fiscal::protocol
