// SPDX-License-Identifier: MIT
#include "desk/window/mainWindow.h"
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSet>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/session.h"
#include "core/report/gather.h"
#include "core/report/page.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "desk/dialogs/importDialog.h"
#include "desk/dialogs/methodDialog.h"
#include "desk/dialogs/modelDialog.h"
#include "desk/dialogs/propertiesDialog.h"
#include "desk/models/datasetMime.h"
#include "desk/models/plainText.h"
#include "desk/project/importLine.h"
#include "desk/project/workspace.h"
#include "desk/views/saveName.h"
#include "desk/views/viewWindow.h"
#include "desk/window/contentsPanel.h"
#include "desk/window/helpPages.h"
#include "desk/window/logPanel.h"
#include "desk/window/recoveryBar.h"
#include "desk/window/settings.h"
#include "desk/window/startPage.h"
#include "desk/window/timeBar.h"
#include "desk/window/viewArea.h"

namespace meridor {
namespace {

// A copy for recovery takes at most a twentieth of the time.
constexpr int kRestBetweenCopies = 20;
constexpr int kLeastSide = 100; // pixels of the window

/// The text of an action, with the sign before the first letter that no other action has.
QString withLetter(const QString &text, QSet<QChar> &taken)
{
    for (int i = 0; i < text.size(); ++i) {
        const QChar letter = text[i].toLower();
        if (!letter.isLetter() || taken.contains(letter))
            continue;
        taken.insert(letter);
        return QString(text).insert(i, QLatin1Char('&'));
    }
    return text;
}

QString droppedFile(const QMimeData *data)
{
    const QList<QUrl> urls = data->urls();
    return urls.isEmpty() ? QString() : urls.first().toLocalFile();
}

} // namespace

MainWindow::MainWindow(Workspace &workspace, const MethodRegister &methods)
    : mWorkspace(workspace),
      mMethods(methods),
      mPages(new QStackedWidget),
      mStart(new StartPage),
      mArea(new ViewArea(workspace)),
      mHint(new QLabel),
      mBars(new QVBoxLayout),
      mMessage(new QLabel)
{
    setObjectName(QStringLiteral("mainWindow"));
    setAcceptDrops(true);
    setDockNestingEnabled(true);
    const int em = fontMetrics().height();
    // The views give way; without this, those that are added would widen the window.
    setMinimumSize(kLeastSide, kLeastSide);
    resize(QSize(76 * em, 48 * em).boundedTo(screen()->availableSize()));

    mHint->setText(
        tr("Drag a dataset out of the contents, or press Return on it, to see its map."));
    mHint->setAlignment(Qt::AlignCenter);
    mHint->setWordWrap(true);
    mHint->setObjectName(QStringLiteral("emptyHint"));
    mPages->addWidget(mStart);
    mPages->addWidget(mHint);
    mPages->addWidget(mArea);
    auto *const center = new QWidget;
    auto *const column = new QVBoxLayout(center);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(mBars);
    column->addWidget(mPages, 1);
    setCentralWidget(center);

    mMessage->setObjectName(QStringLiteral("message"));
    mMessage->setAccessibleName(tr("Message"));
    mMessage->setTextFormat(Qt::PlainText);
    mMessage->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mMessage->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(mMessage, 1);

    makeDocks();
    makeFileMenu();
    makeEditMenu();
    makeViewMenu();
    makeTimeMenu();
    makeMethodMenu();
    makeHelpMenu();
    connectWorkspace();

    connect(mStart, &StartPage::openWanted, this,
            [this] { findChild<QAction *>(QStringLiteral("fileOpen"))->trigger(); });
    connect(mStart, &StartPage::importWanted, this,
            [this] { findChild<QAction *>(QStringLiteral("fileImport"))->trigger(); });
    connect(mStart, &StartPage::sampleWanted, this, &MainWindow::openSample);
    connect(mStart, &StartPage::projectWanted, this, &MainWindow::openProject);
    connect(mStart, &StartPage::unlockedWanted, &mWorkspace, &Workspace::openUnlocked);
    connect(mStart, &StartPage::recoverWanted, this, &MainWindow::recover);
    connect(mArea, &ViewArea::activeChanged, this, &MainWindow::followActive);
    connect(mArea, &ViewArea::countChanged, this, &MainWindow::showPage);
    connect(mContents, &ContentsPanel::viewWanted, this, &MainWindow::openView);
    connect(mContents, &ContentsPanel::propertiesWanted, this, &MainWindow::showProperties);
    connect(mContents, &ContentsPanel::modelWanted, this, &MainWindow::editModel);
    connect(mContents, &ContentsPanel::methodWanted, this,
            [this](const QString &method, const QString &parameter, int id) {
                if (const Method *const found = mMethods.find(method))
                    showMethod(*found, {{parameter, id}});
            });
    connect(mContents, &ContentsPanel::selectionChanged, this, [this] {
        if (!mArea->active())
            followActive(nullptr);
    });

    connect(&mRecoveryTimer, &QTimer::timeout, this, &MainWindow::saveRecovery);
    if (recoverySeconds() > 0)
        mRecoveryTimer.start(1000 * recoverySeconds());
    showPage();
    showTitle();
}

// The views go first, since they tell this window.
MainWindow::~MainWindow()
{
    mArea->disconnect(this);
    mWorkspace.disconnect(this);
    mArea->closeAll();
}

void MainWindow::makeDocks()
{
    const auto add = [this](QWidget *content, const QString &title, const char *name,
                            Qt::DockWidgetArea area) {
        auto *const dock = new QDockWidget(title, this);
        dock->setObjectName(QLatin1String(name));
        dock->setWidget(content);
        addDockWidget(area, dock);
        return dock;
    };
    mContents = new ContentsPanel(mWorkspace);
    mContentsDock = add(mContents, tr("Contents"), "contentsDock", Qt::LeftDockWidgetArea);
    mLogPanel = new LogPanel(mWorkspace);
    mLogDock = add(mLogPanel, tr("Log"), "logDock", Qt::BottomDockWidgetArea);
    const int em = fontMetrics().height();
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    resizeDocks({mContentsDock}, {15 * em}, Qt::Horizontal);
    resizeDocks({mLogDock}, {7 * em}, Qt::Vertical);
    auto *const bar = new QToolBar(tr("Time"));
    mTimeTools = bar;
    bar->setObjectName(QStringLiteral("timeTools"));
    bar->setMovable(false);
    mTimeBar = new TimeBar(mWorkspace);
    bar->addWidget(mTimeBar);
    addToolBar(Qt::BottomToolBarArea, bar);
}

QAction *MainWindow::addTo(QMenu *menu, const char *name, const QString &text,
                           const QKeySequence &keys, const std::function<void()> &act)
{
    QAction *const action = menu->addAction(text);
    action->setParent(this);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, [act] { act(); });
    addAction(action);
    return action;
}

