#include "exchange/json/string_builder.h"

#include <algorithm>
#include <cstring>

namespace orvo::exchange::json {

void StringBuilder::setChunkSize(int bytes) {
    bytes = std::max(bytes, 2);
    m_chunkSize = bytes + (bytes % 2);
}

void StringBuilder::ensureCapacity(int neededBytes) {
    const int old = m_capacityBytes;
    while (m_capacityBytes < neededBytes)
        m_capacityBytes += m_chunkSize;
    if (m_capacityBytes != old)
        m_buffer.resize(m_capacityBytes / 2, QLatin1Char(' '));
}

void StringBuilder::setTheString(const QString& text) {
    if (text.isEmpty()) {
        m_buffer.clear();
        m_buffer.squeeze();
        m_usedBytes = 0;
        m_capacityBytes = 0;
        return;
    }
    ensureCapacity(int(text.size()) * 2);
    std::memcpy(m_buffer.data(), text.constData(), size_t(text.size()) * 2);
    m_usedBytes = int(text.size()) * 2;
}

void StringBuilder::appendNL(const QString& text) {
    append(text);
    append(QStringLiteral("\r\n"));
}

void StringBuilder::append(const QString& text) {
    if (text.isEmpty())
        return;
    ensureCapacity(m_usedBytes + int(text.size()) * 2);
    std::memcpy(m_buffer.data() + length(), text.constData(), size_t(text.size()) * 2);
    m_usedBytes += int(text.size()) * 2;
}

void StringBuilder::append(QChar c) {
    ensureCapacity(m_usedBytes + 2);
    m_buffer.data()[length()] = c;
    m_usedBytes += 2;
}

void StringBuilder::insert(int index, const QString& text) {
    if (text.isEmpty())
        return;
    index = std::clamp(index, 0, length());
    const int n = int(text.size());
    const int tail = length() - index;
    ensureCapacity(m_usedBytes + n * 2);
    QChar* data = m_buffer.data();
    std::memmove(data + index + n, data + index, size_t(tail) * 2);
    std::memcpy(data + index, text.constData(), size_t(n) * 2);
    m_usedBytes += n * 2;
}

void StringBuilder::remove(int index, int count) {
    if (index < 0 || index >= length() || count <= 0)
        return;
    count = std::min(count, length() - index);
    QChar* data = m_buffer.data();
    std::memmove(data + index, data + index + count, size_t(length() - index - count) * 2);
    m_usedBytes -= count * 2;
}

int StringBuilder::find(const QString& text, int from) const {
    if (from < 0)
        from = 0;
    const int found = int(QStringView(m_buffer).left(length()).indexOf(text, from));
    return found;
}

void StringBuilder::heapMinimize() {
    if (m_capacityBytes == m_usedBytes)
        return;
    m_capacityBytes = m_usedBytes;
    m_buffer.truncate(length());
    m_buffer.squeeze();
}

} // namespace orvo::exchange::json
