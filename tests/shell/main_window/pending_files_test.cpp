#include "shell/main_window/pending_files.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo::shell;

namespace {

void drop(const QTemporaryDir& home, const QString& relative) {
    const QString path = home.filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
}

} // namespace

TEST(PendingFiles, EachKindNeedsBothOfItsFiles) {
    QTemporaryDir home;
    EXPECT_TRUE(scanPendingFiles(home.path()).isEmpty());

    drop(home, QStringLiteral("Recibe/ResuTran.DBF"));
    EXPECT_TRUE(scanPendingFiles(home.path()).isEmpty());

    // Names arrive in any case.
    drop(home, QStringLiteral("Recibe/movitran.dbf"));
    drop(home, QStringLiteral("Recibe/RESLISTA.DBF"));
    drop(home, QStringLiteral("Recibe/MovLista.dbf"));
    drop(home, QStringLiteral("Recibe/ResuODes.DBF"));
    drop(home, QStringLiteral("Recibe/MoviODes.DBF"));
    PendingFiles p = scanPendingFiles(home.path());
    EXPECT_EQ(
        p.lines,
        (QStringList{QStringLiteral("- Existen transferencias pendientes por cargar."),
                     QStringLiteral("- Existen listas de precios (FERLO) pendientes por cargar."),
                     QStringLiteral("- Existen orden de despacho pendientes.")}));
    EXPECT_EQ(p.buttons,
              (QStringList{QStringLiteral("Transferencias"), QStringLiteral("ListaPrecios")}));
}

TEST(PendingFiles, PayrollUpdatesAndReprintButton) {
    QTemporaryDir home;
    drop(home, QStringLiteral("Recibe/nomina0101.imp"));
    PendingFiles p = scanPendingFiles(home.path());
    EXPECT_TRUE(p.lines.isEmpty());
    EXPECT_EQ(p.buttons, QStringList{QStringLiteral("ReimprimirNomina")});

    drop(home, QStringLiteral("Recibe/NOMINA.TXT"));
    drop(home, QStringLiteral("Actualizar/Actualizar.EXE"));
    drop(home, QStringLiteral("Recibe/ResuFact.DBF"));
    drop(home, QStringLiteral("Recibe/MoviFact.DBF"));
    p = scanPendingFiles(home.path());
    EXPECT_EQ(
        p.lines,
        (QStringList{QStringLiteral("- Existen compras pendientes por cargar."),
                     QStringLiteral("- Existen nominas pendientes."),
                     QStringLiteral("- Existen actualizaciones pendientes (Cierre el sistema).")}));
    EXPECT_TRUE(p.buttons.contains(QStringLiteral("Compras")));
    EXPECT_TRUE(p.buttons.contains(QStringLiteral("Nomina")));
}
