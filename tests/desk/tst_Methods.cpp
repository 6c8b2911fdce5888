// SPDX-License-Identifier: MIT
// Methods and their dialogs: what they do to the project, what they tell, and that the command lines
// in the log do the same.
#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>
#include "core/analysis/statistics.h"
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/variogramModels.h"
#include "core/import/importOptions.h"
#include "core/project/catalog.h"
#include "core/render/classification.h"
#include "core/render/legend.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/MGeoData.h"
#include "desk/dialogs/linkHistogram.h"
#include "desk/dialogs/methodDialog.h"
#include "desk/dialogs/modelDialog.h"
#include "desk/methods/method.h"
#include "desk/person.h"
#include "desk/project/workspace.h"
#include "desk/window/mainWindow.h"

using namespace meridor;

Q_DECLARE_METATYPE(QVector<MethodParameter>)

namespace {

Application &program()
{
    return *static_cast<Application *>(qApp);
}

Workspace &workspace()
{
    return program().workspace();
}

MethodParameter parameter(const char *name, const QVariant &value)
{
    return {QLatin1String(name), value};
}

} // namespace

class tst_Methods : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { workspace().close(); }
    void theLibraryFindsMethods();
    void aDialogMakesAWeightSet();
    void selectsByValueAndByNeighbours();
    void troubleIsASentence_data();
    void troubleIsASentence();
    void aModelIsEdited();
    void theLogRepeatsTheSession();

private:
    MethodReport run(const char *method, const QVector<MethodParameter> &parameters);

    QTemporaryDir mFolder;
    int mStates = -1;
    QString mCopy; ///< the project before the methods
};

MethodReport tst_Methods::run(const char *method, const QVector<MethodParameter> &parameters)
{
    MethodReport report;
    if (!VORN_ExecuteMethod(0, QLatin1String(method), parameters, report))
        report.text = QStringLiteral("failed");
    return report;
}

void tst_Methods::initTestCase()
{
    muteSizeHints();
    ImportOptions options;
    options.map = QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson");
    options.key = QStringLiteral("fips");
    options.tables << QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/income_1929_2009.csv");
    options.series << QStringLiteral("income=1929..2009");
    options.times = QStringLiteral("number");
    mStates = workspace().import(options);
    QVERIFY2(mStates >= 0, qPrintable(workspace().log().lines().join(QLatin1Char('\n'))));
    QVERIFY(workspace().save(mFolder.filePath(QStringLiteral("income of states.vorn"))));
    mCopy = mFolder.filePath(QStringLiteral("copy.vorn"));
    QVERIFY(QFile::copy(workspace().path(), mCopy));
}

void tst_Methods::theLibraryFindsMethods()
{
    QVERIFY(VORN_GetController()->HasGUI());
    const int moran = program().methods().numberOf(QStringLiteral("moran"));
    QVERIFY(moran > 0);
    QCOMPARE(VORN_GetMethodName(moran, QString()), QStringLiteral("Moran's I"));
    QCOMPARE(VORN_ShowMethod(moran, QString(), {parameter("permutations", 99)}), moran);
    int dialogs = 0;
    for (QWidget *const widget : QApplication::topLevelWidgets())
        if (auto *const found = qobject_cast<MethodDialog *>(widget)) {
            QCOMPARE(
                MethodArguments(found->form().parameters()).whole(QStringLiteral("permutations")),
                99);
            ++dialogs;
            found->close();
        }
    QCOMPARE(dialogs, 1);
    QCOMPARE(VORN_ShowMethod(1000, QStringLiteral("none"), {}), -1);
}

