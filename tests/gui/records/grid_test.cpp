#include "common/db/sql.h"
#include "common/grid_ui/catalog_dialog.h"
#include "common/grid_ui/grid_view.h"
#include "inventory/prices/price_store.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QAction>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::grid;
using Type = GridColumn::Type;

namespace {

class GridGui : public test::DbTest {
protected:
    test::ScriptedDialogs dialogs;
};

QList<GridColumn> lineColumns() {
    return {{"Código"},
            {"Precio", Type::Number, 2, false, true},
            {"Impuesto", Type::Number, 2, false, true},
            {"Cantidad", Type::Number, 3, false, true},
            {"Total", Type::Number, 2},
            {"~HDNClave", Type::Text, 0, true}};
}

} // namespace

TEST_F(GridGui, TotalsFollowTheLinesByFormula) {
    GridModel m;
    m.setColumns(lineColumns());
    m.setFormula(4, priceWithTaxTimesQuantity(1, 2, 3));
    EXPECT_EQ(m.columns()[4].caption, "Total");
    EXPECT_EQ(priceWithTaxTimesQuantity(1, 2, 3).text, "((ROUND(B* (1 + (C/100)),2) * D))");
    EXPECT_EQ(differencePercent(0, 1, 2).text, "(A-B) * (C/100)");
    EXPECT_EQ(columnLetter(26), "AA");

    m.appendRow({"A1", "10.00", "16", "3"});
    m.appendRow({"A2", "0.10", "16", "1"});
    EXPECT_EQ(m.number(0, 4), Decimal::fromString(u"34.80"));
    EXPECT_EQ(m.total(4), Decimal::fromString(u"34.92")); // 0.116 rounds to 0.12
    m.setValue(1, 3, "10");
    EXPECT_EQ(m.total(4), Decimal::fromString(u"36.00"));
    m.removeRows(0, 1);
    EXPECT_EQ(m.total(4), Decimal::fromString(u"1.20"));
    EXPECT_EQ(m.total(3), Decimal::fromString(u"10"));
}

TEST_F(GridGui, BlocksAreLockedClearedAndPainted) {
    GridView view;
    view.setColumns(lineColumns());
    view.gridModel()->setFormula(4, priceWithTaxTimesQuantity(1, 2, 3));
    for (int i = 0; i < 3; ++i)
        view.gridModel()->appendRow({"A", "10", "0", "1"});
    GridModel* m = view.gridModel();
    EXPECT_TRUE(m->flags(m->index(1, 1)) & Qt::ItemIsEditable);
    view.blockAction(GridView::BlockAction::Lock, 0, 1, 1, 3);
    EXPECT_FALSE(m->flags(m->index(1, 1)) & Qt::ItemIsEditable);
    EXPECT_TRUE(m->flags(m->index(2, 1)) & Qt::ItemIsEditable);
    view.blockAction(GridView::BlockAction::Unlock, 0, 1, 1, 3);
    EXPECT_TRUE(m->flags(m->index(1, 1)) & Qt::ItemIsEditable);

    EXPECT_EQ(m->total(4), Decimal(30));
    view.blockAction(GridView::BlockAction::Clear, 1, 2, 3, 3); // quantities of two lines
    EXPECT_EQ(m->total(4), Decimal(10));
    EXPECT_FALSE(m->value(1, 3).isValid());

    m->setBlockColour(0, 0, 0, 4, QColor(Qt::yellow));
    EXPECT_EQ(m->data(m->index(0, 2), Qt::BackgroundRole).value<QColor>(), QColor(Qt::yellow));
    EXPECT_FALSE(m->data(m->index(1, 2), Qt::BackgroundRole).isValid());
    view.blockAction(GridView::BlockAction::Hide, 2, 2, 0, 0);
    EXPECT_TRUE(view.isRowHidden(2));
}

TEST_F(GridGui, SearchSkipsHiddenColumnsAndKeepsTheCellWhenNothingMatches) {
    GridView view;
    view.setColumns(lineColumns());
    view.gridModel()->appendRow({"ROJO", "5", "16", "1", {}, "SECRETO"});
    view.gridModel()->appendRow({"AZUL", "1234567.5", "16", "2", {}, "OTRO"});
    view.show();
    EXPECT_EQ(view.columnByCaption("Precio"), 1);
    EXPECT_EQ(view.columnByCaption("~HDNClave"), -1);
    EXPECT_EQ(view.gridModel()->displayText(1, 1),
              QLocale().toString(1234567.5, 'f', 2)); // grouped with the machine's separators

    view.setActiveCell(0, 0);
    EXPECT_FALSE(view.searchValue("SECRETO"));
    EXPECT_EQ(dialogs.lastText(), "No existe ningún valor similar al\nelemento buscado.");
    EXPECT_EQ(view.activeRow(), 0);
    EXPECT_TRUE(view.searchValue("zu", true));
    EXPECT_EQ(view.activeRow(), 1);
    EXPECT_FALSE(view.searchValue("zu", false)); // exact: "AZUL" is not "zu"
    EXPECT_EQ(view.activeRow(), 1);
    view.setActiveCell(0, 0);
    EXPECT_TRUE(view.searchValue("1234567.50"));
    EXPECT_EQ(view.activeRow(), 1);

    EXPECT_TRUE(view.goToRow(1));
    EXPECT_EQ(view.activeRow(), 0);
    EXPECT_FALSE(view.goToRow(3));
    view.hideGridColumn(0);
    EXPECT_EQ(view.columnByCaption("Código"), -1);
    EXPECT_TRUE(view.isColumnHidden(0));

    const SearchCondition cond = searchCondition(view.gridModel()->columns(), "12", true);
    EXPECT_EQ(cond.where, "Precio = ? OR Impuesto = ? OR Cantidad = ? OR Total = ?");
    EXPECT_EQ(searchCondition(lineColumns(), "ROJO", true).where, "Código LIKE ?");
    EXPECT_EQ(orderByClause({{"Nombre", false}, {"Codigo", true}}),
              " ORDER BY Nombre ASC, Codigo DESC");
}

