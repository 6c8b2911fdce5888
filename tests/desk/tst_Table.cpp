// SPDX-License-Identifier: MIT
// The table of objects: lazy columns, order, selected rows, copies and files.
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QHeaderView>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include "core/import/importOptions.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "desk/models/valueTable.h"
#include "desk/person.h"
#include "desk/project/workspace.h"
#include "desk/views/tableView.h"
#include "desk/views/tableWindow.h"
#include "desk/views/valueHistory.h"

using namespace meridor;
using Ids = QVector<unsigned int>;

class tst_Table : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { muteSizeHints(); }
    void init();
    void cleanup();
    void showsKeyNameAndValuesOfTheTime();
    void sortsWithMissingLast();
    void rowsAreSelectedByMouseAndKeys();
    void copiesAndExports();
    void datasetsComeAndGo();
    void columnsFitTheirValues();

private:
    Workspace &workspace() { return static_cast<Application *>(qApp)->workspace(); }
    QString selected();
    QString cell(int row, const char *column);
    QPoint at(int row);

    QTemporaryDir mFolder;
    int mStates = -1;
    int mIncome = -1;
    TableWindow *mWindow = nullptr;
    TableView *mView = nullptr;
};

void tst_Table::init()
{
    ImportOptions options;
    options.map = QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson");
    options.name = QStringLiteral("states");
    options.key = QStringLiteral("fips");
    options.tables =
        QStringList{QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/income_1929_2009.csv"),
                    QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/admission.csv")};
    options.series = QStringList{QStringLiteral("income=1929..2009")};
    options.start = QStringLiteral("admitted");
    options.times = QStringLiteral("auto");
    mStates = workspace().import(options);
    QVERIFY(mStates >= 0);
    mIncome = findDataset(mStates, QStringLiteral("income"));
    mWindow = openTable(workspace(), mStates);
    mWindow->resize(800, 500);
    mWindow->QWidget::show();
    QCoreApplication::processEvents();
    mView = mWindow->table();
}

void tst_Table::cleanup()
{
    delete mWindow;
    workspace().close();
}

QString tst_Table::selected()
{
    QStringList texts;
    for (const unsigned int object : workspace().selection().selected(mStates))
        texts.append(QString::number(object));
    return texts.join(QLatin1Char(' '));
}

QString tst_Table::cell(int row, const char *column)
{
    const ValueTable &model = mView->model();
    for (int i = 0; i < model.columnCount(); ++i)
        if (model.headerData(i, Qt::Horizontal).toString() == QLatin1String(column))
            return model.index(row, i).data().toString();
    return QStringLiteral("no such column");
}

QPoint tst_Table::at(int row)
{
    return mView->table()->visualRect(mView->model().index(row, 0)).center();
}

void tst_Table::showsKeyNameAndValuesOfTheTime()
{
    const ValueTable &model = mView->model();
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("fips"));
    QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), QStringLiteral("name"));
    QCOMPARE(model.rowCount(), 48);
    const QVector<double> income = numbersAt(mIncome, workspace().timeOf(mStates));
    for (int row = 0; row < 48; ++row)
        QCOMPARE(cell(row, "income").toDouble(), income[model.objectOf(row)]);
    // At the first time there is one state, and no income yet.
    const qint64 first = axisOf(mStates).span(QStringLiteral("1787-12-07"))->startTime;
    mView->goTo(first);
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(cell(0, "name"), QStringLiteral("Delaware"));
    QCOMPARE(cell(0, "income"), QString());
    mView->goTo(first - 86400);
    QCOMPARE(model.rowCount(), 0);
    QVERIFY2(mView->trouble().contains(QLatin1String("no objects")), qPrintable(mView->trouble()));
    mWindow->grab();
}

