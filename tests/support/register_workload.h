#pragma once

#include "common/db/connection.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

// Several registers of one store working at once on one database, each on its own thread and
// connection, as the tills of a store server do: cash and credit sales, a sale parked and taken
// back, the return of a sale with its cash refund, and a worker's entry at the attendance clock.
// Used by the concurrency test and its benchmark.
namespace orvo::test {

struct Workload {
    int registers = 4;
    int rounds = 10;    // each round: cash sale, credit sale, parked and taken back, return, entry
    int firstRound = 0; // later runs on the same store use workers of later rounds
};

struct WorkloadOutcome {
    int sales = 0;
    int credits = 0;
    int returns = 0;
    int parked = 0;
    int entries = 0; // attendance entries recorded (a clock guard may refuse a few)
    double seconds = 0;
    QStringList errors; // one line per failed action: register, action, message
};

// Prepares the demo store on `db` for the workload: registers R01..Rnn with their day open,
// paper invoices, ample stock, a worker per register and round.
void prepareRegisters(const QSqlDatabase& db, const Workload& w);

// Runs the workload, one thread and one connection (opened with `settings`) per register.
WorkloadOutcome runRegisters(const db::ConnectionSettings& settings, const Workload& w);

QString registerSerial(int index); // "R01", ...

} // namespace orvo::test
