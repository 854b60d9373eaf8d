#pragma once

#include "exchange/package/dbf.h"

#include <QList>
#include <QString>
#include <QStringList>

// The templates of the exchange files: one empty dBase table per file, `<NAME>.est`, that fixes
// the file's columns. They ship with the program (the repository's Estructura/ folder, built into
// the executable) and `orvo db init` installs them into ORVO_HOME/Estructura, where head office
// may replace them with layouts of its own: the export fills whatever fields a template has.
namespace orvo::exchange::package {

// ORVO_HOME/Estructura
QString templateFolder();

// Throws the system's message when the template folder is missing:
// "No se puede encontrar el directorio de estructuras en la ruta específicada."
void requireTemplateFolder(const QString& folder = templateFolder());

// The template of a file by name, ignoring the case of name and extension ("MOVITRAN" finds
// "Movitran.EST"). UserError when the folder has none.
QString findTemplate(const QString& name, const QString& folder = templateFolder());

// Names of the templates the program carries ("VENTAS.est", ...).
QStringList shippedTemplates();

// Writes every shipped template into `folder` (created when missing), replacing a file of the
// same name in any case. Templates of other names are left alone. Returns the files written.
QStringList installTemplates(const QString& folder = templateFolder());

// The layouts the shipped templates are made from: each exported table's columns under their
// dBase names (see dbf_names.h). scripts/make_templates.sh writes them into Estructura/.
struct TemplateLayout {
    QString name; // file name without extension: "MOVVENTA"
    QList<DbfField> fields;
};
QList<TemplateLayout> templateLayouts();
// Writes each layout as an empty table `<name>.est` into `folder`. Returns the files written.
QStringList writeTemplateLayouts(const QString& folder);

} // namespace orvo::exchange::package
