#include "pos/card/terminal_settings.h"

#include "common/errors/errors.h"
#include "support/test_db.h"

#include <QVariant>

using namespace orvo;
using namespace orvo::pos::card;

class TerminalSettingsTest : public test::DbTest {
protected:
    void setValue(const QString& key, const QString& value) {
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {QVariant(key), QVariant(value)});
    }
};

TEST_F(TerminalSettingsTest, EachRegisterHasItsOwnTerminal) {
    setValue("VPOS_URL_01", " http://127.0.0.1:8765 ");
    setValue("VPOS_URL_02", "http://10.0.0.7:9000/vpos");
    setValue("VPOS_ESPERA", "45");
    setValue("VPOS_UNA_COPIA", "TRUE");
    setValue("VPOS_CARPETA", "/var/vouchers");

    const TerminalSettings first = loadTerminalSettings(db(), "01");
    EXPECT_EQ(first.url.toString(), QStringLiteral("http://127.0.0.1:8765"));
    EXPECT_EQ(first.timeoutSeconds, 45);
    EXPECT_TRUE(first.oneCopy);
    EXPECT_EQ(first.voucherFolder, QStringLiteral("/var/vouchers"));
    EXPECT_EQ(loadTerminalSettings(db(), "02").url.toString(),
              QStringLiteral("http://10.0.0.7:9000/vpos"));

    try {
        loadTerminalSettings(db(), "03");
        ADD_FAILURE() << "a register without terminal got settings";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("La caja 03 no tiene configurado el punto de venta "
                                           "VPOS (VPOS_URL_03 en TABLA_VALORES)...!"));
    }
}

TEST_F(TerminalSettingsTest, DefaultsAndBadValues) {
    setValue("VPOS_URL_01", "http://127.0.0.1:1");
    setValue("VPOS_ESPERA", "pronto");
    setValue("VPOS_UNA_COPIA", "true"); // text flags count only as "TRUE"
    const TerminalSettings s = loadTerminalSettings(db(), "01");
    EXPECT_EQ(s.timeoutSeconds, 120);
    EXPECT_FALSE(s.oneCopy);
    EXPECT_EQ(s.voucherFolder, QString());

    setValue("VPOS_URL_04", "127.0.0.1:8765"); // no scheme
    EXPECT_THROW(loadTerminalSettings(db(), "04"), UserError);
}

TEST_F(TerminalSettingsTest, TerminalAccountIsTheVeriFoneOne) {
    EXPECT_FALSE(terminalAccountName(db()).has_value());
    exec("INSERT INTO CTABANCOS (Codigo, Nombre, PuntoVenta, Status) VALUES "
         "('01', 'BANESCO PUNTO', 1, 1), ('02', 'MERCANTIL VPOS - VERIFONE', 1, 1)");
    EXPECT_EQ(terminalAccountName(db()), QStringLiteral("MERCANTIL VPOS - VERIFONE"));
}
