#include "inventory/articles/article_rules.h"

#include "common/errors/errors.h"

#include <QDateTime>
#include <algorithm>

namespace orvo::inventory {

void ModelGrid::setBarcode(int row, int column, const QString& barcode) {
    m_cells[row][column] = barcode.trimmed();
}

int ModelGrid::addSize(const QString& size) {
    const int row = rowOf(size);
    if (row >= 0)
        return row;
    insertSize(rowCount(), size);
    return rowCount() - 1;
}

int ModelGrid::addColour(const GridColour& colour) {
    const int column = columnOf(colour.code);
    if (column >= 0)
        return column;
    insertColour(columnCount(), colour);
    return columnCount() - 1;
}

void ModelGrid::insertSize(int row, const QString& size) {
    m_sizes.insert(row, size);
    m_cells.insert(row, QVector<QString>(columnCount()));
}

void ModelGrid::insertColour(int column, const GridColour& colour) {
    m_colours.insert(column, colour);
    for (auto& cells : m_cells)
        cells.insert(column, QString());
}

void ModelGrid::removeSize(int row) {
    m_sizes.removeAt(row);
    m_cells.removeAt(row);
}

void ModelGrid::removeColour(int column) {
    m_colours.removeAt(column);
    for (auto& cells : m_cells)
        cells.removeAt(column);
}

int ModelGrid::columnOf(const QString& colourCode) const {
    for (int c = 0; c < columnCount(); ++c)
        if (m_colours[c].code == colourCode)
            return c;
    return -1;
}

int ModelGrid::variantCount() const {
    int n = 0;
    for (const auto& cells : m_cells)
        for (const auto& b : cells)
            n += b.isEmpty() ? 0 : 1;
    return n;
}

QPair<int, int> ModelGrid::find(const QString& barcode, int exceptRow, int exceptColumn) const {
    const QString wanted = barcode.trimmed();
    if (wanted.isEmpty())
        return {-1, -1};
    for (int r = 0; r < rowCount(); ++r)
        for (int c = 0; c < columnCount(); ++c)
            if ((r != exceptRow || c != exceptColumn) && m_cells[r][c] == wanted)
                return {r, c};
    return {-1, -1};
}

namespace rules {

QString variantName(const QString& modelName, const QString& size, const QString& colourName) {
    return modelName.trimmed() + QStringLiteral(" T:") + size + QLatin1Char(' ') +
           colourName.left(13);
}

Decimal withTax(const Decimal& beforeTax, const Decimal& ratePercent) {
    return (beforeTax * (Decimal(1) + ratePercent / Decimal(100))).rounded(4);
}

Decimal withoutTax(const Decimal& withTaxPrice, const Decimal& ratePercent) {
    return (withTaxPrice / (Decimal(1) + ratePercent / Decimal(100))).rounded(4);
}

Decimal discountOf(const Decimal& retailPrice, const Decimal& promotionPrice) {
    if (retailPrice.isZero())
        return Decimal();
    return ((Decimal(1) - promotionPrice / retailPrice) * Decimal(100)).rounded(2);
}

Decimal promotionPriceFor(const Decimal& retailPrice, const Decimal& discountPercent) {
    if (discountPercent >= Decimal(100))
        throw UserError(QStringLiteral("No puede ofrecer un descuento mayor o igual al 100%"));
    if (discountPercent.isNegative())
        throw UserError(QStringLiteral("No puede ofrecer un Descuento menor a 0"));
    return (retailPrice * (Decimal(1) - discountPercent / Decimal(100))).rounded(4);
}

void checkPromotionPrice(const Decimal& retailPrice, const Decimal& promotionPrice) {
    if (promotionPrice > retailPrice)
        throw UserError(QStringLiteral("No puede establecer un precio mayor que el precio detal"));
}

bool isDetailCategoryKey(const QString& key) {
    if (key.isEmpty() || key == kRootCategoryKey)
        return false;
    return key.size() >= 7 || key == QStringLiteral("C00");
}

int eanCheckDigit(const QString& body) {
    // Weights 3 and 1 from the rightmost digit of the body.
    int sum = 0;
    for (qsizetype i = 0; i < body.size(); ++i)
        sum += body[body.size() - 1 - i].digitValue() * (i % 2 == 0 ? 3 : 1);
    return (10 - sum % 10) % 10;
}

void checkBarcodeFormat(const QString& barcode) {
    const QString code = barcode.trimmed();
    if (code.size() > kBarcodeLength)
        throw UserError(QStringLiteral("El código de barras ") + code +
                        QStringLiteral(" tiene %1 caracteres: no puede tener más de %2...!")
                            .arg(code.size())
                            .arg(kBarcodeLength));
    const bool digits = !code.isEmpty() && std::all_of(code.begin(), code.end(), [](QChar c) {
        return c >= QLatin1Char('0') && c <= QLatin1Char('9');
    });
    if (!digits || (code.size() != 13 && code.size() != 8))
        return;
    const int expected = eanCheckDigit(code.left(code.size() - 1));
    if (code.back().digitValue() != expected)
        throw UserError(
            QStringLiteral("El código EAN-%1 ").arg(code.size()) + code +
            QStringLiteral(" no es válido: su dígito de control debe ser %1...!").arg(expected));
}

void validateModel(const ArticleModel& model, const ModelGrid& grid, bool isNew,
                   const QDate& today) {
    if (grid.rowCount() == 0)
        throw UserError(QStringLiteral("Debe específicar alguna talla...!"));
    if (grid.columnCount() == 0)
        throw UserError(QStringLiteral("Debe específicar algún color....!"));
    if (grid.variantCount() == 0)
        throw UserError(QStringLiteral("Debe al menos crear un artículo...!"));
    if (model.category.isEmpty() || !isDetailCategoryKey(categoryKey(model.category)))
        throw UserError(QStringLiteral("Seleccione una categoria de detalle...!"));
    if (model.promotion && model.promotionEnd < model.promotionStart)
        throw UserError(QStringLiteral("No puede colocar una fecha final de promoción menor a la "
                                       "fecha inicial de promoción...!"));
    if (model.promotion && !isNew && model.promotionEnd <= today)
        throw UserError(
            QStringLiteral("No puede colocar una fecha final de promoción al día de hoy...!"));
}

QString logNumber(const Decimal& value) {
    return value.toString(8);
}

namespace {

QString literal(const QVariant& value) {
    if (value.isNull())
        return QStringLiteral("NULL");
    if (value.canConvert<Decimal>() && value.metaType() == QMetaType::fromType<Decimal>())
        return logNumber(value.value<Decimal>());
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Bool:
        return QString::number(value.toLongLong());
    case QMetaType::QDateTime:
        return QLatin1Char('\'') +
               value.toDateTime().toString(QStringLiteral("yyyyMMdd HH:mm:ss")) + QLatin1Char('\'');
    case QMetaType::QDate:
        return QLatin1Char('\'') + value.toDate().toString(QStringLiteral("yyyyMMdd")) +
               QLatin1Char('\'');
    default: {
        QString text = value.toString();
        text.replace(QLatin1Char('\''), QStringLiteral("''"));
        return QLatin1Char('\'') + text + QLatin1Char('\'');
    }
    }
}

} // namespace

QString describeStatement(const QString& statement, const QVariantList& values) {
    QString out;
    out.reserve(statement.size() + values.size() * 12);
    int next = 0;
    bool inQuote = false;
    for (const QChar ch : statement) {
        if (ch == QLatin1Char('\''))
            inQuote = !inQuote;
        if (ch == QLatin1Char('?') && !inQuote && next < values.size())
            out += literal(values[next++]);
        else
            out += ch;
    }
    return out;
}

} // namespace rules

} // namespace orvo::inventory
