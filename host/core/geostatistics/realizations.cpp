// SPDX-License-Identifier: MIT
#include "core/geostatistics/realizations.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include "core/geostatistics/storedValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

class Realizations {
public:
    Realizations(int dataset, const Interval &when, int reference)
        : mDataset(dataset),
          mTime(instantOf(when)),
          mCount(VORN_GetDatasetProperties(dataset).realizationCount)
    {
        if (reference >= 0) {
            requireReference(reference, mTime);
            MDataset *found = datasetOf(reference);
            mScores = VORN_DataContainer(
                VORN_ConstDataContainer(found, found->IsStatic() ? 0 : mTime, 0));
        }
    }
    int count() const { return mCount; }

    /// NaN for a missing value.
    void read(int realization, std::vector<double> &values) const
    {
        VORN_DataContainer container;
        if (!VORN_GetRealizationValues(mDataset, realization, mTime, mScores, container)
            || container.count() == 0)
            fail(QStringLiteral("%1 holds no values of realization %2 at that time")
                     .arg(datasetName(mDataset))
                     .arg(realization));
        values.resize(static_cast<size_t>(container.count()));
        for (int i = 0; i < container.count(); ++i) {
            const double value = container.isMissing(i) ? kNone : container.value(i);
            values[static_cast<size_t>(i)] = std::isfinite(value) ? value : kNone;
        }
    }

private:
    /// The library answers with the realization itself where it cannot transform back by ranks.
    void requireReference(int reference, qint64 time) const
    {
        const auto refuse = [](const QString &text) { fail(text, "reference"); };
        if (!datasetOf(reference)->IsNumeric())
            refuse(QStringLiteral("%1 holds texts").arg(datasetName(reference)));
        if (VORN_GetGeographyId(reference) != VORN_GetGeographyId(mDataset))
            refuse(QStringLiteral("%1 and %2 are of different geographies")
                       .arg(datasetName(mDataset), datasetName(reference)));
        if (!VORN_IsNormalScoreDataset(mDataset, time))
            refuse(QStringLiteral("%1 holds no normal scores").arg(datasetName(mDataset)));
    }

    int mDataset;
    qint64 mTime;
    int mCount;
    VORN_DataContainer mScores;
};

/// Running mean and sum of squared deviations: B. P. Welford (1962), Technometrics 4, 419-420.
struct Moments {
    std::vector<double> n, mean, squares;
    QVector<std::vector<double>> above;

    void add(const std::vector<double> &values, const QVector<double> &limits)
    {
        n.resize(values.size());
        mean.resize(values.size());
        squares.resize(values.size());
        above.resize(limits.size());
        for (std::vector<double> &counts : above)
            counts.resize(values.size());
        for (size_t i = 0; i < values.size(); ++i) {
            if (std::isnan(values[i]))
                continue;
            n[i] += 1;
            const double d = values[i] - mean[i];
            mean[i] += d / n[i];
            squares[i] += d * (values[i] - mean[i]);
            for (int k = 0; k < limits.size(); ++k)
                above[k][i] += values[i] > limits[k];
        }
    }
};

/// Linear between the ordered values, as the default of R's quantile().
double quantileOf(std::vector<double> &values, double share)
{
    if (values.empty())
        return kNone;
    const double position = share * static_cast<double>(values.size() - 1);
    const auto below = static_cast<size_t>(position);
    const double lower = values[below];
    const double upper = values[std::min(below + 1, values.size() - 1)];
    return lower + (position - static_cast<double>(below)) * (upper - lower);
}

