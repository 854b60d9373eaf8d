#include "common/db/sql.h"
#include "common/decimal/decimal.h"
#include "common/errors/errors.h"
#include "common/security/scrambler.h"
#include "pos/payments/payment_rules.h"
#include "shell/demo/demo_store.h"
#include "shell/session/session_context.h"
#include "shell/startup/user_settings.h"
#include "support/test_db.h"
#include "tools/card_emulator/card_terminal.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QSet>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using orvo::test::DbTest;

namespace {

// Checked here by hand, not with the seeder's own arithmetic.
bool validEan13(const QString& code) {
    if (code.size() != 13)
        return false;
    int sum = 0;
    for (int i = 0; i < 13; ++i) {
        if (!code[i].isDigit())
            return false;
        if (i < 12)
            sum += code[i].digitValue() * (i % 2 == 0 ? 1 : 3);
    }
    return (sum + code[12].digitValue()) % 10 == 0;
}

QStringList column(const QSqlDatabase& db, const QString& statement,
                   std::initializer_list<QVariant> values = {}) {
    db::Sql q(db, statement);
    q.bindAll(values).exec();
    QStringList out;
    while (q.next())
        out << q.value(0).toString();
    return out;
}

QSet<QString> setOf(const QStringList& list) {
    return QSet<QString>(list.begin(), list.end());
}

} // namespace

class DemoStore : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        QElapsedTimer timer;
        timer.start();
        shell::demo::seedDemoStore(db());
        RecordProperty("seed_ms", int(timer.elapsed()));
    }

    // Forms a user may open: the union of his groups' grants, as the menu builds it.
    QSet<QString> formsOf(const QString& user) const {
        db::Sql q(db(), "SELECT S.CodNodo, MAX(S.Forma) AS Forma, MAX(GS.Ver) AS Ver "
                        "FROM GRUPOSEG GS INNER JOIN SEG S ON GS.CodNodo = S.CodNodo "
                        "INNER JOIN USUARIOGRUPO UG ON GS.CodGrupo = UG.CodGrupo "
                        "WHERE UG.CodUsuario = ? GROUP BY S.CodNodo");
        q.bind(user).exec();
        QSet<QString> forms;
        while (q.next())
            if (q.text("Ver") == "S" && !q.text("Forma").isEmpty())
                forms.insert(q.text("Forma"));
        return forms;
    }
};

TEST_F(DemoStore, UsersLogInWith1234AndBelongToTheirGroups) {
    for (const char* user : {"ADMIN", "CAJERO1"}) {
        db::Sql q(db(), "SELECT Pasword, Status FROM USUARIOS WHERE CodUsuario = ?");
        q.bind(user).exec();
        ASSERT_TRUE(q.next()) << user;
        EXPECT_EQ(security::unscramble(q.text("Pasword")), "1234") << user;
        EXPECT_NE(q.text("Pasword"), "1234") << "stored in the clear";
        EXPECT_EQ(q.integer("Status"), 1);
    }
    const QString groups =
        "SELECT CodGrupo FROM USUARIOGRUPO WHERE CodUsuario = ? ORDER BY CodGrupo";
    EXPECT_EQ(column(db(), groups, {"ADMIN"}), QStringList({"ADMI", "SISTEMAS"}));
    EXPECT_EQ(column(db(), groups, {"CAJERO1"}), QStringList({"CAJERO"}));

    // The administrator role check of the program answers for ADMIN only.
    const QString admin = "SELECT UG.CodUsuario FROM USUARIOGRUPO UG INNER JOIN GRUPOS G ON "
                          "UG.CodGrupo = G.CodGrupo WHERE UG.CodUsuario = ? AND "
                          "(G.CodGrupo = 'ADMI' OR G.NombreGrupo = 'ADMINISTRADOR')";
    EXPECT_TRUE(db::exists(db(), admin, {"ADMIN"}));
    EXPECT_FALSE(db::exists(db(), admin, {"CAJERO1"}));
}

