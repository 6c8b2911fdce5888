// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QPainter>
#include <algorithm>
#include "core/plot/plotValues.h"
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "core/render/graphItem.h"
#include "datainterface/DataAPI.h"

namespace meridor {
namespace {

/// Bars in which the values of each class have its colour.
class Bars : public GraphItem {
public:
    Bars(const QVector<double> &values, const Classification &classes, const QString &name)
        : mClasses(classes), mName(name), mBins(binsOf(values))
    {
        mCounts.fill(QVector<int>(classes.entries().size()), mBins.count);
        for (const double value : values)
            if (const int index = classes.of(value); index >= 0)
                ++mCounts[mBins.of(value)][index];
    }
    QRectF bounds() const override
    {
        int most = 0;
        for (const QVector<int> &bar : mCounts)
            most = std::max(most, total(bar));
        return QRectF(mBins.start, 0, mBins.width * mCounts.size(), most);
    }
    void draw(QPainter &painter, const GraphMap &map, const Theme &theme) const override
    {
        for (int i = 0; i < mCounts.size(); ++i) {
            int below = 0;
            for (int k = 0; k < mCounts[i].size(); ++k) {
                if (mCounts[i][k] == 0)
                    continue;
                const QRectF part(map(mBins.start + i * mBins.width, below + mCounts[i][k]),
                                  map(mBins.start + (i + 1) * mBins.width, below));
                painter.setPen(QPen(colors::outline, theme.unit(1)));
                painter.setBrush(mClasses.entries()[k].color);
                painter.drawRect(part);
                below += mCounts[i][k];
            }
        }
        painter.setPen(QPen(colors::ink, theme.unit(1.6), Qt::DashLine));
        for (int i = 1; i + 1 < mClasses.limits().size(); ++i) {
            const double x = map.x(mClasses.limits()[i]);
            painter.drawLine(QPointF(x, map.canvas.top()), QPointF(x, map.canvas.bottom()));
        }
    }
    LegendBlock legend() const override
    {
        LegendBlock block{mName, mClasses.entries()};
        for (int k = 0; k < block.entries.size(); ++k) {
            block.entries[k].count = 0;
            for (const QVector<int> &bar : mCounts)
                block.entries[k].count += bar[k];
        }
        std::reverse(block.entries.begin(), block.entries.end());
        return block;
    }
    QJsonArray counts() const
    {
        QJsonArray counts;
        for (const QVector<int> &bar : mCounts)
            counts.append(total(bar));
        return counts;
    }
    double start() const { return mBins.start; }
    double width() const { return mBins.width; }

private:
    static int total(const QVector<int> &bar)
    {
        int sum = 0;
        for (const int count : bar)
            sum += count;
        return sum;
    }

    const Classification mClasses;
    QString mName;
    Bins mBins;
    QVector<QVector<int>> mCounts; ///< by bar, then class
};

} // namespace

Plot histogram(ShownDataset shown, qint64 time, const ClassRule &rule)
{
    const int dataset = shown.id;
    const int geography = VORN_GetGeographyId(dataset);
    const QVector<double> values = presentValues(shown, time);
    if (values.isEmpty())
        fail(QStringLiteral("%1 holds no values at %2")
                 .arg(datasetName(dataset), axisOf(geography).show(time)));
    const Classification classes(dataset, {time}, rule, shown.realization);
    const auto bars = std::make_shared<Bars>(values, classes, datasetName(dataset));
    Plot plot;
    plot.graph.items.append(bars);
    plot.graph.texts.footnote =
        QStringLiteral("%1 %2 in bars %3 wide")
            .arg(grouped(values.size(), 0),
                 values.size() == 1 ? QStringLiteral("value") : QStringLiteral("values"),
                 shortNumber(bars->width(), 6));
    if (!classes.description().isEmpty())
        plot.graph.texts.footnote += QStringLiteral("; ") + classes.description();
    plot.graph.x.title = datasetName(dataset);
    plot.graph.x.low = bars->bounds().left();
    plot.graph.x.high = bars->bounds().right();
    plot.graph.y.title = QStringLiteral("number of values");
    plot.graph.y.low = 0;
    QJsonArray limits;
    for (const double limit : classes.limits())
        limits.append(limit);
    plot.numbers = {{QStringLiteral("values"), values.size()},
                    {QStringLiteral("start"), bars->start()},
                    {QStringLiteral("width"), bars->width()},
                    {QStringLiteral("counts"), bars->counts()},
                    {QStringLiteral("breaks"), limits}};
    plot.summary = QStringLiteral("%1 in %2 and %3")
                       .arg(counted(values.size(), "value"), counted(bars->counts().size(), "bar"),
                            counted(classes.entries().size(), "class"));
    return plot;
}

} // namespace meridor
