// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>
#include <QUrl>
#include <QtTest>
#include <cstddef>
#include <cstdint>
#include "Common/detail/failure.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DiagnosticsAPI.h"
#include "datainterface/VORNExceptionDlg.h"
#include "datainterface/VersionAPI.h"
#include "frame/frameState.h"
#include "support/checks.h"
#include "support/support.h"

namespace {

class LoggingController : public ControllerBase {
public:
    void AddToLog(const QString &text, bool flag) override
    {
        mText = text;
        mFlag = flag;
    }
    QString mText;
    bool mFlag = false;
};

volatile bool gFails = true; // keeps the compiler from making a loop of the recursion

Q_NEVER_INLINE int failInAnInnerFunction(int depth)
{
    if (depth > 0)
        return failInAnInnerFunction(depth - 1) + (gFails ? 1 : 2);
    if (gFails)
        datainterface::fail("x", "../somewhere/f.part.cpp", 12);
    return 0;
}

// Looks at the modal dialog that the next call opens, then ends it whatever was found.
template <class Look> void whileModal(Look look)
{
    QTimer::singleShot(0, [look] {
        QWidget *dialog = QApplication::activeModalWidget();
        look(dialog);
        dialog->close();
    });
}

} // namespace

class TestDiagnostics : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void takeUrl(const QUrl &url) { mUrl = url; }
private Q_SLOTS:
    void failureTellsTextFileAndLine();
    void stackNamesTheCallers();
    void logFormats();
    void warningShowsOneButton();
    void exceptionDialogShowsWhatTheHostSays();
    void mailHoldsTheFailure();

private:
    QUrl mUrl;
};

void TestDiagnostics::failureTellsTextFileAndLine()
{
    try {
        failInAnInnerFunction(0);
        QFAIL("no failure");
    } catch (const std::runtime_error &error) {
        QCOMPARE(error.what(), "\"x\"\n(f, line 12)");
    }
    try {
        datainterface::fail("opened", "src/Common/DataManager.cpp", 98); // which keeps its folder
    } catch (const vorn_error &error) {
        const vorn_error copy(error);
        QCOMPARE(copy.what(), "\"opened\"\n(..\\Common\\DataManager, line 98)");
        QCOMPARE(copy.stack, error.stack);
    }
}

void TestDiagnostics::stackNamesTheCallers()
{
    try {
        failInAnInnerFunction(0);
    } catch (const vorn_error &error) {
        const QStringList lines = QString::fromStdString(error.stack).split(QLatin1Char('\n'));
        QVERIFY2(lines.size() > 3, error.stack.c_str());
        QVERIFY(lines.last().isEmpty()); // each line ends in a line break
        for (const QString &line : lines.mid(0, lines.size() - 1)) {
            QCOMPARE(line.left(2), QString("  "));
            QVERIFY2(line.size() > 3, error.stack.c_str());
        }
        // Qt's own functions are exported, so their names are there in every build.
        QVERIFY2(error.stack.find("QTest::qExec(QObject*, int, char**)+0x") != std::string::npos,
                 error.stack.c_str());
        QVERIFY2(error.stack.find("datainterface::fail") == std::string::npos, error.stack.c_str());
    }
    try {
        failInAnInnerFunction(5000); // a stack of bounded depth
    } catch (const vorn_error &error) {
        QCOMPARE(answers({error.stack.empty(), error.stack.size() < 200000}), "ny");
    }
}

void TestDiagnostics::logFormats()
{
    LoggingController controller;
    datainterface::setController(&controller);
    VORN_AddToLog(QStringLiteral("100% of %s")); // no format
    QCOMPARE(controller.mText, QString("100% of %s"));
    QVERIFY(controller.mFlag);
    controller.mFlag = false;
    const auto logged = [&controller](auto... arguments) {
        VORN_AddToLog(arguments...);
        return controller.mText;
    };
    QCOMPARE(logged("%d items, 100%%", 3), QString("3 items, 100%"));
    QVERIFY(controller.mFlag);
    QCOMPARE(logged("%+5d|%-5d|%05i|%#x|%#o|% d|%u|%X", 3, 4, 5, 255, 8, 7, 9U, 0xab),
             QString("   +3|4    |00005|0xff|010| 7|9|AB"));
    // A negative width or precision counts as absent.
    QCOMPARE(logged("%*d|%-*d|%*d|%.*f|%.*f", 6, 42, 4, 7, -6, 42, 1, 1.75, -1, 2.5),
             QString("    42|7   |42|1.8|2.500000"));
    QCOMPARE(logged("%.3d|%5.3d|%zu|%jd|%td|%lld|%ld", 5, 5, std::size_t(7), std::intmax_t(-1),
                    std::ptrdiff_t(-2), 1LL << 40, -3L),
             QString("005|  005|7|-1|-2|1099511627776|-3"));
    QCOMPARE(logged("%e|%G|%.2f|%Lf|%c|%3c|%p", 1.5, 1e-10, 0.375, 1.5L, 'z', 'y',
                    reinterpret_cast<void *>(0x1234)),
             QString("1.500000e+00|1E-10|0.38|1.500000|z|  y|0x1234"));
    const ushort wide[] = {'h', 0x20ac, 'i', 0};
    const char unterminated[] = {'a', 'b', 'c'};
    int count = 0;
    qint8 small = 0;
    QCOMPARE(logged("%s%n|%.3s|%8s|%-4s|%hhn%ls|%.2ls", "gr\xc3\xbc\xc3\x9f", &count, unterminated,
                    "x", "y", &small, wide, wide),
             QString::fromUtf8("gr\xc3\xbc\xc3\x9f|abc|       x|y   |"
                               "h\xe2\x82\xaci|h\xe2\x82\xac"));
    QCOMPARE(count, 4);
    QCOMPARE(int(small), 23);
    datainterface::setController(nullptr);
}