TEST_F(GridGui, ExportWritesTheVisibleColumnsTabDelimited) {
    GridView view;
    view.setColumns(lineColumns());
    view.gridModel()->appendRow({"ROJO", "5", "16", "1", {}, "SECRETO"});
    view.gridModel()->appendRow({"AZUL", "2", "0", "2", {}, "OTRO"});
    const QString path = QDir(test::processTempDir()).filePath("lineas.txt");
    QFile::remove(path);
    { // an older file of that name is replaced, not appended to
        QFile old(path);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(5000, 'x'));
    }
    dialogs.expectFileName(path);
    ASSERT_TRUE(view.exportToFile());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(f.readAll()).split("\r\n", Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], "Código\tPrecio\tImpuesto\tCantidad\tTotal");
    EXPECT_TRUE(lines[1].startsWith("ROJO\t"));
    EXPECT_FALSE(lines[1].contains("SECRETO"));
    EXPECT_EQ(lines[2].split('\t').size(), 5);
    EXPECT_FALSE(view.exportToFile()); // cancelled: no file name
}

TEST_F(GridGui, LookupListCountsSearchesAndHandsBackTheRow) {
    for (const auto& [code, name] :
         QList<QPair<QString, QString>>{{"001", "ROJO"}, {"002", "AZUL"}, {"003", "VERDE"}})
        exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES (?, ?, 1)", {code, name});
    CatalogDialog list("Colores", db(),
                       "SELECT Codigo AS \"~HDNCodigo\", Nombre, Status FROM COLORES WHERE "
                       "Codigo <> ? ORDER BY Nombre",
                       {QString("0")});
    list.show();
    EXPECT_EQ(list.objectName(), "frmCatalogo");
    EXPECT_EQ(list.windowTitle(), "Colores (3 Registros)");
    EXPECT_TRUE(list.grid()->isColumnHidden(0));

    auto menuAction = [&](const QString& key) {
        QAction* a = list.popupMenu()->findChild<QAction*>(key);
        EXPECT_NE(a, nullptr) << key.toStdString();
        return a;
    };
    for (const char* key : {"OrdenarF", "BuscarV", "IrAFila", "Ocultar", "Exportar", "Imprimir"})
        menuAction(key);
    EXPECT_EQ(menuAction("OrdenarF")->text(), "&Ordenar Filas");

    dialogs.expectTextInput("NEGRO");
    menuAction("BuscarV")->trigger();
    EXPECT_EQ(dialogs.lastText(), "No existe ningún valor similar al\nelemento buscado.");
    dialogs.expectTextInput("verd");
    menuAction("BuscarV")->trigger();
    QTest::keyClick(list.grid(), Qt::Key_Return);
    ASSERT_EQ(list.result(), QDialog::Accepted);
    EXPECT_EQ(list.chosenValue("~HDNCodigo").toString(), "003");
    EXPECT_EQ(list.chosenValue("Nombre").toString(), "VERDE");

    CatalogDialog empty("Colores", db(), "SELECT Codigo, Nombre FROM COLORES WHERE Codigo = ?",
                        {QString("999")});
    EXPECT_EQ(dialogs.lastText(), "No hay datos registrados.");
    EXPECT_EQ(empty.windowTitle(), "Colores (0 Registros)");
}

