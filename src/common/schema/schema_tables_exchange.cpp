// Store data exchange: FTP sending log, dial-up and mail accounts, queued mail, XML export.
#include "common/schema/schema_tables.h"

namespace orvo::schema::tables {

using namespace col;

QList<Table> exchangeTables() {
    return {
        // One row per sending; a re-sending points to the sending it repeats.
        table("FTPLOG",
              {identity("IdFtpLog"), integer("IdTipoDocumento"), dateTime("FechaRegistro"),
               text("Usuario", 20), text("Equipo", 60), text("DireccionIP", 45),
               smallint("IdEstatus"), text("Sucursal", 15), text("Observacion", 255),
               text("Archivo", 255), integer("IdFTPLogPadre"), memo("Documentos"),
               smallint("IndEliminarRemoto"), integer("IdFtpLogEliminado")},
              {}, {{"FechaRegistro"}, {"Sucursal"}}),
        table("FTPLOGDOCUMENTOS",
              {integer("IdFTPLog"), integer("IdTipoDocumento"), text("NumeroDocumento", 20)}, {},
              {{"IdFTPLog"}}),
        // Dial-up accounts, tried by ascending Prioridad.
        table("CUENTAS_NET", {text("EntryName", 60), text("NumeroTelf", 30), text("Usuario", 60),
                              text("PassWord", 60), smallint("Prioridad")}),
        table("CUENTAS_MAIL",
              {text("Nombre", 60), text("SrvSalida", 100), integer("PuertoSaliente"),
               text("SrvEntrada", 100), text("UsrMail", 100), text("SrvDominio", 100),
               text("PswMail", 60), text("EMailDest", 255)}),
        // Messages waiting to be mailed; Asunto is subject and body.
        table("MENSAJES", {text("Asunto", 255), text("Anexo", 255)}),
        // XML export definitions: a query per exported table.
        table("EXPORTACION", {text("Nombre", 60), text("NombreTabla", 60), memo("Consulta"),
                              smallint("Exportar"), text("mensaje", 255)}),
    };
}

} // namespace orvo::schema::tables
