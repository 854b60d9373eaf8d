#pragma once

#include "inventory/dispatch/guides.h"

// SQL of dispatch guides. Writers require the caller's open transaction.
namespace orvo::inventory::dispatch::store {

void insertGuide(const QSqlDatabase& db, const Guide& g);
// Only while open.
bool updateGuide(const QSqlDatabase& db, const Guide& g);
bool approveGuide(const QSqlDatabase& db, long long number);
bool deleteOpenGuide(const QSqlDatabase& db, long long number);
void releaseRemissions(const QSqlDatabase& db, long long guide);
// Puts the guide's number on an approved remission that travels on no other guide.
bool assignRemission(const QSqlDatabase& db, long long remission, long long guide);
std::optional<Guide> loadGuide(const QSqlDatabase& db, long long number);
QList<GuideSummary> listGuides(const QSqlDatabase& db);

struct RemissionState {
    int status = -1; // -1: no such remission
    long long guide = 0;
    GuideRemission row;
};
RemissionState remissionState(const QSqlDatabase& db, long long remission);

QList<Choice> activeWorkers(const QSqlDatabase& db);
QList<Choice> activeVehicles(const QSqlDatabase& db);

} // namespace orvo::inventory::dispatch::store
