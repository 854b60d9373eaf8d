#include "tools/fiscal_emulator/ticket_writer.h"

#include <QDir>
#include <QSaveFile>

namespace orvo::tools::fiscal {

TicketWriter::TicketWriter(QString folder) : m_folder(std::move(folder)) {
    QDir().mkpath(m_folder);
}

QString TicketWriter::fileName(const QString& type, int number) {
    return QStringLiteral("%1_%2.txt").arg(type).arg(number, 8, 10, QLatin1Char('0'));
}

QString TicketWriter::write(const QString& type, int number, const QStringList& lines) const {
    const QString path = QDir(m_folder).filePath(fileName(type, number));
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        return {};
    f.write((lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
    return f.commit() ? path : QString();
}

void TicketWriter::writeDisplay(const QString& upper, const QString& lower) const {
    QSaveFile f(QDir(m_folder).filePath(QStringLiteral("VISOR.txt")));
    if (!f.open(QIODevice::WriteOnly))
        return;
    f.write((upper + QLatin1Char('\n') + lower + QLatin1Char('\n')).toUtf8());
    f.commit();
}

} // namespace orvo::tools::fiscal