void MainWindow::makeFileMenu()
{
    QMenu *const menu = menuBar()->addMenu(tr("&File"));
    addTo(menu, "fileOpen", tr("&Open..."), QKeySequence::Open, [this] {
        const QString file = QFileDialog::getOpenFileName(this, tr("Open a project"), QString(),
                                                          tr("Projects (*.vorn);;All files (*)"));
        if (!file.isEmpty())
            openFile(file);
    });
    mRecent = menu->addMenu(tr("Recent &projects"));
    connect(mRecent, &QMenu::aboutToShow, this, &MainWindow::fillRecent);
    addTo(menu, "fileSample", tr("Open the sa&mple"), {}, [this] { openSample(); });
    addTo(menu, "fileImport", tr("&Import..."), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_I),
          [this] {
              const QString file =
                  QFileDialog::getOpenFileName(this, tr("Import a map, table or grid"));
              if (!file.isEmpty())
                  importFile(file);
          });
    menu->addSeparator();
    mProjectActions << addTo(menu, "fileSave", tr("&Save"), QKeySequence::Save, [this] { save(); });
    mProjectActions << addTo(
        menu, "fileSaveAs", tr("Save &as..."), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_S),
        [this] { saveAs(askSaveName(this, tr("Save the project"), tr("Projects (*.vorn)"))); });
    mProjectActions << addTo(menu, "fileRevert", tr("Re&vert to saved"), QKeySequence(Qt::Key_F5),
                             [this] {
                                 keepWindows();
                                 mWorkspace.revert();
                             });
    menu->addSeparator();
    mProjectActions << addTo(
        menu, "fileReport", tr("Write a &report..."), QKeySequence(Qt::CTRL + Qt::Key_R), [this] {
            const QString file =
                askSaveName(this, tr("Write the project as one page"), tr("Pages (*.html)"));
            if (!file.isEmpty())
                writeReport(file);
        });
    addTo(menu, "fileScript", tr("Save the &log as a script..."), {},
          [this] { mLogPanel->askSave(); });
    menu->addSeparator();
    mProjectActions << addTo(menu, "fileClose", tr("&Close the project"),
                             QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_W), [this] {
                                 if (mayLeave())
                                     leaveProject();
                             });
    addTo(menu, "fileQuit", tr("&Quit"), QKeySequence(Qt::CTRL + Qt::Key_Q), [this] { close(); });
}

