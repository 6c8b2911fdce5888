// SPDX-License-Identifier: MIT
// Views keep pictures, shapes, values and layouts from one step to the next. After each of many changes
// they must look like views that are opened then.
#include <QHeaderView>
#include <QTableView>
#include <QtTest>
#include <algorithm>
#include <memory>
#include <vector>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"
#include "desk/models/valueTable.h"
#include "desk/project/workspace.h"
#include "desk/views/canvas.h"
#include "desk/views/cellDelegate.h"
#include "desk/views/graphView.h"
#include "desk/views/graphWindow.h"
#include "desk/views/legendPanel.h"
#include "desk/views/mapWindow.h"
#include "desk/views/tableView.h"
#include "desk/views/tableWindow.h"
#include "desk/window/application.h"

using namespace meridor;

namespace {

constexpr int kSide = 6; ///< objects in a row and in a column

/// A square of a lattice; a rhombus inside it if `turned`.
QList<QPointF> ring(int object, bool turned)
{
    const QPointF at(object % kSide, object / kSide);
    return turned ? QList<QPointF>{at + QPointF(0.5, 0), at + QPointF(1, 0.5), at + QPointF(0.5, 1),
                                   at + QPointF(0, 0.5)}
                  : QList<QPointF>{at, at + QPointF(1, 0), at + QPointF(1, 1), at + QPointF(0, 1)};
}

/// Where two pictures first differ; empty if nowhere.
QString difference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return QStringLiteral("size %1, %2").arg(a.width()).arg(b.width());
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y))
                return QStringLiteral("pixel %1, %2: %3, opened now %4")
                    .arg(x)
                    .arg(y)
                    .arg(a.pixel(x, y), 8, 16)
                    .arg(b.pixel(x, y), 8, 16);
    return QString();
}

} // namespace

class tst_Steps : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void viewsLookAsIfOpenedNow();
    void cellsLookAsTheStylePaintsThem();

private:
    using Windows = std::vector<std::unique_ptr<ViewWindow>>;
    Workspace &workspace() { return static_cast<Application *>(qApp)->workspace(); }
    void run(const std::function<void()> &work)
    {
        QString told;
        const auto listening = connect(&workspace(), &Workspace::told, this,
                                       [&told](const QString &text) { told = text; });
        const bool done =
            workspace().run(QStringLiteral("work"), [&work](const Progress &) { work(); });
        disconnect(listening);
        QVERIFY2(done, qPrintable(told));
    }
    void make();
    int addDataset(const char *name, StorageType storage, DataType type)
    {
        return VORN_NewVectorDataset(mAreas, QLatin1String(name), storage, type, 1, QString());
    }
    QVector<double> valuesOf(int slice) const;
    Windows open();
    static QVector<QImage> picturesOf(ViewWindow &window);
    void compare(const Windows &windows);

    int mAreas = -1;
    int mGrid = -1;
    int mFixed = -1;
    int mMoving = -1;
    int mSeries = -1;
    int mName = -1;
    int mCells = -1;
    int mQueen = -1;
};

/// Objects 0 to 5 exist until 4 and from 6 on; 6 to 11 have another shape from 4 on. Values of "moving"
/// change at 2, 4, 6 and 8; those from 6 to 8 lack for some objects, and none is known from 8 on.
void tst_Steps::make()
{
    run([this] {
        VORN_StartNewVectorGeography(QRectF(0, 0, kSide, kSide), 0, 10, -1);
        for (int i = 0; i < kSide * kSide; ++i) {
            const auto chain = static_cast<unsigned>(VORN_CreateNewObjectChain());
            if (i < 2 * kSide) {
                VORN_AddPolygonToChain(chain, ring(i, false), {0, 4, true, false});
                VORN_AddPolygonToChain(chain, ring(i, i >= kSide),
                                       {i < kSide ? 6 : 4, 10, true, true});
            } else {
                VORN_AddPolygonToChain(chain, ring(i, false), {0, 10, true, true});
            }
        }
        mAreas = VORN_FinishVectorGeography("areas", QString(), TF_Integer);
        mFixed = addDataset("fixed", TimeSlice, DecimalType);
        mMoving = addDataset("moving", TimeSlice, DecimalType);
        mSeries = addDataset("series", TimeSeries, IntegerType);
        mName = addDataset("name", TimeSlice, StringType);
        VORN_AddDataValues(mFixed, 0, {0, 10, true, true}, valuesOf(9), {}, true, true);
        for (int slice = 0; slice < 4; ++slice)
            VORN_AddDataValues(mMoving, 0, {2 * slice, 2 * slice + 2, true, false}, valuesOf(slice),
                               slice == 3 ? QSet<int>{3, 20, 21} : QSet<int>(), true, true);
        for (unsigned i = 0; i < kSide * kSide; ++i)
            for (const int start : {0, 5})
                VORN_AddDataValue(mSeries, 0, i, {start, start + 5, true, false},
                                  static_cast<int>(i * 7 % 11) + start, true, true);
        for (const int start : {0, 4}) {
            QVector<QString> names;
            for (int i = 0; i < kSide * kSide; ++i)
                names.append(QStringLiteral("area %1 of %2").arg(i * 5 % 36).arg(start));
            VORN_AddDataValues(mName, 0, {start, start + 4, true, false}, names, {}, true, true);
        }
        for (const int dataset : {mFixed, mMoving, mSeries, mName})
            VORN_NewDatasetCreated(dataset);
        WeightSetPlan plan;
        plan.name = QStringLiteral("queen");
        plan.method = QStringLiteral("queen");
        plan.weights = QStringLiteral("row");
        mQueen = createWeightSet(mAreas, plan);

        mGrid =
            VORN_CreateNewRasterGeography(QStringLiteral("grid"), 4, 5, QRectF(0, 0, 5, 4),
                                          {0, 10, true, true}, TF_Integer, QString(), QString());
        mCells = VORN_NewRasterDataset(mGrid, QStringLiteral("cells"), RasterDecimalType, 1, 64,
                                       QString());
        for (const int start : {0, 4}) {
            QVector<double> cells;
            for (int i = 0; i < 20; ++i)
                cells.append((i * 3 + start) % 13);
            VORN_AddRasterValues(mCells, 0, {start, start + 4, true, false}, cells, -1.0, true,
                                 true);
        }
        VORN_NewDatasetCreated(mCells);
    });
    workspace().setInStep(true);
    workspace().setTime(mAreas, 1);
}

