#include "inventory/purchases/purchase_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::purchases::store {

namespace {

// Column scales: unit prices (18,6), amounts (18,2), quantities (18,3), percentages (9,4),
// rates (18,8).
constexpr int kPrice = 6;
constexpr int kMoney = 2;
constexpr int kQuantity = 3;
constexpr int kPercent = 4;
constexpr int kRate = 8;
constexpr int kCost = 5;

// The unit tax of a line, as sale lines keep it.
Decimal unitTax(const DocumentLine& l) {
    return (l.price * l.taxPercent / Decimal(100)).rounded(kMoney);
}

DocumentLine lineFrom(const db::Sql& q, const QString& priceColumn) {
    DocumentLine l;
    l.barcode = q.text(QStringLiteral("CodigoBarra"));
    l.name = q.text(QStringLiteral("Nombre"));
    l.quantity = q.decimal(QStringLiteral("Cantidad"));
    l.price = q.decimal(priceColumn);
    l.taxPercent = q.decimal(QStringLiteral("PorcentajeImpuesto"));
    return l;
}

DocumentSummary summaryFrom(const db::Sql& q) {
    DocumentSummary s;
    s.number = q.value(0).toString();
    s.supplier = q.text(QStringLiteral("Proveedor"));
    s.supplierName = q.text(QStringLiteral("NombreProveedor"));
    s.date = q.dateTime(QStringLiteral("Fecha"));
    s.total = q.decimal(QStringLiteral("Total"));
    s.status = q.integer(QStringLiteral("Status"));
    return s;
}

// Orders and returns are numbered documents with a lines table of the same shape.
struct Numbered {
    QString header;
    QString lines;
};
const Numbered kOrders{QStringLiteral("ORDENCOMPRAS"), QStringLiteral("MOVORDENCOMPRAS")};
const Numbered kReturns{QStringLiteral("DEVCOMPRAS"), QStringLiteral("MOVDEVCOMPRAS")};

void deleteLines(const QSqlDatabase& db, const Numbered& d, long long number) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("DELETE FROM ") + d.lines + QStringLiteral(" WHERE Numero = ?"),
                {number});
}

// Adds the quantity to the barcode's line, inserting the line at `item` when it has none.
void upsertLine(const QSqlDatabase& db, const Numbered& d, long long number,
                const DocumentLine& line, int item) {
    db::requireTransaction(db);
    db::Sql up(db, QStringLiteral("UPDATE ") + d.lines +
                       QStringLiteral(" SET Cantidad = ROUND(Cantidad + ?, 3) WHERE Numero = ? AND "
                                      "CodigoBarra = ?"));
    up.bind(line.quantity, kQuantity).bind(number).bind(line.barcode).exec();
    if (up.rowsAffected() > 0)
        return;
    db::Sql(db, QStringLiteral("INSERT INTO ") + d.lines +
                    QStringLiteral(" (Numero, CodigoBarra, Cantidad, PorcentajeImpuesto, Precio, "
                                   "Impuesto, Item) VALUES (?, ?, ?, ?, ?, ?, ?)"))
        .bind(number)
        .bind(line.barcode)
        .bind(line.quantity, kQuantity)
        .bind(line.taxPercent, kPercent)
        .bind(line.price, kPrice)
        .bind(unitTax(line), kMoney)
        .bind(item)
        .exec();
}

// Status 0 -> 1; false when it was not open.
bool approve(const QSqlDatabase& db, const Numbered& d, long long number) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE ") + d.header +
                           QStringLiteral(" SET Status = 1 WHERE Numero = ? AND Status = 0"),
                       {number}) > 0;
}

// Only an open one, its lines first.
bool deleteOpen(const QSqlDatabase& db, const Numbered& d, long long number) {
    db::requireTransaction(db);
    if (db::execute(db,
                    QStringLiteral("UPDATE ") + d.header +
                        QStringLiteral(" SET Status = Status WHERE Numero = ? AND Status = 0"),
                    {number}) == 0)
        return false;
    deleteLines(db, d, number);
    return db::execute(
               db, QStringLiteral("DELETE FROM ") + d.header + QStringLiteral(" WHERE Numero = ?"),
               {number}) > 0;
}

