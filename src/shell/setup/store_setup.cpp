#include "shell/setup/store_setup.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/security/scrambler.h"
#include "shell/setup/row_writer.h"

#include <QRegularExpression>
#include <QSysInfo>

namespace orvo::shell::setup {

namespace {

QString s(const char* utf8) {
    return QString::fromUtf8(utf8);
}

bool isEmpty(const QSqlDatabase& db, const char* table) {
    return !db::exists(db, QStringLiteral("SELECT 1 FROM %1 LIMIT 1").arg(QLatin1String(table)));
}

// A new company row carries the defaults a store starts with; given facts replace what a row
// already holds.
bool writeCompany(const QSqlDatabase& db, const CompanyFacts& c) {
    if (!isEmpty(db, "PARAMETROS")) {
        const std::pair<const char*, QString> facts[] = {
            {"Nombre", c.nombre}, {"IDEmpresa", c.rif}, {"Codigo", c.codigo}};
        for (const auto& [column, value] : facts)
            if (!value.isEmpty())
                db::execute(
                    db, QStringLiteral("UPDATE PARAMETROS SET %1 = ?").arg(QLatin1String(column)),
                    {value});
        return false;
    }
    RowWriter(db, QStringLiteral("PARAMETROS"),
              columns({"Nombre",
                       "Codigo",
                       "NombreIdFiscal",
                       "IDEmpresa",
                       "Telefono",
                       "Fax",
                       "Direccion",
                       "Tipo",
                       "SimboloMoneda",
                       "CorreoElectronico",
                       "Nota1",
                       "Nota2",
                       "CongelarFacturas",
                       "MostrarBalanceDiario",
                       "DiscriminarImpuestoPrecio",
                       "ManejarClientesAfiliadosEspeciales",
                       "MargenAuxFact",
                       "ControlFactura",
                       "MargenFacturacionOrdenDespacho",
                       "DiasFacturarOrdenDespacho",
                       "UsaImpresoraFiscal",
                       "UltimaFactura",
                       "ActualizarPreciosArchivosExternos",
                       "NumeroConteos",
                       "DejarEditar",
                       "ServidorTelmar",
                       "CtaDevolucionVentaExenta",
                       "AutorizarEliminarItemFactura",
                       "ComportamientoExportar",
                       "VisualizarPromocion",
                       "VerificarCasaMatriz",
                       "FacturasCongeladasEnAjustes",
                       "AgruparFacturasCongeladasEnAjustes",
                       "PermitirFacturaContingencia",
                       "ItemsPorFactura",
                       "ExportaInformacionCasaMatriz",
                       "NombreEquipo",
                       "ManejarCantidadesDecimales",
                       "IdPais",
                       "DiscriminarImpuestoPrecios",
                       "UltimaDevolucion"}))
        .insert({c.nombre.isEmpty() ? s("MI EMPRESA") : c.nombre,
                 c.codigo.isEmpty() ? s("01") : c.codigo,
                 s("RIF:"),
                 c.rif,
                 s(""),
                 s(""),
                 s(""),
                 1,
                 s("Bs."),
                 s(""),
                 s(""),
                 s(""),
                 1,
                 1,
                 0,
                 0,
                 money(Decimal()),
                 1, // invoice and return counters per register
                 0,
                 30,
                 1, // registers print on fiscal printers
                 0,
                 0,
                 1,
                 1,
                 s(""),
                 s(""),
                 0,
                 s(""),
                 1,
                 0,
                 0,
                 0,
                 0,
                 0, // no limit of references per invoice
                 0,
                 QSysInfo::machineHostName().left(60),
                 0,
                 s("VE"),
                 0,
                 0});
    return true;
}

// The ways the sale, the payments and the closing recognise by name, with the codes their
// filters expect: 1 cash, 2 cheque, 3 and 4 cards, 5 on account, 7 several ways.
bool writePaymentWays(const QSqlDatabase& db) {
    struct Way {
        int code;
        const char* name;
        int order;
    };
    static const Way ways[] = {{1, "EFECTIVO", 1},          {2, "CHEQUE", 5},
                               {3, "TARJETA DE DEBITO", 3}, {4, "TARJETA DE CREDITO", 4},
                               {5, "CUENTA POR COBRAR", 8}, {7, "MULTIPLE", 7},
                               {9, "DEPOSITO", 6},          {11, "EFECTIVO DOLAR", 2}};
    bool wrote = false;
    RowWriter insert(db, QStringLiteral("FORMAPAGO"),
                     columns({"Codigo", "Nombre", "Status", "Orden"}));
    for (const Way& w : ways) {
        if (db::exists(db, QStringLiteral("SELECT 1 FROM FORMAPAGO WHERE Nombre = ?"), {s(w.name)}))
            continue;
        int code = w.code;
        if (db::exists(db, QStringLiteral("SELECT 1 FROM FORMAPAGO WHERE Codigo = ?"), {code}))
            code = db::scalar(db, QStringLiteral("SELECT MAX(Codigo) FROM FORMAPAGO")).toInt() + 1;
        insert.insert({code, s(w.name), 1, w.order});
        wrote = true;
    }
    return wrote;
}

bool writeTaxes(const QSqlDatabase& db) {
    if (!isEmpty(db, "IMPUESTOS"))
        return false;
    // Codes 1 to 3 are the rates the fiscal printer is programmed with (the opening takes them
    // from the printer); 4 is exempt.
    RowWriter taxes(db, QStringLiteral("IMPUESTOS"),
                    columns({"Codigo", "Nombre", "PorcentajeImpuesto"}));
    taxes.insert({1, s("IVA GENERAL"), Decimal(16).toVariant(2)});
    taxes.insert({2, s("IVA REDUCIDO"), Decimal(8).toVariant(2)});
    taxes.insert({3, s("IVA LUJO"), Decimal(31).toVariant(2)});
    taxes.insert({4, s("EXENTO"), Decimal(0).toVariant(2)});
    return true;
}

bool writeFiscalPrinter(const QSqlDatabase& db) {
    if (!isEmpty(db, "IMPRESORAFISCAL"))
        return false;
    // A register names its printer model; the daily maximum is high enough never to force a Z
    // on its own.
    RowWriter(
        db, QStringLiteral("IMPRESORAFISCAL"),
        columns({"ID", "NombreImpresora", "IdProcesoImpresion", "MontoMaximoDiario", "Status"}))
        .insert({1, s("IMPRESORA FISCAL"), 1, money(Decimal(50000000)), 1});
    return true;
}

// Position 003 is the one the sale takes its sellers from (TRABAJADORES.Cargo).
bool writePositions(const QSqlDatabase& db) {
    if (!isEmpty(db, "CARGOS"))
        return false;
    RowWriter positions(db, QStringLiteral("CARGOS"), columns({"Codigo", "Nombre", "Status"}));
    positions.insert({s("001"), s("GERENTE"), 1});
    positions.insert({s("002"), s("CAJERO"), 1});
    positions.insert({s("003"), s("VENDEDOR"), 1});
    positions.insert({s("004"), s("ALMACENISTA"), 1});
    return true;
}

bool writeTransferSettings(const QSqlDatabase& db) {
    if (!isEmpty(db, "PARAMETROSTRANSFER"))
        return false;
    RowWriter(db, QStringLiteral("PARAMETROSTRANSFER"),
              columns({"TipoConexion", "Intentos", "SegIntentos"}))
        .insert({1, 3, 30});
    return true;
}

bool writeClients(const QSqlDatabase& db) {
    bool wrote = false;
    if (isEmpty(db, "TIPOSCLIENTE")) {
        // 1 keeps the register's list, 2 is priced from the affiliate list, 3 at cost plus the
        // client's margin, 4 from the wholesale list.
        RowWriter types(db, QStringLiteral("TIPOSCLIENTE"),
                        columns({"Codigo", "Descripcion", "Status"}));
        types.insert({s("1"), s("DETAL"), 1});
        types.insert({s("2"), s("AFILIADO"), 1});
        types.insert({s("3"), s("ESPECIAL"), 1});
        types.insert({s("4"), s("MAYORISTA"), 1});
        wrote = true;
    }
    if (isEmpty(db, "TIPOSCONTRIBUYENTE")) {
        RowWriter types(db, QStringLiteral("TIPOSCONTRIBUYENTE"),
                        columns({"Codigo", "Descripcion", "Status"}));
        types.insert({s("1"), s("ORDINARIO"), 1});
        types.insert({s("2"), s("ESPECIAL"), 1});
        types.insert({s("3"), s("NO CONTRIBUYENTE"), 1});
        wrote = true;
    }
    if (!db::exists(db, QStringLiteral("SELECT 1 FROM CLIENTES WHERE Codigo = ?"),
                    {s("V00000000")})) {
        RowWriter(db, QStringLiteral("CLIENTES"),
                  columns({"Codigo", "Nombre", "FechaIngreso", "Status", "Tipo",
                           "TipoContribuyente", "Catalogo", "PorcentajeUtilidad"}))
            .insert({s("V00000000"), s("CLIENTE CONTADO"), db::serverNow(db), 1, s("1"), s("3"), 0,
                     Decimal(0).toVariant(2)});
        wrote = true;
    }
    return wrote;
}

} // namespace

QStringList writeStoreBasics(const QSqlDatabase& db, const CompanyFacts& company) {
    db::requireTransaction(db);
    CompanyFacts c = company;
    c.nombre = c.nombre.trimmed();
    c.codigo = c.codigo.trimmed();
    if (!c.rif.trimmed().isEmpty())
        c.rif = checkedRif(c.rif);
    QStringList done;
    if (writeCompany(db, c))
        done << s("Empresa creada (PARAMETROS).");
    else if (!c.nombre.isEmpty() || !c.rif.isEmpty() || !c.codigo.isEmpty())
        done << s("Datos de la empresa actualizados.");
    const bool noMenu = isEmpty(db, "SEG");
    writeStandardGroups(db);
    if (noMenu) {
        writeStandardMenu(db);
        done << s("Grupos ADMI, SISTEMAS, CAJERO y SUPINVE con el menú.");
    }
    if (writePaymentWays(db))
        done << s("Formas de pago.");
    if (writeTaxes(db))
        done << s("Impuestos 1 a 4.");
    if (writeFiscalPrinter(db))
        done << s("Impresora fiscal 1 para las cajas.");
    if (writePositions(db))
        done << s("Cargos (003 VENDEDOR: los vendedores de la venta son trabajadores con ese "
                  "cargo).");
    writeTransferSettings(db);
    if (writeClients(db))
        done << s("Tipos de cliente y de contribuyente, y el cliente contado V00000000.");
    return done;
}

QStringList initializeStore(const QSqlDatabase& db, const CompanyFacts& company) {
    db::Transaction tx(db);
    const QStringList done = writeStoreBasics(db, company);
    tx.commit();
    return done;
}

QString checkedRif(const QString& typed) {
    static const QRegularExpression rif(QStringLiteral("^([VEJPGC])[- ]?(\\d{8})[- ]?(\\d)$"),
                                        QRegularExpression::CaseInsensitiveOption);
    const auto m = rif.match(typed.trimmed());
    if (!m.hasMatch())
        throw UserError(s("RIF inválido: escriba la letra, los ocho dígitos y el dígito "
                          "verificador, por ejemplo J-12345678-9...!"));
    return m.captured(1).toUpper() + u'-' + m.captured(2) + u'-' + m.captured(3);
}

bool hasActiveUser(const QSqlDatabase& db) {
    return db::exists(db, QStringLiteral("SELECT 1 FROM USUARIOS WHERE Status = 1"));
}

namespace {

void checkAdministrator(const Administrator& admin) {
    if (admin.code.trimmed().isEmpty())
        throw UserError(s("Debe indicar el código del usuario...!"));
    if (admin.password.trimmed().isEmpty())
        throw UserError(s("La clave no puede estar vacía...!"));
}

AdministratorOutcome writeAdministrator(const QSqlDatabase& db, const Administrator& admin) {
    const QString code = admin.code.trimmed();
    // The login compares the trimmed password, so that is what is kept.
    const QString scrambled = security::scramble(admin.password.trimmed());
    const QString name = admin.name.trimmed().isEmpty() ? s("ADMINISTRADOR") : admin.name.trimmed();
    writeStandardGroups(db);
    AdministratorOutcome outcome = AdministratorOutcome::Created;
    if (db::execute(
            db, QStringLiteral("UPDATE USUARIOS SET Pasword = ?, Status = 1 WHERE CodUsuario = ?"),
            {scrambled, code}) > 0) {
        outcome = AdministratorOutcome::PasswordChanged;
    } else {
        db::execute(db,
                    QStringLiteral("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, "
                                   "Status) VALUES (?, ?, ?, 1)"),
                    {code, name, scrambled});
    }
    for (const char* group : {"ADMI", "SISTEMAS"}) {
        const QString g = QString::fromLatin1(group);
        if (!db::exists(db,
                        QStringLiteral("SELECT 1 FROM USUARIOGRUPO WHERE CodUsuario = ? AND "
                                       "CodGrupo = ?"),
                        {code, g}))
            db::execute(
                db, QStringLiteral("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES (?, ?)"),
                {code, g});
    }
    return outcome;
}

} // namespace

AdministratorOutcome saveAdministrator(const QSqlDatabase& db, const Administrator& admin) {
    checkAdministrator(admin);
    db::Transaction tx(db);
    const AdministratorOutcome outcome = writeAdministrator(db, admin);
    tx.commit();
    return outcome;
}

void startStore(const QSqlDatabase& db, const CompanyFacts& company, const Administrator& admin,
                const QString& confirmation) {
    if (company.nombre.trimmed().isEmpty())
        throw UserError(s("Debe indicar el nombre de la empresa...!"));
    if (company.rif.trimmed().isEmpty())
        throw UserError(s("Debe indicar el RIF de la empresa...!"));
    checkedRif(company.rif);
    checkAdministrator(admin);
    if (admin.password != confirmation)
        throw UserError(s("¡Confirmación de clave errada!"));
    db::Transaction tx(db);
    writeStoreBasics(db, company);
    writeAdministrator(db, admin);
    tx.commit();
}

} // namespace orvo::shell::setup
