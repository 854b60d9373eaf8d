#pragma once

#include "support/test_db.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/sale/sale.h"
#include "shell/demo/demo_store.h"
#include "shell/session/session_context.h"

#include <functional>

namespace orvo::test {

inline Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

// The text of the UserError `f` throws.
inline QString refusal(const std::function<void()>& f) {
    try {
        f();
    } catch (const UserError& e) {
        return e.text();
    }
    return QStringLiteral("(no refusal)");
}

// The demo store's register with its day open, selling three test articles: T0001 (size S) and
// T0002 of one shirt model, and the service T0009, all at tax code 1 (16 %).
class TillTest : public DbTest {
protected:
    struct Till {
        bool fiscal = false; // PARAMETROS.UsaImpresoraFiscal
        // T0002 as another model, priced alone rather than at the shirt's highest price.
        bool trousers = false;
    };

    void setUpTill(const Till& till) {
        shell::demo::seedDemoStore(db());
        exec("UPDATE PARAMETROS SET UsaImpresoraFiscal = ?, ItemsPorFactura = 0",
             {till.fiscal ? 1 : 0});
        today = db::serverNow(db()).date();
        exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, FacturaFinal, Status, "
             "Acumulado) VALUES (?, ?, 1, 0, 0, 0, 0)",
             {serie, db::dayStart(today)});
        const QString insert = QStringLiteral(
            "INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
            "CodigoColor, TipoImpuesto, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
            "PrecioPromocion, Existencia, CostoPromedio, UltimoCosto, Tipo, Status) VALUES (?, ?, "
            "?, '001', ?, '001', 1, ?, ?, ?, 0, 0, ?, ?, 0, ?, 1)");
        exec(insert,
             {"T0001", "CAMISA PRUEBA T:S", "TST-1", "S", "100", "80", "90", "10", "50.5", 0});
        if (till.trousers)
            exec(insert,
                 {"T0002", "PANTALON PRUEBA", "TST-2", "M", "120", "85", "95", "5", "50.5", 0});
        else
            exec(insert,
                 {"T0002", "CAMISA PRUEBA T:M", "TST-1", "M", "120", "85", "95", "5", "50.5", 0});
        exec(insert, {"T0009", "ENVOLTURA", "TST-9", "U", "60", "60", "60", "0", "10", 1});
        loadContext();
    }

    void loadContext() {
        ctx = {};
        ctx.serial = serie;
        shell::loadSession(db(), ctx);
        ctx.userCode = QStringLiteral("CAJERO1");
    }

    // A sale to the demo's client V12345678 by seller 003, one of each barcode.
    pos::sale::SaleDraft draftOf(std::initializer_list<const char*> barcodes, bool credit = false) {
        pos::sale::SaleDraft draft = pos::sale::newDraft(db(), ctx);
        draft.setClient(*pos::sale::findClient(db(), QStringLiteral("V12345678")));
        draft.setSeller(pos::sale::findSeller(db(), QStringLiteral("003")));
        for (const char* code : barcodes) {
            const auto found = pos::sale::lookupArticles(db(), QString::fromLatin1(code));
            EXPECT_EQ(found.size(), 1) << code;
            if (!found.isEmpty())
                pos::sale::addArticle(draft, found.at(0));
        }
        if (credit) {
            draft.setMode(pos::sale::PaymentMode::Credit);
            draft.setCreditDays(30);
        }
        return draft;
    }
    static void payCash(pos::sale::SaleDraft& draft, const Decimal& amount) {
        pos::payments::PaymentRow cash;
        cash.way = QStringLiteral("EFECTIVO");
        cash.amount = amount;
        draft.setPayments({cash}, amount, d("36.5"));
    }

    Decimal dec(const QString& sql, std::initializer_list<QVariant> values = {}) const {
        return Decimal::fromVariant(scalar(sql, values));
    }
    Decimal stock(const char* code) const {
        return dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {code});
    }

    QString serie = QString::fromLatin1(shell::demo::kDemoSerial);
    shell::SessionContext ctx;
    QDate today;
};

} // namespace orvo::test