QList<DocumentLine> linesOf(const QSqlDatabase& db, const Numbered& d, long long number) {
    db::Sql l(db, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad, M.Precio, "
                                 "M.PorcentajeImpuesto FROM ") +
                      d.lines +
                      QStringLiteral(" M LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra "
                                     "WHERE M.Numero = ? ORDER BY M.Item"));
    l.bind(number).exec();
    QList<DocumentLine> out;
    while (l.next())
        out.append(lineFrom(l, QStringLiteral("Precio")));
    return out;
}

QList<DocumentSummary> summaries(db::Sql& q) {
    q.exec();
    QList<DocumentSummary> out;
    while (q.next())
        out.append(summaryFrom(q));
    return out;
}

} // namespace

// --- Purchase orders ---

void insertOrder(const QSqlDatabase& db, const PurchaseOrder& o, const DocumentTotals& t) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO ORDENCOMPRAS (Numero, Proveedor, Fecha, Observacion, "
                               "TotalMercancia, TotalImpuesto, Usuario, Status) VALUES "
                               "(?, ?, ?, ?, ?, ?, ?, 0)"))
        .bind(o.number)
        .bind(o.supplier)
        .bind(o.date)
        .bind(o.note)
        .bind(t.merchandise, kMoney)
        .bind(t.tax, kMoney)
        .bind(o.user)
        .exec();
}

bool updateOrder(const QSqlDatabase& db, const PurchaseOrder& o, const DocumentTotals& t) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("UPDATE ORDENCOMPRAS SET Proveedor = ?, Fecha = ?, Observacion = "
                                 "?, TotalMercancia = ?, TotalImpuesto = ?, Usuario = ?, Status = "
                                 "0 WHERE Numero = ? AND Status = 0"));
    q.bind(o.supplier)
        .bind(o.date)
        .bind(o.note)
        .bind(t.merchandise, kMoney)
        .bind(t.tax, kMoney)
        .bind(o.user)
        .bind(o.number)
        .exec();
    return q.rowsAffected() > 0;
}

void deleteOrderLines(const QSqlDatabase& db, long long number) {
    deleteLines(db, kOrders, number);
}

void upsertOrderLine(const QSqlDatabase& db, long long number, const DocumentLine& line, int item) {
    upsertLine(db, kOrders, number, line, item);
}

bool approveOrder(const QSqlDatabase& db, long long number) {
    return approve(db, kOrders, number);
}

bool deleteOrder(const QSqlDatabase& db, long long number) {
    return deleteOpen(db, kOrders, number);
}

std::optional<PurchaseOrder> loadOrder(const QSqlDatabase& db, long long number) {
    db::Sql h(db, QStringLiteral("SELECT Numero, Proveedor, Fecha, Observacion, Usuario, Status "
                                 "FROM ORDENCOMPRAS WHERE Numero = ?"));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    PurchaseOrder o;
    o.number = h.bigint(QStringLiteral("Numero"));
    o.supplier = h.text(QStringLiteral("Proveedor"));
    o.date = h.dateTime(QStringLiteral("Fecha"));
    o.note = h.text(QStringLiteral("Observacion"));
    o.user = h.text(QStringLiteral("Usuario"));
    o.status = h.integer(QStringLiteral("Status"));
    o.lines = linesOf(db, kOrders, number);
    return o;
}

QList<DocumentSummary> listOrders(const QSqlDatabase& db, bool approvedOnly) {
    db::Sql q(db, QStringLiteral("SELECT O.Numero, O.Proveedor, P.Nombre AS NombreProveedor, "
                                 "O.Fecha, O.TotalMercancia + O.TotalImpuesto AS Total, O.Status "
                                 "FROM ORDENCOMPRAS O LEFT JOIN PROVEEDORES P ON P.Codigo = "
                                 "O.Proveedor") +
                      (approvedOnly ? QStringLiteral(" WHERE O.Status <> 0") : QString()) +
                      QStringLiteral(" ORDER BY O.Fecha DESC, O.Numero DESC"));
    return summaries(q);
}

// --- Purchases ---

bool purchaseExists(const QSqlDatabase& db, const QString& document, const QString& supplier) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE COMPRAS SET Status = Status WHERE Documento = ? AND "
                                      "Proveedor = ?"),
                       {document, supplier}) > 0;
}

