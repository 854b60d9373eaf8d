#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace orvo::tools::fiscal {

// Faults a test or an operator injects: from the command line at start, or from lines written to
// a control file, which the printer reads (and removes) whenever bytes arrive. A command is chosen
// by how it starts ("101", "2", "I0Z").
//   paper-out            out of paper from the next item     paper-ok       paper reloaded
//   cover-open           cover open (mechanical error)       cover-closed
//   silence              stop answering                      speak          answer again
//   nak-next             refuse the next frame               drop-ack       do the next command,
//                                                                           but lose its ACK
//   slow-ack CMD MS      do CMD at once, ACK it MS ms later  fast-ack       no more slow ACKs
//                        (busy meanwhile: ENQ is answered with the buffer-full bit)
//   silence-after CMD    do the next CMD, then go silent without answering it
//   z-busy-ms MS         busy time after a Z
//   z-busy-enq           busy after a Z, answering ENQ       z-busy-silent  busy after a Z, deaf
//   memory-nearly-full   fiscal memory nearly full           memory-full    full: no more fiscal
//   memory-ok            fiscal memory with room                            documents, no Z
struct Faults {
    bool paperOutArmed = false; // becomes paperOut at the next item
    bool paperOut = false;
    bool coverOpen = false;
    bool silent = false;
    int nakNext = 0;
    int dropAckNext = 0;
    QByteArray slowAckCommand;
    int slowAckMs = 0;
    QByteArray silenceAfter;
    int zBusyMs = 3000;
    bool zBusyAnswersEnq = false;
    bool memoryNearlyFull = false;
    bool memoryFull = false;

    // A word and its arguments, as in the control file. False for an unknown word or a missing
    // argument.
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
