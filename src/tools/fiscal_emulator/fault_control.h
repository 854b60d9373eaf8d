#pragma once

#include <QString>
#include <QStringList>

namespace orvo::tools::fiscal {

// Faults a test or an operator injects: from the command line at start, or from lines written to
// a control file, which the printer reads (and removes) whenever bytes arrive.
//   paper-out     out of paper from the next item        paper-ok    paper reloaded
//   cover-open    cover open (mechanical error)          cover-closed
//   silence       stop answering                         speak       answer again
//   nak-next      refuse the next frame                  drop-ack    execute the next command,
//                                                                    but lose its ACK
struct Faults {
    bool paperOutArmed = false; // becomes paperOut at the next item
    bool paperOut = false;
    bool coverOpen = false;
    bool silent = false;
    int nakNext = 0;
    int dropAckNext = 0;

    // False for an unknown word.
    bool apply(const QString& word);
};

class FaultControl {
public:
    explicit FaultControl(QString controlFile = {}) : m_file(std::move(controlFile)) {}
    const QString& file() const { return m_file; }
    // Applies and removes the control file's words, if the file exists.
    void poll(Faults& faults);

private:
    QString m_file;
};

} // namespace orvo::tools::fiscal
