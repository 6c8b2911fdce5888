// SPDX-License-Identifier: MIT
#include <QTemporaryDir>
#include <QtTest>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/DiagnosticsAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/HostDialogs.h"
#include "datainterface/MGeoData.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/VORN_Progress.h"
#include "datainterface/WaitCursor.h"
#include "support/model.h"
#include "support/support.h"

namespace {

/// Writes down what it is asked to show.
class NotedDialogs : public HostDialogs {
public:
    QStringList shown;
    bool isCancelled = false;

    void BeginProgress(const QString &title, const QString &label,
                       const QString &cancelText) override
    {
        shown.append("begin " + title + ' ' + label + ' ' + cancelText);
    }
    void SetProgressLabel(const QString &text) override { shown.append("label " + text); }
    void SetProgressPercent(int percent) override { shown.append(QString::number(percent)); }
    bool PollProgress() override { return !isCancelled; }
    void SetProgressButton(const QString &text, bool) override { shown.append("button " + text); }
    void ResetProgress() override { isCancelled = false; }
    void EndProgress() override { shown.append("end"); }
    void ShowWarning(const QString &title, const QString &text) override
    {
        shown.append("warning " + title + ' ' + text);
    }
    void ShowException(const QString &text, const QString &what, const QString &details) override
    {
        shown.append("exception " + text + ' ' + what + ' ' + details);
    }
};

} // namespace

/// A widget without a QApplication ends the process; the library must not make one.
class TestHeadless : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nothingIsShown()
    {
        VORN_Progress progress("t", "l", "c");
        QVERIFY(!VORN_Progress::UsingProgressBar());
        VORN_Progress second("t", "l", "c"); // none exists, so none is one too many
        VORN_ShowWarningDialog("a", "b");
        VORN_ShowExceptionDialog("a", "b", "c");
        const WaitCursor wait;
    }
    void theHostsDialogsTakeEverything();
    void scratchFilesStayInTheGivenDirectory();
};

void TestHeadless::theHostsDialogsTakeEverything()
{
    NotedDialogs dialogs;
    VORN_SetHostDialogs(&dialogs);
    {
        VORN_Progress progress("t", "l", "c");
        QCOMPARE(raisedText([] { VORN_Progress second("t", "l", "c"); }),
                 QStringLiteral("Progress bar already exists"));
        VORN_Progress::SetProgressBarSubSection(50, 100);
        VORN_Progress::PushProgressBarSection();
        QVERIFY(VORN_Progress::UpdateProgress(50, "half"));
        QVERIFY(VORN_Progress::UpdateProgress(-1, nullptr));
        dialogs.isCancelled = true;
        QVERIFY(!VORN_Progress::CheckForCancel(0, nullptr));
        VORN_Progress::SetProgressButtonText("Skip", true);
        QVERIFY(!VORN_Progress::UpdateProgress(60, nullptr));
        QVERIFY(VORN_Progress::UpdateProgress(70, nullptr)); // the cancel ended one step
    }
    VORN_ShowWarningDialog("a", "b");
    VORN_ShowExceptionDialog("a", "b", "c");
    QCOMPARE(dialogs.shown, (QStringList{"begin t l c", "label half", "75", "button Skip", "80",
                                         "85", "end", "warning a b", "exception a b c"}));
    {
        const VORN_Progress open("t", "l", "c");
        VORN_SetHostDialogs(nullptr);
        QCOMPARE(dialogs.shown.last(), QStringLiteral("end"));
        QVERIFY(!VORN_Progress::UsingProgressBar());
    }
}

void TestHeadless::scratchFilesStayInTheGivenDirectory()
{
    const QTemporaryDir directory;
    const QString cache = directory.filePath("cache");
    qputenv("XDG_CACHE_HOME", QFile::encodeName(cache));
    struct Host : ControllerBase {
        void RemoveGeography(int id) override { delete GetGeoData().take(id); }
    } controller;
    InitializeCInterface(&controller);
    InitializeDataManager(directory.filePath("scratch"), 1000000);
    addPoints(3);
    QCOMPARE(controller.GetGeoData().size(), 1);
    const QString project = directory.filePath("p");
    QVERIFY(VORN_SaveProject(project));
    VORN_UnloadProject();
    QVERIFY(VORN_LoadProject(project));
    QVERIFY2(!QFile::exists(cache), "the platform's cache location was made");
    VORN_UnloadProject();
    ClearDataManager();
    InitializeCInterface(nullptr);
}

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_Headless.moc"
