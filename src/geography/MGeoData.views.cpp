// SPDX-License-Identifier: MIT
// Attributes and views of a geography, and selection by the values of a dataset.
#include "datainterface/MGeoData.h"
#include <QSet>
#include <QVector>
#include <algorithm>
#include <type_traits>
#include "Common/detail/failure.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MDatum.h"
#include "datainterface/MLinker.h"
#include "datainterface/OrderedDouble.h"
#include "datasets/dataContainer.elements.h"

using namespace datainterface;

namespace {

/// Tests whether values of one element type are among a set of keys. Numeric keys are sorted once,
/// since there are few keys and many values.
class KeySet {
public:
    explicit KeySet(const QSet<MDatum> &keys) : mKeys(keys)
    {
        for (const MDatum &key : keys) {
            if (key.type() == MDatum::Integer)
                mIntegers.append(key.integerValue());
            else if (key.type() == MDatum::Decimal)
                mDecimals.append(key.decimalValue());
        }
        std::sort(mIntegers.begin(), mIntegers.end());
        std::sort(mDecimals.begin(), mDecimals.end());
    }

    template <class T> bool contains(const T &element) const
    {
        if constexpr (std::is_same_v<T, QString>)
            return mKeys.contains(MDatum(element));
        else if constexpr (std::is_integral_v<T>)
            return std::binary_search(mIntegers.begin(), mIntegers.end(),
                                      static_cast<qint64>(element));
        else
            return std::binary_search(mDecimals.begin(), mDecimals.end(),
                                      OrderedDouble(toNumber(element)));
    }

private:
    const QSet<MDatum> &mKeys;
    QVector<qint64> mIntegers; // unsigned values from 2^63 on wrap, as in a key
    QVector<OrderedDouble> mDecimals;
};

} // namespace

void MGeoData::AddAttributes(MAttributes *attributes)
{
    if (attributes && !mAttributes.contains(attributes))
        mAttributes.append(attributes);
}

MAttributes *MGeoData::GetAttributes(int population) const
{
    require(population == 0, "Invalid attribute population id");
    return mAttributes.value(population, nullptr);
}

void MGeoData::AddObjectManager(MLinker *view)
{
    if (!view)
        return;
    mObjectManagers.insert(view);
    connect(view, &MLinker::ObjectManagerDying, this, &MGeoData::ObjectManagerDyingSlot,
            Qt::UniqueConnection);
}

MLinker *MGeoData::GetObjectManager() const
{
    return mObjectManagers.isEmpty() ? nullptr : *mObjectManagers.cbegin();
}

void MGeoData::ObjectManagerDyingSlot(MLinker *view)
{
    mObjectManagers.remove(view);
    MAttributes *attributes = GetAttributes(0);
    if (!mObjectManagers.isEmpty() || !attributes)
        return;
    attributes->SetAllAttribute(0, true);
    attributes->SetAllAttribute(1, false);
    attributes->SetAllAttribute(2, false);
}

template <class Test>
void MGeoData::selectWhere(int dataset, int realization, qint64 time, int attribute, Test test)
{
    QVector<unsigned int> selected;
    {
        const VORN_ConstDataContainer container(mDataSource->GetDataset(dataset), time,
                                                realization);
        ContainerAccess::visitValues(container, [&](const auto *values) {
            for (int id = 0; id < container.count(); ++id)
                if (!container.isMissing(id) && test(values[id]))
                    selected.append(static_cast<unsigned int>(id));
        });
    }
    if (MAttributes *attributes = GetAttributes(0))
        attributes->SetAttributeIds(attribute, selected, true);
}

void MGeoData::selectByValue(int dataset, int realization, qint64 time, const QSet<MDatum> &values,
                             int attribute)
{
    const KeySet keys(values);
    selectWhere(dataset, realization, time, attribute,
                [&keys](const auto &element) { return keys.contains(element); });
}

void MGeoData::selectByRange(int dataset, int realization, qint64 time, double low, double high,
                             int attribute)
{
    selectWhere(dataset, realization, time, attribute, [low, high](const auto &element) {
        if constexpr (std::is_same_v<std::decay_t<decltype(element)>, QString>)
            return false;
        else
            return toNumber(element) >= low && toNumber(element) <= high;
    });
}