QVector<double> tst_Steps::valuesOf(int slice) const
{
    QVector<double> values;
    for (int i = 0; i < kSide * kSide; ++i)
        values.append((i * 17 + slice * 5) % 23 + slice * 2.5);
    return values;
}

tst_Steps::Windows tst_Steps::open()
{
    Windows windows;
    const auto add = [&windows](ViewWindow *window) {
        if (!window)
            return;
        windows.emplace_back(window);
        window->resize(620, 420);
        window->show();
        QCoreApplication::processEvents();
        picturesOf(*window);
    };
    add(openMap(workspace(), mFixed));
    MapWindow *const both = openMap(workspace(), mCells);
    both->addOutlines(mAreas);
    add(both);
    add(openGraph(workspace(), GraphKind::Histogram, {mFixed}));
    add(openGraph(workspace(), GraphKind::Histogram, {mSeries}));
    add(openGraph(workspace(), GraphKind::Histogram, {mCells}));
    add(openTable(workspace(), mAreas));
    TableWindow *const sorted = openTable(workspace(), mAreas);
    sorted->table()->sortBy(sorted->table()->model().columnOf(mSeries), Qt::DescendingOrder);
    sorted->table()->setSelectedFirst(true);
    add(sorted);
    for (const GraphKind kind : {GraphKind::TimePlot, GraphKind::BoxPlot})
        add(openGraph(workspace(), kind, {mSeries}));
    if (datasetOf(mMoving) == nullptr)
        return windows;
    add(openMap(workspace(), mMoving));
    MapWindow *const own = openMap(workspace(), mMoving);
    own->layers().first()->setRule(own->layers().first()->rule(), false);
    add(own);
    add(openGraph(workspace(), GraphKind::Scatter, {mFixed, mMoving}));
    add(openGraph(workspace(), GraphKind::Moran, {mMoving}, mQueen));
    add(openGraph(workspace(), GraphKind::Histogram, {mMoving}));
    for (const GraphKind kind : {GraphKind::TimePlot, GraphKind::BoxPlot})
        add(openGraph(workspace(), kind, {mMoving}));
    return windows;
}

/// What a person sees of a window, without its tools; of a map the sharp picture.
QVector<QImage> tst_Steps::picturesOf(ViewWindow &window)
{
    QCoreApplication::processEvents();
    if (auto *const map = qobject_cast<MapWindow *>(&window)) {
        map->canvas().grab(); // the coarse picture
        map->canvas().finish();
        return {map->canvas().grab().toImage(), map->findChild<LegendPanel *>()->grab().toImage()};
    }
    if (auto *const graph = qobject_cast<GraphWindow *>(&window)) {
        graph->graph()->showAll(); // else the room that labels took for earlier values remains
        QCoreApplication::processEvents();
        return {graph->findChild<QWidget *>(QStringLiteral("graph"))->grab().toImage()};
    }
    QTableView &table = *static_cast<TableWindow &>(window).table()->table();
    // The widths that a table chose for earlier values remain.
    table.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (int column = 0; column < table.model()->columnCount(); ++column)
        table.setColumnWidth(column, 90);
    QCoreApplication::processEvents();
    return {table.viewport()->grab().toImage(), table.horizontalHeader()->grab().toImage()};
}