TEST_F(DemoStore, SessionLoadsCompanyRegisterAndPrinter) {
    shell::SessionContext ctx;
    ASSERT_TRUE(shell::loadCompany(db(), ctx));
    EXPECT_EQ(ctx.idEmpresa, "J-40123456-7");
    EXPECT_FALSE(ctx.nombre.isEmpty());
    EXPECT_EQ(ctx.controlFactura, 1);
    EXPECT_EQ(ctx.usaImpresoraFiscal, 1);
    EXPECT_GT(ctx.itemsPorFactura, 0);
    ASSERT_TRUE(shell::loadRegister(db(), "Z1B0000001", ctx));
    EXPECT_EQ(ctx.numero, 1);
    EXPECT_EQ(ctx.idImpresoraFiscal, 1);
    EXPECT_GT(ctx.fondoCaja, Decimal(0));
    shell::loadStandardTaxRate(db(), ctx);
    EXPECT_EQ(ctx.standardTaxRate, Decimal(16));

    db::Sql q(db(), "SELECT C.UltimaFactura, C.UltimaDevolucion, I.ID, I.NombreImpresora, "
                    "I.MontoMaximoDiario, I.Status FROM CAJAS C INNER JOIN IMPRESORAFISCAL I "
                    "ON I.ID = C.IdImpresoraFiscal WHERE C.Serie = ?");
    q.bind("Z1B0000001").exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.integer("UltimaFactura"), 0);
    EXPECT_EQ(q.integer("UltimaDevolucion"), 0);
    EXPECT_EQ(q.text("NombreImpresora"), "EMULADOR FISCAL");
    EXPECT_GT(q.decimal("MontoMaximoDiario"), Decimal(100000));
    EXPECT_EQ(q.integer("Status"), 1);
    EXPECT_FALSE(q.next()) << "one register, one printer";

    // The eight header lines of the fiscal invoice.
    EXPECT_EQ(column(db(), "SELECT Codigo FROM TABLA_VALORES WHERE IdTabla = 'ENCFISCAL' "
                           "ORDER BY Codigo"),
              QStringList({"01", "02", "03", "04", "05", "06", "07", "08"}));
}

TEST_F(DemoStore, PaymentWaysBanksAndTheCardTerminalAccount) {
    EXPECT_EQ(
        setOf(column(db(), "SELECT Nombre FROM FORMAPAGO WHERE Status = 1")),
        QSet<QString>({"EFECTIVO", "EFECTIVO DOLAR", "CHEQUE", "DEPOSITO", "TARJETA DE DEBITO",
                       "TARJETA DE CREDITO", "MULTIPLE", "CUENTA POR COBRAR"}));
    EXPECT_EQ(column(db(), "SELECT Nombre FROM FORMAPAGO WHERE Codigo = ?", {1}),
              QStringList({"EFECTIVO"}));
    EXPECT_EQ(column(db(), "SELECT Nombre FROM FORMAPAGO WHERE Codigo = ?", {2}),
              QStringList({"CHEQUE"}));
    // The codes fit the lists the sale and payment screens filter by code.
    const QSet<QString> cashMode =
        setOf(column(db(), "SELECT Nombre FROM FORMAPAGO WHERE Status = 1 AND Codigo <= '12' "
                           "AND Codigo NOT IN (3,4,5,8,10)"));
    EXPECT_TRUE(cashMode.contains("EFECTIVO") && cashMode.contains("MULTIPLE"));
    EXPECT_FALSE(cashMode.contains("CUENTA POR COBRAR"));
    const QSet<QString> creditMode =
        setOf(column(db(), "SELECT Nombre FROM FORMAPAGO WHERE Status = 1 AND Codigo <= '12' "
                           "AND Codigo NOT IN (1,2,6,8,10)"));
    EXPECT_TRUE(creditMode.contains("CUENTA POR COBRAR"));
    EXPECT_FALSE(creditMode.contains("EFECTIVO"));
    EXPECT_EQ(setOf(column(db(), "SELECT Nombre FROM FORMAPAGO WHERE Status = 1 AND "
                                 "Codigo < '12' AND Codigo NOT IN (6,7,8)")),
              QSet<QString>({"EFECTIVO", "EFECTIVO DOLAR", "CHEQUE", "DEPOSITO",
                             "TARJETA DE DEBITO", "TARJETA DE CREDITO", "CUENTA POR COBRAR"}))
        << "every way but MULTIPLE can be a row of the payments grid";
    EXPECT_EQ(column(db(), "SELECT Nombre FROM CTABANCOS WHERE Status = 1 AND PuntoVenta = 1 "
                           "ORDER BY Nombre"),
              QStringList({"PUNTO BANESCO", "VPOS - VERIFONE"}));
    // An approved payment on the card terminal emulator lands on the VPOS account.
    EXPECT_EQ(pos::payments::accountOfAcquirer(db(), tools::card::TerminalRules().acquirerCode),
              std::optional<QString>("VPOS - VERIFONE"));
    EXPECT_TRUE(setOf(pos::payments::bankNames(db())).contains("OTROS BANCO NAC."))
        << "the bank an approved terminal payment names";
    EXPECT_GE(count("BANCOS", "Status = 1"), 5);
    EXPECT_EQ(count("BANCOS", "Codigo = '0' AND Nombre = 'NINGUNO'"), 1);

    const Decimal rate =
        Decimal::fromVariant(scalar("SELECT Valor FROM TASA_CAMBIO ORDER BY Fecha DESC LIMIT 1"));
    EXPECT_EQ(rate, Decimal::fromString(u"36.5"));

    db::Sql taxes(db(), "SELECT Codigo, PorcentajeImpuesto FROM IMPUESTOS ORDER BY Codigo");
    taxes.exec();
    QStringList rates;
    while (taxes.next())
        rates << taxes.text("Codigo") + "=" + taxes.decimal("PorcentajeImpuesto").toString();
    EXPECT_EQ(rates, QStringList({"1=16", "2=8", "3=31", "4=0"}));
}