namespace {
// The header's values after Documento and Proveedor, in the column order of the table.
void bindHeader(db::Sql& q, const Purchase& p, const DocumentTotals& t) {
    q.bind(p.date)
        .bind(p.invoiceDate)
        .bind(p.paymentType)
        .bind(p.creditDays)
        .bind(p.file)
        .bind(p.note)
        .bind(t.merchandise, kMoney)
        .bind(t.tax, kMoney)
        .bind(p.accountingTax, kMoney)
        .bind(p.discountPercent, kPercent)
        .bind(t.discount, kMoney)
        .bind(p.exchangeRate, kRate)
        .bind(p.surcharges, kMoney)
        .bind(p.serviceFee, kMoney)
        .bind(p.otherTaxes, kMoney)
        .bind(p.freight, kMoney)
        .bind(p.insurance, kMoney)
        .bind(p.generalTaxPercent, kPercent)
        .bind(p.user)
        .bind(int(p.valuation));
}
} // namespace

void insertPurchase(const QSqlDatabase& db, const Purchase& p, const DocumentTotals& t) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("INSERT INTO COMPRAS (Documento, Proveedor, Fecha, FechaFactura, "
                                 "TipoPago, DiasCredito, Expediente, Observacion, TotalMercancia, "
                                 "TotalImpuesto, TotalImpuestoContable, PorcentajeDescuento, "
                                 "TotalDescuento, TasaCambio, Recargos, TasaServicio, "
                                 "OtrosImpuestos, Flete, Seguro, PorcImpuestoGeneral, Usuario, "
                                 "MetodoValorizacion, InterContable, Status, IDLote) VALUES (?, ?, "
                                 "?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, "
                                 "0, ?)"));
    q.bind(p.document).bind(p.supplier);
    bindHeader(q, p, t);
    q.bind(p.lotId).exec();
}

bool updatePurchase(const QSqlDatabase& db, const Purchase& p, const DocumentTotals& t) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("UPDATE COMPRAS SET Fecha = ?, FechaFactura = ?, TipoPago = ?, "
                                 "DiasCredito = ?, Expediente = ?, Observacion = ?, "
                                 "TotalMercancia = ?, TotalImpuesto = ?, TotalImpuestoContable = "
                                 "?, PorcentajeDescuento = ?, TotalDescuento = ?, TasaCambio = ?, "
                                 "Recargos = ?, TasaServicio = ?, OtrosImpuestos = ?, Flete = ?, "
                                 "Seguro = ?, PorcImpuestoGeneral = ?, Usuario = ?, "
                                 "MetodoValorizacion = ?, IDLote = ?, Status = 0 WHERE Documento "
                                 "= ? AND Proveedor = ? AND Status = 0"));
    bindHeader(q, p, t);
    q.bind(p.lotId).bind(p.document).bind(p.supplier).exec();
    return q.rowsAffected() > 0;
}

void deletePurchaseLines(const QSqlDatabase& db, const QString& document, const QString& supplier) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("DELETE FROM MOVCOMPRAS WHERE Documento = ? AND Proveedor = ?"),
                {document, supplier});
}

void upsertPurchaseLine(const QSqlDatabase& db, const Purchase& p, const DocumentLine& line,
                        int item) {
    db::requireTransaction(db);
    db::Sql up(db, QStringLiteral("UPDATE MOVCOMPRAS SET Cantidad = ROUND(Cantidad + ?, 3) WHERE "
                                  "Documento = ? AND Proveedor = ? AND CodigoBarra = ?"));
    up.bind(line.quantity, kQuantity).bind(p.document).bind(p.supplier).bind(line.barcode).exec();
    if (up.rowsAffected() > 0)
        return;
    db::Sql(db, QStringLiteral("INSERT INTO MOVCOMPRAS (Documento, Proveedor, CodigoBarra, "
                               "Cantidad, CantidadDevuelta, PorcentajeImpuesto, PrecioFactura, "
                               "PrecioProrrateado, Impuesto, Item) VALUES (?, ?, ?, ?, 0, ?, ?, 0, "
                               "?, ?)"))
        .bind(p.document)
        .bind(p.supplier)
        .bind(line.barcode)
        .bind(line.quantity, kQuantity)
        .bind(line.taxPercent, kPercent)
        .bind(line.price, kPrice)
        .bind(unitTax(line), kMoney)
        .bind(item)
        .exec();
}

bool markPurchaseApproved(const QSqlDatabase& db, const QString& document,
                          const QString& supplier) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE COMPRAS SET Status = 1 WHERE Documento = ? AND "
                                      "Proveedor = ? AND Status = 0"),
                       {document, supplier}) > 0;
}

