// SPDX-License-Identifier: MIT
// Dialogs by keyboard, the progress of work, and names that are long or look like markup.
#include <QAction>
#include <QDialog>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QLabel>
#include <QMenu>
#include <QProgressDialog>
#include <QProxyStyle>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QWindow>
#include <QtTest>
#include "core/import/importOptions.h"
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "core/project/progress.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MGeoData.h"
#include "desk/dialogs/importDialog.h"
#include "desk/dialogs/methodDialog.h"
#include "desk/person.h"
#include "desk/project/actionLog.h"
#include "desk/project/workspace.h"
#include "desk/views/viewWindow.h"
#include "desk/window/application.h"
#include "desk/window/mainWindow.h"
#include "desk/window/recoveryBar.h"
#include "desk/window/viewArea.h"

using namespace meridor;

namespace {

const QString kStates = QStringLiteral(MERIDOR_TEST_SAMPLES "/us_income/states48.geojson");

QProgressDialog *progressBar()
{
    for (QWidget *const top : QApplication::topLevelWidgets())
        if (auto *const bar = qobject_cast<QProgressDialog *>(top); bar && bar->isVisible())
            return bar;
    return nullptr;
}

/// A label as it is shown: the letter after "&" is underlined or not.
QString withoutKeys(QString label)
{
    return label.replace(QLatin1String("&&"), QLatin1String("\1"))
        .remove(QLatin1Char('&'))
        .replace(QLatin1Char('\1'), QLatin1Char('&'));
}

/// Notes the texts that the style draws while it exists, as they are shown.
class ShownTexts : public QProxyStyle {
public:
    explicit ShownTexts(QStringList &texts) : QProxyStyle(QStringLiteral("Fusion")), mTexts(texts)
    {
    }
    void drawItemText(QPainter *painter, const QRect &place, int flags, const QPalette &palette,
                      bool isEnabled, const QString &text, QPalette::ColorRole role) const override
    {
        mTexts.append(flags & (Qt::TextShowMnemonic | Qt::TextHideMnemonic) ? withoutKeys(text)
                                                                            : text);
        QProxyStyle::drawItemText(painter, place, flags, palette, isEnabled, text, role);
    }

private:
    QStringList &mTexts;
};

} // namespace

Q_DECLARE_METATYPE(ViewKind)

class tst_Dialogs : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        muteSizeHints();
        window().show();
        QVERIFY(activate(window()));
    }
    void cleanup();
    void returnRunsTheForm_data();
    void returnRunsTheForm();
    void methodsBeginWithTheActiveView();
    void progressIsShownWhenWorkTakesLong();
    void namesAreShownLetterByLetter();
    void longNamesLeaveTheWindowItsSize();
    void theActiveViewKeepsTheFocus();
    void sentencesFollowTheTime();
    void viewsHaveKeysOfTheirOwn_data();
    void viewsHaveKeysOfTheirOwn();
    void projectsOpenUnderEveryName();
    void discardedLinesRunNothing();

private:
    Application &application() { return *static_cast<Application *>(qApp); }
    Workspace &workspace() { return application().workspace(); }
    MainWindow &window() { return application().window(); }
    int import(const QString &name)
    {
        ImportOptions options;
        options.map = kStates;
        options.name = name;
        return workspace().import(options);
    }
    void open(ViewKind kind, int dataset)
    {
        ViewRequest request;
        request.kind = kind;
        request.datasets = {dataset};
        request.geography = VORN_GetGeographyId(dataset);
        window().openView(request);
    }

    QTemporaryDir mFolder;
};

void tst_Dialogs::cleanup()
{
    for (QDialog *const dialog : window().findChildren<QDialog *>())
        delete dialog;
    workspace().close();
}

void tst_Dialogs::returnRunsTheForm_data()
{
    QTest::addColumn<bool>("isImport");
    QTest::addColumn<QString>("focus");
    QTest::addColumn<QString>("button");
    QTest::newRow("import") << true << "importName"
                            << "importRun";
    QTest::newRow("weights") << false << "geography"
                             << "run";
}

void tst_Dialogs::returnRunsTheForm()
{
    QFETCH(bool, isImport);
    QDialog *dialog = nullptr;
    if (isImport) {
        dialog = window().importFile(kStates);
    } else {
        QVERIFY(import(QStringLiteral("states")) >= 0);
        window().showMethod(*application().methods().find(QStringLiteral("weights")),
                            {{QStringLiteral("name"), QStringLiteral("queen")}});
        dialog = window().findChild<MethodDialog *>();
    }
    QVERIFY(dialog);
    QVERIFY(dialog->focusWidget());
    QTEST(dialog->focusWidget()->objectName(), "focus");
    QString button;
    for (const QPushButton *const each : dialog->findChildren<QPushButton *>())
        if (each->isDefault())
            button += each->objectName();
    QTEST(button, "button");
    QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    QCOMPARE(geographyIds().size(), 1);
    QCOMPARE(geographyOf(geographyIds().first())->GetSpatialWeightsIds().size(), isImport ? 0 : 1);
}