void tst_Table::sortsWithMissingLast()
{
    ValueTable &model = mView->model();
    const Interval last = dataTimes(mIncome).last();
    int changed = -1;
    QVERIFY(workspace().run(QStringLiteral("add"), [&](const Progress &) {
        QVector<double> values = numbersAt(mIncome, instantOf(last));
        values[4] = values[9];
        changed = VORN_NewVectorDataset(mStates, QStringLiteral("changed"), TimeSlice, DecimalType,
                                        1, QString());
        VORN_AddDataValues(changed, 0, last, values, {7, 30}, true, true);
        VORN_NewDatasetCreated(changed);
    }));
    const QVector<double> income = numbersAt(changed, workspace().timeOf(mStates));
    for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
        mView->sortBy(model.columnOf(changed), order);
        QCOMPARE(cell(46, "changed") + cell(47, "changed"), QString());
        QCOMPARE(model.objectOf(46), 7);
        QCOMPARE(model.objectOf(47), 30);
        for (int row = 1; row < 46; ++row) {
            const int before = model.objectOf(row - 1);
            const int object = model.objectOf(row);
            const bool ascends = order == Qt::AscendingOrder ? income[before] < income[object]
                                                             : income[before] > income[object];
            QVERIFY2(ascends || (income[before] == income[object] && before < object),
                     qPrintable(QString::number(row)));
            QCOMPARE(model.rowOf(object), row);
        }
    }
    workspace().selection().select(mStates, {7, 20});
    mView->setSelectedFirst(true);
    QCOMPARE(model.objectOf(0), 20);
    QCOMPARE(model.objectOf(1), 7);
    workspace().selection().select(mStates, {5});
    QCOMPARE(model.objectOf(0), 5);
    // A step of time keeps the order by values.
    mView->setSelectedFirst(false);
    mView->sortBy(model.columnOf(mIncome), Qt::AscendingOrder);
    mView->goTo(instantOf(dataTimes(mIncome).first()));
    for (int row = 1; row < 48; ++row)
        QVERIFY(cell(row - 1, "income").toDouble() <= cell(row, "income").toDouble());
    mView->sortBy(1, Qt::AscendingOrder);
    QCOMPARE(cell(0, "name"), QStringLiteral("Alabama"));
}

void tst_Table::rowsAreSelectedByMouseAndKeys()
{
    QWidget *const viewport = mView->widget();
    mView->sortBy(1, Qt::AscendingOrder);
    const auto ids = [this](std::initializer_list<int> rows) {
        QVector<int> objects;
        for (const int row : rows)
            objects.append(mView->model().objectOf(row));
        std::sort(objects.begin(), objects.end());
        QStringList texts;
        for (const int object : std::as_const(objects))
            texts.append(QString::number(object));
        return texts.join(QLatin1Char(' '));
    };
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::NoModifier, at(2));
    QCOMPARE(selected(), ids({2}));
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::ShiftModifier, at(5));
    QCOMPARE(selected(), ids({2, 3, 4, 5}));
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::ControlModifier, at(3));
    QCOMPARE(selected(), ids({2, 4, 5}));
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::NoModifier, at(0));
    QTest::keyClick(mView->table(), Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(mView->table(), Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(selected(), ids({0, 1, 2}));
    QTest::keyClick(mView->table(), Qt::Key_Down);
    QTest::keyClick(mView->table(), Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(selected(), ids({0, 1, 2, 3}));
    QCOMPARE(workspace().selection().hovered(mStates), mView->model().objectOf(3));
    QVERIFY(mView->model().index(3, 0).data(Qt::BackgroundRole).isValid());
    QVERIFY(!mView->model().index(4, 0).data(Qt::BackgroundRole).isValid());
    QPainterPath region;
    region.addRect(QRectF(QPointF(0, at(6).y()), QPointF(50, at(8).y())));
    mView->brush(region, SelectionMode::Replace);
    QCOMPARE(selected(), ids({6, 7, 8}));
    mWindow->clearSelection();
    QCOMPARE(selected(), QString());
}

void tst_Table::copiesAndExports()
{
    mView->sortBy(1, Qt::DescendingOrder);
    workspace().selection().select(mStates, {0, 1});
    mWindow->copyToClipboard();
    const QStringList lines = QGuiApplication::clipboard()->text().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 4); // names, two rows, and the end of the last line
    QVERIFY2(lines[0].startsWith(QLatin1String("fips\tname\t")), qPrintable(lines[0]));
    const QStringList names = objectNames(mStates);
    QCOMPARE(lines[1].section(QLatin1Char('\t'), 1, 1), std::max(names[0], names[1]));
    const QString file = mFolder.filePath(QStringLiteral("states.csv"));
    QVERIFY(mWindow->exportTo(file));
    QFile written(file);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll().count('\n'), 49);
    const QString line = workspace().log().lines().filter(QStringLiteral("meridor export")).last();
    QVERIFY2(line.contains(QLatin1String("--geography states --at")), qPrintable(line));
    QVERIFY(!mWindow->exportTo(mFolder.filePath(QStringLiteral("absent/states.csv"))));
    const QJsonObject state = mWindow->state();
    mView->sortBy(0, Qt::AscendingOrder);
    mWindow->restore(state);
    QCOMPARE(mWindow->state(), state);
}