QList<StoredLine> storedLines(const QSqlDatabase& db, const QString& document,
                              const QString& supplier) {
    db::Sql q(db, QStringLiteral("SELECT Item, PrecioFactura FROM MOVCOMPRAS WHERE Documento = ? "
                                 "AND Proveedor = ? ORDER BY Item"));
    q.bind(document).bind(supplier).exec();
    QList<StoredLine> out;
    while (q.next())
        out.append({q.integer(QStringLiteral("Item")), q.decimal(QStringLiteral("PrecioFactura"))});
    return out;
}

void setProratedPrice(const QSqlDatabase& db, const QString& document, const QString& supplier,
                      int item, const Decimal& price) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("UPDATE MOVCOMPRAS SET PrecioProrrateado = ? WHERE Documento = ? "
                               "AND Proveedor = ? AND Item = ?"))
        .bind(price, kPrice)
        .bind(document)
        .bind(supplier)
        .bind(item)
        .exec();
}

QList<Receipt> holdReceipts(const QSqlDatabase& db, const QString& document,
                            const QString& supplier) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE CodigoBarra IN "
                               "(SELECT CodigoBarra FROM MOVCOMPRAS WHERE Documento = ? AND "
                               "Proveedor = ?)"),
                {document, supplier});
    // Amounts are multiplied here as exact decimals: SQLite would divide whole numbers as
    // integers and multiply the others in binary floating point.
    db::Sql q(db, QStringLiteral("SELECT I.CodigoBarra, I.Existencia, I.CostoPromedio, "
                                 "M.Cantidad, M.PrecioProrrateado FROM MOVCOMPRAS M INNER JOIN "
                                 "INVENTARIO I ON I.CodigoBarra = M.CodigoBarra WHERE "
                                 "M.Documento = ? AND M.Proveedor = ? ORDER BY M.Item"));
    q.bind(document).bind(supplier).exec();
    QList<Receipt> out;
    while (q.next()) {
        const QString barcode = q.text(QStringLiteral("CodigoBarra"));
        const Decimal quantity = q.decimal(QStringLiteral("Cantidad"));
        const Decimal price = q.decimal(QStringLiteral("PrecioProrrateado"));
        auto it = std::find_if(out.begin(), out.end(),
                               [&](const Receipt& r) { return r.barcode == barcode; });
        if (it == out.end()) {
            out.append({barcode, q.decimal(QStringLiteral("Existencia")),
                        q.decimal(QStringLiteral("CostoPromedio")), quantity, price * quantity,
                        price});
            continue;
        }
        it->quantity += quantity;
        it->value += price * quantity;
        it->lastCost = std::max(it->lastCost, price);
    }
    return out;
}

void writeReceipt(const QSqlDatabase& db, const QString& barcode, const Decimal& stock,
                  const Decimal& averageCost, const Decimal& lastCost) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("UPDATE INVENTARIO SET CostoPromedio = ?, Existencia = ?, Status "
                               "= 1, UltimoCosto = ? WHERE CodigoBarra = ?"))
        .bind(averageCost, kCost)
        .bind(stock, kQuantity)
        .bind(lastCost, kCost)
        .bind(barcode)
        .exec();
}

bool deletePurchase(const QSqlDatabase& db, const QString& document, const QString& supplier) {
    db::requireTransaction(db);
    if (db::execute(db,
                    QStringLiteral("UPDATE COMPRAS SET Status = Status WHERE Documento = ? AND "
                                   "Proveedor = ? AND Status = 0"),
                    {document, supplier}) == 0)
        return false;
    deletePurchaseLines(db, document, supplier);
    return db::execute(db,
                       QStringLiteral("DELETE FROM COMPRAS WHERE Documento = ? AND Proveedor = ?"),
                       {document, supplier}) > 0;
}

QList<QPair<QString, Decimal>> proratedCosts(const QSqlDatabase& db, const QString& document,
                                             const QString& supplier) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra, PrecioProrrateado FROM MOVCOMPRAS WHERE "
                                 "Documento = ? AND Proveedor = ? ORDER BY Item"));
    q.bind(document).bind(supplier).exec();
    QList<QPair<QString, Decimal>> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")),
                    q.decimal(QStringLiteral("PrecioProrrateado"))});
    return out;
}

