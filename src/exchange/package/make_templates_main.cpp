// Writes the exchange templates (<NAME>.est) from their layouts into the folder given, for the
// repository's Estructura/ folder (scripts/make_templates.sh).
#include "common/errors/errors.h"
#include "exchange/package/templates.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    if (argc != 2) {
        out << "uso: orvo_make_templates CARPETA" << Qt::endl;
        return 2;
    }
    try {
        const QStringList files =
            orvo::exchange::package::writeTemplateLayouts(QString::fromLocal8Bit(argv[1]));
        out << files.size() << " estructuras escritas en " << argv[1] << Qt::endl;
    } catch (const orvo::UserError& e) {
        out << e.text() << Qt::endl;
        return 1;
    }
    return 0;
}
