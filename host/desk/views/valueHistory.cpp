// SPDX-License-Identifier: MIT
#include "desk/views/valueHistory.h"
#include <QCoreApplication>
#include <limits>
#include <memory>
#include "core/plot/plotValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "core/render/classes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

constexpr qint64 kMostKept = 8'000'000;    ///< values, 64 MB
constexpr qint64 kLongReading = 4'000'000; ///< values, from which on progress is shown
constexpr int kMostShown = 20'000'000;     ///< values of one time, 160 MB
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

} // namespace

QVector<double> numbersAt(ShownDataset shown, qint64 time)
{
    const int dataset = shown.id;
    requireNumbers(dataset);
    const int count = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).objectCount;
    if (count > kMostShown)
        fail(QCoreApplication::translate("ValueHistory",
                                         "A graph cannot show more than %1 values; %2 has %3")
                 .arg(QString::number(kMostShown), datasetName(dataset), QString::number(count)));
    ValuesAt values = existingValuesAt(dataset, time, shown.realization);
    for (const int object : std::as_const(values.missing))
        if (object >= 0 && object < values.numbers.size())
            values.numbers[object] = kNone;
    return values.numbers;
}

void ValueHistory::load(ShownDataset shown, qint64 now,
                        const std::function<void(int, const QVector<double> &)> &visit)
{
    const int dataset = shown.id;
    requireNumbers(dataset);
    mShown = shown;
    mValues.clear();
    mTimes = meridor::datasetOf(dataset)->IsStatic() ? QVector<Interval>{{now, now, true, true}}
                                                     : dataTimes(dataset, shown.realization);
    const qint64 objects = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).objectCount;
    const qint64 total = objects * mTimes.size();
    mIsKept = total <= kMostKept;
    std::unique_ptr<const Progress> progress;
    if (total > kLongReading) {
        const QByteArray label =
            QCoreApplication::translate("ValueHistory", "Reading values...").toUtf8();
        progress = std::make_unique<const Progress>(label.constData(), label.constData());
    }
    for (int step = 0; step < steps(); ++step) {
        if (progress)
            progress->report(100 * step / steps());
        const QVector<double> values = numbersAt(shown, instantOf(mTimes[step]));
        if (mIsKept)
            mValues.append(values);
        visit(step, values);
    }
}

int ValueHistory::stepAt(qint64 time) const
{
    for (int step = 0; step < steps(); ++step)
        if (instantOf(mTimes[step]) == time
            || (mTimes[step].startTime <= time && time < mTimes[step].endTime))
            return step;
    return -1;
}

QVector<double> ValueHistory::values(int step) const
{
    return mIsKept ? mValues[step] : numbersAt(mShown, instantOf(mTimes[step]));
}

double ValueHistory::value(int step, int object) const
{
    return mIsKept && object >= 0 ? mValues[step].value(object, kNone) : kNone;
}

} // namespace meridor
