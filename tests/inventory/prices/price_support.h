#pragma once

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "exchange/package/dbf_names.h"
#include "exchange/package/templates.h"
#include "exchange/package/zip_archive.h"
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

// The text of the UserError an action refuses with, "<no refusal>" when it goes through.
template <class F> QString refusal(F&& action) {
    try {
        action();
    } catch (const UserError& e) {
        return e.text();
    }
    return QStringLiteral("<no refusal>");
}

inline QVariant money(const Decimal& value) {
    return QVariant::fromValue(value);
}

// Head office's price lists as it sends them, written from the templates in `templates` into
// `folder`: list 12 of 04/05/2026 "PRECIOS DE MAYO" (R1 N1 at 150; R2 N1 at 45 on promotion at 36
// for ten days from today) and list 13 of 05/05/2026 (R3 A1 at 66.5). Wholesale is retail - 5,
// member retail - 2, cost 20. Returns the two tables' paths.
inline QStringList writeHeadOfficeLists(const QString& templates, const QString& folder,
                                        const char* summary, const char* lines,
                                        const char* summaryTemplate, const char* linesTemplate) {
    using exchange::package::dbfName;
    using exchange::package::DbfWriter;
    const auto d = [](const char* t) { return Decimal::fromString(QString::fromLatin1(t)); };
    const QString s = folder + "/" + summary + ".dbf";
    const QString l = folder + "/" + lines + ".dbf";
    DbfWriter head =
        DbfWriter::fromTemplate(exchange::package::findTemplate(summaryTemplate, templates), s);
    head.append({{dbfName("Numero"), 12},
                 {dbfName("Fecha"), QDate(2026, 5, 4)},
                 {dbfName("Observacion"), QString("PRECIOS DE MAYO")},
                 {dbfName("Status"), 1}});
    head.append({{dbfName("Numero"), 13}, {dbfName("Fecha"), QDate(2026, 5, 5)}});
    head.close();
    DbfWriter body =
        DbfWriter::fromTemplate(exchange::package::findTemplate(linesTemplate, templates), l);
    struct Sent {
        int number;
        const char* reference;
        const char* brand;
        const char* retail;
        const char* promotion; // nullptr: no promotion
    };
    for (const Sent& x : {Sent{12, "R1", "N1", "150", nullptr}, Sent{12, "R2", "N1", "45", "36"},
                          Sent{13, "R3", "A1", "66.5", nullptr}}) {
        QVariantHash v{{dbfName("Numero"), x.number},
                       {dbfName("Referencia"), QString(x.reference)},
                       {dbfName("CodigoMarca"), QString(x.brand)},
                       {dbfName("Costo"), money(d("20"))},
                       {dbfName("PrecioDetal"), money(d(x.retail))},
                       {dbfName("PrecioMayor"), money(d(x.retail) - d("5"))},
                       {dbfName("PrecioAfiliado"), money(d(x.retail) - d("2"))},
                       {dbfName("Promocion"), x.promotion ? 1 : 0}};
        if (x.promotion) {
            v.insert(dbfName("PrecioPromocion"), money(d(x.promotion)));
            v.insert(dbfName("FechaInicial"), QDate::currentDate());
            v.insert(dbfName("FechaFinal"), QDate::currentDate().addDays(10));
        }
        body.append(v);
    }
    body.close();
    return {s, l};
}

} // namespace orvo::test
