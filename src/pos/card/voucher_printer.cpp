#include "pos/card/voucher_printer.h"

#include "common/errors/errors.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace orvo::pos::card {

FileVoucherPrinter::FileVoucherPrinter(QString folder) : m_folder(std::move(folder)) {}

void FileVoucherPrinter::printLines(const QStringList& lines) {
    QDir dir(m_folder);
    if (!dir.mkpath(QStringLiteral(".")))
        throw UserError(
            QStringLiteral("No se pudo crear la carpeta de vouchers %1...!").arg(m_folder));
    const QString stamp =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
    QString path;
    for (int n = 1;; ++n) {
        path = dir.filePath(
            QStringLiteral("voucher-%1-%2.txt").arg(stamp).arg(n, 3, 10, QLatin1Char('0')));
        if (!QFile::exists(path))
            break;
    }
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) ||
        f.write(lines.join(QStringLiteral("\r\n")).toUtf8() + "\r\n") < 0 || !f.commit())
        throw UserError(QStringLiteral("No se pudo escribir el voucher en %1...!").arg(path));
    m_written << path;
}

} // namespace orvo::pos::card