void MainWindow::toggleSelected(const std::function<void(ViewWindow &)> &act)
{
    if (ViewWindow *const window = mArea->active())
        act(*window);
}

void MainWindow::makeEditMenu()
{
    QMenu *const menu = menuBar()->addMenu(tr("&Edit"));
    // Without keys: the views have these themselves while they have the focus.
    const auto add = [&](const char *name, const QString &text,
                         const std::function<void(ViewWindow &)> &act) {
        mViewActions << addTo(menu, name, text, {}, [this, act] { toggleSelected(act); });
    };
    add("editCopy", tr("&Copy the picture of the view"),
        [](ViewWindow &window) { window.copyToClipboard(); });
    add("editExport", tr("&Export the picture of the view..."),
        [](ViewWindow &window) { window.askExport(); });
    menu->addSeparator();
    add("editClear", tr("Select &nothing"), [](ViewWindow &window) { window.clearSelection(); });
    add("editInvert", tr("&Invert the selection"),
        [](ViewWindow &window) { window.invertSelection(); });
    add("editNeighbors", tr("Select the neighbo&urs, too"),
        [](ViewWindow &window) { window.selectNeighbors(); });
    add("editBack", tr("Selection &before"), [](ViewWindow &window) {
        if (View *const view = window.currentView())
            view->stepBack();
    });
    add("editForward", tr("Selection &after"), [](ViewWindow &window) {
        if (View *const view = window.currentView())
            view->stepForward();
    });
}

void MainWindow::makeViewMenu()
{
    QMenu *const menu = menuBar()->addMenu(tr("&View"));
    for (const char *const name : {"openMap", "openTable", "openHistogram", "openBoxPlot",
                                   "openTimePlot", "openScatter", "openMoran"})
        menu->addAction(mContents->action(name));
    menu->addSeparator();
    mViewActions << addTo(menu, "viewTile", tr("Side b&y side"),
                          QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_T),
                          [this] { arrange(&ViewArea::tile); });
    mViewActions << addTo(menu, "viewStack", tr("In t&abs"),
                          QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_B),
                          [this] { arrange(&ViewArea::stack); });
    mViewActions << addTo(menu, "viewNext", tr("&Next view"), QKeySequence(Qt::Key_F6),
                          [this] { mArea->nextView(); });
    mViewActions << addTo(menu, "viewPrevious", tr("&Previous view"),
                          QKeySequence(Qt::SHIFT + Qt::Key_F6), [this] { mArea->previousView(); });
    mViewActions << addTo(menu, "viewClose", tr("&Close the view"),
                          QKeySequence(Qt::CTRL + Qt::Key_W),
                          [this] { arrange(&ViewArea::closeActive); });
    menu->addSeparator();
    addTo(menu, "goContents", tr("Go to the cont&ents"), QKeySequence(Qt::CTRL + Qt::Key_1),
          [this] {
              mContentsDock->show();
              mContents->tree().setFocus();
          });
    addTo(menu, "goLog", tr("Go to the &log"), QKeySequence(Qt::CTRL + Qt::Key_2), [this] {
        mLogDock->show();
        mLogPanel->findChild<QWidget *>(QStringLiteral("logText"))->setFocus();
    });
    addTo(menu, "goTime", tr("&Go to the time"), QKeySequence(Qt::CTRL + Qt::Key_3),
          [this] { mTimeBar->findChild<QWidget *>(QStringLiteral("timeSlider"))->setFocus(); });
    mContentsDock->toggleViewAction()->setText(tr("&Keep the contents shown"));
    mLogDock->toggleViewAction()->setText(tr("Keep the log sho&wn"));
    menu->addAction(mContentsDock->toggleViewAction());
    menu->addAction(mLogDock->toggleViewAction());
}