void tst_Dialogs::methodsBeginWithTheActiveView()
{
    import(QStringLiteral("first"));
    import(QStringLiteral("second"));
    const int dataset = findDataset(QStringLiteral("second/abbr"));
    open(ViewKind::Map, dataset);
    window().findChild<QAction *>(QStringLiteral("method select"))->trigger();
    auto *const dialog = window().findChild<MethodDialog *>();
    QVERIFY(dialog);
    for (const MethodParameter &parameter : dialog->form().parameters())
        if (parameter.name == QLatin1String("dataset"))
            QCOMPARE(parameter.value.toInt(), dataset);
}

void tst_Dialogs::progressIsShownWhenWorkTakesLong()
{
    bool wasShown = true;
    QVERIFY(workspace().run(QStringLiteral("Short"), [&](const Progress &progress) {
        progress.report(50);
        wasShown = progressBar() != nullptr;
    }));
    QVERIFY(!wasShown);

    QSignalSpy told(&workspace(), &Workspace::told);
    QElapsedTimer timer;
    timer.start();
    const bool isDone = workspace().run(QStringLiteral("Long"), [&](const Progress &progress) {
        while (timer.elapsed() < kPatience) {
            progress.report(30, "Half way");
            if (QProgressDialog *const bar = progressBar()) {
                QCOMPARE(bar->windowTitle(), QStringLiteral("Long"));
                QCOMPARE(bar->labelText(), QStringLiteral("Half way"));
                QCOMPARE(bar->value(), 30);
                bar->cancel();
            }
        }
    });
    QVERIFY(!isDone);
    QCOMPARE(told.last().first().toString(), QStringLiteral("Long: cancelled"));
    QVERIFY(!progressBar());
}

void tst_Dialogs::namesAreShownLetterByLetter()
{
    const QString name = QStringLiteral("<b>A & B</b>");
    const QString part = QStringLiteral("<b>A & B");
    QStringList drawn;
    qApp->setStyle(new ShownTexts(drawn));
    const auto restore =
        qScopeGuard([] { qApp->setStyle(QStyleFactory::create(QStringLiteral("Fusion"))); });
    const RecoveryBar bar({mFolder.path(), name, QDateTime()});
    import(name);
    const int dataset = findDataset(QStringLiteral("fips"));
    QVERIFY(renameThing(workspace(), {Thing::Dataset, dataset, -1}, name));
    QVERIFY(window().saveAs(mFolder.filePath(part + QStringLiteral(" [*].vorn"))));
    for (const ViewKind kind : {ViewKind::Map, ViewKind::Table, ViewKind::BoxPlot})
        open(kind, dataset);
    window().resize(1600, 900);
    window().findChild<QAction *>(QStringLiteral("viewStack"))->trigger();
    window().showProperties({Thing::Dataset, dataset, -1});
    window().showMethod(*application().methods().find(QStringLiteral("weights")),
                        {{QStringLiteral("name"), QString(name + QStringLiteral(" %1"))}});
    QVERIFY(window().findChild<MethodDialog *>()->execute());
    const QString report =
        window().findChild<MethodDialog *>()->findChild<QLabel *>(QStringLiteral("report"))->text();
    QVERIFY2(report.contains(name + QStringLiteral(" %1: 48 objects")), qPrintable(report));
    workspace().tell(name, true);
    settle();
    window().grab(); // tabs, and the bar above a view
    for (QMenu *const menu : window().findChildren<QMenu *>())
        Q_EMIT menu->aboutToShow();

    int found = 0;
    const auto check = [&](const QString &text, const QString &where) {
        if (!text.contains(QLatin1String("<b")) && !text.contains(QLatin1String("A & B")))
            return;
        ++found;
        QVERIFY2(text.contains(part), qPrintable(where + QStringLiteral(": ") + text));
    };
    for (const QString &text : std::as_const(drawn))
        check(text, QStringLiteral("drawn"));
    QVERIFY2(found >= 6, qPrintable(QString::number(found))); // at least the tabs
    for (QWidget *const widget : QApplication::allWidgets()) {
        const QString where = QStringLiteral("%1 %2").arg(
            QLatin1String(widget->metaObject()->className()), widget->objectName());
        const QString tip = widget->toolTip();
        check(Qt::mightBeRichText(tip) ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip,
              where);
        if (const auto *const label = qobject_cast<QLabel *>(widget)) {
            const bool isRich =
                label->textFormat() != Qt::PlainText && Qt::mightBeRichText(label->text());
            check(isRich ? QTextDocumentFragment::fromHtml(label->text()).toPlainText()
                         : label->text(),
                  where);
        }
        if (const auto *const button = qobject_cast<QAbstractButton *>(widget))
            check(withoutKeys(button->text()), where);
        for (const QAction *const action : widget->actions())
            check(withoutKeys(action->text()), where);
        if (const auto *const tabs = qobject_cast<QTabBar *>(widget))
            for (int i = 0; i < tabs->count(); ++i)
                QVERIFY(QKeySequence::mnemonic(tabs->tabText(i)).isEmpty());
    }
    auto *const dock = window().area().findChild<QDockWidget *>();
    dock->setFloating(true); // its title is that of a window now
    check(dock->windowTitle(), QStringLiteral("floating"));
    QVERIFY2(window().windowHandle()->title().contains(QLatin1String("B [*].vorn")),
             qPrintable(window().windowHandle()->title()));
}