void tst_Methods::aDialogMakesAWeightSet()
{
    const Method &method = *program().methods().find(QStringLiteral("weights"));
    auto *const dialog = new MethodDialog(workspace(), program().methods(), method, nullptr);
    dialog->show();
    auto *const name = dialog->findChild<QLineEdit *>(QStringLiteral("name"));
    name->setFocus();
    QTest::keyClicks(name, QStringLiteral("queen"));
    QCOMPARE(dialog->findChild<QLineEdit *>(QStringLiteral("command line"))->text(),
             QStringLiteral("meridor weights create '%1' queen --geography states48 --method queen "
                            "--weights row --order 1")
                 .arg(workspace().path()));
    for (const char *const field : {"count", "range", "great-circle"})
        QVERIFY2(!dialog->findChild<QWidget *>(QLatin1String(field))->isEnabled(), field);
    QTest::keyClick(name, Qt::Key_Return); // Run is the default
    QCOMPARE(dialog->findChild<QLabel *>(QStringLiteral("report"))->text(),
             QStringLiteral("queen: 48 objects, 214 links, 1 to 8 each, 0 without neighbours"));
    QVERIFY(workspace().isDirty());
    QCOMPARE(geographyOf(mStates)->GetSpatialWeightsNames().value(0), QStringLiteral("queen"));
    QCOMPARE(workspace().shownWeights(mStates),
             geographyOf(mStates)->GetSpatialWeightsIds().value(0));

    // Maine is the only state with one neighbour.
    const auto *const bars = dialog->findChild<LinkHistogram *>();
    QCOMPARE(bars->counts().value(1), 1);
    int objects = 0;
    for (const int count : bars->counts())
        objects += count;
    QCOMPARE(objects, 48);
    QTest::mouseClick(const_cast<LinkHistogram *>(bars), Qt::LeftButton, {},
                      bars->barOf(1).center());
    QCOMPARE(workspace().selection().count(mStates), 1);
    QCOMPARE(objectNames(mStates).value(
                 static_cast<int>(workspace().selection().selected(mStates).value(0))),
             QStringLiteral("Maine"));
    QWidget &keyed = const_cast<LinkHistogram &>(*bars);
    QTest::keyClick(&keyed, Qt::Key_End);
    QTest::keyClick(&keyed, Qt::Key_Left);
    QTest::keyClick(&keyed, Qt::Key_Space, Qt::ShiftModifier);
    QCOMPARE(workspace().selection().count(mStates), 1 + bars->counts()[bars->counts().size() - 2]);
    auto *const neighbors = dialog->findChild<QComboBox *>(QStringLiteral("method"));
    neighbors->setCurrentText(QStringLiteral("nearest"));
    QVERIFY(dialog->findChild<QWidget *>(QStringLiteral("count"))->isEnabled());
    QVERIFY(!dialog->findChild<QWidget *>(QStringLiteral("order"))->isEnabled());
    dialog->close();
}

void tst_Methods::selectsByValueAndByNeighbours()
{
    Selection &selection = workspace().selection();
    selection.clear(mStates);
    workspace().setTime(mStates, 2009);
    const MethodReport rich = run("select", {parameter("dataset", QStringLiteral("income")),
                                             parameter("min", QStringLiteral("50000"))});
    QVERIFY2(rich.text.startsWith(QLatin1Char('2')) || rich.text.startsWith(QLatin1Char('1')),
             qPrintable(rich.text));
    const QVector<unsigned int> chosen = selection.selected(mStates);
    QVERIFY(!chosen.isEmpty());
    QCOMPARE(
        run("select-neighbors", {parameter("weights", QStringLiteral("queen"))}).text.isEmpty(),
        false);
    QVERIFY(selection.count(mStates) > chosen.size());
    for (const unsigned int object : chosen)
        QVERIFY(selection.isSelected(mStates, object));
    QVERIFY(selection.back(mStates));
    QCOMPARE(selection.selected(mStates), chosen);
}

void tst_Methods::troubleIsASentence_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVector<MethodParameter>>("parameters");
    QTest::addColumn<QString>("sentence");
    using Parameters = QVector<MethodParameter>;
    QTest::newRow("taken name") << QStringLiteral("weights")
                                << Parameters{parameter("geography", QStringLiteral("states48")),
                                              parameter("name", QStringLiteral("queen"))}
                                << QStringLiteral("queen");
    QTest::newRow("no name") << QStringLiteral("weights")
                             << Parameters{parameter("geography", QStringLiteral("states48"))}
                             << QStringLiteral("a weight set needs a name");
    QTest::newRow("unknown dataset")
        << QStringLiteral("moran") << Parameters{parameter("dataset", QStringLiteral("rain"))}
        << QStringLiteral("rain");
    QTest::newRow("nothing chosen")
        << QStringLiteral("moran") << Parameters{} << QStringLiteral("dataset");
    QTest::newRow("no limits") << QStringLiteral("select")
                               << Parameters{parameter("dataset", QStringLiteral("income"))}
                               << QStringLiteral("neither values nor limits");
    QTest::newRow("no grid") << QStringLiteral("zonal")
                             << Parameters{parameter("dataset", QStringLiteral("income")),
                                           parameter("polygons", QStringLiteral("states48")),
                                           parameter("into", QStringLiteral("x"))}
                             << QStringLiteral("income");
}

