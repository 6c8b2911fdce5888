// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QPainter>
#include <algorithm>
#include <cmath>
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

constexpr int kMostBars = 60;

/// Bars in which the values of each class have its colour.
class Bars : public GraphItem {
public:
    Bars(const QVector<double> &values, const Classification &classes, const QString &name)
        : mClasses(classes), mName(name)
    {
        const auto ends = std::minmax_element(values.begin(), values.end());
        mWidth = widthFor(values, *ends.first, *ends.second);
        mStart = std::floor(*ends.first / mWidth) * mWidth;
        const int bars = static_cast<int>((*ends.second - mStart) / mWidth) + 1;
        mCounts.fill(QVector<int>(classes.entries().size()), bars);
        for (const double value : values)
            if (const int index = classes.of(value); index >= 0)
                ++mCounts[std::min(bars - 1, static_cast<int>((value - mStart) / mWidth))][index];
    }
    QRectF bounds() const override
    {
        int most = 0;
        for (const QVector<int> &bar : mCounts)
            most = std::max(most, total(bar));
        return QRectF(mStart, 0, mWidth * mCounts.size(), most);
    }
    void draw(QPainter &painter, const GraphMap &map, const Theme &theme) const override
    {
        for (int i = 0; i < mCounts.size(); ++i) {
            int below = 0;
            for (int k = 0; k < mCounts[i].size(); ++k) {
                if (mCounts[i][k] == 0)
                    continue;
                const QRectF part(map(mStart + i * mWidth, below + mCounts[i][k]),
                                  map(mStart + (i + 1) * mWidth, below));
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
    double start() const { return mStart; }
    double width() const { return mWidth; }

private:
    static int total(const QVector<int> &bar)
    {
        int sum = 0;
        for (const int count : bar)
            sum += count;
        return sum;
    }
    /// The rule of D. Freedman and P. Diaconis 1981 (Z. Wahrsch. 57), rounded down to 1, 2 or 5
    /// times a power of ten.
    static double widthFor(QVector<double> values, double least, double most)
    {
        if (!(most > least))
            return std::max(1e-9, std::abs(least) * 0.1);
        std::sort(values.begin(), values.end());
        double width = 2 * (quantileOf(values, 0.75) - quantileOf(values, 0.25))
                       / std::cbrt(static_cast<double>(values.size()));
        width = std::max(width, (most - least) / kMostBars);
        const double power = std::pow(10, std::floor(std::log10(width)));
        for (const double factor : {5.0, 2.0})
            if (factor * power <= width)
                return factor * power;
        return power;
    }

    const Classification mClasses;
    QString mName;
    double mStart = 0;
    double mWidth = 1;
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
    plot.graph.texts.footnote = QStringLiteral("%1 values in bars %2 wide")
                                    .arg(grouped(values.size(), 0), shortNumber(bars->width(), 6));
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
    plot.summary = QStringLiteral("%1 values in %2 bars and %3 classes")
                       .arg(values.size())
                       .arg(bars->counts().size())
                       .arg(classes.entries().size());
    return plot;
}

} // namespace meridor
