#include "register_workload.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "common/schema/schema.h"
#include "pos/returns/returns.h"
#include "pos/sale/sale.h"
#include "shell/demo/demo_store.h"
#include "shell/login/attendance.h"
#include "shell/session/session_context.h"

#include <QElapsedTimer>
#include <thread>

namespace orvo::test {

namespace {

constexpr int kArticles = 12;

QString cardOf(int reg, int round) {
    return QStringLiteral("V9%1%2")
        .arg(reg, 2, 10, QLatin1Char('0'))
        .arg(round, 4, 10, QLatin1Char('0'));
}

QStringList articles(const QSqlDatabase& db) {
    QStringList codes;
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND "
                                 "CostoPromedio > 0 AND Status = 1 ORDER BY CodigoBarra LIMIT ?"));
    q.bind(kArticles).exec();
    while (q.next())
        codes << q.text(QStringLiteral("CodigoBarra")).trimmed();
    return codes;
}

struct RegisterRun {
    int index = 0;
    QStringList codes;
    WorkloadOutcome outcome;
};

void work(const db::ConnectionSettings& settings, const Workload& w, RegisterRun& run) {
    const QString serial = registerSerial(run.index);
    const QString name = QStringLiteral("register_%1").arg(run.index);
    WorkloadOutcome& out = run.outcome;
    const auto attempt = [&](const char* action, const std::function<void()>& f) {
        try {
            f();
            return true;
        } catch (const UserError& e) {
            out.errors << QStringLiteral("%1 %2: %3").arg(serial, action, e.text());
        } catch (const DbError& e) {
            out.errors << QStringLiteral("%1 %2: %3 %4").arg(serial, action, e.number(), e.text());
        } catch (const std::exception& e) {
            out.errors << QStringLiteral("%1 %2: %3").arg(serial, action, e.what());
        }
        return false;
    };
    {
        QSqlDatabase db = db::openConnection(settings, name);
        shell::SessionContext ctx;
        ctx.serial = serial;
        shell::loadSession(db, ctx);
        ctx.userCode = QString::fromLatin1(shell::demo::kCashierUser);
        const auto draftOf = [&](int round, int lines) {
            pos::sale::SaleDraft draft = pos::sale::newDraft(db, ctx);
            draft.setClient(*pos::sale::findClient(db, QStringLiteral("V12345678")));
            draft.setSeller(pos::sale::findSeller(db, QStringLiteral("003")));
            for (int l = 0; l < lines; ++l) {
                const QString code = run.codes.at((run.index + round + l) % run.codes.size());
                pos::sale::addArticle(draft, pos::sale::lookupArticles(db, code).at(0));
            }
            return draft;
        };
        for (int round = w.firstRound; round < w.firstRound + w.rounds; ++round) {
            long long cashInvoice = 0;
            attempt("venta de contado", [&] {
                pos::sale::SaleDraft draft = draftOf(round, 3);
                pos::payments::PaymentRow cash;
                cash.way = QStringLiteral("EFECTIVO");
                cash.amount = draft.totals().total + Decimal(10);
                draft.setPayments({cash}, *cash.amount, Decimal(36));
                cashInvoice = pos::sale::acceptSale(db, ctx, draft, nullptr).number;
                ++out.sales;
            });
            attempt("venta a crédito", [&] {
                pos::sale::SaleDraft draft = draftOf(round + 5, 2);
                draft.setMode(pos::sale::PaymentMode::Credit);
                draft.setCreditDays(30);
                pos::sale::acceptSale(db, ctx, draft, nullptr);
                ++out.sales;
                ++out.credits;
            });
            attempt("congelar y descongelar", [&] {
                pos::sale::SaleDraft draft = draftOf(round + 2, 2);
                const long long parked = pos::sale::parkSale(db, ctx, draft);
                pos::sale::takeBackParked(db, ctx, parked, draft);
                ++out.parked;
            });
            if (cashInvoice > 0)
                attempt("devolución", [&] {
                    pos::returns::ReturnDraft back(pos::returns::loadInvoice(db, ctx, cashInvoice));
                    back.addEverything();
                    pos::returns::saveReturn(db, ctx, back, nullptr);
                    ++out.returns;
                });
            attempt("control de acceso", [&] {
                const auto r = shell::recordAttendance(db, cardOf(run.index, round),
                                                       QDateTime::currentDateTime());
                if (r.kind == shell::AttendanceResult::Kind::Entry)
                    ++out.entries;
                else if (r.kind != shell::AttendanceResult::Kind::InvalidDate)
                    throw std::runtime_error(r.condition.toStdString());
            });
        }
    }
    db::closeConnection(name);
}

} // namespace