void MainWindow::makeTimeMenu()
{
    QMenu *const menu = menuBar()->addMenu(tr("&Time"));
    const auto keys = [](int key) { return QKeySequence(Qt::CTRL + key); };
    addTo(menu, "timeBack", tr("Step &back"), keys(Qt::Key_Comma),
          [this] { mTimeBar->previous(); });
    addTo(menu, "timeForth", tr("Step &forward"), keys(Qt::Key_Period),
          [this] { mTimeBar->next(); });
    addTo(menu, "timeFirst", tr("F&irst"), QKeySequence(Qt::CTRL + Qt::ALT + Qt::Key_Comma),
          [this] { mTimeBar->first(); });
    addTo(menu, "timeLast", tr("&Last"), QKeySequence(Qt::CTRL + Qt::ALT + Qt::Key_Period),
          [this] { mTimeBar->last(); });
    QAction *const play = addTo(menu, "timePlay", tr("&Play"), keys(Qt::Key_P), [] {});
    play->setCheckable(true);
    connect(play, &QAction::toggled, mTimeBar, &TimeBar::play);
    connect(mTimeBar, &TimeBar::playing, play, &QAction::setChecked);
    QAction *const inStep = addTo(menu, "timeTogether", tr("All geographies in &step"),
                                  QKeySequence(Qt::CTRL + Qt::ALT + Qt::Key_T), [] {});
    inStep->setCheckable(true);
    connect(inStep, &QAction::toggled, mTimeBar, &TimeBar::setInStep);
    connect(mTimeBar->findChild<QCheckBox *>(QStringLiteral("timeInStep")), &QCheckBox::toggled,
            inStep, &QAction::setChecked);
}

void MainWindow::makeMethodMenu()
{
    QMenu *const menu = menuBar()->addMenu(tr("&Analysis"));
    QSet<QChar> letters;
    for (const Method &method : mMethods.all())
        mProjectActions << addTo(menu, QByteArray("method " + method.name.toUtf8()).constData(),
                                 tr("%1...").arg(withLetter(method.title, letters)), {},
                                 [this, &method] { showMethod(method, shownThings(method)); });
    menu->addSeparator();
    mProjectActions << addTo(menu, "editModel",
                             tr("%1...").arg(withLetter(tr("Edit a variogram model"), letters)), {},
                             [this] { editModel(mContents->selected().value(0)); });
}

void MainWindow::makeHelpMenu()
{
    QMenu *const menu = menuBar()->addMenu(tr("&Help"));
    addTo(menu, "help", tr("&Help"), QKeySequence::HelpContents,
          [this] { showHelp(QStringLiteral("desk.md")); });
    addTo(menu, "helpKeys", tr("&Keys"), QKeySequence(Qt::SHIFT + Qt::Key_F1),
          [this] { showHelp(QStringLiteral("desk.md#keys")); });
    addTo(menu, "helpCommands", tr("&Command lines"), {},
          [this] { showHelp(QStringLiteral("meridor.md")); });
    addTo(menu, "helpAbout", tr("&About"), {}, [this] {
        mWorkspace.tell(
            tr("Meridor %1, on Qt %2")
                .arg(QCoreApplication::applicationVersion(), QLatin1String(qVersion())));
    });
}