void TestDiagnostics::warningShowsOneButton()
{
    datainterface::setTesting(true);
    VORN_ShowWarningDialog("title", "text"); // would wait for ever
    datainterface::setTesting(false);
    QString shown;
    whileModal([&](QWidget *dialog) {
        if (const auto *box = qobject_cast<QMessageBox *>(dialog))
            shown = QStringLiteral("%1|%2|%3")
                        .arg(box->windowTitle(), box->text())
                        .arg(int(box->standardButtons()));
    });
    VORN_ShowWarningDialog("title", "text");
    QCOMPARE(shown, QString("title|text|1024"));
}

void TestDiagnostics::exceptionDialogShowsWhatTheHostSays()
{
    bool shown = false;
    whileModal(
        [&](QWidget *dialog) { shown = qobject_cast<VORNExceptionDlg *>(dialog) != nullptr; });
    VORN_ShowExceptionDialog("It broke", "w", "d");
    QVERIFY(shown);

    VORNExceptionDlg dialog("It broke", "w", "a <b>\nc");
    QCOMPARE(dialog.windowTitle(), QString("Application error"));
    QCOMPARE(dialog.size(), QSize(450, 343));
    QCOMPARE(dialog.findChild<QLabel *>("errorLabel")->text(), QString("It broke"));
    QCOMPARE(dialog.findChild<QTextEdit *>("infoTextEdit")->toPlainText(), QString("a <b>\nc"));
    QVERIFY(dialog.findChild<QTextEdit *>("infoTextEdit")->isReadOnly());
    QVERIFY(dialog.findChild<QLabel *>("errorIcon")->pixmap(Qt::ReturnByValue).width() > 0);
    QTextDocument link;
    link.setHtml(dialog.findChild<QLabel *>("linkLabel")->text());
    QCOMPARE(link.toPlainText(),
             QString("To help us fix this error you can have Meridor send us an auto-generated "
                     "email (or you can send the text below to " DATAINTERFACE_BUG_REPORT_ADDRESS
                     ")."));
    dialog.setResult(QDialog::Accepted);
    dialog.findChild<QPushButton *>("cancelButton")->click();
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void TestDiagnostics::mailHoldsTheFailure()
{
    QDesktopServices::setUrlHandler("mailto", this, "takeUrl");
    VORNExceptionDlg dialog("t", "\"opened\"\n(f, line 1)",
                            "  f(QList<int> const&)+0x1 in a.cpp(3)\n  \"g\" 100% #1");
    dialog.findChild<QPushButton *>("sendButton")->click();
    QDesktopServices::unsetUrlHandler("mailto");
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(mUrl.path(), QString(DATAINTERFACE_BUG_REPORT_ADDRESS));
    QVERIFY(mUrl.fragment().isEmpty());
    const QByteArray query = mUrl.toEncoded().mid(mUrl.toEncoded().indexOf('?'));
    QCOMPARE(answers({query.contains(' '), query.contains('"'), query.contains('\n')}), "nnn");
    QCOMPARE(QUrl::fromPercentEncoding(query),
             QString("?subject=Meridor(4.00.021) exception: \"opened\"\n(f, line 1)"
                     "&body=If possible please describe what steps led up to the exception you "
                     "observed:\n\n\n\n\n"
                     "  f(QList<int> const&)+0x1 in a.cpp(3)\n  \"g\" 100% #1"));
    QCOMPARE(query.count('&'), 1); // that of the text is encoded
}

QTEST_MAIN(TestDiagnostics)
#include "tst_Diagnostics.moc"
