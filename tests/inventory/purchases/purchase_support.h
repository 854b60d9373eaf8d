#pragma once

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "exchange/package/templates.h"
#include "inventory/purchases/purchase_types.h"
#include "support/test_db.h"

#include <QTemporaryDir>
#include <ostream>

namespace orvo {
// Failures show amounts as numbers.
inline void PrintTo(const Decimal& value, std::ostream* out) {
    *out << value.toString().toStdString();
}
} // namespace orvo

namespace orvo::test {

inline Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

// ORVO_HOME points at a fresh folder while the object lives (local backups, listed files).
class HomeFolder {
public:
    HomeFolder() : m_old(qgetenv("ORVO_HOME")) { qputenv("ORVO_HOME", m_dir.path().toUtf8()); }
    ~HomeFolder() {
        if (m_old.isEmpty())
            qunsetenv("ORVO_HOME");
        else
            qputenv("ORVO_HOME", m_old);
    }
    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    QByteArray m_old;
};

// A store with two suppliers, taxes 1 (16%) and 4 (exempt), the branch 01 and the articles each
// test asks for.
class PurchaseTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (1, 'GENERAL', "
             "16), (4, 'EXENTO', 0)");
        exec("INSERT INTO PROVEEDORES (Codigo, Nombre, Status) VALUES ('P1', 'CONFECCIONES "
             "ARAGUA', 1), ('P2', 'TEXTILES DEL LAGO', 1)");
        exec("INSERT INTO MARCAS (Codigo, Nombre, Status) VALUES ('N1', 'NIKE', 1)");
        exec("INSERT INTO SUCURSALES (Codigo, Nombre, Status) VALUES ('01', 'TIENDA', 1), ('02', "
             "'CERRADA', 0)");
    }

    // A variant of model `reference` (brand N1) with its stock and average cost.
    void article(const QString& barcode, const QString& reference, const char* stock = "0",
                 const char* cost = "0", int tax = 1) {
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
             "CodigoColor, TipoImpuesto, PrecioDetal, Promocion, Existencia, CostoPromedio, "
             "UltimoCosto, Tipo, Status) VALUES (?, ?, ?, 'N1', 'U', '01', ?, 50, 0, ?, ?, 0, 0, "
             "0)",
             {barcode, "CAMISA " + barcode, reference, tax, QString::fromLatin1(stock),
              QString::fromLatin1(cost)});
    }

    Decimal dec(const QString& sql, std::initializer_list<QVariant> values = {}) const {
        return Decimal::fromVariant(scalar(sql, values));
    }
    Decimal stock(const QString& barcode) const {
        return dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {barcode});
    }
    Decimal averageCost(const QString& barcode) const {
        return dec("SELECT CostoPromedio FROM INVENTARIO WHERE CodigoBarra = ?", {barcode});
    }
    Decimal lastCost(const QString& barcode) const {
        return dec("SELECT UltimoCosto FROM INVENTARIO WHERE CodigoBarra = ?", {barcode});
    }

    static inventory::purchases::DocumentLine line(const QString& barcode, const char* quantity,
                                                   const char* price, const char* tax = "16") {
        return {barcode, QString(), d(quantity), d(price), d(tax)};
    }

    static inventory::purchases::Purchase
    purchase(const QString& document, const QList<inventory::purchases::DocumentLine>& lines,
             const QString& supplier = "P1") {
        inventory::purchases::Purchase p;
        p.document = document;
        p.supplier = supplier;
        p.date = QDateTime::currentDateTime();
        p.invoiceDate = QDate::currentDate();
        p.user = "ANA";
        p.lines = lines;
        return p;
    }

    // The database refuses updating the INVENTARIO row of `barcode`: a failure half-way through
    // an approval.
    void refuseStockUpdateOf(const QString& barcode) {
        if (isPostgres()) {
            exec("CREATE OR REPLACE FUNCTION orvo_refuse_stock() RETURNS trigger AS $$ BEGIN "
                 "RAISE EXCEPTION 'rechazado'; END $$ LANGUAGE plpgsql");
            exec(QString("CREATE TRIGGER tr_refuse_stock BEFORE UPDATE ON INVENTARIO FOR EACH "
                         "ROW WHEN (NEW.CodigoBarra = '%1') EXECUTE FUNCTION orvo_refuse_stock()")
                     .arg(barcode));
        } else {
            exec(QString("CREATE TRIGGER TR_REFUSE_STOCK BEFORE UPDATE ON INVENTARIO WHEN "
                         "NEW.CodigoBarra = '%1' BEGIN SELECT RAISE(ABORT, 'rechazado'); END")
                     .arg(barcode));
        }
    }
};

// A MOVITRAN.DBF in `folder`, written from the shipped template as another store exports it:
// (barcode, quantity, value) per record.
inline QString
writePackingList(const QString& folder,
                 std::initializer_list<std::tuple<const char*, const char*, const char*>> records) {
    const QString templates = folder + "/Estructura";
    exchange::package::installTemplates(templates);
    const QString path = folder + "/MOVITRAN.DBF";
    auto out = exchange::package::DbfWriter::fromTemplate(
        exchange::package::findTemplate("MOVITRAN", templates), path);
    int item = 0;
    for (const auto& [code, quantity, value] : records)
        out.append(QVariantHash{{"NumTra", 31},
                                {"CajaNum", 1},
                                {"Item", ++item},
                                {"CodBarra", QString::fromLatin1(code)},
                                {"Nombre", QStringLiteral("ARTÍCULO ") + code},
                                {"Cantidad", QVariant::fromValue(d(quantity))},
                                {"Valor", QVariant::fromValue(d(value))}});
    out.close();
    return path;
}

// Runs `action` and returns the text it was refused with (empty when it went through).
template <class F> QString refusal(F&& action) {
    try {
        action();
    } catch (const UserError& e) {
        return e.text();
    }
    return {};
}

} // namespace orvo::test