void MainWindow::connectWorkspace()
{
    connect(&mWorkspace, &Workspace::told, this, &MainWindow::showMessage);
    connect(&mWorkspace, &Workspace::refusedLock, mStart, &StartPage::offerUnlocked);
    connect(&mWorkspace, &Workspace::pathChanged, this, &MainWindow::showTitle);
    connect(&mWorkspace, &Workspace::dirtyChanged, this, &MainWindow::showTitle);
    connect(&mWorkspace, &Workspace::geographyAdded, this, [this] { showPage(); });
    connect(&mWorkspace, &Workspace::geographyDying, this,
            [this] { QTimer::singleShot(0, this, &MainWindow::showPage); });
    // At once: what the next project had open may be shown before these delete themselves.
    connect(&mWorkspace, &Workspace::closing, mArea, &ViewArea::closeAll);
    connect(&mWorkspace, &Workspace::closed, this, &MainWindow::showPage);
    connect(&mWorkspace, &Workspace::idle, this, [this] {
        if (mMustShowPage)
            showPage();
    });
    connect(&mWorkspace, &Workspace::opened, this, [this] {
        if (!mWorkspace.path().isEmpty())
            noteRecentProject(mWorkspace.path());
        showPage();
        restoreWindows();
        offerRecovery();
    });
}

void MainWindow::showMessage(const QString &text, bool isTrouble)
{
    mMessage->setText(text);
    mMessage->setToolTip(plainTip(text));
    QFont font = mMessage->font();
    font.setBold(isTrouble);
    mMessage->setFont(font);
    if (isTrouble || mPages->currentWidget() == mStart)
        mStart->showTrouble(isTrouble ? text : QString());
}

void MainWindow::showTitle()
{
    const bool isOpen = !mWorkspace.path().isEmpty() || !geographyIds().isEmpty();
    const QString name = mWorkspace.path().isEmpty() ? (isOpen ? tr("untitled") : QString())
                                                     : QFileInfo(mWorkspace.path()).fileName();
    setWindowTitle(plainTitle(name) + QStringLiteral("[*]"));
    setWindowModified(mWorkspace.isDirty());
    refreshActions();
}

void MainWindow::showPage()
{
    mMustShowPage = mWorkspace.isBusy(); // a geography may be half made
    if (mMustShowPage)
        return;
    const bool isOpen = !mWorkspace.path().isEmpty() || !geographyIds().isEmpty();
    QWidget *page = mArea;
    if (!isOpen)
        page = mStart;
    else if (mArea->windows().isEmpty())
        page = mHint;
    if (page == mStart && mPages->currentWidget() != mStart)
        mStart->refresh();
    mPages->setCurrentWidget(page);
    if (isOpen != mIsProjectShown) {
        mIsProjectShown = isOpen;
        for (QWidget *const part :
             {static_cast<QWidget *>(mContentsDock), static_cast<QWidget *>(mLogDock), mTimeTools})
            part->setVisible(isOpen);
    }
    showTitle();
    if (!mArea->active())
        followActive(nullptr);
}

void MainWindow::refreshActions()
{
    const bool isOpen = !mWorkspace.path().isEmpty() || !geographyIds().isEmpty();
    for (QAction *const action : std::as_const(mProjectActions))
        action->setEnabled(isOpen);
    for (QAction *const action : std::as_const(mViewActions))
        action->setEnabled(mArea->active());
}

/// The time bar shows the geography of the active view; without a view that which is selected in the
/// contents, or the first one.
void MainWindow::followActive(ViewWindow *window)
{
    refreshActions();
    View *const view = window ? window->currentView() : nullptr;
    if (view) {
        mTimeBar->setGeography(view->geography(), view);
        return;
    }
    int geography = geographyOfThing(mContents->selected().value(0));
    const QVector<int> present = geographyIds();
    if (!present.contains(geography))
        geography = present.value(0, -1);
    mTimeBar->setGeography(geography, nullptr);
}

void MainWindow::fillRecent()
{
    mRecent->clear();
    for (const QString &project : recentProjects())
        mRecent->addAction(plainLabel(QDir::toNativeSeparators(project)), this,
                           [this, project] { openProject(project); });
    if (mRecent->isEmpty())
        mRecent->addAction(tr("None yet"))->setEnabled(false);
}

bool MainWindow::mayLeave()
{
    if (!mWorkspace.isDirty())
        return true;
    Unsaved answer = Unsaved::Stay;
    if (askUnsaved) {
        answer = askUnsaved();
    } else {
        const QString name = mWorkspace.path().isEmpty() ? tr("the project")
                                                         : QFileInfo(mWorkspace.path()).fileName();
        QMessageBox box(QMessageBox::Question, tr("Unsaved changes"),
                        tr("Save the changes of %1?").arg(name),
                        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, this);
        box.setTextFormat(Qt::PlainText);
        box.setObjectName(QStringLiteral("unsaved"));
        const int button = box.exec();
        answer = button == QMessageBox::Save      ? Unsaved::Save
                 : button == QMessageBox::Discard ? Unsaved::Discard
                                                  : Unsaved::Stay;
    }
    if (answer == Unsaved::Save)
        return save();
    return answer == Unsaved::Discard;
}

