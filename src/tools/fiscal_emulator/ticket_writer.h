#pragma once

#include <QString>
#include <QStringList>

namespace orvo::tools::fiscal {

// Writes what the printer prints: one text file per document or report in the tickets folder,
// named by type and number (FACTURA_00000012.txt), and the customer display as VISOR.txt.
class TicketWriter {
public:
    explicit TicketWriter(QString folder);
    const QString& folder() const { return m_folder; }
    // Returns the file written, or an empty text when the folder cannot be written.
    QString write(const QString& type, int number, const QStringList& lines) const;
    void writeDisplay(const QString& upper, const QString& lower) const;
    static QString fileName(const QString& type, int number);

private:
    QString m_folder;
};

} // namespace orvo::tools::fiscal
