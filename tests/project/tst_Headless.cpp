// SPDX-License-Identifier: MIT
#include <QtTest>
#include "datainterface/DiagnosticsAPI.h"
#include "datainterface/VORN_Progress.h"
#include "datainterface/WaitCursor.h"

/// A widget without a QApplication ends the process; the library must not make one.
class TestHeadless : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void noBarIsMade()
    {
        VORN_Progress progress("t", "l", "c");
        QVERIFY(!VORN_Progress::UsingProgressBar());
        VORN_Progress second("t", "l", "c"); // none exists, so none is one too many
    }
    void noDialogIsShown()
    {
        VORN_ShowWarningDialog(QStringLiteral("a"), QStringLiteral("b"));
        VORN_ShowExceptionDialog(QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"));
    }
    void noCursorIsSet() { const WaitCursor wait; }
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_Headless.moc"
