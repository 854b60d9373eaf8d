#include "tools/fiscal_emulator/fault_control.h"

#include <QFile>

namespace orvo::tools::fiscal {

bool Faults::apply(const QString& line) {
    const QStringList parts = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return true;
    const QString w = parts[0].toLower();
    const auto arg = [&parts](int i) { return parts.value(i); };
    const auto number = [&parts](int i, int* out) {
        bool ok = false;
        const int n = parts.value(i).toInt(&ok);
        if (ok && n >= 0)
            *out = n;
        return ok && n >= 0;
    };
    if (w == QLatin1String("paper-out"))
        paperOutArmed = true;
    else if (w == QLatin1String("paper-ok"))
        paperOutArmed = paperOut = false;
    else if (w == QLatin1String("cover-open"))
        coverOpen = true;
    else if (w == QLatin1String("cover-closed"))
        coverOpen = false;
    else if (w == QLatin1String("silence"))
        silent = true;
    else if (w == QLatin1String("speak"))
        silent = false;
    else if (w == QLatin1String("nak-next"))
        ++nakNext;
    else if (w == QLatin1String("drop-ack"))
        ++dropAckNext;
    else if (w == QLatin1String("slow-ack")) {
        if (arg(1).isEmpty() || !number(2, &slowAckMs))
            return false;
        slowAckCommand = arg(1).toLatin1();
    } else if (w == QLatin1String("fast-ack")) {
        slowAckCommand.clear();
        slowAckMs = 0;
    } else if (w == QLatin1String("silence-after")) {
        if (arg(1).isEmpty())
            return false;
        silenceAfter = arg(1).toLatin1();
    } else if (w == QLatin1String("z-busy-ms"))
        return number(1, &zBusyMs);
    else if (w == QLatin1String("z-busy-enq"))
        zBusyAnswersEnq = true;
    else if (w == QLatin1String("z-busy-silent"))
        zBusyAnswersEnq = false;
    else if (w == QLatin1String("memory-nearly-full"))
        memoryNearlyFull = true;
    else if (w == QLatin1String("memory-full"))
        memoryFull = true;
    else if (w == QLatin1String("memory-ok"))
        memoryNearlyFull = memoryFull = false;
    else
        return false;
    return true;
}

void FaultControl::poll(Faults& faults) {
    if (m_file.isEmpty() || !QFile::exists(m_file))
        return;
    // Moved aside first: a line appended while it is read goes to a new file, read next time.
    const QString taken = m_file + QStringLiteral(".leido");
    QFile::remove(taken);
    if (!QFile::rename(m_file, taken))
        return;
    QFile f(taken);
    if (!f.open(QIODevice::ReadOnly))
        return;
    const QStringList words = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
    f.close();
    QFile::remove(taken);
    for (const QString& w : words)
        faults.apply(w);
}

} // namespace orvo::tools::fiscal
