#pragma once

#include "common/decimal/decimal.h"

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <optional>

// Dispatch guides: a driver and a vehicle sheet grouping approved remissions for one trip. A guide
// moves no stock; its number travels on the remissions it lists (REMISION.GuiaDespacho).
namespace orvo::inventory::dispatch {

inline const QString kGuideScreen = QStringLiteral("frmGuiaDespacho");

struct GuideRemission {
    long long number = 0;
    QString branch;
    QString branchName;
    int boxes = 0;
    Decimal units;
};

struct Guide {
    long long number = 0; // 0: new, numbered when saved
    QDateTime date;
    QString driver;  // TRABAJADORES.Cedula
    QString vehicle; // VEHICULOS.Placa
    QString note;
    int status = 0; // 0 ABIERTA, 1 APROBADA
    QList<GuideRemission> remissions;
};

struct GuideSummary {
    long long number = 0;
    QDateTime date;
    QString driverName;
    QString vehicle;
    int status = 0;
};

struct Choice {
    QString code;
    QString name;
};
QList<Choice> drivers(const QSqlDatabase& db);  // active workers
QList<Choice> vehicles(const QSqlDatabase& db); // active vehicles

// An approved remission added to the guide's list; refused when listed already, when it is not
// approved or when it travels on another guide.
void addRemission(const QSqlDatabase& db, Guide& guide, long long remission);

// Writes the guide (status ABIERTA), clears its number from the remissions that left it and sets
// it on the listed ones, in one transaction. Returns the number.
long long saveGuide(const QSqlDatabase& db, Guide guide);
// "Desea Aprobar la Guia de Despacho?" answered yes.
void approveGuide(const QSqlDatabase& db, long long number);
void deleteGuide(const QSqlDatabase& db, long long number);
std::optional<Guide> loadGuide(const QSqlDatabase& db, long long number);
QList<GuideSummary> listGuides(const QSqlDatabase& db);

} // namespace orvo::inventory::dispatch
