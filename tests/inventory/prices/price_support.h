#pragma once

#include "common/db/sql.h"
#include "support/test_db.h"

namespace orvo::test {

// Three models: R1 of brand N1 in three sizes (category 010101), R2 of N1 in two (0201), R3 of
// A1 in one (010101, without a cost). Tax 1 at 16 %, one company row keying prices before tax.
class PriceTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO MARCAS (Codigo, Nombre, Status) VALUES ('N1', 'NIKE', 1), ('A1', "
             "'ADIDAS', 1)");
        exec("INSERT INTO CATEGORIAS (Codigo, Nombre, Status) VALUES ('01', 'CALZADO', 1), "
             "('0101', 'DEPORTIVO', 1), ('010101', 'TROTE', 1), ('02', 'ROPA', 1), ('0201', "
             "'FRANELAS', 1)");
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (1, 'GENERAL', "
             "16)");
        exec("INSERT INTO PARAMETROS (Nombre, DiscriminarImpuestoPrecios) VALUES ('TIENDA', 0)");
        variant("R1-36", "R1", "N1", "36", "010101", "100", "80", "90", "50");
        variant("R1-38", "R1", "N1", "38", "010101", "100", "80", "90", "52");
        variant("R1-40", "R1", "N1", "40", "010101", "100", "80", "90", "50");
        variant("R2-S", "R2", "N1", "S", "0201", "40", "35", "38", "20");
        variant("R2-M", "R2", "N1", "M", "0201", "40", "35", "38", "20");
        variant("R3-U", "R3", "A1", "U", "010101", "60", "55", "58", "0");
    }

    void variant(const char* barcode, const char* reference, const char* brand, const char* size,
                 const char* category, const char* retail, const char* wholesale,
                 const char* member, const char* cost) const {
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
             "Categoria, TipoImpuesto, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
             "PrecioPromocion, CostoPromedio, Existencia, Status) VALUES (?, ?, ?, ?, ?, ?, 1, ?, "
             "?, ?, 0, 0, ?, 5, 1)",
             {barcode, QString("ZAPATO %1 T:%2 NEGRO").arg(reference, size), reference, brand, size,
              category, retail, wholesale, member, cost});
    }

    void keyPricesWithTax() const { exec("UPDATE PARAMETROS SET DiscriminarImpuestoPrecios = 1"); }

    Decimal inventory(const char* column, const char* barcode) const {
        return Decimal::fromVariant(scalar(
            QString("SELECT %1 FROM INVENTARIO WHERE CodigoBarra = ?").arg(column), {barcode}));
    }
    Decimal listed(const char* column, int number, const char* reference) const {
        return Decimal::fromVariant(
            scalar(QString("SELECT %1 FROM MOVLISTAPRECIO WHERE Numero = ? AND Referencia = ?")
                       .arg(column),
                   {number, reference}));
    }
    static Decimal d(const char* text) { return Decimal::fromString(QString::fromLatin1(text)); }
};

} // namespace orvo::test
