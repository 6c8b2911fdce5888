// SPDX-License-Identifier: MIT
#include "core/report/page.h"
#include <QFile>
#include <algorithm>
#include <cmath>
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

QString element(const char *name, const QString &text)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), escaped(text));
}

QString fact(const QString &value, const char *what)
{
    return QStringLiteral("<div><dt>%1</dt><dd>%2</dd></div>\n")
        .arg(QLatin1String(what), escaped(value));
}

QString fileSize(qint64 bytes)
{
    return bytes < 1000      ? QStringLiteral("%1 bytes").arg(bytes)
           : bytes < 1000000 ? QStringLiteral("%1 KB").arg((bytes + 500) / 1000)
                             : QStringLiteral("%1 MB").arg(double(bytes) / 1e6, 0, 'f', 1);
}

/// A summary such as "48 polygons, 81 times from 1929 to 2009, WGS 84".
QString describe(const ReportGeography &geography)
{
    QStringList parts;
    if (geography.columns > 0)
        parts.append(QStringLiteral("grid of ") + counted(geography.objects, "cell"));
    else
        parts.append(QStringLiteral("%1 %2").arg(QString::number(geography.objects),
                                                 geography.objects == 1 ? geography.kind.chopped(1)
                                                                        : geography.kind));
    if (geography.steps.size() > 1)
        parts.append(QStringLiteral("%1 times, %2 to %3")
                         .arg(QString::number(geography.steps.size()),
                              geography.steps.first().text.section(QLatin1Char('/'), 0, 0),
                              geography.steps.last().text.section(QLatin1Char('/'), -1)));
    if (!geography.projection.isEmpty())
        parts.append(geography.projection);
    return parts.join(QStringLiteral(" · "));
}

QString notes(const ReportGeography &geography)
{
    QString text;
    if (geography.shapes.given > 0)
        text += element("p", QStringLiteral("Borders are drawn with %1 of %2 vertices; they are "
                                            "simplified in common, so neighbours stay neighbours.")
                                 .arg(geography.shapes.kept)
                                 .arg(geography.shapes.given));
    if (geography.every > 1)
        text +=
            element("p", QStringLiteral("The grid is large: every %1th row and column is shown, "
                                        "%2 by %3 cells.")
                             .arg(geography.every)
                             .arg(geography.columns)
                             .arg(geography.rows));
    return text;
}

QString commands(const QVector<ReportCommand> &lines)
{
    QString text = QStringLiteral("<dl class=\"commands\">\n");
    for (const ReportCommand &command : lines)
        text += element("dt", command.what)
                + QStringLiteral("<dd><code>%1</code></dd>\n").arg(escaped(command.line));
    return text + QStringLiteral("</dl>\n");
}

QString layersTable(const ReportGeography &geography)
{
    QString text = QStringLiteral(
        "<div class=\"scroll\"><table "
        "class=\"numbers\"><caption>Datasets</caption><thead><tr><th>name</th>"
        "<th>type</th><th>times</th><th>values</th><th>missing</th></tr></thead><tbody>\n");
    for (const ReportLayer &layer : geography.layers) {
        qint64 there = 0;
        for (const QVector<double> &row : layer.rows)
            there += std::count_if(row.begin(), row.end(),
                                   [](double value) { return !std::isnan(value); });
        text +=
            QStringLiteral("<tr><td>%1</td><td>%2</td><td>%3</td><td>%4</td><td>%5</td></tr>\n")
                .arg(escaped(layer.name), escaped(layer.type),
                     layer.always ? QStringLiteral("always") : QString::number(layer.rows.size()),
                     QString::number(there), QString::number(missingValues(geography, layer)));
    }
    return text + QStringLiteral("</tbody></table></div>\n");
}

QString section(const ReportGeography &geography, int number)
{
    QString text =
        QStringLiteral("<section class=\"geography\" id=\"geography-%1\">\n").arg(number);
    text += element("h2", geography.name)
            + QStringLiteral("<p class=\"lead\">%1</p>\n").arg(escaped(describe(geography)));
    if (!geography.history.isEmpty())
        text += QStringLiteral("<p class=\"history\">%1</p>\n").arg(escaped(geography.history));
    text += QStringLiteral("<div class=\"stage\" data-geography=\"%1\">\n").arg(number);
    text += staticMap(geography) + QStringLiteral("</div>\n");
    text += QStringLiteral("<details class=\"tables\"><summary>The numbers</summary>\n");
    text += layersTable(geography) + staticTables(geography) + notes(geography);
    text += QStringLiteral("</details>\n<details><summary>The command lines</summary>\n");
    return text + commands(geography.commands) + QStringLiteral("</details>\n</section>\n");
}

QString cover(const ReportProject &report)
{
    int datasets = 0;
    int times = 0;
    int sets = 0;
    qint64 missing = 0;
    for (const ReportGeography &geography : report.geographies) {
        datasets += geography.layers.size();
        times += geography.steps.size() > 1 ? geography.steps.size() : 0;
        sets += geography.links.size();
        for (const ReportLayer &layer : geography.layers)
            missing += missingValues(geography, layer);
    }
    QString text = QStringLiteral("<header class=\"cover\">\n") + element("h1", report.title)
                   + QStringLiteral("<dl class=\"facts\">\n");
    text += fact(QString::number(report.geographies.size()),
                 report.geographies.size() == 1 ? "geography" : "geographies");
    text += fact(QString::number(datasets), datasets == 1 ? "dataset" : "datasets");
    text += fact(QString::number(times), times == 1 ? "time" : "times");
    text += fact(QString::number(sets), sets == 1 ? "weight set" : "weight sets");
    text += fact(QString::number(missing), missing == 1 ? "value missing" : "values missing");
    text += fact(fileSize(report.bytes), "project file");
    text += QStringLiteral("</dl>\n");
    if (report.geographies.size() > 1) {
        text += QStringLiteral("<nav aria-label=\"Geographies\"><ul>\n");
        for (int i = 0; i < report.geographies.size(); ++i)
            text += QStringLiteral("<li><a href=\"#geography-%1\">%2</a></li>\n")
                        .arg(QString::number(i), escaped(report.geographies[i].name));
        text += QStringLiteral("</ul></nav>\n");
    }
    return text + QStringLiteral("</header>\n");
}

QString body(const ReportProject &report)
{
    QString text = cover(report) + QStringLiteral("<main>\n");
    for (int i = 0; i < report.geographies.size(); ++i)
        text += section(report.geographies[i], i);
    text += QStringLiteral("</main>\n<footer>\n")
            + element("p", QStringLiteral("Made from %1 by meridor.").arg(report.file));
    return text + commands(report.commands) + QStringLiteral("</footer>\n");
}

} // namespace

QString escaped(const QString &text)
{
    return text.toHtmlEscaped();
}

QByteArray reportPage(const ReportProject &report)
{
    QFile file(QStringLiteral(":/report/page.html"));
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("the report's page is not part of this program"));
    const QByteArray page = file.readAll();
    // The page template contains each mark once and in this order; inserted text is not searched.
    const std::pair<const char *, QByteArray> parts[] = {
        {"@REPORT_TITLE@", escaped(report.title).toUtf8()},
        {"@REPORT_BODY@", body(report).toUtf8()},
        {"@REPORT_DATA@", reportJson(report)}};
    QByteArray text;
    int from = 0;
    for (const auto &[mark, content] : parts) {
        const int at = page.indexOf(mark, from);
        text += page.mid(from, at - from);
        text += content;
        from = at + static_cast<int>(qstrlen(mark));
    }
    text += page.mid(from);
    return text;
}

} // namespace meridor
