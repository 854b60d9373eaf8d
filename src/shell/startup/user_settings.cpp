#include "shell/startup/user_settings.h"

#include "shell/startup/app_home.h"

#include <QSettings>
#include <algorithm>

namespace orvo::shell {

namespace {
QString valueOrDefault(const QString& value, const QString& defaultValue) {
    return value.isEmpty() ? defaultValue : value;
}

bool truthy(const QString& value) {
    return value.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 ||
           value == QLatin1String("1") ||
           value.compare(QLatin1String("verdadero"), Qt::CaseInsensitive) == 0;
}
} // namespace

namespace settings {

QString read(const QString& key, const QString& defaultValue) {
    return readIn(QStringLiteral("Orvo"), key, defaultValue);
}

void write(const QString& key, const QString& value) {
    writeIn(QStringLiteral("Orvo"), key, value);
}

QString readIn(const QString& section, const QString& key, const QString& defaultValue) {
    QSettings s(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("ServidorOrvo"));
    s.beginGroup(section);
    return valueOrDefault(s.value(key).toString(), defaultValue);
}

void writeIn(const QString& section, const QString& key, const QString& value) {
    QSettings s(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("ServidorOrvo"));
    s.beginGroup(section);
    s.setValue(key, value);
    s.sync();
}

QString invoicePrinter() {
    return read(QStringLiteral("ImpresoraFactura")).trimmed();
}

void saveInvoicePrinter(const QString& printer) {
    write(QStringLiteral("ImpresoraFactura"), printer.trimmed());
}

QString defaultInvoicePdf() {
    return appHome() + QStringLiteral("/Facturas/factura.pdf");
}

int invoiceCopies() {
    bool ok = false;
    const int copies = read(QStringLiteral("NumeroCopias")).trimmed().toInt(&ok);
    return ok && copies > 1 ? copies : 1;
}

void saveInvoiceCopies(int copies) {
    write(QStringLiteral("NumeroCopias"), QString::number(std::max(copies, 1)));
}

} // namespace settings

WorkstationSettings WorkstationSettings::load() {
    WorkstationSettings w;
    w.serie = settings::read(QStringLiteral("Serie"));
    bool ok = false;
    const int size = settings::read(QStringLiteral("TamañoFuente"), QStringLiteral("8")).toInt(&ok);
    w.fontSize = ok && size > 0 ? size : 8;
    w.fontName = settings::read(QStringLiteral("NombreFuente"), QStringLiteral("MS Sans Serif"));
    w.fontBold = truthy(settings::read(QStringLiteral("BoldFuente"), QStringLiteral("false")));
    w.fontItalic = truthy(settings::read(QStringLiteral("ItalicFuente"), QStringLiteral("false")));
    w.barcodeReader = settings::read(QStringLiteral("UsaLectorDeCodigos"), QStringLiteral("SI"));
    w.menuOption = settings::read(QStringLiteral("OpcionMenu")).toInt();
    w.externalBackupDone = settings::read(QStringLiteral("RespaldoExternoUltimoCierre"));
    w.lastLogin = settings::read(QStringLiteral("Login"));
    return w;
}

void saveMenuFont(const QString& name, int size, bool bold, bool italic) {
    settings::write(QStringLiteral("TamañoFuente"), QString::number(size));
    settings::write(QStringLiteral("NombreFuente"), name);
    settings::write(QStringLiteral("BoldFuente"),
                    bold ? QStringLiteral("True") : QStringLiteral("False"));
    settings::write(QStringLiteral("ItalicFuente"),
                    italic ? QStringLiteral("True") : QStringLiteral("False"));
}

} // namespace orvo::shell
