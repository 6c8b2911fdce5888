// SPDX-License-Identifier: MIT
#include <QCommandLineParser>
#include <cstdio>
#include <cstring>
#include "core/project/failure.h"
#include "desk/project/workspace.h"
#include "desk/window/application.h"
#include "desk/window/mainWindow.h"
#include "desk/window/scriptPlayer.h"
#include "desk/window/settings.h"

namespace {

constexpr int kRestBeforePicture = 700; // milliseconds: views draw sharply after a while
constexpr double kLeastScale = 0.5;
constexpr double kMostScale = 8;

bool isScale(const QByteArray &text)
{
    bool isNumber = false;
    const double scale = text.toDouble(&isNumber);
    return isNumber && scale >= kLeastScale && scale <= kMostScale;
}

/// A factor out of range is left out here and refused once the options are read.
void setScale(const char *text)
{
    if (isScale(text))
        qputenv("QT_SCALE_FACTOR", text);
}

/// Options that Qt needs before there is an application.
void setEnvironment(int argc, char **argv)
{
    bool isAlone = false; // nobody looks at the window
    for (int i = 1; i < argc; ++i) {
        for (const char *const option : {"--picture", "--script", "--help", "--version"})
            isAlone = isAlone || std::strncmp(argv[i], option, std::strlen(option)) == 0;
        for (const char *const option : {"-h", "-v"})
            isAlone = isAlone || std::strcmp(argv[i], option) == 0;
        if (std::strcmp(argv[i], "--scale") == 0 && i + 1 < argc)
            setScale(argv[i + 1]);
        else if (std::strncmp(argv[i], "--scale=", 8) == 0)
            setScale(argv[i] + 8);
    }
    const bool hasDisplay =
        qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (isAlone && !hasDisplay && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

struct Arguments {
    QString project;
    QString script;
    QString picture;
    QSize size;
    bool isDark = false;
};

Arguments parse(meridor::Application &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Linked views over a project: maps, graphs, tables and statistics."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("PROJECT"),
                                 QStringLiteral("A project, or a map or grid to import."),
                                 QStringLiteral("[PROJECT]"));
    parser.addOptions(
        {{QStringLiteral("script"), QStringLiteral("Play the steps of a file and end."),
          QStringLiteral("file")},
         {QStringLiteral("picture"), QStringLiteral("Write a picture of the window (PNG) and end."),
          QStringLiteral("file")},
         {QStringLiteral("size"), QStringLiteral("Size of the window in pixels."),
          QStringLiteral("WxH")},
         {QStringLiteral("scale"), QStringLiteral("Enlarge everything, such as 2 for 200 %."),
          QStringLiteral("factor")},
         {QStringLiteral("dark"), QStringLiteral("Dark colours.")}});
    parser.process(application);
    if (parser.positionalArguments().size() > 1)
        meridor::failUsage(QStringLiteral("one project is opened at a time"));
    Arguments arguments;
    arguments.project = parser.positionalArguments().value(0);
    arguments.script = parser.value(QStringLiteral("script"));
    arguments.picture = parser.value(QStringLiteral("picture"));
    arguments.isDark = parser.isSet(QStringLiteral("dark"));
    if (parser.isSet(QStringLiteral("scale"))
        && !isScale(parser.value(QStringLiteral("scale")).toUtf8()))
        meridor::failUsage(
            QStringLiteral("--scale is a factor from %1 to %2").arg(kLeastScale).arg(kMostScale));
    if (parser.isSet(QStringLiteral("size"))) {
        const QStringList sides = parser.value(QStringLiteral("size")).split(QLatin1Char('x'));
        arguments.size = QSize(sides.value(0).toInt(), sides.value(1).toInt());
        if (sides.size() != 2 || arguments.size.width() < 100 || arguments.size.height() < 100
            || arguments.size.width() > 20000 || arguments.size.height() > 20000)
            meridor::failUsage(QStringLiteral("--size is WIDTHxHEIGHT, from 100 to 20000"));
    }
    return arguments;
}

/// Without a user: a trouble ends the program.
void playAlone(meridor::Application &application, const Arguments &arguments)
{
    meridor::Workspace &workspace = application.workspace();
    QString trouble;
    const auto told = QObject::connect(&workspace, &meridor::Workspace::told, &workspace,
                                       [&trouble](const QString &text, bool isTrouble) {
                                           if (isTrouble)
                                               trouble = text;
                                       });
    if (!arguments.project.isEmpty())
        application.window().openFile(arguments.project);
    QObject::disconnect(told);
    if (!trouble.isEmpty())
        meridor::fail(trouble);
    if (!arguments.script.isEmpty())
        meridor::playSteps(application.window(), workspace, application.methods(),
                           meridor::stepsOfFile(arguments.script));
    if (!arguments.picture.isEmpty()) {
        meridor::rest(kRestBeforePicture);
        meridor::saveWindow(application.window(), arguments.picture);
    }
    workspace.close();
}

int run(meridor::Application &application)
{
    const Arguments arguments = parse(application);
    if (arguments.isDark)
        application.setDark();
    if (arguments.size.isValid())
        application.window().resize(arguments.size);
    if (!arguments.script.isEmpty())
        meridor::useSettings(meridor::SettingsUse::Ignored);
    else if (!arguments.picture.isEmpty())
        meridor::useSettings(meridor::SettingsUse::Read);
    application.window().show();
    if (!arguments.script.isEmpty() || !arguments.picture.isEmpty()) {
        playAlone(application, arguments);
        return 0;
    }
    if (!arguments.project.isEmpty())
        application.window().openFile(arguments.project);
    return meridor::Application::exec();
}

} // namespace

int main(int argc, char **argv)
{
    setEnvironment(argc, argv);
    try {
        meridor::Application application(argc, argv);
        return run(application);
    } catch (const meridor::Failure &failure) {
        std::fprintf(stderr, "meridor-desk: %s\n", failure.what());
        return failure.kind() == meridor::FailureKind::Misused ? 2 : 1;
    }
}
