#pragma once

#include <QString>
#include <QVariant>
#include <initializer_list>
#include <tuple>

namespace orvo::test {

// A small security tree:
//   VEN Ventas (folder, Orden 1)
//     VEN01 Facturación   Orden 1 NumNodo 2   'S' from CAJA
//     VEN02 Devoluciones  Orden 1 NumNodo 1   'N' from CAJA, 'S' from SUPER: shown
//     VEN_S _ separator   Orden 2
//     VEN03 Cierre        Orden 3             'N' from both: hidden
//   INV Inventario (folder, Orden 2): 'N' for everyone, so its leaf has nowhere to go
//     INV01 Colores       'S' from SUPER
//   CFG Clave (leaf at the top, Orden 3)
// CAJERO1 belongs to CAJA and SUPER; OTRO only to CAJA.
// `run(sql, values)` executes one statement.
template <class Run> void insertMenuData(Run&& run) {
    const QString node = QStringLiteral(
        "INSERT INTO SEG (Nivel, NumNodo, NodoPadre, CodNodo, NomNodo, Imagen, Forma, Orden, "
        "EsPadre) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    run(node, {1, 1, QString(), QStringLiteral("VEN"), QStringLiteral("Ventas"), QString(),
               QString(), 1, 1});
    run(node, {2, 2, QStringLiteral("VEN"), QStringLiteral("VEN01"), QStringLiteral("Facturación"),
               QString(), QStringLiteral("frmPruebaFacturacion"), 1, 0});
    run(node, {2, 1, QStringLiteral("VEN"), QStringLiteral("VEN02"), QStringLiteral("Devoluciones"),
               QString(), QStringLiteral("frmPruebaDevolucion"), 1, 0});
    run(node, {2, 3, QStringLiteral("VEN"), QStringLiteral("VEN_S"), QStringLiteral("_"), QString(),
               QString(), 2, 0});
    run(node, {2, 4, QStringLiteral("VEN"), QStringLiteral("VEN03"), QStringLiteral("Cierre"),
               QString(), QStringLiteral("frmCierreCaja"), 3, 0});
    run(node, {1, 2, QString(), QStringLiteral("INV"), QStringLiteral("Inventario"), QString(),
               QString(), 2, 1});
    run(node, {2, 1, QStringLiteral("INV"), QStringLiteral("INV01"), QStringLiteral("Colores"),
               QString(), QStringLiteral("frmColores"), 1, 0});
    run(node, {1, 3, QString(), QStringLiteral("CFG"), QStringLiteral("Clave"), QString(),
               QStringLiteral("frmNoExiste"), 3, 0});
    const QString grant =
        QStringLiteral("INSERT INTO GRUPOSEG (CodGrupo, CodNodo, Ver) VALUES (?, ?, ?)");
    for (const auto& [group, code, ver] :
         std::initializer_list<std::tuple<const char*, const char*, const char*>>{
             {"CAJA", "VEN", "S"},
             {"CAJA", "VEN01", "S"},
             {"CAJA", "VEN02", "N"},
             {"CAJA", "VEN_S", "S"},
             {"CAJA", "VEN03", "N"},
             {"SUPER", "VEN02", "S"},
             {"SUPER", "VEN03", "N"},
             {"SUPER", "INV", "N"},
             {"SUPER", "INV01", "S"},
             {"CAJA", "CFG", "S"}})
        run(grant,
            {QString::fromLatin1(group), QString::fromLatin1(code), QString::fromLatin1(ver)});
    const QString member =
        QStringLiteral("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES (?, ?)");
    run(member, {QStringLiteral("CAJERO1"), QStringLiteral("CAJA")});
    run(member, {QStringLiteral("CAJERO1"), QStringLiteral("SUPER")});
    run(member, {QStringLiteral("OTRO"), QStringLiteral("CAJA")});
}

} // namespace orvo::test
