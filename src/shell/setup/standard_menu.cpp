// The standard groups (GRUPOS), the menu tree (SEG) and the grants of each group (GRUPOSEG).
#include "common/db/sql.h"
#include "shell/setup/row_writer.h"
#include "shell/setup/store_setup.h"

#include <QSet>
#include <functional>

namespace orvo::shell::setup {

namespace {

struct Leaf {
    const char* caption;
    const char* form;
};

struct Folder {
    const char* caption;
    QList<Leaf> leaves;
};

// Menus in the order they appear; a node's code is its folder's two digits followed by its own.
// EsPadre is 1 for a folder and 0 for a screen.
const QList<Folder>& menuTree() {
    static const QList<Folder> tree = {
        {"Archivo",
         {{"Artículos", "frmArticulos"},
          {"Marcas", "frmMarcas"},
          {"Colores", "frmColores"},
          {"Tallas", "frmTallas"},
          {"Categorías", "frmCategorias"},
          {"Fabricantes", "frmFabricantes"},
          {"Impuestos", "frmImpuestos"},
          {"Sucursales", "frmSucursales"},
          {"Trabajadores", "frmTrabajadores"},
          {"Vehículos", "frmVehiculos"},
          {"Tipos de ajuste", "frmTipoAjustes"},
          {"Lotes", "frmLotes"},
          {"Cambiar códigos de barra", "frmCambiarCodigos"},
          {"Cargar artículos", "frmCargarArticulos"},
          {"Control de acceso", "frmControlAcceso"},
          {"Clientes", "frmClientes"},
          {"Proveedores", "frmProveedores"},
          {"Vendedores", "frmVendedores"},
          {"Bancos", "frmBancos"},
          {"Cuentas bancarias", "frmCuentasBancarias"},
          {"Cuentas contables", "frmCuentasContables"},
          {"Cargos", "frmCargos"},
          {"Tipos de cliente", "frmTiposCliente"},
          {"Tipos de contribuyente", "frmTiposContribuyente"},
          {"Tipos de proveedor", "frmTiposProveedor"},
          {"Tipos de despacho", "frmTiposDespacho"}}},
        {"Ventas",
         {{"Facturación", "frmFacturacion"},
          {"Devoluciones", "frmDevolucion"},
          {"Cambios de mercancía", "frmCambiosDeMercancia"},
          {"Apertura de caja", "frmAperturaCaja"},
          {"Cierre de caja", "frmCierreCaja"},
          {"Cierre de caja foránea", "frmCierreCajaForanea"},
          {"Salidas de caja", "frmSalidasCaja"},
          {"Depósitos", "frmDepositos"},
          {"Confirmar depósitos", "frmConfirmarDepositos"},
          {"Órdenes de despacho", "frmOrdenDespacho"}}},
        {"Inventario",
         {{"Ajustes", "frmAjustes"},
          {"Toma física (un conteo)", "frmTomaFisica1"},
          {"Toma física (dos conteos)", "frmTomaFisica2"},
          {"Toma física (tres conteos)", "frmTomaFisica3"},
          {"Toma física parcial", "frmTomaParcial"},
          {"Ajuste físico lógico", "frmAjusteFisicoLogico"},
          {"Ajuste físico lógico parcial", "frmAjusteFisicoLogicoParcial"},
          {"Aprobar conteos en lotes", "frmAprobarConteosEnLotes"},
          {"Kardex", "frmKardex"},
          {"Reporte de kardex", "frmReporteKardex"},
          {"Listas de precios", "frmListaPrecios"},
          {"Precios de promoción", "frmPreciosPromocion"},
          {"Actualizar precios", "frmActualizarPrecios"},
          {"Entrada de seriales", "frmEntradaSeriales"}}},
        {"Compras",
         {{"Órdenes de compra", "frmOrdenCompras"},
          {"Compras", "frmCompras"},
          {"Devoluciones de compra", "frmDevCompra"},
          {"Recepción", "frmRecepcion"},
          {"Comparar recepción con compra", "frmCompararRecepcionCompra"}}},
        {"Transferencias",
         {{"Transferencias", "frmTransferencias"},
          {"Devoluciones de transferencias", "frmDevTransferencias"},
          {"Cambiar destino de transferencia", "frmCambiarDestinoTrans"},
          {"Desplazar transferencias", "frmDesplazarTransferencias"},
          {"Remisiones", "frmRemision"},
          {"Guías de despacho", "frmGuiaDespacho"},
          {"Compra a transferencia", "frmConvCompTransfer"},
          {"Compra a orden de despacho", "frmConvCompOrdenDesp"},
          {"Remisión a transferencia", "frmConvRemTransfer"},
          {"Remisión a orden de despacho", "frmConvRemOrdenDesp"},
          {"Remisión manual a orden de despacho", "frmConvRemManualOrdenDesp"},
          {"Remisión o recepción a ajuste", "frmConvRemRecAjuste"},
          {"Recepción a devolución de transferencia", "frmConvRecDevTransfer"},
          {"Transferencia a factura", "frmConvTransferFact"}}},
        {"Intercambio",
         {{"Exportar datos de la tienda", "frmExpArchivosOrvo"},
          {"Exportar a casa matriz", "frmExpArchivos"},
          {"Exportar a XML", "frmExpArchivosXML"},
          {"Exportar documentos", "frmExportarArchivos"},
          {"Exportar transferencias a tienda", "frmExportarArchivosVandu"},
          {"Exportar tasa de cambio", "frmExportarTasaCambio"},
          {"Enviar archivos", "frmEnvioTraNet"},
          {"Histórico de envíos FTP", "frmHistoricoEnvioFTP"},
          {"Cargar transferencias", "frmImpTransferencias"},
          {"Cargar devoluciones de transferencias", "frmImpDevTransferencias"},
          {"Cargar listas de precios", "frmImpListaPrecios"},
          {"Generar transferencias desde DBF", "frmGenerarTransferenciasDeDBF"},
          {"Generar órdenes de despacho desde DBF", "frmGenerarOrdenDespDesdeDBF"},
          {"Migrar datos (Access)", "frmImportarDatosVandu"},
          {"Migrar datos (SQL Server)", "frmImportarDatosVanduSQL"},
          {"Migrar datos (incremental)", "frmImportarDatosVanduI"},
          {"Migrar datos Ferlo", "frmImportarDatosFerlo"},
          {"Interfaz contable punto de venta", "frmInterfazContablePuntoDeVenta"},
          {"Interfaz contable Librax", "frmInterfazContableLibrax"}}},
        {"Seguridad",
         {{"Usuarios", "FrmUsuario"},
          {"Grupos de usuarios", "FrmGrupoUsuario"},
          {"Estructura del menú", "FrmEstructura"},
          {"Cambiar clave", "frmCambiarClave"}}},
        {"Configuración",
         {{"Configurar caja", "frmConfigurarCaja"},
          {"Corregir consecutivos", "frmCorregirConsecutivos"},
          {"Operaciones de la impresora fiscal", "frmOperacionesFiscales"},
          {"Impresoras fiscales", "frmImpresorasFiscales"},
          {"Formas de pago", "frmFormaPago"},
          {"Registrar tasa de cambio", "frmRegistrarTasaCambio"},
          {"Configurar FTP", "frmConfigurarFTP"},
          {"Servidor de base de datos", "frmConfServidor"}}},
    };
    return tree;
}

// What each group that is not an administrator may open; its folders follow from its screens.
const QSet<QString>& cashierForms() {
    static const QSet<QString> forms = {
        QStringLiteral("frmFacturacion"),        QStringLiteral("frmDevolucion"),
        QStringLiteral("frmCambiosDeMercancia"), QStringLiteral("frmAperturaCaja"),
        QStringLiteral("frmCierreCaja"),         QStringLiteral("frmSalidasCaja"),
        QStringLiteral("frmDepositos"),          QStringLiteral("frmCambiarClave"),
    };
    return forms;
}

bool inventorySupervisorSees(const QString& folder, const QString& form) {
    static const QSet<QString> folders = {QStringLiteral("Archivo"), QStringLiteral("Inventario"),
                                          QStringLiteral("Compras"),
                                          QStringLiteral("Transferencias")};
    return folders.contains(folder) || form == QLatin1String("frmCambiarClave");
}

struct Grant {
    const char* group;
    const char* name;
    std::function<bool(const QString& folder, const QString& form)> sees;
};

const QList<Grant>& standardGroups() {
    static const QList<Grant> grants = {
        {"ADMI", "ADMINISTRADOR", [](const QString&, const QString&) { return true; }},
        {"SISTEMAS", "SISTEMAS", [](const QString&, const QString&) { return true; }},
        {"CAJERO", "CAJERO",
         [](const QString&, const QString& form) { return cashierForms().contains(form); }},
        {"SUPINVE", "SUPERVISOR DE INVENTARIO", inventorySupervisorSees},
    };
    return grants;
}

} // namespace

void writeStandardGroups(const QSqlDatabase& db) {
    db::Sql exists(db, QStringLiteral("SELECT CodGrupo FROM GRUPOS WHERE UPPER(CodGrupo) = ?"));
    RowWriter groups(db, QStringLiteral("GRUPOS"), columns({"CodGrupo", "NombreGrupo"}));
    for (const Grant& g : standardGroups()) {
        exists.bind(QString::fromLatin1(g.group)).exec();
        if (!exists.next())
            groups.insert({QString::fromLatin1(g.group), QString::fromUtf8(g.name)});
    }
}

void writeStandardMenu(const QSqlDatabase& db) {
    const QList<Grant>& grants = standardGroups();

    RowWriter seg(db, QStringLiteral("SEG"),
                  {QStringLiteral("Nivel"), QStringLiteral("NumNodo"), QStringLiteral("NodoPadre"),
                   QStringLiteral("CodNodo"), QStringLiteral("NomNodo"), QStringLiteral("Imagen"),
                   QStringLiteral("Forma"), QStringLiteral("Orden"), QStringLiteral("EsPadre")});
    RowWriter grupoSeg(
        db, QStringLiteral("GRUPOSEG"),
        {QStringLiteral("CodGrupo"), QStringLiteral("CodNodo"), QStringLiteral("Ver")});
    auto grantNode = [&](const QString& node, const std::function<bool(const Grant&)>& sees) {
        for (const Grant& g : grants)
            grupoSeg.insert({QString::fromLatin1(g.group), node,
                             sees(g) ? QStringLiteral("S") : QStringLiteral("N")});
    };

    // Empty text, not NULL: top-level nodes have no parent and no node has an icon key yet.
    const QString kEmpty = QStringLiteral("");
    int numNodo = 0;
    const QList<Folder>& tree = menuTree();
    for (int f = 0; f < tree.size(); ++f) {
        const Folder& folder = tree[f];
        const QString folderCaption = QString::fromUtf8(folder.caption);
        const QString folderCode = QStringLiteral("%1").arg(f + 1, 2, 10, QLatin1Char('0'));
        seg.insert({1, ++numNodo, kEmpty, folderCode, folderCaption, kEmpty, kEmpty, f + 1, 1});
        // A folder is offered to a group that may open at least one of its screens.
        grantNode(folderCode, [&](const Grant& g) {
            for (const Leaf& leaf : folder.leaves)
                if (g.sees(folderCaption, QString::fromLatin1(leaf.form)))
                    return true;
            return false;
        });
        for (int l = 0; l < folder.leaves.size(); ++l) {
            const Leaf& leaf = folder.leaves[l];
            const QString form = QString::fromLatin1(leaf.form);
            const QString code =
                folderCode + QStringLiteral("%1").arg(l + 1, 2, 10, QLatin1Char('0'));
            seg.insert({2, ++numNodo, folderCode, code, QString::fromUtf8(leaf.caption), kEmpty,
                        form, l + 1, 0});
            grantNode(code, [&](const Grant& g) { return g.sees(folderCaption, form); });
        }
    }
}

} // namespace orvo::shell::setup
