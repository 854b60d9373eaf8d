#include "shell/demo/demo_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/security/scrambler.h"
#include "shell/demo/demo_parts.h"
#include "shell/setup/row_writer.h"
#include "shell/setup/store_setup.h"
#include "shell/startup/user_settings.h"

#include <QDir>
#include <QFileInfo>
#include <QSysInfo>

namespace orvo::shell::demo {

using setup::money;
using setup::RowWriter;

namespace {

QString s(const char* utf8) {
    return QString::fromUtf8(utf8);
}

QStringList cols(std::initializer_list<const char*> names) {
    return setup::columns(names);
}

Decimal dec(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

// A store of its own: registers, users, articles or clients beyond what every new store
// starts with, or a company with another RIF.
bool hasOwnData(const QSqlDatabase& db) {
    for (const char* table : {"CAJAS", "USUARIOS", "INVENTARIO"})
        if (db::exists(db, QStringLiteral("SELECT 1 FROM %1 LIMIT 1").arg(QLatin1String(table))))
            return true;
    return db::exists(db, QStringLiteral("SELECT 1 FROM CLIENTES WHERE Codigo <> ?"),
                      {s(kCashClient)}) ||
           db::exists(db,
                      QStringLiteral("SELECT 1 FROM PARAMETROS WHERE IDEmpresa IS NOT NULL AND "
                                     "IDEmpresa <> '' AND IDEmpresa <> ?"),
                      {s(kDemoCompanyRif)});
}

struct DemoBranch {
    const char* code;
    const char* name;
    const char* address;
    const char* phone;
};
const DemoBranch kBranches[] = {
    {"00", "CASA MATRIZ", "AV. URDANETA, EDIF. CENTRAL, CARACAS", "0212-555-0100"},
    {"01", "TIENDA DEMO CENTRO", "AV. FRANCISCO DE MIRANDA, C.C. LOS CEDROS, CARACAS",
     "0212-555-0101"},
    {"02", "TIENDA DEMO VALENCIA", "AV. BOLIVAR NORTE, VALENCIA", "0241-555-0201"},
};

const DemoBranch* demoBranch(const QString& code) {
    for (const DemoBranch& b : kBranches)
        if (code == QLatin1String(b.code))
            return &b;
    return nullptr;
}

// The company row every store starts with, made the demo company's.
void seedCompany(const QSqlDatabase& db, const DemoBranch& here) {
    db::execute(db,
                QStringLiteral("UPDATE PARAMETROS SET Telefono = ?, Fax = ?, Direccion = ?, "
                               "CorreoElectronico = ?, Nota1 = ?, Nota2 = ?, ItemsPorFactura = ?"),
                {s("0212-555-0101"), s("0212-555-0102"),
                 s("AV. FRANCISCO DE MIRANDA, C.C. LOS CEDROS, LOCAL 12, CARACAS"),
                 s("tienda@orvo-demo.com.ve"), s("GRACIAS POR SU COMPRA"),
                 s("CAMBIOS DENTRO DE LOS 30 DIAS CON SU FACTURA"), 40});

    RowWriter values(db, QStringLiteral("TABLA_VALORES"),
                     cols({"IdTabla", "Codigo", "Descripcion"}));
    // Header of the fiscal invoice: eight lines, codes 01 to 08.
    const QStringList header = {s("TIENDAS ORVO DEMO, C.A."),
                                s("RIF: J-40123456-7"),
                                s("AV. FRANCISCO DE MIRANDA"),
                                s("C.C. LOS CEDROS, LOCAL 12"),
                                s("CARACAS - VENEZUELA"),
                                s("TELF. 0212-555-0101"),
                                s(""),
                                s(here.name)};
    for (int i = 0; i < header.size(); ++i)
        values.insert(
            {s("ENCFISCAL"), QStringLiteral("%1").arg(i + 1, 2, 10, QLatin1Char('0')), header[i]});
    values.insert({s("PIEFISCAL"), s("91"), s("GRACIAS POR SU COMPRA")});
    values.insert({s("PIEFISCAL"), s("92"), s("CAMBIOS DENTRO DE LOS 30 DIAS")});
    // The exchange rate is registered by hand in the demo: no repricing, no rate files.
    values.insert({s("ActTasa"), s("01"), s("FALSE")});
    values.insert({s("ExpTasa"), s("01"), s("FALSE")});
    values.insert({s("ImpTasa"), s("01"), s("FALSE")});

    RowWriter branches(db, QStringLiteral("SUCURSALES"),
                       cols({"Codigo", "Nombre", "Direccion", "Telefono", "Status",
                             "ExentaDeImpuesto", "PorcentajeDeRedondeo"}));
    for (const DemoBranch& b : kBranches)
        branches.insert({s(b.code), s(b.name), s(b.address), s(b.phone), 1, 0, money(Decimal())});

    // The closing exports the store package and mails it to head office through this account:
    // scripts/run.sh starts a local mail server and points the account at it.
    db::execute(db, QStringLiteral("UPDATE PARAMETROS SET ComportamientoExportar = 'Orvo'"));
    RowWriter(db, QStringLiteral("CUENTAS_MAIL"),
              cols({"Nombre", "SrvSalida", "PuertoSaliente", "SrvEntrada", "UsrMail", "SrvDominio",
                    "PswMail", "EMailDest"}))
        .insert({s(here.name), s("127.0.0.1"), 2525, s(""), s("tienda") + QLatin1String(here.code),
                 s("orvo-demo.com.ve"), s(""), s("casamatriz@orvo-demo.com.ve")});
    RowWriter(db, QStringLiteral("MENSAJES"), cols({"Asunto", "Anexo"}))
        .insert({s("Información de la tienda ") + QLatin1String(here.code),
                 QLatin1String(here.code) + s(".zip")});
}

void seedRegister(const QSqlDatabase& db) {
    // The printer every store starts with is the demo's emulated one.
    db::execute(db, QStringLiteral("UPDATE IMPRESORAFISCAL SET NombreImpresora = ? WHERE ID = 1"),
                {s("EMULADOR FISCAL")});
    // List 3 ("Detal y mayor") sells retail and may invoice every demo client type.
    RowWriter(db, QStringLiteral("CAJAS"),
              cols({"Serie", "Numero", "FondoCaja", "TipoListaPrecio", "TipoVenta", "TipoReporte",
                    "PermiteDescuento", "PermiteFacturarOrdenDespacho", "UltimaFactura",
                    "PermiteFacturasExentas", "PermiteAlternarListas", "CambiarPrecios",
                    "RequerirAutorizacion", "IdImpresoraFiscal", "PermitirFacturaContingencia",
                    "MaximoZDiario", "UltimaDevolucion"}))
        .insert({s(kDemoSerial), 1, money(dec("500")), 3, 1, 1, 1, 1, 0, 1, 1, 1, 0, 1, 0, 2, 0});
}

// The groups and the menu come with every store; the demo adds its two users.
void seedUsers(const QSqlDatabase& db) {
    const QString password = security::scramble(s(kDemoPassword));
    RowWriter users(db, QStringLiteral("USUARIOS"),
                    cols({"CodUsuario", "NombreUsuario", "Pasword", "Status"}));
    users.insert({s(kAdminUser), s("ADMINISTRADOR DEMO"), password, 1});
    users.insert({s(kCashierUser), s("CAJERO UNO"), password, 1});

    RowWriter members(db, QStringLiteral("USUARIOGRUPO"), cols({"CodUsuario", "CodGrupo"}));
    members.insert({s(kAdminUser), s("ADMI")});
    members.insert({s(kAdminUser), s("SISTEMAS")});
    members.insert({s(kCashierUser), s("CAJERO")});
}

void seedMoney(const QSqlDatabase& db) {
    // Banks by their national codes; the card terminal names its acquirer by that code, and the
    // point-of-sale account of that code receives the payment.
    RowWriter banks(db, QStringLiteral("BANCOS"), cols({"Codigo", "Nombre", "Status"}));
    banks.insert({s("0"), s("NINGUNO"), 0}); // the placeholder a sale makes sure of
    const QList<QPair<const char*, const char*>> bankList = {
        {"0102", "BANCO DE VENEZUELA"}, {"0105", "MERCANTIL"},
        {"0108", "BBVA PROVINCIAL"},    {"0134", "BANESCO"},
        {"0163", "BANCO DEL TESORO"},   {"0191", "BANCO NACIONAL DE CREDITO"},
        {"0999", "OTROS BANCO NAC."}};
    for (const auto& [code, name] : bankList)
        banks.insert({s(code), s(name), 1});

    RowWriter accounts(db, QStringLiteral("CTABANCOS"),
                       cols({"Codigo", "Nombre", "PuntoVenta", "Status"}));
    accounts.insert({s("0"), s("NINGUNO"), 0, 0});
    accounts.insert({s("0105"), s("VPOS - VERIFONE"), 1, 1});
    accounts.insert({s("0134"), s("PUNTO BANESCO"), 1, 1});
    accounts.insert({s("0105-0001"), s("MERCANTIL CTA. CTE. 0105-0001-23"), 0, 1});

    // Fecha is set by the server.
    RowWriter(db, QStringLiteral("TASA_CAMBIO"), cols({"Valor"}))
        .insert({dec("36.50").toVariant(8)});

    // Accounts that cash withdrawals are booked to.
    RowWriter ledger(db, QStringLiteral("CTACONTABLE"),
                     cols({"Codigo", "Nombre", "ManejaDocumentos", "TieneAcreedor",
                           "CuentaDevolucion", "Status"}));
    ledger.insert({s("6.1.01"), s("GASTOS DE LIMPIEZA"), 1, 1, 0, 1});
    ledger.insert({s("6.1.02"), s("VIATICOS Y TRANSPORTE"), 1, 0, 0, 1});
    ledger.insert({s("6.1.03"), s("PAPELERIA"), 1, 1, 0, 1});
    // Cash refunds of returns and exchanges leave the drawer on this one.
    ledger.insert({s("4.1.10"), s("DEVOLUCIONES EN VENTAS"), 1, 1, 1, 1});
}

void seedPeople(const QSqlDatabase& db) {
    RowWriter supplierTypes(db, QStringLiteral("TIPOSPROVEEDOR"),
                            cols({"Codigo", "Descripcion", "Status"}));
    supplierTypes.insert({s("1"), s("NACIONAL"), 1});
    supplierTypes.insert({s("2"), s("INTERNACIONAL"), 1});

    RowWriter clients(db, QStringLiteral("CLIENTES"),
                      cols({"Codigo", "Nombre", "FechaIngreso", "FechaNacimiento", "Telefono",
                            "Fax", "Celular", "Direccion", "Transporte", "Catalogo", "Status",
                            "Tipo", "TipoContribuyente", "PorcentajeUtilidad", "EMail"}));
    const QDate joined(2023, 1, 15);
    struct Client {
        const char* code;
        const char* name;
        const char* type;
        const char* taxpayer;
        int margin;
        const char* address;
    };
    const QList<Client> list = {
        {"V12345678", "MARIA ALEJANDRA PEREZ", "1", "3", 0, "LOS PALOS GRANDES, CARACAS"},
        {"V8765432", "JOSE GREGORIO RODRIGUEZ", "2", "3", 0, "EL PARAISO, CARACAS"},
        {"V15678901", "CARMEN ELENA SUAREZ", "3", "3", 25, "CHACAO, CARACAS"},
        {"J301234567", "DISTRIBUIDORA EL SOL, C.A.", "4", "1", 0, "ZONA INDUSTRIAL LA YAGUARA"},
        {"J298765430", "BOUTIQUE LAS MERCEDES, C.A.", "4", "2", 0, "LAS MERCEDES, CARACAS"},
        {"E84123456", "LUCIA FERNANDES", "2", "3", 0, "ALTAMIRA, CARACAS"},
    };
    for (const Client& c : list)
        clients.insert({s(c.code), s(c.name), joined, QVariant(), s("0212-555-0300"), s(""),
                        s("0414-555-0300"), s(c.address), s(""), 0, 1, s(c.type), s(c.taxpayer),
                        Decimal(c.margin).toVariant(2), s("")});

    RowWriter workers(db, QStringLiteral("TRABAJADORES"),
                      cols({"Cedula", "Codigo", "Nombre", "Cargo", "FechaIngreso",
                            "FechaNacimiento", "Direccion", "Telefono", "Celular", "Status"}));
    RowWriter sellers(db, QStringLiteral("VENDEDOR"),
                      cols({"Codigo", "Cedula", "Nombre", "FecNac", "FecIng", "Direccion",
                            "Telefono", "Status"}));
    struct Worker {
        const char* id;
        const char* code;
        const char* name;
        const char* position;
        QDate born;
    };
    const QList<Worker> staff = {
        {"10111222", "001", "ANA MARIA GONZALEZ", "001", QDate(1980, 3, 12)},
        {"18222333", "002", "LUIS ALBERTO MARQUEZ", "002", QDate(1992, 7, 4)},
        {"20333444", "003", "GABRIELA HERNANDEZ", "003", QDate(1995, 11, 23)},
        {"21444555", "004", "CARLOS EDUARDO RAMIREZ", "003", QDate(1997, 2, 8)},
        {"22555666", "005", "YULIMAR CASTILLO", "003", QDate(1999, 9, 30)},
        {"16666777", "006", "PEDRO JOSE MORALES", "004", QDate(1988, 5, 17)},
    };
    const QDate hired(2022, 6, 1);
    for (const Worker& w : staff) {
        workers.insert({s(w.id), s(w.code), s(w.name), s(w.position), hired, w.born, s("CARACAS"),
                        s("0212-555-0400"), s("0424-555-0400"), 1});
        if (qstrcmp(w.position, "003") == 0)
            sellers.insert({s(w.code), s(w.id), s(w.name), w.born, hired, s("CARACAS"),
                            s("0212-555-0400"), 1});
    }
}

void seedCatalogue(const QSqlDatabase& db) {
    RowWriter brands(db, QStringLiteral("MARCAS"), cols({"Codigo", "Nombre", "Status"}));
    brands.insert({s("0"), s("SIN MARCA"), 1}); // never offered on the article screen
    const QStringList brandNames = {s("PUNTO AZUL"), s("COSTA NORTE"), s("URBAN ANDES"),
                                    s("KORAL"),      s("TEPUY"),       s("CARIBE KIDS")};
    for (int i = 0; i < brandNames.size(); ++i)
        brands.insert({QStringLiteral("%1").arg(i + 1, 3, 10, QLatin1Char('0')), brandNames[i], 1});

    RowWriter colours(db, QStringLiteral("COLORES"), cols({"Codigo", "Nombre", "Status"}));
    const QStringList colourNames = {
        s("SIN COLOR"),     s("NEGRO"),       s("BLANCO"),   s("AZUL MARINO OSCURO"), s("ROJO"),
        s("GRIS JASPEADO"), s("VERDE OLIVA"), s("BEIGE"),    s("AZUL CLARO"),         s("ROSADO"),
        s("MOSTAZA"),       s("AZUL INDIGO"), s("VINOTINTO")};
    // '0' is the placeholder colour of articles without one; the article screen hides it.
    for (int i = 0; i < colourNames.size(); ++i)
        colours.insert({i == 0 ? s("0") : QStringLiteral("%1").arg(i, 3, 10, QLatin1Char('0')),
                        colourNames[i], 1});

    RowWriter sizes(db, QStringLiteral("TALLAS"), cols({"Codigo", "Talla"}));
    const QList<QPair<const char*, const char*>> sizeList = {
        {"S", "PEQUEÑA"}, {"M", "MEDIANA"}, {"L", "GRANDE"}, {"XL", "EXTRA G."}, {"U", "ÚNICA"},
        {"4", "4"},       {"6", "6"},       {"8", "8"},      {"10", "10"},       {"26", "26"},
        {"28", "28"},     {"30", "30"},     {"32", "32"},    {"34", "34"},       {"36", "36"},
        {"37", "37"},     {"38", "38"},     {"39", "39"},    {"40", "40"},       {"41", "41"},
        {"42", "42"}};
    for (const auto& [code, name] : sizeList)
        sizes.insert({s(code), s(name)});

    // Categories: two-digit families, four-digit groups, six-digit detail categories that
    // articles belong to.
    RowWriter categories(db, QStringLiteral("CATEGORIAS"), cols({"Codigo", "Nombre", "Status"}));
    const QList<QPair<const char*, const char*>> tree = {{"01", "DAMAS"},
                                                         {"0101", "ROPA DAMAS"},
                                                         {"010101", "BLUSAS"},
                                                         {"010102", "PANTALONES DAMA"},
                                                         {"010103", "VESTIDOS"},
                                                         {"02", "CABALLEROS"},
                                                         {"0201", "ROPA CABALLEROS"},
                                                         {"020101", "CAMISAS"},
                                                         {"020102", "PANTALONES CABALLERO"},
                                                         {"020103", "FRANELAS"},
                                                         {"03", "NIÑOS"},
                                                         {"0301", "ROPA NIÑOS"},
                                                         {"030101", "CONJUNTOS"},
                                                         {"04", "CALZADO"},
                                                         {"0401", "CALZADO DEPORTIVO"},
                                                         {"040101", "ZAPATOS DEPORTIVOS"},
                                                         {"0402", "CALZADO CASUAL"},
                                                         {"040201", "SANDALIAS"},
                                                         {"05", "ACCESORIOS"},
                                                         {"0501", "ACCESORIOS VARIOS"},
                                                         {"050101", "GORRAS"},
                                                         {"050102", "CORREAS"},
                                                         {"050103", "RELOJES"},
                                                         {"050104", "CUIDADO PERSONAL"},
                                                         {"06", "SERVICIOS"},
                                                         {"0601", "SERVICIOS DE TIENDA"},
                                                         {"060101", "SERVICIOS"}};
    for (const auto& [code, name] : tree)
        categories.insert({s(code), s(name), 1});

    RowWriter makers(db, QStringLiteral("FABRICANTES"), cols({"Codigo", "Nombre", "Status"}));
    makers.insert({s("000"), s("SIN FABRICANTE"), 1});
    makers.insert({s("001"), s("CONFECCIONES ARAGUA, C.A."), 1});
    makers.insert({s("002"), s("TEXTILES DEL LAGO, C.A."), 1});
    makers.insert({s("003"), s("CALZADOS ANDINOS, S.A."), 1});
    makers.insert({s("004"), s("IMPORTADORA PACIFICO, C.A."), 1});

    // Reasons of manual adjustments; 999 and 998 are the partial count's own.
    RowWriter adjustments(db, QStringLiteral("TIPOAJUSTES"),
                          cols({"Codigo", "Nombre", "Signo", "Status"}));
    adjustments.insert({1, s("ENTRADA POR AJUSTE"), 1, 1});
    adjustments.insert({2, s("SALIDA POR AJUSTE"), -1, 1});
    adjustments.insert({3, s("MERCANCIA DAÑADA"), -1, 1});
    adjustments.insert({4, s("MUESTRAS Y EXHIBICION"), -1, 1});
    adjustments.insert({998, s("AJUSTE INVENTARIO PARCIAL (-)"), -1, 1});
    adjustments.insert({999, s("AJUSTE INVENTARIO PARCIAL (+)"), 1, 1});

    RowWriter dispatchTypes(db, QStringLiteral("TIPO_DESPACHO"),
                            cols({"ID", "Descripcion", "Estado"}));
    dispatchTypes.insert({1, s("ENTREGA A CLIENTE"), 1});
    dispatchTypes.insert({2, s("TRASLADO A SUCURSAL"), 1});

    RowWriter vehicles(db, QStringLiteral("VEHICULOS"),
                       cols({"Placa", "Marca", "Modelo", "Status"}));
    vehicles.insert({s("AB123CD"), s("FORD"), s("CARGO 815"), 1});
    vehicles.insert({s("AC456EF"), s("CHEVROLET"), s("NPR"), 1});

    RowWriter suppliers(
        db, QStringLiteral("PROVEEDORES"),
        cols({"Codigo", "Nombre", "Tipo", "FechaIngreso", "Telefono", "Fax", "CodigoPostal",
              "Direccion", "Contacto", "Pais", "Estado", "Ciudad", "Status"}));
    const QDate since(2022, 1, 10);
    suppliers.insert({s("J305551112"), s("CONFECCIONES ARAGUA, C.A."), s("1"), since,
                      s("0243-555-0110"), s(""), s("2101"), s("ZONA INDUSTRIAL SAN VICENTE"),
                      s("RAFAEL TORRES"), s("VENEZUELA"), s("ARAGUA"), s("MARACAY"), 1});
    suppliers.insert({s("J306662223"), s("TEXTILES DEL LAGO, C.A."), s("1"), since,
                      s("0261-555-0220"), s(""), s("4001"), s("AV. 5 DE JULIO"),
                      s("MARIELA URDANETA"), s("VENEZUELA"), s("ZULIA"), s("MARACAIBO"), 1});
    suppliers.insert({s("J307773334"), s("CALZADOS ANDINOS, S.A."), s("1"), since,
                      s("0274-555-0330"), s(""), s("5101"), s("AV. LAS AMERICAS"),
                      s("JESUS QUINTERO"), s("VENEZUELA"), s("MERIDA"), s("MERIDA"), 1});
    suppliers.insert({s("J308884445"), s("IMPORTADORA PACIFICO, C.A."), s("2"), since,
                      s("0212-555-0440"), s(""), s("1010"), s("LA URBINA, CALLE 7"), s("WEI CHEN"),
                      s("VENEZUELA"), s("MIRANDA"), s("CARACAS"), 1});
}

} // namespace

void seedDemoStore(const QSqlDatabase& db, const QString& branch) {
    const DemoBranch* here = demoBranch(branch);
    if (!here)
        throw UserError(QStringLiteral("La tienda de demostración es la sucursal 00, 01 o 02, no "
                                       "%1.")
                            .arg(branch));
    db::Transaction tx(db);
    if (hasOwnData(db))
        throw UserError(s(
            "La base de datos ya tiene datos; la tienda de demostración necesita una base vacía."));
    const QDateTime now = db::serverNow(db);
    setup::writeStoreBasics(db, {s("TIENDAS ORVO DEMO, C.A."), s(kDemoCompanyRif), branch});
    seedCompany(db, *here);
    seedRegister(db);
    seedUsers(db);
    seedMoney(db);
    seedPeople(db);
    seedCatalogue(db);
    detail::seedArticles(db, now.date());
    tx.commit();
}

bool isDemoStore(const QSqlDatabase& db) {
    return db::exists(db, QStringLiteral("SELECT Serie FROM CAJAS WHERE Serie = ?"),
                      {s(kDemoSerial)}) &&
           db::exists(db, QStringLiteral("SELECT IDEmpresa FROM PARAMETROS WHERE IDEmpresa = ?"),
                      {s(kDemoCompanyRif)});
}

void bindWorkstationToDemoRegister() {
    settings::write(QStringLiteral("Serie"), s(kDemoSerial));
    // The sale screen needs somewhere to print paper invoices; a printer chosen before stays.
    if (settings::invoicePrinter().isEmpty()) {
        const QString pdf = settings::defaultInvoicePdf();
        QDir().mkpath(QFileInfo(pdf).absolutePath());
        settings::saveInvoicePrinter(pdf);
    }
}

} // namespace orvo::shell::demo
