// The store database, table by table. Columns stand in the order the program inserts them.
#include "common/schema/schema.h"

namespace orvo::schema {

using namespace col;

const QList<Table>& storeTables() {
    static const QList<Table> tables = {
        {"TABLA_VALORES",
         {text("IdTabla", 20), text("Codigo", 20), text("Descripcion", 255)},
         {},
         {{"IX_TABLA_VALORES_IdTabla", {"IdTabla", "Codigo"}}}},
        {"COLORES",
         {text("Codigo", 10), text("Nombre", 60), smallint("Status", "1")},
         {"Codigo"}},
    };
    return tables;
}

} // namespace orvo::schema
