#include "common/errors/errors.h"
#include "pos/card/terminal_settings.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;

class TerminalUrl : public test::DbTest {};

TEST_F(TerminalUrl, SavedPerRegisterAndReplaced) {
    pos::card::saveTerminalUrl(db(), "CAJA01", "http://127.0.0.1:8765");
    pos::card::saveTerminalUrl(db(), "CAJA01", "http://127.0.0.1:9000");
    pos::card::saveTerminalUrl(db(), "CAJA02", "http://10.1.1.5:8765");
    EXPECT_EQ(count("TABLA_VALORES", "IdTabla = ?", {QStringLiteral("VPOS_URL_CAJA01")}), 1);
    EXPECT_EQ(pos::card::loadTerminalSettings(db(), "CAJA01").url.port(), 9000);
    EXPECT_EQ(pos::card::terminalUrl(db(), "CAJA02"), QStringLiteral("http://10.1.1.5:8765"));
}

TEST_F(TerminalUrl, RefusesWhatIsNotAnAddressAndWritesNothing) {
    EXPECT_THROW(pos::card::saveTerminalUrl(db(), "CAJA01", "127.0.0.1:8765"), UserError);
    EXPECT_THROW(pos::card::saveTerminalUrl(db(), "CAJA01", "ftp://127.0.0.1"), UserError);
    EXPECT_THROW(pos::card::saveTerminalUrl(db(), "", "http://127.0.0.1:8765"), UserError);
    EXPECT_EQ(count("TABLA_VALORES", "IdTabla LIKE ?", {QStringLiteral("VPOS_URL_%")}), 0);
}