TEST_F(DemoStore, EveryArticleHasItsOwnValidEan13) {
    const QStringList codes = column(db(), "SELECT CodigoBarra FROM INVENTARIO");
    EXPECT_GE(codes.size(), 300);
    EXPECT_LE(codes.size(), 800);
    for (const QString& code : codes)
        EXPECT_TRUE(validEan13(code)) << code.toStdString();
    EXPECT_EQ(setOf(codes).size(), codes.size());
}

TEST_F(DemoStore, ModelsComeInSeveralSizesAndColoursNamedAsTheArticleScreenNamesThem) {
    db::Sql models(db(), "SELECT Referencia, CodigoMarca, COUNT(DISTINCT Talla) AS Tallas, "
                         "COUNT(DISTINCT CodigoColor) AS Colores, COUNT(*) AS Variantes "
                         "FROM INVENTARIO WHERE Tipo = 0 GROUP BY Referencia, CodigoMarca");
    models.exec();
    int modelCount = 0;
    QSet<QString> references;
    while (models.next()) {
        ++modelCount;
        references.insert(models.text("Referencia"));
        const QString model = models.text("Referencia") + "/" + models.text("CodigoMarca");
        EXPECT_GE(models.integer("Tallas"), 2) << model.toStdString();
        EXPECT_GE(models.integer("Colores"), 2) << model.toStdString();
        EXPECT_EQ(models.integer("Variantes"), models.integer("Tallas") * models.integer("Colores"))
            << "one variant per size and colour: " << model.toStdString();
    }
    EXPECT_GE(modelCount, 20);
    EXPECT_LT(references.size(), modelCount) << "some reference is carried by two brands";

    // Name: the model's name, " T:", the size and the first 13 letters of the colour's name.
    db::Sql q(db(), "SELECT I.Nombre, I.Talla, C.Nombre AS Color FROM INVENTARIO I "
                    "INNER JOIN COLORES C ON C.Codigo = I.CodigoColor");
    q.exec();
    int named = 0;
    bool someColourCut = false;
    while (q.next()) {
        ++named;
        const QString suffix = " T:" + q.text("Talla") + " " + q.text("Color").left(13);
        EXPECT_TRUE(q.text("Nombre").endsWith(suffix)) << q.text("Nombre").toStdString();
        someColourCut |= q.text("Color").size() > 13;
    }
    EXPECT_EQ(named, count("INVENTARIO"));
    EXPECT_TRUE(someColourCut);
}

