#pragma once

#include "common/db/sql.h"
#include "exchange/package/templates.h"
#include "inventory/purchases/purchase_support.h"
#include "inventory/transfers/transfer_types.h"
#include "support/test_db.h"

#include <QDir>
#include <QFile>

namespace orvo::test {

// A store of the chain: its branch code, the branches it knows (all active), the catalogues the
// articles below use, and the articles each test asks for. Two of them make the two ends of a
// transfer: the fixture's database is store 01, `other()` is store 02.
class TransferTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exchange::package::installTemplates(); // into the ORVO_HOME of m_home
        prepareStore(db(), "01");
    }

    static void run(const QSqlDatabase& db, const QString& sql,
                    std::initializer_list<QVariant> values = {}) {
        db::execute(db, sql, values);
    }

    static void prepareStore(const QSqlDatabase& db, const QString& code) {
        run(db, "INSERT INTO PARAMETROS (Nombre, Codigo) VALUES ('TIENDAS ORVO', ?)", {code});
        run(db, "INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES (1, 'GENERAL', "
                "16)");
        run(db, "INSERT INTO SUCURSALES (Codigo, Nombre, Status) VALUES ('00', 'CASA MATRIZ', 1), "
                "('01', 'TIENDA CENTRO', 1), ('02', 'TIENDA VALENCIA', 1), ('03', 'TIENDA "
                "CERRADA', 0)");
        run(db, "INSERT INTO MARCAS (Codigo, Nombre, Status) VALUES ('N1', 'NIKE', 1)");
        run(db, "INSERT INTO TALLAS (Codigo, Talla, Status) VALUES ('M', 'M', 1)");
        run(db, "INSERT INTO COLORES (Codigo, Nombre, Status) VALUES ('01', 'BLANCO', 1)");
        run(db, "INSERT INTO TIPO_DESPACHO (ID, Descripcion, Estado) VALUES (2, 'TRASLADO A "
                "SUCURSAL', 1), (3, 'VIEJO', 0)");
    }

    // A variant of model (reference, brand) with its stock, average cost and retail price.
    static void article(const QSqlDatabase& db, const QString& barcode, const QString& reference,
                        const char* stock, const char* cost, const char* retail = "50",
                        const QString& brand = "N1") {
        run(db,
            "INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
            "CodigoColor, Fabricante, Categoria, TipoImpuesto, PrecioDetal, PrecioMayor, "
            "PrecioAfiliado, Promocion, PrecioPromocion, Existencia, CostoPromedio, UltimoCosto, "
            "Tipo, Status) VALUES (?, ?, ?, ?, 'M', '01', '', '', 1, ?, ?, ?, 0, 0, ?, ?, ?, 0, 1)",
            {barcode, "CAMISA " + barcode, reference, brand, QString::fromLatin1(retail),
             QString::fromLatin1(retail), QString::fromLatin1(retail), QString::fromLatin1(stock),
             QString::fromLatin1(cost), QString::fromLatin1(cost)});
    }
    void article(const QString& barcode, const QString& reference, const char* stock,
                 const char* cost, const char* retail = "50") const {
        article(db(), barcode, reference, stock, cost, retail);
    }

    static Decimal value(const QSqlDatabase& db, const QString& sql,
                         std::initializer_list<QVariant> values = {}) {
        return Decimal::fromVariant(db::scalar(db, sql, values));
    }
    static Decimal stock(const QSqlDatabase& db, const QString& barcode) {
        return value(db, "SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {barcode});
    }
    static Decimal averageCost(const QSqlDatabase& db, const QString& barcode) {
        return value(db, "SELECT CostoPromedio FROM INVENTARIO WHERE CodigoBarra = ?", {barcode});
    }
    Decimal dec(const QString& sql, std::initializer_list<QVariant> values = {}) const {
        return value(db(), sql, values);
    }
    Decimal stock(const QString& barcode) const { return stock(db(), barcode); }
    Decimal averageCost(const QString& barcode) const { return averageCost(db(), barcode); }
    static int rows(const QSqlDatabase& db, const QString& table, const QString& where = "1 = 1",
                    std::initializer_list<QVariant> values = {}) {
        return db::scalar(db, "SELECT COUNT(*) FROM " + table + " WHERE " + where, values).toInt();
    }

    static inventory::purchases::DocumentLine line(const QString& barcode, const char* quantity,
                                                   long long box) {
        inventory::purchases::DocumentLine l;
        l.barcode = barcode;
        l.quantity = d(quantity);
        l.box = box;
        return l;
    }
    static inventory::transfers::Transfer
    transfer(const QString& receiver, const QList<inventory::purchases::DocumentLine>& lines,
             inventory::transfers::Kind kind = inventory::transfers::Kind::Transfer) {
        inventory::transfers::Transfer t;
        t.kind = kind;
        t.receiver = receiver;
        t.issueDate = QDate::currentDate();
        t.user = "ANA";
        t.lines = lines;
        return t;
    }

    // Store 02, made on first use.
    QSqlDatabase other() {
        if (!m_other) {
            m_other = std::make_unique<TestDatabase>();
            prepareStore(m_other->db(), "02");
        }
        return m_other->db();
    }

    QString home() const { return m_home.path(); }
    // A folder of its own under the application folder ("Envia", "Recibe02").
    QString folder(const QString& name) const {
        const QString path = m_home.path() + "/" + name;
        QDir().mkpath(path);
        return path;
    }

private:
    HomeFolder m_home; // before the databases: templates and written lists live here
    std::unique_ptr<TestDatabase> m_other;
};

// Copies every file of `from` into `to` (what the FTP will do between the two stores).
inline void deliver(const QString& from, const QString& to) {
    QDir().mkpath(to);
    for (const QString& f : QDir(from).entryList(QDir::Files)) {
        QFile::remove(to + "/" + f);
        QFile::copy(from + "/" + f, to + "/" + f);
    }
}

} // namespace orvo::test
