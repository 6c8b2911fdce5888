// SPDX-License-Identifier: MIT
// The entry point: creates an application without a display and sets the text codec to UTF-8 and
// the numeric locale to C.
#include <QApplication>
#include <QDir>
#include <QTextCodec>
#include <clocale>
#include <cstdio>
#include "cli/commandLine.h"

namespace {

/// Suppresses Qt's warnings (no runtime directory, no font cache) except fatal ones.
void onlyFatal(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg || qEnvironmentVariableIsSet("MERIDOR_DEBUG"))
        std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

} // namespace

int main(int argc, char **argv)
{
    // Pictures are drawn in memory, so a display is not used even if there is one.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(onlyFatal);
    int applicationArguments = 1; // Qt must not parse our arguments
    const QApplication application(applicationArguments, argv);
    // The library converts file names to the local encoding, which in the C locale would lose
    // characters outside ASCII.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    std::setlocale(LC_NUMERIC, "C");
    return meridor::runCommandLine(argc, argv);
}