void tst_Table::datasetsComeAndGo()
{
    const int columns = mView->model().columnCount();
    mView->sortBy(mView->model().columnOf(mIncome), Qt::AscendingOrder);
    QVERIFY(workspace().run(QStringLiteral("remove"),
                            [&](const Progress &) { VORN_RemoveDataset(mIncome); }));
    QCOMPARE(mView->model().columnCount(), columns - 1);
    QCOMPARE(mView->model().columnOf(mIncome), -1);
    mWindow->grab();
    QCOMPARE(cell(0, "income"), QStringLiteral("no such column"));
    workspace().close();
    QCOMPARE(mWindow->table(), nullptr);
}

void tst_Table::columnsFitTheirValues()
{
    const auto widthOf = [this](int dataset) {
        return mView->table()->columnWidth(mView->model().columnOf(dataset));
    };
    int wide = -1;
    const auto add = [&](const Interval &when, const QString &text) {
        return workspace().run(QStringLiteral("add"), [&](const Progress &) {
            if (wide < 0)
                wide = VORN_NewVectorDataset(mStates, QStringLiteral("wide"), TimeSlice, StringType,
                                             1, QString());
            VORN_AddDataValues(wide, 0, when, QVector<QString>(48, text), {}, true, true);
            VORN_NewDatasetCreated(wide); // while the table cannot be read
        });
    };
    const int abbr = findDataset(mStates, QStringLiteral("abbr"));
    const int before = widthOf(abbr);
    mView->goTo(instantOf(dataTimes(mIncome).first()));
    const Interval last = dataTimes(mIncome).last();
    const QString text(25, QLatin1Char('n'));
    QVERIFY(add(last, text));
    settle();
    QCOMPARE(widthOf(abbr), before);
    const int least = mView->table()->fontMetrics().horizontalAdvance(text);
    QVERIFY(widthOf(wide) < least); // no values at this time
    mView->goTo(instantOf(last));
    settle();
    QVERIFY2(widthOf(wide) > least, qPrintable(QString::number(widthOf(wide))));
    // What a person sets stays, wherever the column stands.
    QHeaderView &header = *mView->table()->horizontalHeader();
    header.resizeSection(mView->model().columnOf(wide), 77);
    header.resizeSection(mView->model().columnOf(abbr), 99);
    QVERIFY(workspace().run(QStringLiteral("remove"),
                            [&](const Progress &) { VORN_RemoveDataset(mIncome); }));
    settle();
    QCOMPARE(widthOf(wide), 77);
    QCOMPARE(widthOf(abbr), 99);
    std::unique_ptr<TableWindow> again(openTable(workspace(), mStates));
    again->restore(mWindow->state());
    QCOMPARE(again->table()->table()->columnWidth(mView->model().columnOf(abbr)), 99);
    again->restore({{QStringLiteral("widths"), QJsonObject{{QStringLiteral("abbr"), 1e300}}}});
}

int main(int argc, char **argv)
{
    return runTest<tst_Table>(argc, argv);
}

#include "tst_Table.moc"
