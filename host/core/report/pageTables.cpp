// SPDX-License-Identifier: MIT
// What a reader without scripts sees: the first map as a picture, and tables.
#include <QBuffer>
#include <QColor>
#include <QImage>
#include <algorithm>
#include <cmath>
#include "core/render/classes.h"
#include "core/report/page.h"

namespace meridor {
namespace {

const QString kMissingColor = QStringLiteral("#c9cccf");

QString row(const char *cell, const QStringList &texts)
{
    QString line = QStringLiteral("<tr>");
    for (const QString &text : texts)
        line += QStringLiteral("<%1>%2</%1>").arg(QLatin1String(cell), escaped(text));
    return line + QStringLiteral("</tr>\n");
}

QString table(const QString &caption, const QStringList &heads, const QVector<QStringList> &rows)
{
    QString text =
        QStringLiteral("<div class=\"scroll\"><table "
                       "class=\"numbers\"><caption>%1</caption>\n<thead>%2</thead>\n<tbody>\n")
            .arg(escaped(caption), row("th", heads));
    for (const QStringList &cells : rows)
        text += row("td", cells);
    return text + QStringLiteral("</tbody></table></div>\n");
}

struct Summary {
    int count = 0;
    double mean = 0, deviation = 0, low = 0, high = 0;
};

Summary summaryOf(const QVector<double> &values)
{
    Summary summary;
    double sum = 0, squares = 0;
    for (const double value : values) {
        if (std::isnan(value))
            continue;
        summary.low = summary.count == 0 ? value : std::min(summary.low, value);
        summary.high = summary.count == 0 ? value : std::max(summary.high, value);
        sum += value;
        ++summary.count;
    }
    summary.mean = summary.count > 0 ? sum / summary.count : 0;
    for (const double value : values)
        if (!std::isnan(value))
            squares += (value - summary.mean) * (value - summary.mean);
    summary.deviation = summary.count > 0 ? std::sqrt(squares / summary.count) : 0;
    return summary;
}

/// The shape of an object at a step, -1 when it does not exist.
int shapeAt(const QVector<ShapeChange> &changes, int step)
{
    const auto next = std::upper_bound(
        changes.begin(), changes.end(), step,
        [](int wanted, const ShapeChange &change) { return wanted < change.step; });
    return next == changes.begin() ? -1 : (next - 1)->shape;
}

/// Existing objects without a value in a row; of a grid, cells.
int missingOf(const ReportGeography &geography, const ReportLayer &layer, int row)
{
    const int step = layer.always ? geography.existence.last() : layer.steps[row];
    int missing = 0;
    for (int object = 0; object < layer.rows[row].size(); ++object)
        missing +=
            std::isnan(layer.rows[row][object])
            && (geography.columns > 0 || shapeAt(geography.shapes.objects[object], step) >= 0);
    return missing;
}

QString statisticsTable(const ReportGeography &geography, const ReportLayer &layer)
{
    QVector<QStringList> rows;
    for (int i = 0; i < layer.rows.size(); ++i) {
        const Summary summary = summaryOf(layer.rows[i]);
        const int step = layer.always ? geography.existence.last() : layer.steps[i];
        QStringList cells{layer.always ? QStringLiteral("always") : geography.steps[step].text,
                          QString::number(summary.count),
                          QString::number(missingOf(geography, layer, i))};
        for (const double number : {summary.mean, summary.deviation, summary.low, summary.high})
            cells.append(layer.isText || summary.count == 0 ? QStringLiteral("-")
                                                            : readable(number));
        rows.append(cells);
    }
    return table(QStringLiteral("%1 by time").arg(layer.name),
                 {QStringLiteral("time"), QStringLiteral("values"), QStringLiteral("missing"),
                  QStringLiteral("mean"), QStringLiteral("standard deviation"),
                  QStringLiteral("least"), QStringLiteral("most")},
                 rows);
}

QString linksTable(const ReportGeography &geography, const ReportLinks &links)
{
    QVector<QStringList> rows;
    for (const LinkState &state : links.states) {
        QStringList islands;
        for (const int object : state.islands)
            islands.append(geography.labels.value(object));
        rows.append({geography.steps[state.step].text, QString::number(state.objects),
                     QString::number(state.links), QString::number(state.least),
                     QString::number(state.most),
                     state.objects > 0
                         ? QString::number(static_cast<double>(state.links) / state.objects, 'f', 2)
                         : QStringLiteral("-"),
                     islands.isEmpty() ? QStringLiteral("-") : islands.join(QStringLiteral(", "))});
    }
    return table(
        QStringLiteral("Weight set %1 (%2), from each time on").arg(links.name, links.definition),
        {QStringLiteral("from"), QStringLiteral("objects"), QStringLiteral("links"),
         QStringLiteral("least"), QStringLiteral("most"), QStringLiteral("mean"),
         QStringLiteral("islands")},
        rows);
}

QString moranTable(const ReportMoran &moran)
{
    QVector<QStringList> rows;
    for (const MoranRow &row : moran.rows) {
        QStringList cells{row.text, QString::number(row.objects)};
        for (const double number : {row.value, row.expectation, row.low, row.high, row.deviate})
            cells.append(std::isnan(number) ? QStringLiteral("-")
                                            : QString::number(number, 'f', 4));
        cells.append(std::isnan(row.p) ? QStringLiteral("-") : readable(row.p));
        rows.append(cells);
    }
    return table(QStringLiteral("Moran's I of %1 under %2, %3 permutations, seed %4")
                     .arg(moran.layer, moran.set, QString::number(moran.permutations),
                          QString::number(moran.seed)),
                 {QStringLiteral("time"), QStringLiteral("objects"), QStringLiteral("I"),
                  QStringLiteral("expected"), QStringLiteral("95 of 100 from"),
                  QStringLiteral("to"), QStringLiteral("z"), QStringLiteral("p")},
                 rows);
}

QStringList colorsOf(const ReportLayer &layer)
{
    const LayerView &view = layer.views[layer.view];
    QVector<double> values = layer.rows.last();
    QStringList colors;
    if (view.relative) {
        const double mean = summaryOf(values).mean;
        for (double &value : values)
            value *= 100 / mean;
    }
    for (const double value : values) {
        const int known = std::isnan(value) ? -1
                          : layer.isText    ? std::min(static_cast<int>(value),
                                                       static_cast<int>(view.colors.size()) - 1)
                                            : classOf(value, view.breaks);
        colors.append(known < 0 ? kMissingColor : view.colors.value(known, kMissingColor));
    }
    return colors;
}

QString limitText(double limit)
{
    return QString::number(limit, 'g', std::abs(limit) < 1000 ? 4 : 7);
}

QString legend(const ReportLayer &layer)
{
    const LayerView &view = layer.views[layer.view];
    QString text = QStringLiteral("<ul class=\"legend\">");
    for (int i = 0; i < view.colors.size(); ++i) {
        const QString label = layer.isText
                                  ? layer.words.value(i)
                                  : limitText(view.breaks[i]) + QStringLiteral(" – ")
                                        + limitText(view.breaks[i + 1])
                                        + (view.relative ? QStringLiteral(" %") : QString());
        text += QStringLiteral("<li><span class=\"swatch\" style=\"background:%1\"></span>%2</li>")
                    .arg(view.colors[i], escaped(label));
    }
    return text
           + QStringLiteral("</ul><p class=\"note\">%1.</p>")
                 .arg(view.relative ? QStringLiteral("100 % is the mean of each time")
                                    : escaped(view.name));
}

QString pathOf(const ReportShapes &shapes, int shape, bool closed)
{
    QString path;
    for (const QVector<int> &ring : shapes.shapes[shape]) {
        bool first = true;
        for (const int number : ring) {
            const QVector<int> &arc = shapes.arcs[number < 0 ? ~number : number];
            QVector<QPoint> places;
            QPoint place;
            for (int i = 0; i + 1 < arc.size(); i += 2) {
                place += QPoint(arc[i], arc[i + 1]);
                places.append(place);
            }
            if (number < 0)
                std::reverse(places.begin(), places.end());
            for (int i = first ? 0 : 1; i < places.size(); ++i) {
                path += QStringLiteral("%1%2 %3")
                            .arg(first ? QLatin1Char('M') : QLatin1Char('L'))
                            .arg(places[i].x())
                            .arg(places[i].y());
                first = false;
            }
        }
        if (closed)
            path += QLatin1Char('Z');
    }
    return path;
}

QString vectorPicture(const ReportGeography &geography, const QStringList &colors, int step,
                      const QString &title)
{
    const ReportShapes &shapes = geography.shapes;
    const int unit = qMax(1, qMax(shapes.size.width(), shapes.size.height()) / 100);
    const QString box = QStringLiteral("%1 %1 %2 %3")
                            .arg(-unit)
                            .arg(shapes.size.width() + 2 * unit)
                            .arg(shapes.size.height() + 2 * unit);
    QString text =
        QStringLiteral("<svg class=\"still %1\" role=\"img\" aria-label=\"%2\" viewBox=\"%3\">")
            .arg(geography.kind, escaped(title), box);
    for (int object = 0; object < shapes.objects.size(); ++object) {
        const int shape = shapeAt(shapes.objects[object], step);
        if (shape < 0)
            continue;
        const QString color = colors.value(object, kMissingColor);
        if (shapes.shapes.isEmpty())
            text += QStringLiteral("<circle cx=\"%1\" cy=\"%2\" r=\"%3\" fill=\"%4\"/>")
                        .arg(shapes.places[shape].x())
                        .arg(shapes.places[shape].y())
                        .arg(unit / 2)
                        .arg(color);
        else
            text += QStringLiteral("<path d=\"%1\" %2=\"%3\"/>")
                        .arg(pathOf(shapes, shape, geography.kind == QLatin1String("polygons")),
                             geography.kind == QLatin1String("lines") ? QStringLiteral("stroke")
                                                                      : QStringLiteral("fill"),
                             color);
    }
    return text + QStringLiteral("</svg>");
}

QString gridPicture(const ReportGeography &geography, const QStringList &colors,
                    const QString &title)
{
    QImage image(geography.columns, geography.rows, QImage::Format_RGB32);
    for (int row = 0; row < geography.rows; ++row)
        for (int column = 0; column < geography.columns; ++column)
            image.setPixelColor(column, row, QColor(colors[row * geography.columns + column]));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    const double height = 1000.0 * geography.rows / geography.columns / geography.cellRatio;
    return QStringLiteral("<img class=\"still\" alt=\"%1\" width=\"1000\" height=\"%2\" "
                          "src=\"data:image/png;base64,%3\">")
        .arg(escaped(title), QString::number(qRound(height)),
             QString::fromLatin1(bytes.toBase64()));
}

} // namespace

qint64 missingValues(const ReportGeography &geography, const ReportLayer &layer)
{
    qint64 missing = 0;
    for (int row = 0; row < layer.rows.size(); ++row)
        missing += missingOf(geography, layer, row);
    return missing;
}

QString readable(double value)
{
    return QString::number(value, 'g', 7);
}

QString staticMap(const ReportGeography &geography)
{
    const int number = geography.first;
    const ReportLayer *layer = number < 0 ? nullptr : &geography.layers[number];
    const int step = layer && !layer->always ? layer->steps.last() : geography.existence.last();
    const QString title = QStringLiteral("%1, %2").arg(layer ? layer->name : geography.name,
                                                       geography.steps[step].text);
    const QStringList colors = layer ? colorsOf(*layer) : QStringList();
    if (geography.columns > 0 && !layer)
        return QString();
    return QStringLiteral("<figure>%1<figcaption>%2%3</figcaption></figure>\n")
        .arg(geography.columns > 0 ? gridPicture(geography, colors, title)
                                   : vectorPicture(geography, colors, step, title),
             escaped(title), layer ? legend(*layer) : QString());
}

QString staticTables(const ReportGeography &geography)
{
    QString text;
    for (const ReportLayer &layer : geography.layers)
        if (!layer.isText)
            text += statisticsTable(geography, layer);
    for (const ReportMoran &moran : geography.moran)
        text += moranTable(moran);
    for (const ReportLinks &links : geography.links)
        text += linksTable(geography, links);
    return text;
}

} // namespace meridor