std::optional<Purchase> loadPurchase(const QSqlDatabase& db, const QString& document,
                                     const QString& supplier) {
    db::Sql h(db, QStringLiteral("SELECT Documento, Proveedor, Fecha, FechaFactura, TipoPago, "
                                 "DiasCredito, Expediente, Observacion, TotalImpuestoContable, "
                                 "PorcentajeDescuento, TasaCambio, Recargos, TasaServicio, "
                                 "OtrosImpuestos, Flete, Seguro, PorcImpuestoGeneral, Usuario, "
                                 "MetodoValorizacion, Status, IDLote FROM COMPRAS WHERE "
                                 "Documento = ? AND Proveedor = ?"));
    h.bind(document).bind(supplier).exec();
    if (!h.next())
        return std::nullopt;
    Purchase p;
    p.document = h.text(QStringLiteral("Documento"));
    p.supplier = h.text(QStringLiteral("Proveedor"));
    p.date = h.dateTime(QStringLiteral("Fecha"));
    p.invoiceDate = h.dateTime(QStringLiteral("FechaFactura")).date();
    p.paymentType = h.integer(QStringLiteral("TipoPago"));
    p.creditDays = h.integer(QStringLiteral("DiasCredito"));
    p.file = h.text(QStringLiteral("Expediente"));
    p.note = h.text(QStringLiteral("Observacion"));
    p.accountingTax = h.decimal(QStringLiteral("TotalImpuestoContable"));
    p.discountPercent = h.decimal(QStringLiteral("PorcentajeDescuento"));
    p.exchangeRate = h.decimal(QStringLiteral("TasaCambio"));
    p.surcharges = h.decimal(QStringLiteral("Recargos"));
    p.serviceFee = h.decimal(QStringLiteral("TasaServicio"));
    p.otherTaxes = h.decimal(QStringLiteral("OtrosImpuestos"));
    p.freight = h.decimal(QStringLiteral("Flete"));
    p.insurance = h.decimal(QStringLiteral("Seguro"));
    p.generalTaxPercent = h.decimal(QStringLiteral("PorcImpuestoGeneral"));
    p.user = h.text(QStringLiteral("Usuario"));
    p.valuation = h.integer(QStringLiteral("MetodoValorizacion")) == int(Valuation::WithFreight)
                      ? Valuation::WithFreight
                      : Valuation::WithoutFreight;
    p.status = h.integer(QStringLiteral("Status"));
    p.lotId = h.bigint(QStringLiteral("IDLote"));
    db::Sql l(db, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad, M.PrecioFactura, "
                                 "M.PorcentajeImpuesto FROM MOVCOMPRAS M LEFT JOIN INVENTARIO I "
                                 "ON I.CodigoBarra = M.CodigoBarra WHERE M.Documento = ? AND "
                                 "M.Proveedor = ? ORDER BY M.Item"));
    l.bind(document).bind(supplier).exec();
    while (l.next())
        p.lines.append(lineFrom(l, QStringLiteral("PrecioFactura")));
    return p;
}

namespace {
const QString kPurchaseSummary =
    QStringLiteral("SELECT C.Documento, C.Proveedor, P.Nombre AS NombreProveedor, C.Fecha, "
                   "C.TotalMercancia - C.TotalDescuento + C.TotalImpuesto AS Total, C.Status "
                   "FROM COMPRAS C LEFT JOIN PROVEEDORES P ON P.Codigo = C.Proveedor");
}

QList<DocumentSummary> listPurchases(const QSqlDatabase& db) {
    db::Sql q(db, kPurchaseSummary + QStringLiteral(" ORDER BY C.Fecha DESC, C.Documento"));
    return summaries(q);
}

QList<DocumentSummary> approvedPurchases(const QSqlDatabase& db, const QString& document) {
    db::Sql q(db, kPurchaseSummary + QStringLiteral(" WHERE C.Documento = ? AND C.Status >= 1 "
                                                    "ORDER BY C.Proveedor"));
    q.bind(document);
    return summaries(q);
}

