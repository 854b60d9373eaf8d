#include "../fiscal/printer_on_emulator.h"
#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/card/fiscal_voucher_printer.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "support/test_db.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;

class FiscalVoucher : public test::DbTest {};

TEST_F(FiscalVoucher, EachCopyIsANonFiscalDocumentOnTheRegisterPrinter) {
    test::RunningEmulator emulator;
    ASSERT_TRUE(emulator.started()) << emulator.error().toStdString();
    const auto printer = test::printerThreadOn(emulator);
    auto voucher = pos::card::makeVoucherPrinter(db(), *printer);
    voucher->printLines({QStringLiteral("BANCO DE VENEZUELA"), QStringLiteral("APROBADO 123456")});
    voucher->printLines({QStringLiteral("COPIA CLIENTE"), QStringLiteral("APROBADO 123456")});
    ASSERT_TRUE(emulator.hasTicket("NOFISCAL_00000001.txt"));
    ASSERT_TRUE(emulator.hasTicket("NOFISCAL_00000002.txt"));
    EXPECT_TRUE(emulator.ticket("NOFISCAL_00000001.txt").contains("APROBADO 123456"));
    EXPECT_TRUE(emulator.ticket("NOFISCAL_00000002.txt").contains("COPIA CLIENTE"));
}

TEST_F(FiscalVoucher, SilentPrinterIsReportedAndTheStoreFolderWinsWhenSet) {
    test::RunningEmulator emulator;
    ASSERT_TRUE(emulator.started());
    const auto printer = test::printerThreadOn(emulator);
    emulator.fault(QStringLiteral("silence"));
    auto fiscal = pos::card::makeVoucherPrinter(db(), *printer);
    EXPECT_THROW(fiscal->printLines({QStringLiteral("VOUCHER")}), UserError);

    QTemporaryDir folder;
    db::execute(db(), "INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, ?, ?)",
                {QStringLiteral("VPOS_CARPETA"), QStringLiteral("01"), folder.path()});
    auto files = pos::card::makeVoucherPrinter(db(), *printer);
    files->printLines({QStringLiteral("VOUCHER")});
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1);
}
