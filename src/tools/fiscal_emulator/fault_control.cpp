#include "tools/fiscal_emulator/fault_control.h"

#include <QFile>

namespace orvo::tools::fiscal {

bool Faults::apply(const QString& word) {
    const QString w = word.trimmed().toLower();
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
    else
        return w.isEmpty();
    return true;
}

void FaultControl::poll(Faults& faults) {
    if (m_file.isEmpty() || !QFile::exists(m_file))
        return;
    QFile f(m_file);
    if (!f.open(QIODevice::ReadOnly))
        return;
    const QStringList words = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
    f.close();
    QFile::remove(m_file);
    for (const QString& w : words)
        faults.apply(w);
}

} // namespace orvo::tools::fiscal
