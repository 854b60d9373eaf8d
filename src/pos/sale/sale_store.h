#pragma once

#include "pos/sale/line_insert.h"
#include "pos/sale/sale_types.h"

#include "common/db/sql.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSqlDatabase>
#include <optional>

// The sale's SQL. Readers run anywhere; writers require the action's open transaction.
namespace orvo::pos::sale::store {

// --- readers ---

// Active articles that can be sold (stock above zero, or not kept in stock): the barcode itself
// first, otherwise the articles whose Referencia+CodigoMarca+Talla+CodigoColor starts with the
// text, by barcode, at most `limit`.
QList<ArticlePrices> findArticles(const QSqlDatabase& db, const QString& text, int limit = 200);
std::optional<ArticlePrices> articleByBarcode(const QSqlDatabase& db, const QString& barcode);
// The other sizes and colours of the article's model, highest prices per promotion flag.
QList<ModelPrices> modelPrices(const QSqlDatabase& db, const ArticlePrices& article);

std::optional<SaleClient> clientByCode(const QSqlDatabase& db, const QString& code);
// Active workers of position "003", by code or identity number.
std::optional<SaleSeller> sellerByCode(const QSqlDatabase& db, const QString& code);
QList<SaleSeller> sellers(const QSqlDatabase& db);

// The latest registered exchange rate (0 without one).
Decimal latestExchangeRate(const QSqlDatabase& db);
// FORMAPAGO.Codigo of a payment way by its name ("" when unknown).
QString paymentWayCode(const QSqlDatabase& db, const QString& name);
// VENTAS.Impresa: 0 while the invoice waits for its print.
bool isPrinted(const QSqlDatabase& db, const QString& serie, long long number);
// TotalMercancia − TotalDescuento + TotalImpuesto of a stored invoice.
Decimal invoiceTotal(const QSqlDatabase& db, const QString& serie, long long number);

// The lookup lists of the sale screen. The article list takes the typed text + "%", the parked
// sales the register's serie (with client and seller names and the total), the dispatch orders
// the first day they may be invoiced from (see openDispatchOrders).
QString clientCatalogSql();
QString sellerCatalogSql();
QString articleCatalogSql();
QString parkedCatalogSql();
QString dispatchCatalogSql();

// --- writers (inside the action's transaction) ---

struct SaleHeader {
    long long number = 0;
    QString serie;
    QDateTime fecha;
    QString vendedor;
    QString cliente;
    int tipoVenta = 1;
    QString formaPago; // FORMAPAGO code
    int diasCredito = 0;
    QString usuario;
    long long numeroOrden = 0;
    Decimal totalPago;
};
void insertSale(const QSqlDatabase& db, const SaleHeader& h);
// Writes the lines of one invoice and takes their stock. Lines and stock are gathered and written
// by finish() in two statements, whatever the number of lines: on a store server each statement
// is a round trip.
class LineWriter {
public:
    LineWriter(const QSqlDatabase& db, long long number, const QString& serie,
               const QDateTime& hora);
    // Adds the quantity to an equal line already taken (same article, list, prices and
    // discount) or takes the line with the next item number. Returns the item written.
    int add(const SaleLine& line);
    // Only articles whose stock is kept (Tipo 0) lose stock.
    void decreaseStock(const QString& barcode, const Decimal& quantity);
    // Writes the lines and the stock taken; the invoice's lines exist in the database afterwards.
    void finish();

private:
    QSqlDatabase m_db;
    long long m_number;
    QString m_serie;
    QDateTime m_hora;
    QList<LineFigures> m_lines;     // by item - 1
    QHash<QString, int> m_written;  // line key -> item
    QMap<QString, Decimal> m_stock; // barcode -> quantity taken, in key order (row lock order)
};
// BANCOS and CTABANCOS code '0' "NINGUNO": inserted when missing, set inactive when present.
void ensurePlaceholderBank(const QSqlDatabase& db);
struct PaymentRecord {
    int item = 0;
    QString formaPago; // FORMAPAGO code
    QString documento;
    QString aprobacion;
    QString banco;
    QString puntoVenta;
    Decimal monto;
    QString merchantJson;
};
void insertPayment(const QSqlDatabase& db, long long number, const QString& serie,
                   const QDateTime& fecha, const PaymentRecord& p);
void insertReceivable(const QSqlDatabase& db, long long number, const QString& serie,
                      const QString& client, const Decimal& amount, int days,
                      const QDateTime& fecha);
// The stored totals, summed from the invoice's lines; TotalDolares at `rate` when above zero.
SaleTotals writeTotals(const QSqlDatabase& db, long long number, const QString& serie,
                       const Decimal& rate);
void closeDispatchOrder(const QSqlDatabase& db, long long order);
void markPrinted(const QSqlDatabase& db, const QString& serie, long long number);

struct DeletedLineContext {
    long long number = 0; // the invoice the lines were keyed for
    QString serie;
    QString vendedor;
    QString cliente;
    QString cajero;
    QString autoriza;
};
void insertDeletedLine(const QSqlDatabase& db, const DeletedLineContext& c, int item,
                       const SaleLine& line);

// --- parked sales and dispatch orders ---

// The article as the catalogue holds it, whatever its state (lines saved earlier).
std::optional<ArticlePrices> articleAnyState(const QSqlDatabase& db, const QString& barcode);

struct ParkedHeader {
    long long numero = 0;
    QString serie;
    QDateTime fecha;
    QString vendedor;
    QString cliente;
    int tipoVenta = 1;
    QString formaPago;
    int diasCredito = 0;
    QString usuario;
    long long numeroOrden = 0;
    bool exenta = false;
};
void insertParked(const QSqlDatabase& db, const ParkedHeader& h);
void writeParkedTotals(const QSqlDatabase& db, long long numero, const QString& serie,
                       const SaleTotals& totals);
void insertParkedLine(const QSqlDatabase& db, long long numero, const QString& serie, int item,
                      const QDateTime& hora, const SaleLine& line);
std::optional<ParkedHeader> parkedHeader(const QSqlDatabase& db, long long numero,
                                         const QString& serie);
// The parked lines by item, with what the catalogue says of each article.
QList<SaleLine> parkedLines(const QSqlDatabase& db, long long numero, const QString& serie);
void deleteParked(const QSqlDatabase& db, long long numero, const QString& serie);

struct DispatchOrderHeader {
    long long numero = 0;
    QString cliente;
    QDateTime fecha;
    Decimal totalMercancia;
    QString observacion;
    bool exenta = false;
};
// Open orders (Status 1) dated from `since` (all when null).
QList<DispatchOrderHeader> openDispatchOrders(const QSqlDatabase& db, const QDate& since);
std::optional<DispatchOrderHeader> dispatchOrder(const QSqlDatabase& db, long long numero);
QList<SaleLine> dispatchOrderLines(const QSqlDatabase& db, long long numero);

} // namespace orvo::pos::sale::store
