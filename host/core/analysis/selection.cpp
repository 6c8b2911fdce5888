// SPDX-License-Identifier: MIT
#include "core/analysis/selection.h"
#include <QSet>
#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include "core/formats/values.h"
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MDatum.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterAttributes.h"

namespace meridor {
namespace {

/// Flags for one question. Those of the views stay as they are: what is selected is for the user to
/// change, and views would not know where a change came from.
class FoundFlags {
public:
    explicit FoundFlags(int geography)
        : mShared(*sharedAttributes(geography)), mAttribute(mShared.AddAttribute())
    {
        if (mAttribute < 0)
            throw std::bad_alloc();
    }
    ~FoundFlags() { mShared.DeleteAttribute(mAttribute); }
    FoundFlags(const FoundFlags &) = delete;
    FoundFlags &operator=(const FoundFlags &) = delete;

    int attribute() const { return mAttribute; }
    QVector<int> objects() const
    {
        const QVector<unsigned int> set = mShared.GetIdsByState(mAttribute, true);
        return QVector<int>(set.begin(), set.end());
    }

private:
    MAttributes &mShared;
    int mAttribute;
};

double requireNumber(const QString &text, const char *setting)
{
    const QByteArray bytes = text.toUtf8();
    const auto number = toDecimal({bytes.constData(), static_cast<size_t>(bytes.size())});
    if (!number)
        failUsage(QStringLiteral("%1 is no number").arg(text), setting);
    return *number;
}

QSet<MDatum> wantedValues(const MDataset &dataset, const QStringList &texts)
{
    QSet<MDatum> wanted;
    for (const QString &text : texts) {
        if (!dataset.IsNumeric()) {
            wanted.insert(MDatum(text));
            continue;
        }
        const double number = requireNumber(text, "values");
        if (!dataset.IsInteger())
            wanted.insert(MDatum(number));
        else if (number == std::trunc(number) && std::abs(number) <= 1e15)
            wanted.insert(MDatum(static_cast<qint64>(number)));
    }
    return wanted;
}

QVector<int> byValue(int dataset, int realization, qint64 time, const QStringList &texts)
{
    const int geography = VORN_GetGeographyId(dataset);
    const QSet<MDatum> wanted = wantedValues(*datasetOf(dataset), texts);
    const FoundFlags found(geography);
    geographyOf(geography)->SelectObjectsByValue(dataset, realization, time, wanted,
                                                 found.attribute());
    return found.objects();
}

QVector<int> byRange(int dataset, int realization, qint64 time, const QString &low,
                     const QString &high)
{
    if (!datasetOf(dataset)->IsNumeric())
        fail(QStringLiteral("%1 holds texts, which have no range").arg(datasetName(dataset)),
             "values");
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double from = low.isEmpty() ? -kInfinity : requireNumber(low, "min");
    const double to = high.isEmpty() ? kInfinity : requireNumber(high, "max");
    if (to < from)
        failUsage(QStringLiteral("the range from %1 to %2 ends before it starts").arg(low, high),
                  "max");
    const int geography = VORN_GetGeographyId(dataset);
    const FoundFlags found(geography);
    geographyOf(geography)->SelectObjectsByRange(dataset, realization, time, from, to,
                                                 found.attribute());
    return found.objects();
}

QVector<int> both(const QVector<int> &a, const QVector<int> &b)
{
    QVector<int> common;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(common));
    return common;
}

qint64 existenceTime(int geography, const ObjectChoice &choice)
{
    if (!choice.dataset.isEmpty())
        return chooseTime(findDataset(geography, choice.dataset), choice.at);
    if (choice.at.isEmpty())
        failUsage(QStringLiteral("which objects exist is a question of a time"), "at");
    return requireSpan(axisOf(geography), choice.at).startTime;
}

} // namespace

MAttributes *sharedAttributes(int geography)
{
    MGeoData *const data = geographyOf(geography);
    if (!data)
        return nullptr;
    if (MAttributes *const present = data->GetAttributes(0))
        return present;
    const GeoProps props = data->GetProperties();
    MAttributes *const made = props.type == GeoProps::Raster
                                  ? new MRasterAttributes(props.columns, props.rows)
                                  : new MAttributes(static_cast<int>(data->GetObjectCount()));
    for (int attribute = 0; attribute < 3; ++attribute)
        made->AddAttribute();
    made->SetAllAttribute(0, true);
    data->AddAttributes(made);
    return made;
}

int geographyOf(const ObjectChoice &choice)
{
    return choice.geography.isEmpty() && !choice.dataset.isEmpty()
               ? VORN_GetGeographyId(findDataset(choice.dataset))
               : findGeography(choice.geography);
}

QVector<int> chosenObjects(int geography, const ObjectChoice &choice)
{
    const bool range = !choice.low.isEmpty() || !choice.high.isEmpty();
    if ((range || !choice.values.isEmpty()) != !choice.dataset.isEmpty())
        failUsage(QStringLiteral("a dataset needs values or a range, and these need a dataset"),
                  "values");
    if (choice.keys.isEmpty() && choice.dataset.isEmpty() && !choice.existing)
        failUsage(QStringLiteral("no objects are selected"), "objects");
    QVector<int> objects;
    for (int i = 0; i < static_cast<int>(geographyOf(geography)->GetObjectCount()); ++i)
        objects.append(i);
    if (!choice.keys.isEmpty()) {
        QSet<int> named;
        for (const QString &key : choice.keys)
            named.insert(findObject(geography, key));
        objects = named.values().toVector();
        std::sort(objects.begin(), objects.end());
    }
    if (!choice.dataset.isEmpty()) {
        const int dataset = choice.geography.isEmpty() ? findDataset(choice.dataset)
                                                       : findDataset(geography, choice.dataset);
        const qint64 time = chooseTime(dataset, choice.at, choice.realization);
        if (!choice.values.isEmpty())
            objects = both(objects, byValue(dataset, choice.realization, time, choice.values));
        if (range)
            objects =
                both(objects, byRange(dataset, choice.realization, time, choice.low, choice.high));
    }
    if (choice.existing)
        objects = both(objects, objectsAt(geography, existenceTime(geography, choice)));
    return objects;
}

} // namespace meridor