void tst_Steps::compare(const Windows &windows)
{
    std::vector<QVector<QImage>> pictures;
    for (const auto &window : windows)
        if (!window->views().isEmpty())
            pictures.push_back(picturesOf(*window));
    const Windows fresh = open();
    QCOMPARE(pictures.size(), fresh.size());
    for (std::size_t i = 0; i < fresh.size(); ++i) {
        const QVector<QImage> expected = picturesOf(*fresh[i]);
        for (int k = 0; k < expected.size(); ++k) {
            const QString differs = difference(pictures[i][k], expected[k]);
            const QString what = QStringLiteral("window %1 (%2), picture %3: %4")
                                     .arg(i)
                                     .arg(fresh[i]->title())
                                     .arg(k)
                                     .arg(differs);
            QVERIFY2(differs.isEmpty(), qPrintable(what));
        }
    }
}

void tst_Steps::viewsLookAsIfOpenedNow()
{
    make();
    if (QTest::currentTestFailed())
        return;
    const Windows windows = open();
    View &table = *windows[5]->views().first();
    const struct {
        const char *what;
        std::function<void()> change;
    } changes[] = {
        {"the same slice", [this] { workspace().setTime(mAreas, 0); }},
        {"another slice", [this] { workspace().setTime(mAreas, 2); }},
        {"back", [this] { workspace().setTime(mAreas, 1); }},
        {"a selection",
         [&] {
             table.choose({2, 7, 30}, SelectionMode::Replace);
         }},
        {"a slice with a selection", [this] { workspace().setTime(mAreas, 3); }},
        {"other objects and shapes", [this] { workspace().setTime(mAreas, 4); }},
        {"another selection",
         [&] {
             table.choose({8, 9}, SelectionMode::Add);
         }},
        {"the series", [this] { workspace().setTime(mAreas, 5); }},
        {"missing values", [this] { workspace().setTime(mAreas, 6); }},
        {"values that change",
         [this] {
             run([this] {
                 VORN_AddDataValues(mMoving, 0, {6, 8, true, false}, valuesOf(6), {}, true, true);
                 VORN_AddDataValues(mFixed, 0, {0, 10, true, true}, valuesOf(1), {}, true, true);
                 VORN_DatasetsChanged({mMoving, mFixed});
             });
         }},
        {"the same slice of changed values", [this] { workspace().setTime(mAreas, 7); }},
        {"no values", [this] { workspace().setTime(mAreas, 9); }},
        {"no values, another time", [this] { workspace().setTime(mAreas, 8); }},
        {"a slice after none", [this] { workspace().setTime(mAreas, 5); }},
        {"a slice that splits another one",
         [this] {
             run([this] {
                 VORN_AddDataValue(mSeries, 0, 14, {5, 6, true, false}, 40, true, true);
                 VORN_DatasetChanged(mSeries);
             });
         }},
        {"out of the split", [this] { workspace().setTime(mAreas, 6); }},
        {"into the split", [this] { workspace().setTime(mAreas, 5); }},
        {"objects that go",
         [this] {
             run([this] {
                 static_cast<MVectorData *>(geographyOf(mAreas))->RemoveObjects({0, 8, 35});
             });
         }},
        {"a step after that", [this] { workspace().setTime(mAreas, 2); }},
        {"a dataset that goes", [this] { run([this] { VORN_RemoveDataset(mMoving); }); }},
        {"a last step", [this] { workspace().setTime(mAreas, 6); }},
    };
    for (const auto &step : changes) {
        step.change();
        compare(windows);
        if (QTest::currentTestFailed()) {
            qWarning("after: %s", step.what);
            break;
        }
    }
}

void tst_Steps::cellsLookAsTheStylePaintsThem()
{
    make();
    const std::unique_ptr<TableWindow> window(openTable(workspace(), mAreas));
    window->resize(620, 420);
    window->QWidget::show();
    QTableView &table = *window->table()->table();
    window->table()->choose({1, 4}, SelectionMode::Replace);
    window->table()->hover(2);
    for (const int width : {0, 90, 34}) { // of the column of names: 34 elides
        if (width > 0)
            table.setColumnWidth(1, width);
        QVERIFY(qobject_cast<CellDelegate *>(table.itemDelegate()));
        QAbstractItemDelegate *const ours = table.itemDelegate();
        table.grab(); // the second picture is of texts that are kept
        const QImage kept = table.grab().toImage();
        QStyledItemDelegate plain;
        table.setItemDelegate(&plain);
        const QImage expected = table.grab().toImage();
        const QString differs = difference(kept, expected);
        kept.save("kept.png");
        expected.save("opened.png");
        table.setItemDelegate(ours);
        QVERIFY2(differs.isEmpty(), qPrintable(differs));
    }
}

int main(int argc, char **argv)
{
    Application application(argc, argv);
    tst_Steps test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Steps.moc"
