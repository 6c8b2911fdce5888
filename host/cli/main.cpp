// SPDX-License-Identifier: MIT
// The process around the command line: an application without a display, texts in UTF-8, numbers in
// the C locale.
#include <QApplication>
#include <QDir>
#include <QTextCodec>
#include <clocale>
#include <cstdio>
#include "cli/commandLine.h"

namespace {

/// The platform's complaints (no runtime directory, no fonts cache) are no notes of ours; what ends
/// the process is.
void onlyFatal(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg || qEnvironmentVariableIsSet("MERIDOR_DEBUG"))
        std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

} // namespace

int main(int argc, char **argv)
{
    // Pictures are drawn in memory: a display, even one that is there, is never touched.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(onlyFatal);
    int applicationArguments = 1; // the rest of the line is ours, not the toolkit's
    const QApplication application(applicationArguments, argv);
    // Names go through the local encoding inside the library; in a bare C locale that would lose
    // their letters.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    std::setlocale(LC_NUMERIC, "C");
    return meridor::runCommandLine(argc, argv);
}