void tst_Dialogs::longNamesLeaveTheWindowItsSize()
{
    const QSize before = window().size();
    import(QString(3000, QLatin1Char('w')));
    open(ViewKind::Map, findDataset(QStringLiteral("abbr")));
    open(ViewKind::Table, findDataset(QStringLiteral("abbr")));
    window().findChild<QAction *>(QStringLiteral("viewStack"))->trigger();
    settle();
    QCOMPARE(window().size(), before);
}

void tst_Dialogs::theActiveViewKeepsTheFocus()
{
    import(QStringLiteral("states"));
    for (int i = 0; i < 3; ++i)
        open(ViewKind::Map, findDataset(QStringLiteral("abbr")));
    const ViewArea &area = window().area();
    window().area().activate(area.windows()[1]);
    area.windows()[1]->setFocus();
    for (const char *const name : {"viewStack", "viewTile", "viewClose"}) {
        const bool closes = QLatin1String(name) == QLatin1String("viewClose");
        window().findChild<QAction *>(QLatin1String(name))->trigger();
        QCOMPARE(area.windows().indexOf(area.active()), 1);
        QCOMPARE(area.windows().size(), closes ? 2 : 3);
        const QWidget *const focus = window().focusWidget();
        QVERIFY2(focus && area.active()->isAncestorOf(focus), name);
    }
}

void tst_Dialogs::sentencesFollowTheTime()
{
    const int states =
        workspace().import(sampleImport(Sample::Income, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    const int income = findDataset(QStringLiteral("income"));
    for (const ViewKind kind : {ViewKind::Map, ViewKind::Histogram, ViewKind::TimePlot})
        open(kind, income);
    const QVector<ViewWindow *> windows = window().area().windows();
    const int object = findObject(states, QStringLiteral("Virginia"));
    windows[1]->currentView()->hover(object);
    for (const char *const year : {"2009", "1950", "1931"}) {
        windows[0]->currentView()->goTo(chooseTimeOf(states, QLatin1String(year)));
        int value = 0;
        QVERIFY(VORN_GetDataValue(income, 0, static_cast<unsigned>(object),
                                  workspace().timeOf(states), value));
        for (ViewWindow *const each : windows)
            QCOMPARE(each->findChild<QLabel *>(QStringLiteral("readout"))
                         ->text()
                         .remove(QRegularExpression(QStringLiteral(".* "))),
                     QString::number(value));
    }
    windows[1]->currentView()->hover(-1);
    for (ViewWindow *const each : windows)
        QCOMPARE(each->findChild<QLabel *>(QStringLiteral("readout"))->text(), QString());
}

void tst_Dialogs::viewsHaveKeysOfTheirOwn_data()
{
    QTest::addColumn<ViewKind>("kind");
    QTest::newRow("map") << ViewKind::Map;
    QTest::newRow("table") << ViewKind::Table;
    QTest::newRow("histogram") << ViewKind::Histogram;
}

/// A key of a view that the window has as well does neither.
void tst_Dialogs::viewsHaveKeysOfTheirOwn()
{
    QFETCH(ViewKind, kind);
    workspace().import(sampleImport(Sample::Income, QStringLiteral(MERIDOR_TEST_SAMPLES)));
    open(kind, findDataset(QStringLiteral("income")));
    const QList<QAction *> ofView = window().area().active()->actions();
    QMap<QString, QStringList> meanings;
    for (const QList<QAction *> &actions : {ofView, window().actions()})
        for (const QAction *const action : actions)
            for (const QKeySequence &keys : action->shortcuts())
                meanings[keys.toString()] += action->objectName();
    QVERIFY(!ofView.isEmpty());
    for (auto key = meanings.cbegin(); key != meanings.cend(); ++key)
        QVERIFY2(key->size() == 1, qPrintable(key.key() + ": " + key->join(QLatin1Char(' '))));
}

void tst_Dialogs::projectsOpenUnderEveryName()
{
    import(QStringLiteral("states"));
    const QString file = mFolder.filePath(QStringLiteral("a project.csv"));
    QVERIFY(window().saveAs(file));
    workspace().close();
    window().openFile(file);
    QCOMPARE(workspace().path(), file);
}

void tst_Dialogs::discardedLinesRunNothing()
{
    ActionLog log;
    log.did({QStringLiteral("rename"), QStringLiteral("p.vorn"), QStringLiteral("a\nb\rtouch c")});
    log.changed(true);
    log.discarded();
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("# not saved: meridor rename p.vorn 'a b touch c'")});
}

int main(int argc, char **argv)
{
    return runTest<tst_Dialogs>(argc, argv);
}

#include "tst_Dialogs.moc"