TEST_F(DemoStore, ArticlesPointAtExistingMasterData) {
    const struct {
        const char* what;
        const char* sql;
    } orphans[] = {
        {"brand", "SELECT I.CodigoBarra FROM INVENTARIO I LEFT JOIN MARCAS M ON M.Codigo = "
                  "I.CodigoMarca WHERE M.Codigo IS NULL"},
        {"size", "SELECT I.CodigoBarra FROM INVENTARIO I LEFT JOIN TALLAS T ON T.Codigo = I.Talla "
                 "WHERE T.Codigo IS NULL"},
        {"colour", "SELECT I.CodigoBarra FROM INVENTARIO I LEFT JOIN COLORES C ON C.Codigo = "
                   "I.CodigoColor WHERE C.Codigo IS NULL"},
        {"tax", "SELECT I.CodigoBarra FROM INVENTARIO I LEFT JOIN IMPUESTOS T ON T.Codigo = "
                "I.TipoImpuesto WHERE T.Codigo IS NULL"},
        {"maker", "SELECT I.CodigoBarra FROM INVENTARIO I LEFT JOIN FABRICANTES F ON F.Codigo = "
                  "I.Fabricante WHERE F.Codigo IS NULL"},
        {"category", "SELECT I.CodigoBarra FROM INVENTARIO I LEFT JOIN CATEGORIAS C ON "
                     "C.Codigo = I.Categoria WHERE C.Codigo IS NULL"},
    };
    for (const auto& o : orphans)
        EXPECT_EQ(column(db(), o.sql), QStringList()) << "article without its " << o.what;
    // Articles hang from detail categories: the six-digit codes under a group.
    EXPECT_EQ(column(db(), "SELECT DISTINCT Categoria FROM INVENTARIO")
                  .filter(QRegularExpression("^\\d{6}$"))
                  .size(),
              column(db(), "SELECT DISTINCT Categoria FROM INVENTARIO").size());
    EXPECT_GE(column(db(), "SELECT DISTINCT TipoImpuesto FROM INVENTARIO").size(), 3)
        << "sales exercise more than one tax rate";
}

TEST_F(DemoStore, StockArticlesArePricedAboveCostAndSomeAreOnPromotionToday) {
    db::Sql q(db(), "SELECT CodigoBarra, Existencia, ExistenciaInicial, CostoPromedio, "
                    "UltimoCosto, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
                    "PrecioPromocion, FechaInicial, FechaFinal, Status FROM INVENTARIO "
                    "WHERE Tipo = 0");
    const QDate today = db::serverNow(db()).date();
    q.exec();
    int onPromotionToday = 0;
    int stockArticles = 0;
    while (q.next()) {
        ++stockArticles;
        const std::string code = q.text("CodigoBarra").toStdString();
        const Decimal average = q.decimal("CostoPromedio");
        const Decimal last = q.decimal("UltimoCosto");
        const Decimal highestCost = std::max(average, last);
        EXPECT_GT(q.decimal("Existencia"), Decimal(0)) << code;
        EXPECT_EQ(q.decimal("Existencia"), q.decimal("ExistenciaInicial")) << code;
        EXPECT_GT(average, Decimal(0)) << code;
        EXPECT_GT(q.decimal("PrecioDetal"), highestCost) << code;
        EXPECT_GT(q.decimal("PrecioMayor"), highestCost) << code;
        EXPECT_GT(q.decimal("PrecioAfiliado"), highestCost) << code;
        EXPECT_LE(q.decimal("PrecioMayor"), q.decimal("PrecioDetal")) << code;
        EXPECT_EQ(q.integer("Status"), 1) << code;
        if (q.integer("Promocion") == 1) {
            EXPECT_GT(q.decimal("PrecioPromocion"), highestCost) << code;
            EXPECT_LT(q.decimal("PrecioPromocion"), q.decimal("PrecioDetal")) << code;
            const QDate from = q.dateTime("FechaInicial").date();
            const QDate to = q.dateTime("FechaFinal").date();
            ASSERT_TRUE(from.isValid() && to.isValid()) << code;
            if (from <= today && today <= to)
                ++onPromotionToday;
        }
    }
    EXPECT_EQ(stockArticles, count("INVENTARIO", "Tipo = 0"));
    EXPECT_GE(onPromotionToday, 10);
    EXPECT_GT(count("INVENTARIO", "Promocion = 1 AND FechaFinal < ?", {db::dayStart(today)}), 0)
        << "an expired promotion to show the retail price again";

    // Services are sold without stock.
    EXPECT_GE(count("INVENTARIO", "Tipo = 1 AND Existencia = 0 AND PrecioDetal > 0"), 2);
}

TEST_F(DemoStore, SellersAreActiveWorkersOfPosition003) {
    const QStringList sellers =
        column(db(), "SELECT Cedula FROM TRABAJADORES WHERE Cargo = '003' AND Status = 1 "
                     "ORDER BY Cedula");
    EXPECT_GE(sellers.size(), 2);
    EXPECT_EQ(column(db(), "SELECT Cedula FROM VENDEDOR WHERE Status = 1 ORDER BY Cedula"),
              sellers);
    EXPECT_EQ(column(db(), "SELECT Nombre FROM CARGOS WHERE Codigo = '003'"),
              QStringList({"VENDEDOR"}));
    EXPECT_GT(count("TRABAJADORES", "Cargo <> '003'"), 0) << "not every worker sells";
}