void tst_Methods::troubleIsASentence()
{
    QFETCH(QString, method);
    QFETCH(QVector<MethodParameter>, parameters);
    QFETCH(QString, sentence);
    const int lines = workspace().log().lines().size();
    QSignalSpy told(&workspace(), &Workspace::told);
    MethodReport report;
    QVERIFY(!VORN_ExecuteMethod(0, method, parameters, report));
    QCOMPARE(told.size(), 1);
    const QString text = told.last().at(0).toString();
    QVERIFY2(text.contains(sentence), qPrintable(text));
    for (const QString &line : workspace().log().lines().mid(lines))
        QVERIFY2(line.startsWith(QLatin1Char('#')), qPrintable(line));
}

void tst_Methods::aModelIsEdited()
{
    const int income = VORN_GetDatasetByName(mStates, QStringLiteral("income"));
    ModelDialog &dialog = *program().window().showModel(income, nullptr);
    const auto text = [&dialog](const char *name) {
        return dialog.findChild<QLineEdit *>(QLatin1String(name));
    };
    const auto press = [&dialog](const char *name) {
        QTest::mouseClick(dialog.findChild<QPushButton *>(QLatin1String(name)), Qt::LeftButton);
    };
    auto *const table = dialog.findChild<QTableWidget *>(QStringLiteral("structures"));
    const auto type = [table](int column, const char *typed) {
        table->setCurrentCell(0, column);
        table->editItem(table->item(0, column));
        const auto choices = table->viewport()->findChildren<QComboBox *>();
        QWidget *editor = choices.isEmpty() ? nullptr : choices.last();
        if (auto *const line = table->viewport()->findChild<QLineEdit *>()) {
            line->selectAll();
            QTest::keyClick(line, Qt::Key_Delete);
            editor = line;
        }
        QTest::keyClicks(editor, QLatin1String(typed));
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents(); // in which the editor is closed
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    const auto *const report = dialog.findChild<QLabel *>(QStringLiteral("report"));
    const auto *const graph = dialog.findChild<ModelGraph *>();
    const auto curveEnd = [graph] { return graph->graph().series.value(1).points.last().y(); };
    QTRY_COMPARE(graph->graph().series.size(), 1); // pairs without a model
    QTest::keyClicks(text("modelNugget"), QStringLiteral("1000"));
    QCOMPARE(curveEnd(), 1000.0);
    press("addStructure");
    type(0, "cub");
    type(1, "5e6"); // with a range of 1 degree; the curve follows at once
    QCOMPARE(curveEnd(), 5001000.0);

    const auto wrong = [&](int column, const char *typed, const char *sentence) {
        const QByteArray before = table->item(0, column)->text().toUtf8();
        type(column, typed);
        QCOMPARE(report->text(), QLatin1String(sentence));
        QCOMPARE(text("command line")->text(), QString());
        QCOMPARE(dialog.save(), false);
        QCOMPARE(report->text(), QLatin1String(sentence));
        type(column, before.constData());
    };
    wrong(1, "much", "Structure 1, sill: much is no number");
    wrong(1, "-1", "the sill of a cubic structure is -1");
    wrong(2, "", "Structure 1, range is empty");
    wrong(2, "0", "the range of a cubic structure is 0");
    QCOMPARE(text("command line")->text(),
             QStringLiteral("meridor variogram '%1' states48/income --structure nugget:1000 "
                            "--structure cubic:5e+06:1 --estimator classical --at 2009 "
                            "--save income")
                 .arg(workspace().path()));
    press("saveModel");
    QCOMPARE(report->text(), QStringLiteral("income is stored."));
    const auto stored = [income] {
        return structuresText(structuresAt(findModel(income, QStringLiteral("income")), 2009));
    };
    QCOMPARE(stored(), QStringLiteral("nugget:1000,cubic:5e+06:1"));

    // A fit replaces what was typed, and Save now replaces the model.
    press("fit");
    QVERIFY2(table->item(0, 2)->text().toDouble() > 1, qPrintable(report->text()));
    press("saveModel");
    QCOMPARE(stored(), structuresText(dialog.structures()));
    QVERIFY(stored() != QStringLiteral("nugget:1000,cubic:5e+06:1"));
    dialog.close();

    // The library's request shows the stored model. Without a dataset the project keeps it.
    VariogramModel request{DataId(income)};
    request.name = QStringLiteral("income");
    program().ShowVariogramModelDialog(request, false, 0, false);
    ModelDialog &again = *program().window().findChildren<ModelDialog *>().last();
    QCOMPARE(structuresText(again.structures()), stored());
    again.findChild<QComboBox *>(QStringLiteral("modelDataset"))->setCurrentIndex(0);
    QVERIFY2(again.save(), qPrintable(again.findChild<QLabel *>("report")->text()));
    QCOMPARE(modelNames(-1), QStringList{QStringLiteral("income")});
    // A graph is painted while work shows its progress.
    again.findChild<ModelGraph *>()->update();
    run("moran", {parameter("dataset", QStringLiteral("income")),
                  parameter("weights", QStringLiteral("queen")), parameter("permutations", 99)});
    again.close();
}

// The same work by the command lines of the log, on a copy of the project.
void tst_Methods::theLogRepeatsTheSession()
{
    const int first = workspace().log().lines().size();
    run("moran", {parameter("dataset", QStringLiteral("income")),
                  parameter("weights", QStringLiteral("queen")), parameter("permutations", 99),
                  parameter("local", true), parameter("save", QStringLiteral("Moran's \"I\""))});
    const Classification clusters(findDataset(QStringLiteral("Moran's \"I\" cluster")), {}, {});
    QCOMPARE(clusters.entries().first().text, QStringLiteral("high-high"));
    QCOMPARE(clusters.entries().last().text, QStringLiteral("not significant"));
    QCOMPARE(clusters.of(QStringLiteral("not significant")), clusters.entries().size() - 1);
    // A dataset that does not change has the shapes of a geography with times.
    const MethodReport still =
        run("variogram", {parameter("dataset", QStringLiteral("states48/fips")),
                          parameter("model", QStringLiteral("nugget"))});
    QVERIFY2(still.text.startsWith(QLatin1String("Model of fips: nugget:")),
             qPrintable(still.text));
    for (const char *const made : {"Einkommen ganz größer", "as decimals", "as series"}) {
        const QString name = QString::fromUtf8(made);
        QVector<MethodParameter> conversion{parameter("dataset", QStringLiteral("income")),
                                            parameter("new", name)};
        conversion.append(name == QLatin1String("as series")
                              ? parameter("storage", QStringLiteral("series"))
                              : parameter("type", name == QLatin1String("as decimals")
                                                      ? QStringLiteral("decimal")
                                                      : QStringLiteral("text")));
        QCOMPARE(run("convert", conversion).text, name + QStringLiteral(" was made from income"));
    }
    const QVector<int> made = datasetIds(mStates);
    QStringList script{QStringLiteral("set -e"),
                       commandText({QStringLiteral("weights"), QStringLiteral("create"), mCopy,
                                    QStringLiteral("queen"), QStringLiteral("--method"),
                                    QStringLiteral("queen")})};
    for (QString line : workspace().log().lines().mid(first))
        script.append(line.replace(shellWord(workspace().commandPath()), shellWord(mCopy)));
    QProcess bash;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"), QStringLiteral(MERIDOR_DIRECTORY ":")
                                                   + environment.value(QStringLiteral("PATH")));
    bash.setProcessEnvironment(environment);
    bash.start(QStringLiteral("bash"), {QStringLiteral("-c"), script.join(QLatin1Char('\n'))});
    QVERIFY(bash.waitForFinished(kPatience));
    QVERIFY2(bash.exitCode() == 0, bash.readAllStandardError().constData());

    QMap<QString, QString> expected;
    const auto figures = [&] {
        QMap<QString, QString> found;
        for (const int id : datasetIds(geographyIds().first())) {
            found.insert(datasetName(id), VORN_GetDatasetProperties(id).dataType == StringType
                                              ? QString()
                                              : textOf(statisticsAt(id, 1929).mean));
        }
        return found;
    };
    expected = figures();
    QCOMPARE(expected.size(), made.size());
    QVERIFY(workspace().open(mCopy));
    QCOMPARE(figures(), expected);
}

int main(int argc, char **argv)
{
    return runTest<tst_Methods>(argc, argv);
}

#include "tst_Methods.moc"