QString registerSerial(int index) {
    return QStringLiteral("R%1").arg(index + 1, 2, 10, QLatin1Char('0'));
}

void prepareRegisters(const QSqlDatabase& db, const Workload& w) {
    shell::demo::seedDemoStore(db);
    db::execute(db, QStringLiteral("UPDATE PARAMETROS SET UsaImpresoraFiscal = 0, "
                                   "ItemsPorFactura = 0"));
    db::execute(db, QStringLiteral("UPDATE INVENTARIO SET Existencia = 100000 WHERE Tipo = 0"));
    // Each register a copy of the demo's, with its own serie and counters from zero.
    const schema::Table* cajas = schema::findTable(QStringLiteral("CAJAS"));
    QStringList copied;
    for (const schema::Column& c : cajas->columns)
        if (c.name != QLatin1String("Serie") && c.name != QLatin1String("Numero") &&
            c.name != QLatin1String("UltimaFactura") && c.name != QLatin1String("UltimaDevolucion"))
            copied << c.name;
    const QDate today = db::serverNow(db).date();
    for (int r = 0; r < w.registers; ++r) {
        const QString serial = registerSerial(r);
        db::execute(db,
                    QStringLiteral("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, "
                                   "UltimaDevolucion, %1) SELECT ?, ?, 0, 0, %1 FROM CAJAS "
                                   "WHERE Serie = ?")
                        .arg(copied.join(QStringLiteral(", "))),
                    {serial, 100 + r, QString::fromLatin1(shell::demo::kDemoSerial)});
        db::execute(db,
                    QStringLiteral("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, "
                                   "FacturaInicial, FacturaFinal, Status, Acumulado) VALUES "
                                   "(?, ?, 1, 0, 0, 0, 0)"),
                    {serial, db::dayStart(today)});
        for (int round = 0; round < w.firstRound + w.rounds; ++round)
            db::execute(db,
                        QStringLiteral("INSERT INTO TRABAJADORES (Cedula, Codigo, Nombre, Cargo, "
                                       "Status) VALUES (?, ?, ?, '001', 1)"),
                        {cardOf(r, round), cardOf(r, round).right(8),
                         QStringLiteral("TRABAJADOR %1").arg(cardOf(r, round))});
    }
}

WorkloadOutcome runRegisters(const db::ConnectionSettings& settings, const Workload& w) {
    QStringList codes;
    {
        QSqlDatabase db = db::openConnection(settings, QStringLiteral("workload_articles"));
        codes = articles(db);
    }
    db::closeConnection(QStringLiteral("workload_articles"));

    std::vector<RegisterRun> runs(size_t(w.registers));
    QElapsedTimer t;
    t.start();
    {
        std::vector<std::thread> threads;
        for (int r = 0; r < w.registers; ++r) {
            runs[size_t(r)].index = r;
            runs[size_t(r)].codes = codes;
            threads.emplace_back(
                [&settings, &w, &run = runs[size_t(r)]] { work(settings, w, run); });
        }
        for (std::thread& th : threads)
            th.join();
    }
    WorkloadOutcome total;
    total.seconds = t.nsecsElapsed() / 1e9;
    for (const RegisterRun& run : runs) {
        total.sales += run.outcome.sales;
        total.credits += run.outcome.credits;
        total.returns += run.outcome.returns;
        total.parked += run.outcome.parked;
        total.entries += run.outcome.entries;
        total.errors += run.outcome.errors;
    }
    return total;
}

} // namespace orvo::test
