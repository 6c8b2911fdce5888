// SPDX-License-Identifier: MIT
#include "desk/project/importLine.h"
#include <QDir>
#include <algorithm>
#include "core/formats/sourceFile.h"
#include "core/import/importOptions.h"
#include "core/project/text.h"
#include "desk/project/actionLog.h"

namespace meridor {

QString pathWord(const QString &path)
{
    const QString relative = QDir::current().relativeFilePath(path);
    if (relative.startsWith(QLatin1String("../")))
        return QDir::current().absoluteFilePath(path);
    return relative.startsWith(QLatin1Char('-')) ? QLatin1String("./") + relative : relative;
}

QStringList importLine(const ImportOptions &options, const QString &project, bool append)
{
    QStringList line{QStringLiteral("import"),
                     isConnection(options.map) ? withoutPassword(options.map)
                                               : pathWord(options.map),
                     project, append ? QStringLiteral("--append") : QStringLiteral("--overwrite")};
    const auto add = [&line](const char *option, const QString &value) {
        if (!value.isEmpty())
            line += optionWords(QLatin1String(option), value);
    };
    const auto addAll = [&add](const char *option, const QStringList &values) {
        for (const QString &value : values)
            add(option, value);
    };
    const auto addFlag = [&line](const char *option, bool isSet) {
        if (isSet)
            line << QLatin1String(option);
    };
    add("--layer", options.layer);
    add("--name", options.name);
    add("--key", options.key);
    add("--start", options.start);
    add("--end", options.end);
    add("--x", options.xColumn);
    add("--y", options.yColumn);
    add("--crs", options.projection);
    addFlag("--no-fields", !options.attributes);
    add("--fields", listText(options.fields));
    for (const QString &table : options.tables)
        add("--table", pathWord(table));
    addAll("--series", options.series);
    if (!options.observations.isEmpty())
        add("--observations", pathWord(options.observations));
    addAll("--observe", options.observed);
    addAll("--type", options.types);
    for (const QString &text : options.missing)
        line << QStringLiteral("--missing") << text;
    addAll("--missing-also", options.missingAlso);
    add("--encoding", options.encoding);
    add("--decimal", options.decimal);
    if (options.times != QLatin1String("auto") || options.bandsAreTimes)
        add("--times", options.times);
    add("--time-format", options.timePattern);
    add("--dataset", options.dataset);
    add("--no-data", options.noData);
    add("--realizations", options.realizations);
    addFlag("--packed", options.packed);
    if (options.snap > 0)
        add("--snap", QString::number(options.snap, 'g', 17));
    addFlag("--strict", options.strict);
    return line;
}

QStringList commandWords(const QStringList &verb, const QStringList &arguments,
                         const QStringList &options)
{
    const bool looksLikeOption =
        std::any_of(arguments.begin(), arguments.end(),
                    [](const QString &each) { return each.startsWith(QLatin1Char('-')); });
    return verb
           + (looksLikeOption ? options + QStringList{QStringLiteral("--")} + arguments
                              : arguments + options);
}

} // namespace meridor
