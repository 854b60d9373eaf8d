#pragma once

#include <QString>

namespace orvo::exchange::json {

// Collects text in a buffer that grows by whole chunks, so text built one character at a time
// costs one reallocation per chunk. Sizes are in bytes of 2-byte characters, as the buffer holds
// UTF-16; indexes are 0-based character positions.
class StringBuilder {
public:
    static constexpr int kDefaultChunkSize = 16384;

    int length() const { return m_usedBytes / 2; } // characters in use
    int capacity() const { return m_capacityBytes; }
    int chunkSize() const { return m_chunkSize; }
    // Rounded up to an even number of at least 2 bytes (a whole character).
    void setChunkSize(int bytes);

    QString toString() const { return m_buffer.left(length()); }
    // Replaces the whole content; an empty text also gives the memory back.
    void setTheString(const QString& text);
    void clear() { m_usedBytes = 0; }
    void appendNL(const QString& text);
    void append(const QString& text);
    void append(QChar c);
    void appendByVal(const QString& text) { append(text); }
    // Index is clamped to 0..length().
    void insert(int index, const QString& text);
    void insertByVal(int index, const QString& text) { insert(index, text); }
    // Removes up to `count` characters from `index`.
    void remove(int index, int count);
    // Index of `text` at or after `from`, or -1.
    int find(const QString& text, int from = 0) const;
    // Shrinks the capacity to what is used.
    void heapMinimize();

private:
    void ensureCapacity(int neededBytes);

    QString m_buffer; // its size is always capacity / 2
    int m_usedBytes = 0;
    int m_capacityBytes = 0;
    int m_chunkSize = kDefaultChunkSize;
};

} // namespace orvo::exchange::json
