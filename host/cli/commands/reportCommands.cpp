// SPDX-License-Identifier: MIT
#include "cli/commands/reportCommands.h"
#include <QRegularExpression>
#include "core/project/catalog.h"

namespace meridor {
namespace {

/// Quotes an argument for a shell.
QString quoted(const QString &text)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_./:,@%+=-]+$"));
    if (plain.match(text).hasMatch())
        return text;
    QString inner = text;
    return QLatin1Char('\'') + inner.replace(QLatin1Char('\''), QLatin1String("'\\''"))
           + QLatin1Char('\'');
}

ReportCommand commandOf(const char *what, const QStringList &words)
{
    QStringList texts{QStringLiteral("meridor")};
    for (const QString &word : words)
        texts.append(quoted(word));
    return {QLatin1String(what), texts.join(QLatin1Char(' '))};
}

/// @param prefix  what comes before the names of datasets and sets: "GEOGRAPHY/", or nothing in a
///                report of one geography.
void addLines(ReportGeography &shown, const QString &file, const QString &prefix)
{
    const auto add = [&shown](const char *what, const QStringList &words) {
        shown.commands.append(commandOf(what, words));
    };
    // The words of a command, with the realization of the layer that it reads.
    const auto ofLayer = [](QStringList words, const ReportLayer &layer) {
        if (layer.realization > 1)
            words << QStringLiteral("--realization") << QString::number(layer.realization);
        return words;
    };
    for (const ReportLayer &layer : shown.layers) {
        const QString name = prefix + layer.name;
        add("Values counted and summed up, by time",
            ofLayer({QStringLiteral("stats"), file, name}, layer));
        if (!layer.isText && layer.classesOf.isEmpty())
            add("Natural breaks of all times",
                ofLayer({QStringLiteral("classes"), file, name, QStringLiteral("--method"),
                         QStringLiteral("jenks"), QStringLiteral("--count"),
                         QString::number(qMax(1, layer.views.first().colors.size()))},
                        layer));
    }
    if (!shown.keys.isEmpty() && !shown.layers.isEmpty())
        add("One object over time",
            ofLayer({QStringLiteral("series"), file, prefix + shown.layers.first().name,
                     shown.keys.first()},
                    shown.layers.first()));
    const TimeAxis axis = axisOf(findGeography(shown.name));
    for (const ReportLinks &links : shown.links)
        add("Links and islands of a time",
            {QStringLiteral("weights"), QStringLiteral("show"), file, prefix + links.name,
             QStringLiteral("--at"), axis.show(shown.steps.last().when.startTime)});
    for (const ReportMoran &moran : shown.moran) {
        QStringList words{QStringLiteral("moran"),
                          file,
                          prefix + moran.layer,
                          prefix + moran.set,
                          QStringLiteral("--permutations"),
                          QString::number(moran.permutations),
                          QStringLiteral("--seed"),
                          QString::number(moran.seed)};
        for (const ReportLayer &layer : shown.layers)
            if (layer.name == moran.layer)
                words = ofLayer(words, layer);
        add("Moran's I of every time", words);
    }
}

} // namespace

void addCommandLines(ReportProject &report, const QString &file)
{
    for (ReportGeography &geography : report.geographies)
        addLines(geography, file,
                 report.geographies.size() > 1 ? geography.name + QLatin1Char('/') : QString());
    report.commands.append(commandOf("What the project holds", {QStringLiteral("info"), file}));
}

} // namespace meridor
