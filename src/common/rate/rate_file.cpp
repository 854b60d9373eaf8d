#include "common/rate/rate_file.h"

#include "common/errors/errors.h"
#include "exchange/package/zip_archive.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QSaveFile>

namespace orvo::common::rate {

QString rateFileFolder() {
    return shell::appHome() + QStringLiteral("/ZipTemp");
}

QString writeRateFile(const Decimal& value, const QString& exportFolder) {
    const QString folder = rateFileFolder();
    QDir().mkpath(folder);
    const QString path = folder + QStringLiteral("/TasaCambio.txt");
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(value.toString().toLatin1() + "\r\n") < 0 ||
        !f.commit())
        throw UserError(QStringLiteral("No se pudo escribir el archivo de tasa de cambio ") +
                        QDir::toNativeSeparators(path) + QStringLiteral("...!"));
    QDir().mkpath(exportFolder);
    const QString archive = exportFolder + QStringLiteral("/TasaCambio.zip");
    exchange::package::writeZip(archive, {path});
    return archive;
}

} // namespace orvo::common::rate
