#pragma once

#include "common/numbering/numbering.h"

#include <QString>

// Receptions and remissions are counted the same way, box by box, each in its own tables and
// with its own words; this says which.
namespace orvo::inventory::purchases {

struct BoxKind {
    common::BoxDocument document;
    QString header;  // RECEPCION
    QString lines;   // MOVRECEPCION
    QString covered; // RECEPCION_COMPRAS
    QString screen;  // frmRecepcion
    QString title;   // Recepción
    QString emptyBox;
    QString lastBoxOnly;
    QString noBoxes;
    QString openBoxes;
    QString gone;            // the guarded update touched nothing
    QString approvedByOther; // saving a document approved meanwhile
    QString approveQuestion;
    QString backupFile;
    QString backupTag;
    bool recordsApprover = false;            // UsuarioAprobacion, DireccionIP, FechaCierre
    bool purchaseTypeNeedsPurchases = false; // approval refused without covered purchases
};

const BoxKind& receptionKind();

// ABIERTA, APROBADA or CONVERTIDA (turned into another document).
QString boxedStatusText(int status);

// Table names of `kind` put into a statement written for receptions. The names come from the
// descriptor, never from input.
QString onKind(const BoxKind& kind, QString statement);

} // namespace orvo::inventory::purchases
