// SPDX-License-Identifier: MIT
/// The main window: the start page or the views of the open project, its contents, time and log.
#pragma once
#include <QDateTime>
#include <QJsonObject>
#include <QMainWindow>
#include <QTimer>
#include <QVector>
#include "datainterface/MethodRecords.h"
#include "desk/project/things.h"
#include "desk/window/viewRequest.h"

class QAction;
class QDockWidget;
class QLabel;
class QMenu;
class QMimeData;
class QStackedWidget;
class QVBoxLayout;

class VariogramModel;

namespace meridor {

class ContentsPanel;
class ImportDialog;
class LogPanel;
class MethodRegister;
class ModelDialog;
class StartPage;
class TimeBar;
class ViewArea;
class ViewWindow;
class Workspace;
struct Method;
struct Recovery;

/// What it does to the project it asks of the workspace; what a view does, of the view.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(Workspace &workspace, const MethodRegister &methods);
    ~MainWindow() override;

    ContentsPanel &contents() { return *mContents; }
    ViewArea &area() { return *mArea; }
    TimeBar &timeBar() { return *mTimeBar; }
    LogPanel &logPanel() { return *mLogPanel; }

    /// Asks first what becomes of unsaved changes.
    bool openProject(const QString &path);
    /// Imports the samples into a new project.
    bool openSample();
    bool save();
    bool saveAs(const QString &path);
    /// Writes the project as one page. @return whether it was written.
    bool writeReport(const QString &path);
    bool recover(const Recovery &recovery);
    /// Opens a project, or the form for the import of any other file.
    void openFile(const QString &path);
    /// The form, filled from the file; null if the file cannot be read.
    ImportDialog *importFile(const QString &path);
    /// Null after telling the user why not.
    ViewWindow *openView(const ViewRequest &request);
    /// Shows a window that was made otherwise, and takes it over.
    void adopt(ViewWindow *window, const ViewRequest &request);
    void showProperties(const Thing &thing);
    /// Shows the dialog of a method, filled with these parameters.
    void showMethod(const Method &method, const QVector<MethodParameter> &parameters);
    /// The dialog of a variogram model of a dataset, or of the project: of a new one without `model`.
    ModelDialog *showModel(int dataset, const VariogramModel *model);
    /// The same for a model of the contents, or for a new model of a dataset.
    void editModel(const Thing &thing);
    /// What the active view shows, as parameters of a method.
    QVector<MethodParameter> shownThings(const Method &method) const;
    /// Shows a page of the help: "meridor.md#moran", or a heading of desk.md.
    void showHelp(const QString &topic);

    /// How the question about unsaved changes is answered; by default a message box asks.
    enum class Unsaved { Save, Discard, Stay };
    std::function<Unsaved()> askUnsaved;

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    /// Moves views; a hidden one loses the keyboard focus to whatever comes next in the window, so the
    /// active view gets it back.
    void arrange(void (ViewArea::*how)());
    QAction *addTo(QMenu *menu, const char *name, const QString &text, const QKeySequence &keys,
                   const std::function<void()> &act);
    void makeDocks();
    void makeFileMenu();
    void makeEditMenu();
    void makeViewMenu();
    void makeTimeMenu();
    void makeMethodMenu();
    void makeHelpMenu();
    void connectWorkspace();
    void showPage();
    void showTitle();
    void showMessage(const QString &text, bool isTrouble);
    void followActive(ViewWindow *window);
    void refreshActions();
    void fillRecent();
    bool mayLeave();
    void leaveProject();
    void offerRecovery();
    void keepWindows();
    void restoreWindows();
    void saveRecovery();
    void toggleSelected(const std::function<void(ViewWindow &)> &act);

    Workspace &mWorkspace;
    const MethodRegister &mMethods;
    QStackedWidget *mPages;
    StartPage *mStart;
    ViewArea *mArea;
    QLabel *mHint;
    QVBoxLayout *mBars;
    ContentsPanel *mContents = nullptr;
    TimeBar *mTimeBar = nullptr;
    LogPanel *mLogPanel = nullptr;
    QDockWidget *mContentsDock = nullptr;
    QDockWidget *mLogDock = nullptr;
    QWidget *mTimeTools = nullptr;
    bool mIsProjectShown = true;
    bool mMustShowPage = false; ///< once the workspace is idle
    QLabel *mMessage;
    QMenu *mRecent = nullptr;
    QVector<QAction *> mProjectActions; ///< need an open project
    QVector<QAction *> mViewActions;    ///< need an active view
    QTimer mRecoveryTimer;
    QJsonObject mPendingLayout; ///< of the project that is being opened
};

} // namespace meridor