TEST_F(GridGui, PickedNumbersReadAsTextAndNumbers) {
    exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, TipoImpuesto, PrecioDetal) "
         "VALUES (?, ?, ?, ?)",
         {"775", "CAMISA", 3, "1234.5"});
    CatalogDialog list("Artículos", db(),
                       "SELECT CodigoBarra, Nombre, TipoImpuesto, PrecioDetal FROM INVENTARIO");
    list.show();
    QTest::keyClick(list.grid(), Qt::Key_Return);
    ASSERT_EQ(list.result(), QDialog::Accepted);

    const QVariant tax = list.chosenValue("TipoImpuesto");
    EXPECT_EQ(tax.toLongLong(), 3);
    EXPECT_EQ(tax.toInt(), 3);
    EXPECT_EQ(tax.toString(), "3");
    const QVariant price = list.chosenValue("PrecioDetal");
    EXPECT_EQ(price.toString(), "1234.5");
    EXPECT_DOUBLE_EQ(price.toDouble(), 1234.5);
    // The picked value goes back into a statement as it came out.
    db::Sql q(db(), "SELECT Nombre FROM INVENTARIO WHERE TipoImpuesto = ? AND PrecioDetal = ?");
    q.bind(tax).bind(price).exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.value(0).toString(), "CAMISA");
}

TEST_F(GridGui, LookupListsShowDatesAsDaysOnEitherEngine) {
    // Dates go in as the program binds them: a day at midnight.
    exec("INSERT INTO LISTAPRECIO (Numero, Fecha, Observacion, Usuario, Status) "
         "VALUES (?, ?, ?, ?, 0)",
         {7, QDateTime(QDate(2026, 11, 23), QTime(0, 0)), "2026-11-24 no es fecha", "ADMIN"});
    exec("INSERT INTO LISTAPRECIO (Numero, Fecha, Observacion, Usuario, Status) "
         "VALUES (?, ?, ?, ?, 1)",
         {8, QDateTime(QDate(2026, 12, 1), QTime(15, 30)), "2026-12-01", "ADMIN"});
    exec("INSERT INTO LISTAPRECIO (Numero, Fecha, Usuario, Status) VALUES (?, NULL, ?, 0)",
         {9, "ADMIN"});
    CatalogDialog list("Listas de precios", db(), inventory::prices::store::listsCatalogSql());
    const GridModel* m = list.grid()->gridModel();
    ASSERT_EQ(list.rowCount(), 3);
    const int fecha = m->columnByCaption("Fecha");
    const int observacion = m->columnByCaption("Observacion");
    ASSERT_GE(fecha, 0);
    EXPECT_EQ(m->column(fecha).type, Type::Date);
    EXPECT_EQ(m->displayText(0, fecha), "");
    EXPECT_EQ(m->displayText(1, fecha), "01/12/2026");
    EXPECT_EQ(m->displayText(2, fecha), "23/11/2026");
    EXPECT_EQ(m->data(m->index(2, fecha)).toString(), "23/11/2026");
    // A text that merely starts like a date stays text, so its column does too.
    EXPECT_EQ(m->column(observacion).type, Type::Text);
    EXPECT_EQ(m->displayText(1, observacion), "2026-12-01");

    // The day is found as it is shown, and handed back as a day.
    list.grid()->searchValue("23/11/2026", true);
    QTest::keyClick(list.grid(), Qt::Key_Return);
    ASSERT_EQ(list.result(), QDialog::Accepted);
    EXPECT_EQ(list.chosenValue("Numero").toInt(), 7);
    EXPECT_EQ(list.chosenValue("Fecha").toDate(), QDate(2026, 11, 23));
}

TEST_F(GridGui, LookupListSortsByRequery) {
    for (const auto& [code, name] :
         QList<QPair<QString, QString>>{{"001", "ROJO"}, {"002", "AZUL"}, {"003", "VERDE"}})
        exec("INSERT INTO COLORES (Codigo, Nombre, Status) VALUES (?, ?, 1)", {code, name});
    CatalogDialog list("Colores", db(), "SELECT Codigo, Nombre FROM COLORES ORDER BY Codigo");
    list.grid()->setActiveCell(0, 1);
    list.sortRows();
    EXPECT_EQ(list.grid()->gridModel()->value(0, 1).toString(), "AZUL");
    list.sortRows();
    EXPECT_EQ(list.grid()->gridModel()->value(0, 1).toString(), "VERDE");
    EXPECT_EQ(list.rowCount(), 3);
}

TEST_F(GridGui, HundredThousandRowsLoadAndScrollToTheEnd) {
    GridView view;
    view.resize(800, 600);
    const int rows =
        view.load(db(), "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                        "WHERE i < 100000) SELECT i AS Numero, 'ART' || i AS Nombre, "
                        "CAST(i AS NUMERIC(18,2)) / 4 AS Monto FROM n ORDER BY i");
    ASSERT_EQ(rows, 100000);
    EXPECT_EQ(view.gridModel()->rowCount(), 100000);
    view.show();
    view.scrollToBottom();
    QTRY_COMPARE(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
    const QModelIndex last = view.gridModel()->index(99999, 1);
    EXPECT_EQ(view.gridModel()->data(last).toString(), "ART100000");
    EXPECT_EQ(view.gridModel()->number(99999, 2), Decimal(25000));
    EXPECT_TRUE(view.viewport()->rect().intersects(view.visualRect(last)));
    EXPECT_EQ(view.gridModel()->lastUsedRow(), 99999);
}