TEST_F(DemoStore, ClientsOfEveryTypeIncludingTheCashClient) {
    EXPECT_EQ(
        column(db(), "SELECT Nombre FROM CLIENTES WHERE Codigo = ? AND Status = 1", {"V00000000"}),
        QStringList({"CLIENTE CONTADO"}));
    EXPECT_EQ(column(db(), "SELECT DISTINCT T.Codigo FROM CLIENTES C INNER JOIN TIPOSCLIENTE T "
                           "ON T.Codigo = C.Tipo ORDER BY T.Codigo"),
              QStringList({"1", "2", "3", "4"}));
    EXPECT_EQ(count("CLIENTES C", "NOT EXISTS (SELECT 1 FROM TIPOSCONTRIBUYENTE T WHERE "
                                  "T.Codigo = C.TipoContribuyente)"),
              0);
    // The special client (type 3) is priced at cost plus his margin.
    EXPECT_GT(Decimal::fromVariant(scalar("SELECT MIN(PorcentajeUtilidad) FROM CLIENTES "
                                          "WHERE Tipo = '3'")),
              Decimal(0));
}

TEST_F(DemoStore, CashierSeesSalesAndCashScreensButNotSecurity) {
    const QSet<QString> cashier = formsOf("CAJERO1");
    const QSet<QString> admin = formsOf("ADMIN");
    for (const char* form : {"frmFacturacion", "frmDevolucion", "frmCambiosDeMercancia",
                             "frmAperturaCaja", "frmCierreCaja", "frmSalidasCaja"})
        EXPECT_TRUE(cashier.contains(form)) << form;
    for (const char* form : {"FrmUsuario", "FrmGrupoUsuario", "FrmEstructura", "frmConfigurarCaja",
                             "frmCorregirConsecutivos", "frmArticulos", "frmAjustes"}) {
        EXPECT_FALSE(cashier.contains(form)) << form;
        EXPECT_TRUE(admin.contains(form)) << form;
    }
    EXPECT_EQ(admin, setOf(column(db(), "SELECT Forma FROM SEG WHERE EsPadre = 0")))
        << "the administrator sees every screen";
    EXPECT_LT(cashier.size(), 12);
}

TEST_F(DemoStore, MenuTreeIsWellFormed) {
    // Every leaf opens one screen, once in the tree, under an existing folder.
    db::Sql leaves(db(), "SELECT L.CodNodo, L.Forma, L.Nivel, P.EsPadre AS PadreEsPadre, "
                         "P.Nivel AS PadreNivel FROM SEG L LEFT JOIN SEG P ON P.CodNodo = "
                         "L.NodoPadre WHERE L.EsPadre = 0");
    leaves.exec();
    QSet<QString> forms;
    int leafCount = 0;
    while (leaves.next()) {
        ++leafCount;
        const std::string node = leaves.text("CodNodo").toStdString();
        EXPECT_FALSE(leaves.text("Forma").isEmpty()) << node;
        EXPECT_FALSE(forms.contains(leaves.text("Forma"))) << node;
        forms.insert(leaves.text("Forma"));
        EXPECT_EQ(leaves.integer("PadreEsPadre"), 1) << node;
        EXPECT_EQ(leaves.integer("Nivel"), leaves.integer("PadreNivel") + 1) << node;
    }
    EXPECT_GE(leafCount, 60);
    EXPECT_EQ(count("SEG", "Nivel = 1 AND EsPadre = 1"), 8);

    // Each group has a row for every node, and never sees a screen whose folder it cannot see.
    const int nodes = count("SEG");
    for (const char* group : {"ADMI", "SISTEMAS", "CAJERO", "SUPINVE"})
        EXPECT_EQ(count("GRUPOSEG", "CodGrupo = ?", {group}), nodes) << group;
    EXPECT_EQ(count("GRUPOSEG", "Ver NOT IN ('S', 'N')"), 0);
    EXPECT_EQ(column(db(), "SELECT G.CodGrupo FROM GRUPOSEG G INNER JOIN SEG S ON S.CodNodo = "
                           "G.CodNodo INNER JOIN GRUPOSEG GP ON GP.CodGrupo = G.CodGrupo AND "
                           "GP.CodNodo = S.NodoPadre WHERE G.Ver = 'S' AND GP.Ver <> 'S'"),
              QStringList());
}

