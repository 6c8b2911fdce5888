// SPDX-License-Identifier: MIT
// Verbs that the build and the completion of the shell call: completion, man and names.
#include <QDir>
#include <memory>
#include "cli/commands/commands.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/safeFile.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

struct Names {
    QString project;
    QString kind;
};

void printNames(const Names &names, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(names.project);
    for (const int geography : geographyIds()) {
        if (names.kind == QLatin1String("datasets"))
            for (const int id : datasetIds(geography))
                context.console.print(datasetName(id));
        else
            for (const int id : geographyOf(geography)->GetSpatialWeightsIds())
                context.console.print(weightSetOf(id).GetName());
    }
}

void writeText(const QString &path, const QString &text)
{
    writeOutput(path, [&](QIODevice &file) { writeWhole(file, text.toUtf8(), path); });
}

void writePages(const QString &directory, const QMap<QString, QString> &pages)
{
    makeDirectory(directory);
    for (auto page = pages.begin(); page != pages.end(); ++page)
        writeText(QDir(directory).filePath(page.key()), *page);
}

} // namespace

void addHidden(const Command &app, Context &context,
               const std::function<QMap<QString, QString>()> &pages,
               const std::function<QString()> &completion)
{
    auto script = std::make_shared<QString>();
    const Command complete = app.hiddenVerb("completion");
    complete.text("FILE", *script, "Where the script is written").required();
    complete.chosen([script, completion, &context] {
        context.run = [script, completion](const Context &) { writeText(*script, completion()); };
    });

    auto directory = std::make_shared<QString>();
    const Command man = app.hiddenVerb("man");
    man.text("DIRECTORY", *directory, "Where the pages are written").required();
    man.chosen([directory, pages, &context] {
        context.run = [directory, pages](const Context &) { writePages(*directory, pages()); };
    });

    auto names = std::make_shared<Names>();
    const Command list = app.hiddenVerb("names");
    projectArgument(list, names->project);
    list.text("KIND", names->kind, "datasets or sets").required().oneOf({"datasets", "sets"});
    list.chosen(
        [names, &context] { context.run = [names](const Context &c) { printNames(*names, c); }; });
}

} // namespace meridor