QList<ReturnableLine> returnableLines(const QSqlDatabase& db, const QString& document,
                                      const QString& supplier) {
    db::Sql q(db, QStringLiteral("SELECT M.CodigoBarra, MAX(I.Nombre) AS Nombre, "
                                 "MAX(M.PrecioFactura) AS Precio, MAX(M.PorcentajeImpuesto) AS "
                                 "PorcentajeImpuesto, SUM(M.Cantidad - M.CantidadDevuelta) AS "
                                 "Devolvible, MIN(M.Item) AS Item FROM MOVCOMPRAS M INNER JOIN "
                                 "COMPRAS C ON C.Documento = M.Documento AND C.Proveedor = "
                                 "M.Proveedor LEFT JOIN INVENTARIO I ON I.CodigoBarra = "
                                 "M.CodigoBarra WHERE M.Documento = ? AND M.Proveedor = ? AND "
                                 "C.Status >= 1 GROUP BY M.CodigoBarra HAVING "
                                 "SUM(M.Cantidad - M.CantidadDevuelta) > 0 ORDER BY MIN(M.Item)"));
    q.bind(document).bind(supplier).exec();
    QList<ReturnableLine> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")), q.text(QStringLiteral("Nombre")),
                    q.decimal(QStringLiteral("Precio")),
                    q.decimal(QStringLiteral("PorcentajeImpuesto")),
                    q.decimal(QStringLiteral("Devolvible")).rounded(kQuantity)});
    return out;
}

// --- Purchase returns ---

void insertReturn(const QSqlDatabase& db, const PurchaseReturn& r, const DocumentTotals& t) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO DEVCOMPRAS (Numero, Fecha, Documento, Proveedor, "
                               "TotalMercancia, TotalImpuesto, PorcentajeDescuento, "
                               "TotalDescuento, Observacion, Usuario, InterContable, Status) "
                               "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0)"))
        .bind(r.number)
        .bind(r.date)
        .bind(r.document)
        .bind(r.supplier)
        .bind(t.merchandise, kMoney)
        .bind(t.tax, kMoney)
        .bind(r.discountPercent, kPercent)
        .bind(t.discount, kMoney)
        .bind(r.note)
        .bind(r.user)
        .exec();
}

bool updateReturn(const QSqlDatabase& db, const PurchaseReturn& r, const DocumentTotals& t) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("UPDATE DEVCOMPRAS SET Fecha = ?, Documento = ?, Proveedor = ?, "
                                 "TotalMercancia = ?, TotalImpuesto = ?, PorcentajeDescuento = ?, "
                                 "TotalDescuento = ?, Observacion = ?, Usuario = ?, Status = 0 "
                                 "WHERE Numero = ? AND Status = 0"));
    q.bind(r.date)
        .bind(r.document)
        .bind(r.supplier)
        .bind(t.merchandise, kMoney)
        .bind(t.tax, kMoney)
        .bind(r.discountPercent, kPercent)
        .bind(t.discount, kMoney)
        .bind(r.note)
        .bind(r.user)
        .bind(r.number)
        .exec();
    return q.rowsAffected() > 0;
}

void deleteReturnLines(const QSqlDatabase& db, long long number) {
    deleteLines(db, kReturns, number);
}

void upsertReturnLine(const QSqlDatabase& db, long long number, const DocumentLine& line,
                      int item) {
    upsertLine(db, kReturns, number, line, item);
}

bool markReturnApproved(const QSqlDatabase& db, long long number) {
    return approve(db, kReturns, number);
}

void takeReturnedStock(const QSqlDatabase& db, long long number) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Existencia = ROUND(COALESCE(Existencia, 0) "
                               "- (SELECT SUM(M.Cantidad) FROM MOVDEVCOMPRAS M WHERE M.Numero = ? "
                               "AND M.CodigoBarra = INVENTARIO.CodigoBarra), 3) WHERE CodigoBarra "
                               "IN (SELECT CodigoBarra FROM MOVDEVCOMPRAS WHERE Numero = ?)"),
                {number, number});
}

bool markReturned(const QSqlDatabase& db, const QString& document, const QString& supplier,
                  const QString& barcode, const Decimal& quantity) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("SELECT Item, Cantidad - CantidadDevuelta AS Devolvible FROM "
                                 "MOVCOMPRAS WHERE Documento = ? AND Proveedor = ? AND "
                                 "CodigoBarra = ? ORDER BY Item"));
    q.bind(document).bind(supplier).bind(barcode).exec();
    QList<QPair<int, Decimal>> lines;
    while (q.next())
        lines.append({q.integer(QStringLiteral("Item")),
                      q.decimal(QStringLiteral("Devolvible")).rounded(kQuantity)});
    // Guarded by what is left, so a return approved meanwhile by someone else cannot pass.
    db::Sql up(db, QStringLiteral("UPDATE MOVCOMPRAS SET CantidadDevuelta = "
                                  "ROUND(CantidadDevuelta + ?, 3) WHERE Documento = ? AND "
                                  "Proveedor = ? AND Item = ? AND ROUND(Cantidad - "
                                  "CantidadDevuelta - ?, 3) >= 0"));
    Decimal left = quantity;
    for (const auto& [item, returnable] : lines) {
        if (left <= Decimal())
            break;
        const Decimal take = std::min(left, returnable);
        if (take <= Decimal())
            continue;
        up.bind(take, kQuantity)
            .bind(document)
            .bind(supplier)
            .bind(item)
            .bind(take, kQuantity)
            .exec();
        if (up.rowsAffected() == 0)
            return false;
        left -= take;
    }
    return left <= Decimal();
}