TEST_F(DemoStore, SeedingTwiceRefusesAndLeavesTheStoreAsItWas) {
    EXPECT_TRUE(shell::demo::isDemoStore(db()));
    const int articles = count("INVENTARIO");
    try {
        shell::demo::seedDemoStore(db());
        FAIL() << "seeded twice";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), QString::fromUtf8("La base de datos ya tiene datos; la tienda de "
                                              "demostración necesita una base vacía."));
    }
    EXPECT_EQ(count("INVENTARIO"), articles);
    EXPECT_EQ(count("PARAMETROS"), 1);
    EXPECT_EQ(count("USUARIOS"), 2);
}

TEST_F(DemoStore, TheSameStoreEveryTime) {
    const QString fingerprint =
        "SELECT CodigoBarra, Nombre, Referencia, CodigoMarca, PrecioDetal, CostoPromedio, "
        "Existencia FROM INVENTARIO ORDER BY CodigoBarra";
    auto rowsOf = [&](const QSqlDatabase& database) {
        db::Sql q(database, fingerprint);
        q.exec();
        QStringList rows;
        while (q.next())
            rows << q.text("CodigoBarra") + "|" + q.text("Nombre") + "|" + q.text("Referencia") +
                        "|" + q.text("CodigoMarca") + "|" + q.decimal("PrecioDetal").toString(2) +
                        "|" + q.decimal("CostoPromedio").toString(5) + "|" +
                        q.decimal("Existencia").toString(3);
        return rows;
    };
    test::TestDatabase other;
    shell::demo::seedDemoStore(other.db());
    EXPECT_EQ(rowsOf(other.db()), rowsOf(db()));
}

TEST_F(DemoStore, WorkstationIsBoundToTheDemoRegisterAndCanPrintInvoices) {
    QTemporaryDir settingsDir;
    QTemporaryDir home;
    ASSERT_TRUE(settingsDir.isValid() && home.isValid());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
    const QByteArray oldHome = qgetenv("ORVO_HOME");
    qputenv("ORVO_HOME", home.path().toUtf8());

    shell::demo::bindWorkstationToDemoRegister();
    // What the main window and the sale screen read at start.
    const QString serial = shell::WorkstationSettings::load().serie;
    EXPECT_EQ(serial, "Z1B0000001");
    shell::SessionContext ctx;
    EXPECT_TRUE(shell::loadRegister(db(), serial, ctx));
    const QString printer = shell::settings::read("ImpresoraFactura");
    EXPECT_EQ(printer, home.filePath("Facturas/factura.pdf"));
    EXPECT_TRUE(QDir(home.filePath("Facturas")).exists());

    // A printer the user chose survives a second run.
    shell::settings::write("ImpresoraFactura", "EPSON TM-T20");
    shell::demo::bindWorkstationToDemoRegister();
    EXPECT_EQ(shell::settings::read("ImpresoraFactura"), "EPSON TM-T20");

    if (oldHome.isEmpty())
        qunsetenv("ORVO_HOME");
    else
        qputenv("ORVO_HOME", oldHome);
}

TEST_F(DemoStore, PartialCountAdjustmentTypesCarryTheirSigns) {
    EXPECT_EQ(column(db(), "SELECT Signo FROM TIPOAJUSTES WHERE Codigo = ?", {999}),
              QStringList({"1"}));
    EXPECT_EQ(column(db(), "SELECT Signo FROM TIPOAJUSTES WHERE Codigo = ?", {998}),
              QStringList({"-1"}));
    EXPECT_GT(count("TIPOAJUSTES", "Signo = -1 AND Codigo < 998"), 0);
}

class DemoStoreOnUsedDatabase : public DbTest {};

TEST_F(DemoStoreOnUsedDatabase, AnotherCompanysDatabaseIsRefusedUntouched) {
    exec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES (?, ?, ?, 1)",
         {"PEDRO", "PEDRO PEREZ", security::scramble("9999")});
    EXPECT_THROW(shell::demo::seedDemoStore(db()), UserError);
    EXPECT_FALSE(shell::demo::isDemoStore(db()));
    EXPECT_EQ(count("USUARIOS"), 1);
    EXPECT_EQ(count("INVENTARIO"), 0);
    EXPECT_EQ(count("SEG"), 0);
}
