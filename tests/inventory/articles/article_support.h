#pragma once

#include "common/db/sql.h"
#include "inventory/articles/articles.h"
#include "support/test_db.h"

#include <QHostInfo>

namespace orvo::test {

// A store with the catalogues a model needs: brand N1, colours 01 NEGRO and 02 AZUL MARINO
// OSCURO, sizes 36 38 40, the category tree 01 > 0101 > 010101, tax 1 at 16%.
class ArticleTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO MARCAS (Codigo, Nombre, Status) VALUES ('N1', 'NIKE', 1), "
             "('A1', 'ADIDAS', 1), ('0', 'SIN MARCA', 1)");
        exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('01', 'NEGRO', 1), "
             "('02', 'AZUL MARINO OSCURO', 1)");
        exec("INSERT INTO TALLAS (Codigo, Talla) VALUES ('36', '36'), ('38', '38'), ('40', '40')");
        exec("INSERT INTO CATEGORIAS (Codigo, Nombre, Status) VALUES ('01', 'CALZADO', 1), "
             "('0101', 'DEPORTIVO', 1), ('010101', 'TROTE', 1)");
        exec("INSERT INTO FABRICANTES (Codigo, Nombre, Status) VALUES ('F1', 'FABRICA', 1)");
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (1, 'GENERAL', "
             "16)");
    }

    static inventory::ArticleModel model(const QString& reference = "REF-1") {
        inventory::ArticleModel m;
        m.reference = reference;
        m.brand = "N1";
        m.name = "  ZAPATO TROTE  ";
        m.category = "010101";
        m.manufacturer = "F1";
        m.taxCode = 1;
        m.retailPrice = Decimal::fromString(u"100.005");
        m.wholesalePrice = Decimal(80);
        m.memberPrice = Decimal(90);
        m.averageCost = Decimal::fromString(u"41.123456");
        m.lastCost = Decimal(40);
        m.reorderPoint = Decimal(5);
        m.note = "O'Neil";
        return m;
    }

    // Sizes 36 38 40 down, NEGRO and AZUL MARINO OSCURO across; barcodes <prefix><row><col>.
    static inventory::ModelGrid grid(const QString& prefix = "77") {
        inventory::ModelGrid g;
        for (const char* s : {"36", "38", "40"})
            g.addSize(s);
        g.addColour({"01", "NEGRO"});
        g.addColour({"02", "AZUL MARINO OSCURO"});
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 2; ++c)
                g.setBarcode(r, c, prefix + QString::number(r) + QString::number(c));
        return g;
    }

    static inventory::ArticleWriter writer() {
        return inventory::ArticleWriter::here("ANA", "frmArticulos");
    }

    void member(const QString& user, const QString& groupCode, const QString& groupName) {
        exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES (?, ?)", {groupCode, groupName});
        exec("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES (?, ?)", {user, groupCode});
    }

    // The database refuses inserting the INVENTARIO row of `barcode`: a failure half-way through.
    void refuseInsertOf(const QString& barcode) {
        if (isPostgres()) {
            exec("CREATE OR REPLACE FUNCTION orvo_refuse_inv() RETURNS trigger AS $$ BEGIN RAISE "
                 "EXCEPTION 'rechazado'; END $$ LANGUAGE plpgsql");
            exec(QString("CREATE TRIGGER tr_refuse_inv BEFORE INSERT ON INVENTARIO FOR EACH ROW "
                         "WHEN (NEW.CodigoBarra = '%1') EXECUTE FUNCTION orvo_refuse_inv()")
                     .arg(barcode));
        } else {
            exec(QString("CREATE TRIGGER TR_REFUSE_INV BEFORE INSERT ON INVENTARIO WHEN "
                         "NEW.CodigoBarra = '%1' BEGIN SELECT RAISE(ABORT, 'rechazado'); END")
                     .arg(barcode));
        }
    }
};

} // namespace orvo::test
