#pragma once

#include <QString>
#include <QStringList>

namespace orvo::pos::card {

// Prints one voucher copy as a document of its own (on the fiscal printer: a non-fiscal
// document). Throws UserError when it cannot.
class VoucherPrinter {
public:
    virtual ~VoucherPrinter() = default;
    virtual void printLines(const QStringList& lines) = 0;
};

// Writes each copy as a text file of its own in a folder, for stores that keep the vouchers
// apart from the fiscal printer.
class FileVoucherPrinter : public VoucherPrinter {
public:
    explicit FileVoucherPrinter(QString folder);
    void printLines(const QStringList& lines) override;
    // The files written by this printer, oldest first.
    const QStringList& writtenFiles() const { return m_written; }

private:
    QString m_folder;
    QStringList m_written;
};

} // namespace orvo::pos::card