void addQuantiles(const Realizations &realizations, size_t size, const QVector<double> &shares,
                  QVector<RealizationAnswer> &answers, const Meter &meter)
{
    const int first = answers.size();
    for (const double share : shares)
        answers.append(
            {QStringLiteral("quantile ") + exactNumber(share), std::vector<double>(size, kNone)});
    const auto count = static_cast<size_t>(realizations.count());
    const size_t together =
        std::max<size_t>(1, size_t(kMostQuantileBytes) / sizeof(double) / count);
    std::vector<double> values, block, present;
    for (size_t from = 0; from < size; from += together) {
        const size_t width = std::min(together, size - from);
        block.resize(width * count);
        for (size_t r = 0; r < count; ++r) {
            realizations.read(static_cast<int>(r), values);
            for (size_t i = 0; i < width; ++i)
                block[i * count + r] = values[from + i];
            meter(static_cast<int>(50 + 50 * (from + width * r / count) / size));
        }
        for (size_t i = 0; i < width; ++i) {
            present.clear();
            for (size_t r = 0; r < count; ++r)
                if (!std::isnan(block[i * count + r]))
                    present.push_back(block[i * count + r]);
            std::sort(present.begin(), present.end());
            for (int k = 0; k < shares.size(); ++k)
                answers[first + k].values[from + i] = quantileOf(present, shares[k]);
        }
    }
}

} // namespace

QVector<RealizationAnswer> askRealizations(int dataset, const Interval &when,
                                           const RealizationQuestions &questions,
                                           const Meter &meter)
{
    if (!datasetOf(dataset)->IsNumeric())
        fail(QStringLiteral("%1 holds texts").arg(datasetName(dataset)));
    if (!questions.mean && !questions.deviation && questions.quantiles.isEmpty()
        && questions.above.isEmpty())
        failUsage(QStringLiteral("there is no question to the realizations"), "mean");
    for (const double share : questions.quantiles)
        if (!(share >= 0 && share <= 1))
            failUsage(QStringLiteral("a quantile is a share from 0 to 1"), "quantile");
    for (const double limit : questions.above)
        if (std::isnan(limit))
            failUsage(QStringLiteral("a limit is a number"), "above");
    const Realizations realizations(dataset, when, questions.reference);
    Moments moments;
    std::vector<double> values;
    for (int r = 0; r < realizations.count(); ++r) {
        realizations.read(r, values);
        moments.add(values, questions.above);
        meter(50 * r / realizations.count());
    }
    const size_t size = moments.n.size();
    QVector<RealizationAnswer> answers;
    const auto answer = [&](const QString &name, auto valueAt) {
        RealizationAnswer made{name, std::vector<double>(size)};
        for (size_t i = 0; i < size; ++i)
            made.values[i] = moments.n[i] > 0 ? valueAt(i) : kNone;
        answers.append(made);
    };
    if (questions.mean)
        answer(QStringLiteral("mean"), [&](size_t i) { return moments.mean[i]; });
    if (questions.deviation)
        answer(QStringLiteral("deviation"), [&](size_t i) {
            return moments.n[i] > 1 ? std::sqrt(moments.squares[i] / (moments.n[i] - 1)) : kNone;
        });
    if (!questions.quantiles.isEmpty())
        addQuantiles(realizations, size, questions.quantiles, answers, meter);
    for (int k = 0; k < questions.above.size(); ++k)
        answer(QStringLiteral("above ") + exactNumber(questions.above[k]),
               [&](size_t i) { return moments.above[k][i] / moments.n[i]; });
    return answers;
}

QVector<int> storeAnswers(int dataset, const QVector<Interval> &times,
                          const QVector<QVector<RealizationAnswer>> &answers, const QString &name)
{
    const int geography = VORN_GetGeographyId(dataset);
    const bool always = datasetOf(dataset)->IsStatic();
    std::vector<std::unique_ptr<StoredValues>> stored;
    for (const RealizationAnswer &answer : answers.value(0))
        stored.push_back(std::make_unique<StoredValues>(
            geography, name + QLatin1Char(' ') + answer.name, 1, always));
    for (int t = 0; t < times.size(); ++t)
        for (size_t k = 0; k < stored.size(); ++k)
            stored[k]->add(0, times[t], answers[t][static_cast<int>(k)].values);
    QVector<int> ids;
    for (const auto &values : stored)
        ids.append(values->finish(
            QStringLiteral("From %1 of %2")
                .arg(counted(VORN_GetDatasetProperties(dataset).realizationCount, "realization"))
                .arg(datasetName(dataset))));
    return ids;
}

} // namespace meridor