void MainWindow::leaveProject()
{
    keepWindows();
    mWorkspace.close();
}

void MainWindow::keepWindows()
{
    if (mWorkspace.path().isEmpty())
        return;
    QJsonObject layout = mArea->state();
    layout.insert(QStringLiteral("docks"), QString::fromLatin1(saveState().toBase64()));
    layout.insert(QStringLiteral("geometry"), QString::fromLatin1(saveGeometry().toBase64()));
    keepLayout(mWorkspace.path(), layout);
}

void MainWindow::restoreWindows()
{
    if (mWorkspace.path().isEmpty())
        return;
    const QJsonObject layout = keptLayout(mWorkspace.path());
    if (layout.isEmpty())
        return;
    restoreState(
        QByteArray::fromBase64(layout.value(QStringLiteral("docks")).toString().toLatin1()));
    mArea->restore(layout);
}

bool MainWindow::openProject(const QString &path)
{
    if (!mayLeave())
        return false;
    keepWindows();
    return mWorkspace.open(path);
}

bool MainWindow::openSample()
{
    if (!mayLeave())
        return false;
    leaveProject();
    QString directory;
    const bool isThere = mWorkspace.look(
        [&] { directory = samplesDirectory({qEnvironmentVariable("MERIDOR_SAMPLES")}); });
    if (!isThere)
        return false;
    for (const Sample sample :
         {Sample::History, Sample::Income, Sample::Rain, Sample::Temperature, Sample::Counties})
        if (mWorkspace.import(sampleImport(sample, directory)) < 0)
            return false;
    return true;
}

bool MainWindow::save()
{
    if (!mWorkspace.path().isEmpty())
        return mWorkspace.save();
    findChild<QAction *>(QStringLiteral("fileSaveAs"))->trigger();
    return !mWorkspace.isDirty();
}

bool MainWindow::saveAs(const QString &path)
{
    if (path.isEmpty() || !mWorkspace.save(path))
        return false;
    noteRecentProject(mWorkspace.path());
    keepWindows();
    return true;
}

bool MainWindow::writeReport(const QString &path)
{
    const QString project = mWorkspace.commandPath();
    const bool isDone = mWorkspace.run(tr("Report"), [&](const Progress &) {
        ReportPlan plan;
        plan.project = mWorkspace.path().isEmpty() ? project : mWorkspace.path();
        VORN_Progress::Close(); // each part of a report opens the bar itself
        const QByteArray page = reportPage(gatherReport(plan));
        writeOutput(path, [&](QIODevice &out) { writeWhole(out, page, path); });
    });
    if (!isDone)
        return false;
    mWorkspace.log().did(
        {QStringLiteral("report"), project, pathWord(path), QStringLiteral("--overwrite")});
    mWorkspace.tell(tr("Saved as %1").arg(path));
    return true;
}

bool MainWindow::recover(const Recovery &recovery)
{
    if (!mayLeave())
        return false;
    return mWorkspace.recover(recovery);
}