bool deleteReturn(const QSqlDatabase& db, long long number) {
    return deleteOpen(db, kReturns, number);
}

std::optional<PurchaseReturn> loadReturn(const QSqlDatabase& db, long long number) {
    db::Sql h(db, QStringLiteral("SELECT Numero, Fecha, Documento, Proveedor, PorcentajeDescuento, "
                                 "Observacion, Usuario, Status FROM DEVCOMPRAS WHERE Numero = ?"));
    h.bind(number).exec();
    if (!h.next())
        return std::nullopt;
    PurchaseReturn r;
    r.number = h.bigint(QStringLiteral("Numero"));
    r.date = h.dateTime(QStringLiteral("Fecha"));
    r.document = h.text(QStringLiteral("Documento"));
    r.supplier = h.text(QStringLiteral("Proveedor"));
    r.discountPercent = h.decimal(QStringLiteral("PorcentajeDescuento"));
    r.note = h.text(QStringLiteral("Observacion"));
    r.user = h.text(QStringLiteral("Usuario"));
    r.status = h.integer(QStringLiteral("Status"));
    r.lines = linesOf(db, kReturns, number);
    return r;
}

QList<DocumentSummary> listReturns(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT D.Numero, D.Proveedor, P.Nombre AS NombreProveedor, "
                                 "D.Fecha, D.TotalMercancia - D.TotalDescuento + D.TotalImpuesto "
                                 "AS Total, D.Status FROM DEVCOMPRAS D LEFT JOIN PROVEEDORES P ON "
                                 "P.Codigo = D.Proveedor ORDER BY D.Numero DESC"));
    return summaries(q);
}

// --- Catalogues ---

QString approvedOrdersCatalogSql() {
    return QStringLiteral("SELECT O.Numero, O.Fecha, O.Proveedor, P.Nombre AS NombreProveedor, "
                          "O.TotalMercancia FROM ORDENCOMPRAS O LEFT JOIN PROVEEDORES P ON "
                          "P.Codigo = O.Proveedor WHERE O.Status <> 0 ORDER BY O.Fecha DESC, "
                          "O.Numero DESC");
}

QString approvedPurchasesCatalogSql() {
    return QStringLiteral("SELECT C.Documento, C.Proveedor, P.Nombre AS NombreProveedor, C.Fecha "
                          "FROM COMPRAS C LEFT JOIN PROVEEDORES P ON P.Codigo = C.Proveedor "
                          "WHERE C.Documento = ? AND C.Status >= 1 ORDER BY C.Proveedor");
}

QList<Supplier> activeSuppliers(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre FROM PROVEEDORES WHERE Status = 1 ORDER BY "
                                 "Nombre"));
    q.exec();
    QList<Supplier> out;
    while (q.next())
        out.append({q.text(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre"))});
    return out;
}

QString supplierName(const QSqlDatabase& db, const QString& code) {
    return db::scalar(db, QStringLiteral("SELECT Nombre FROM PROVEEDORES WHERE Codigo = ?"), {code})
        .toString();
}

Decimal generalTaxPercent(const QSqlDatabase& db) {
    return Decimal::fromVariant(db::scalar(
        db, QStringLiteral("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE Codigo = 1")));
}

QStringList modelBarcodes(const QSqlDatabase& db, const QString& reference, const QString& brand) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra FROM INVENTARIO WHERE Referencia = ? AND "
                                 "CodigoMarca = ?"));
    q.bind(reference).bind(brand).exec();
    QStringList out;
    while (q.next())
        out << q.text(QStringLiteral("CodigoBarra"));
    return out;
}

} // namespace orvo::inventory::purchases::store
