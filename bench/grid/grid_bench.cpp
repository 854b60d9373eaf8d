// Milliseconds for a 100,000-row grid: fill, show, scroll to the end, sort, search, export.
// Runs offscreen unless a platform is set: orvo_bench_grid [rows]
#include "common/grid_ui/grid_view.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>
#include <cstdio>

using namespace orvo;
using namespace orvo::grid;

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int rows = argc > 1 ? std::atoi(argv[1]) : 100000;

    QList<QVariantList> data;
    data.reserve(rows);
    for (int i = 1; i <= rows; ++i)
        data << QVariantList{QStringLiteral("%1").arg(i, 7, 10, QLatin1Char('0')),
                             QStringLiteral("ARTICULO %1").arg(i),
                             QString::number(i % 997) + QStringLiteral(".25"),
                             QString::number(i % 13), QVariant()};

    QElapsedTimer t;
    const auto lap = [&](const char* what) {
        std::printf("%-32s %8lld ms\n", what, static_cast<long long>(t.restart()));
    };

    t.start();
    GridView view;
    view.setColumns({{QStringLiteral("Código")},
                     {QStringLiteral("Nombre")},
                     {QStringLiteral("Precio"), GridColumn::Type::Number, 2},
                     {QStringLiteral("Cantidad"), GridColumn::Type::Number, 0},
                     {QStringLiteral("Total"), GridColumn::Type::Number, 2}});
    view.gridModel()->setFormula(4, percentageFormula(2, u'*', 3));
    view.resize(1000, 700);
    lap("create view");
    view.gridModel()->setRows(data);
    lap("fill rows with formula + totals");
    view.show();
    QApplication::processEvents();
    lap("show");
    view.scrollToBottom();
    QApplication::processEvents();
    lap("scroll to the end");
    view.setActiveCell(rows / 2, 1);
    QApplication::processEvents();
    lap("go to the middle row");
    view.gridModel()->sort(2, Qt::DescendingOrder);
    QApplication::processEvents();
    lap("sort by price");
    const int miss = view.gridModel()->findRow(QStringLiteral("NO EXISTE"), true);
    lap("search value (no match)");
    QTemporaryDir dir;
    view.gridModel()->exportTabDelimited(dir.filePath(QStringLiteral("grid.txt")));
    lap("export tab-delimited");
    std::printf("rows %d, total %s, miss %d\n\n", view.gridModel()->rowCount(),
                qPrintable(view.gridModel()->total(4).toString(2)), miss);
    return 0;
}