void MainWindow::offerRecovery()
{
    while (QLayoutItem *const item = mBars->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    const QString path = mWorkspace.path();
    if (path.isEmpty())
        return;
    for (const Recovery &recovery : Workspace::earlierWork(path)) {
        auto *const bar = new RecoveryBar(recovery);
        connect(bar, &RecoveryBar::recoverWanted, this, [this, recovery] { recover(recovery); });
        connect(&mWorkspace, &Workspace::closing, bar, &QWidget::hide);
        mBars->addWidget(bar);
    }
}

void MainWindow::saveRecovery()
{
    QElapsedTimer timer;
    timer.start();
    if (!mWorkspace.saveRecovery())
        return;
    const qint64 rest =
        std::max<qint64>(1000 * recoverySeconds(), kRestBetweenCopies * timer.elapsed());
    mRecoveryTimer.start(static_cast<int>(std::min<qint64>(rest, 3600 * 1000)));
}

void MainWindow::openFile(const QString &path)
{
    if (isProject(path))
        openProject(path);
    else
        importFile(path);
}

ImportDialog *MainWindow::importFile(const QString &path)
{
    auto *const dialog = new ImportDialog(mWorkspace, this);
    if (!dialog->load(path)) {
        delete dialog;
        return nullptr;
    }
    connect(dialog, &ImportDialog::imported, this, [this](int geography) {
        mContents->select({Thing::Geography, geography, -1});
        mWorkspace.tell(tr("%1 was imported.").arg(geographyName(geography)));
    });
    dialog->show();
    return dialog;
}

ViewWindow *MainWindow::openView(const ViewRequest &request)
{
    ViewWindow *const window = makeView(mWorkspace, request);
    if (window)
        adopt(window, request);
    return window;
}

void MainWindow::adopt(ViewWindow *window, const ViewRequest &request)
{
    mArea->add(window, request);
    showPage();
}

void MainWindow::showProperties(const Thing &thing)
{
    auto *const dialog = new PropertiesDialog(mWorkspace, thing, this);
    dialog->show();
}

void MainWindow::arrange(void (ViewArea::*how)())
{
    const QPointer<ViewWindow> before = mArea->active();
    (mArea->*how)();
    if (before && mArea->windows().contains(before))
        mArea->activate(before);
    if (ViewWindow *const now = mArea->active())
        now->setFocus();
}

QVector<MethodParameter> MainWindow::shownThings(const Method &method) const
{
    const ViewWindow *const active = mArea->active();
    const View *const view = active ? active->currentView() : nullptr;
    if (!view)
        return {};
    const QVector<int> datasets = view->datasets();
    QVector<MethodParameter> things;
    for (const MethodField &field : method.fields)
        if (field.name == QLatin1String("geography"))
            things.append({field.name, view->geography()});
        else if (field.name == QLatin1String("dataset") && !datasets.isEmpty())
            things.append({field.name, datasets.first()});
    return things;
}

void MainWindow::showMethod(const Method &method, const QVector<MethodParameter> &parameters)
{
    QVector<MethodParameter> shown;
    if (!mWorkspace.look([&] { shown = mMethods.resolved(method, parameters); }))
        return;
    auto *const dialog = new MethodDialog(mWorkspace, mMethods, method, this);
    dialog->form().setParameters(shown);
    connect(dialog, &MethodDialog::helpWanted, this, &MainWindow::showHelp);
    dialog->show();
}

ModelDialog *MainWindow::showModel(int dataset, const VariogramModel *model)
{
    auto *const dialog = new ModelDialog(mWorkspace, mMethods, this);
    connect(dialog, &ModelDialog::helpWanted, this, &MainWindow::showHelp);
    model ? dialog->setModel(*model) : dialog->setDataset(dataset);
    dialog->show();
    return dialog;
}

void MainWindow::editModel(const Thing &thing)
{
    VariogramModel model;
    if (thing.kind == Thing::Model && modelAt({thing.owner, thing.id}, model))
        showModel(thing.owner, &model);
    else
        showModel(thing.kind == Thing::Dataset && datasetOf(thing.id)->IsNumeric() ? thing.id : -1,
                  nullptr);
}

void MainWindow::showHelp(const QString &topic)
{
    const QUrl page = helpPage(topic);
    if (page.isEmpty())
        mWorkspace.tell(tr("There is no page about %1.").arg(topic), true);
    else if (!QDesktopServices::openUrl(page))
        mWorkspace.tell(tr("No program shows the page %1.").arg(page.toDisplayString()), true);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (mWorkspace.isBusy() || !mayLeave()) {
        event->ignore();
        return;
    }
    leaveProject();
    event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!droppedFile(event->mimeData()).isEmpty() || datasetOf(event->mimeData()) >= 0)
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const int dataset = datasetOf(event->mimeData());
    event->acceptProposedAction();
    if (dataset >= 0) {
        ViewRequest request;
        request.datasets = {dataset};
        openView(request);
        return;
    }
    // The source of the drag waits until this returns.
    const QString file = droppedFile(event->mimeData());
    QTimer::singleShot(0, this, [this, file] { openFile(file); });
}

} // namespace meridor
