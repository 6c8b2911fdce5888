// SPDX-License-Identifier: MIT
#include "datasets/intervalBreaks.h"
#include <memory>
#include "Common/detail/failure.h"
#include "Common/quantiles.h"
#include "datainterface/VORN_Progress.h"
#include "datasets/jenks.h"

namespace datainterface {

namespace {

// The range is divided by the number of breaks, not by the number of classes, so the last class is
// twice as wide as the others. Existing legends depend on it.
QList<double> equalIntervals(int breakCount, double minimum, double maximum)
{
    QList<double> breaks;
    for (int i = 0; i < breakCount - 1; ++i)
        breaks.append(minimum + i * (maximum - minimum) / breakCount);
    breaks.append(maximum);
    return breaks;
}

QList<double> quantileBreaks(int breakCount, const ValueRuns &sorted)
{
    QMap<int, QPair<double, double>> classes;
    quantiles(sorted, breakCount - 1, classes);
    QList<double> breaks;
    if (!classes.isEmpty())
        breaks.append(classes.first().first);
    for (const QPair<double, double> &limits : qAsConst(classes))
        breaks.append(limits.second);
    return breaks;
}

QList<double> jenks(int breakCount, const ValueRuns &sorted, bool showProgress)
{
    std::unique_ptr<VORN_Progress> progress;
    if (showProgress && breakCount > 2)
        progress =
            std::make_unique<VORN_Progress>("Jenks classes", "Creating Jenks classes...", "Cancel");
    return jenksBreaks(breakCount, sorted);
}

} // namespace

QList<double> intervalBreaks(int breakCount, const ValueRuns &sorted,
                             MDataset::ClassificationType classification, bool showProgress,
                             const char *file, int line)
{
    switch (classification) {
    case MDataset::EqualIntervals:
        return sorted.empty()
                   ? equalIntervals(breakCount, 0.0, 0.0)
                   : equalIntervals(breakCount, sorted.front().value, sorted.back().value);
    case MDataset::Quantiles:
        return quantileBreaks(breakCount, sorted);
    case MDataset::Jenks:
        return jenks(breakCount, sorted, showProgress);
    }
    fail("Invalid data type", file, line);
}

} // namespace datainterface
