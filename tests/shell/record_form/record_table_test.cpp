#include "common/errors/errors.h"
#include "shell/record_form/record_table.h"
#include "shell/record_form/refusing_trigger.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using Kind = RecordField::Kind;
using Values = QList<QPair<QString, QVariant>>;

namespace {

RecordTable colours() {
    return {"frmColores",
            "Colores",
            "COLORES",
            "Codigo",
            {{"Codigo", "txtCodigo", "Código", Kind::Text, 10, 0, true},
             {"Nombre", "txtNombre", "Nombre", Kind::Text, 60, 0, true},
             {"Status", "OptStatus", "Status", Kind::Status}},
            3};
}

RecordTable taxes() {
    RecordTable t{"frmImpuestos",
                  "Impuestos",
                  "IMPUESTOS",
                  "Codigo",
                  {{"Codigo", "txtCodigo", "Código", Kind::Integer, 0, 0, true},
                   {"Nombre", "txtNombre", "Nombre", Kind::Text, 60, 0, true},
                   {"PorcentajeImpuesto", "txtPorcentaje", "Porcentaje", Kind::Decimal, 0, 2}}};
    t.numericKey = true;
    return t;
}

class RecordTableTest : public test::DbTest {};

} // namespace

TEST_F(RecordTableTest, NextCodeIsPaddedAndComparesAsNumber) {
    EXPECT_EQ(records::nextCode(db(), "COLORES", "Codigo", 3), "001");
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('0', 'RESERVADO', 1)");
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('009', 'AZUL', 1)");
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('10', 'DOS CIFRAS', 1)");
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('011', 'TRES CIFRAS', 1)");
    EXPECT_EQ(records::nextCode(db(), "COLORES", "Codigo", 3), "012");
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('1200', 'MUCHOS', 1)");
    EXPECT_EQ(records::nextCode(db(), "COLORES", "Codigo", 3), "1201");
}

TEST_F(RecordTableTest, NextCodePassesOverCodesThatAreNotNumbers) {
    for (const char* code : {"A12", "007", "10", "12B", "1E3", "-50", " 99"})
        exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES (?, 'TECLEADO', 1)", {code});
    EXPECT_EQ(records::nextCode(db(), "COLORES", "Codigo", 3), "011");
    exec("DELETE FROM COLORES WHERE Codigo IN ('007', '10')");
    EXPECT_EQ(records::nextCode(db(), "COLORES", "Codigo", 3), "001");
}

TEST_F(RecordTableTest, SaveFindAndDeleteAColour) {
    const RecordTable t = colours();
    exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('0', 'RESERVADO', 1)");
    records::save(db(), t, "ROOT", {{"Codigo", "002"}, {"Nombre", "ROJO"}, {"Status", 1}}, true);
    records::save(db(), t, "ROOT", {{"Codigo", "001"}, {"Nombre", "O'NEIL"}, {"Status", 0}}, true);

    const RecordRows rows = records::load(db(), t);
    ASSERT_EQ(rows.rows.size(), 2); // the reserved code is not shown
    EXPECT_EQ(rows.rows[0][0].toString(), "001");
    EXPECT_EQ(rows.rows[0][1].toString(), "O'NEIL");
    EXPECT_EQ(rows.rows[0][2].toInt(), 0);

    try {
        records::save(db(), t, "ROOT", {{"Codigo", "002"}, {"Nombre", "OTRO"}, {"Status", 1}},
                      true);
        FAIL() << "duplicate accepted";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "Registro duplicado!");
    }
    records::save(db(), t, "ROOT", {{"Codigo", "002"}, {"Nombre", "ROJO VIVO"}, {"Status", 0}},
                  false);
    EXPECT_EQ(scalar("SELECT Nombre FROM COLORES WHERE Codigo = '002'").toString(), "ROJO VIVO");

    EXPECT_EQ(records::find(db(), t, {{"Nombre", "ROJO VIVO"}}).toString(), "002");
    EXPECT_EQ(records::find(db(), t, {{"Nombre", ""}, {"Status", "0"}}).toString(), "001");
    EXPECT_EQ(records::find(db(), t, {{"Nombre", "ROJO VIVO"}, {"Status", "1"}}), QVariant());
    EXPECT_EQ(records::find(db(), t, {{"Nombre", "RESERVADO"}}), QVariant());

    records::remove(db(), t, "ROOT", "002");
    EXPECT_EQ(count("COLORES", "Codigo = '002'"), 0);
}

TEST_F(RecordTableTest, NumericKeysAndDecimals) {
    const RecordTable t = taxes();
    records::save(db(), t, "ROOT",
                  {{"Codigo", "1"}, {"Nombre", "GENERAL"}, {"PorcentajeImpuesto", "16.00"}}, true);
    records::save(db(), t, "ROOT",
                  {{"Codigo", "2"}, {"Nombre", "REDUCIDA"}, {"PorcentajeImpuesto", "8.50"}}, true);
    EXPECT_EQ(records::find(db(), t, {{"Codigo", "2"}}).toInt(), 2);
    EXPECT_EQ(records::find(db(), t, {{"PorcentajeImpuesto", "16"}}).toInt(), 1);
    EXPECT_EQ(
        Decimal::fromVariant(scalar("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE Codigo = 2"))
            .toString(2),
        "8.50");
}

TEST_F(RecordTableTest, RefusedDeleteKeepsTheRowAndReportsTheDatabaseError) {
    const RecordTable t = colours();
    records::save(db(), t, "ROOT", {{"Codigo", "005"}, {"Nombre", "VERDE"}, {"Status", 1}}, true);
    test::refuseDeleteOf(db(), "COLORES", "Codigo", "005", "Color usado en articulos");
    try {
        records::remove(db(), t, "ROOT", "005");
        FAIL() << "the database should refuse";
    } catch (const DbError& e) {
        EXPECT_FALSE(e.number().isEmpty());
        EXPECT_TRUE(e.text().contains("Color usado en articulos")) << e.text().toStdString();
    }
    EXPECT_EQ(count("COLORES", "Codigo = '005'"), 1);
}

TEST_F(RecordTableTest, WriteGuardRunsBeforeAnyChange) {
    RecordTable t = colours();
    t.writeGuard = [](const QSqlDatabase&, const QString& user) {
        if (user != "ROOT")
            throw UserError("sin permiso");
    };
    EXPECT_THROW(records::save(db(), t, "PEPE", {{"Codigo", "001"}, {"Nombre", "X"}}, true),
                 UserError);
    records::save(db(), t, "ROOT", {{"Codigo", "001"}, {"Nombre", "X"}, {"Status", 1}}, true);
    EXPECT_THROW(records::remove(db(), t, "PEPE", "001"), UserError);
    EXPECT_EQ(count("COLORES"), 1);
}
