// SPDX-License-Identifier: MIT
#include "datainterface/dataContainer.h"
#include "dataContainer.elements.h"

using namespace datainterface;

namespace {

/// The sum in the element type; integers wrap around.
template <class T, class Number> T increased(const T &element, Number by)
{
    if constexpr (std::is_integral_v<T> && std::is_integral_v<Number>)
        return static_cast<T>(static_cast<quint64>(element) + static_cast<quint64>(by));
    else
        return elementFrom<T>(toNumber(element) + static_cast<double>(by));
}

/// Calls `change` on the element at a position and returns its result; false for a position that
/// does not exist.
template <class Change> bool changeElement(VORN_DataContainer &container, int id, Change change)
{
    bool changed = false;
    if (id >= 0 && id < container.count())
        ContainerAccess::visitVector(container,
                                     [&](auto &vector) { changed = change(vector, id); });
    return changed;
}

template <class Value> bool store(VORN_DataContainer &container, int id, const Value &value)
{
    const bool stored = changeElement(container, id, [&value](auto &vector, int position) {
        using T = typename std::decay_t<decltype(vector)>::value_type;
        if constexpr (std::is_same_v<T, Value>)
            vector[position] = value;
        else if constexpr (!std::is_same_v<T, QString> && !std::is_same_v<Value, QString>)
            vector[position] = elementFrom<T>(value);
        else
            return false;
        return true;
    });
    if (stored && container.isMissing(id))
        container.missingData().unsetMissing(id, container.count());
    return stored;
}

template <class Number> bool increase(VORN_DataContainer &container, int id, Number by)
{
    return !container.isMissing(id)
           && changeElement(container, id, [by](auto &vector, int position) {
                  using T = typename std::decay_t<decltype(vector)>::value_type;
                  if constexpr (!std::is_same_v<T, QString>)
                      vector[position] = increased<T>(vector.at(position), by);
                  return !std::is_same_v<T, QString>;
              });
}

} // namespace

bool VORN_DataContainer::setValue(int id, double value)
{
    return store(*this, id, value);
}

bool VORN_DataContainer::setValue(int id, signed char value)
{
    return store(*this, id, value);
}

bool VORN_DataContainer::setValue(int id, short value)
{
    return store(*this, id, value);
}

bool VORN_DataContainer::setValue(int id, int value)
{
    return store(*this, id, value);
}

bool VORN_DataContainer::setValue(int id, qint64 value)
{
    return store(*this, id, value);
}

bool VORN_DataContainer::setValue(int id, const QString &value)
{
    return store(*this, id, value);
}

bool VORN_DataContainer::incValue(int id, double value)
{
    return increase(*this, id, value);
}

bool VORN_DataContainer::incValue(int id, char value)
{
    return increase(*this, id, value);
}

bool VORN_DataContainer::incValue(int id, short value)
{
    return increase(*this, id, value);
}

bool VORN_DataContainer::incValue(int id, int value)
{
    return increase(*this, id, value);
}

bool VORN_DataContainer::incValue(int id, qint64 value)
{
    return increase(*this, id, value);
}

void VORN_DataContainer::fillMissingValues(double decimal, qint64 integer)
{
    if (mMissing.noneMissing() && !mMissing.isAllMissing())
        return;
    ContainerAccess::visitVector(*this, [&](auto &vector) {
        using T = typename std::decay_t<decltype(vector)>::value_type;
        if constexpr (!std::is_same_v<T, QString>) {
            const T filler =
                std::is_integral_v<T> ? elementFrom<T>(integer) : elementFrom<T>(decimal);
            for (int id = 0; id < vector.size(); ++id) {
                if (isMissing(id))
                    vector[id] = filler;
            }
        }
    });
}
