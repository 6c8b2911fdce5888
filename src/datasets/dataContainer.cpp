// SPDX-License-Identifier: MIT
#include "datainterface/dataContainer.h"
#include <cstring>
#include "dataContainer.elements.h"

using namespace datainterface;

namespace {

/// Makes `values` the only vector of a container.
template <class T, class Vectors> int adopt(Vectors &vectors, const QVector<T> &values)
{
    std::get<QVector<T>>(vectors) = values;
    return values.size();
}

template <class T> void requireForm(VORN_DataContainer::DataType type)
{
    bool fits = false;
    visitForm(type,
              [&fits](auto form) { fits = std::is_same_v<ElementOfForm<decltype(form)>, T>; });
    require(fits, "Invalid data type");
}

QVector<half> halves(const QVector<unsigned short> &patterns)
{
    QVector<half> values;
    values.reserve(patterns.size());
    for (const unsigned short bits : patterns)
        values.append(half::fromBits(bits));
    return values;
}

template <class T> QVector<T> copied(const T *values, int count)
{
    QVector<T> result(values ? qMax(count, 0) : 0);
    std::copy_n(values, result.size(), result.begin());
    return result;
}

} // namespace

VORN_DataContainer::VORN_DataContainer(DataType type, int count)
    : mType(type), mMissing(MissingData::Vector, qMax(count, 0))
{
    const bool found = ContainerAccess::visitVector(*this, [&](auto &vector) {
        using T = typename std::decay_t<decltype(vector)>::value_type;
        nObjects = adopt(mVectors, QVector<T>(qMax(count, 0)));
    });
    require(found, "Invalid data type");
}

VORN_DataContainer::VORN_DataContainer(const VORN_ConstDataContainer &other)
    : mColorTable(other.getColorTable()), mMissing(other.missingData())
{
    if (ContainerAccess::isEmpty(other))
        return;
    ContainerAccess::visitValues(other, [&](const auto *values) {
        using T = std::decay_t<decltype(*values)>;
        // Without a grid there are no values, and every cell is missing.
        nObjects =
            adopt(mVectors, values ? copied(values, other.count()) : QVector<T>(other.count()));
    });
    visitForm(other.type(), [this](auto form) { mType = form.owned; });
}

VORN_DataContainer::VORN_DataContainer(DataType type, const QVector<double> &values,
                                       const VORN_MissingData &missing)
    : mType(type), mMissing(missing)
{
    requireForm<double>(type);
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(DataType type, const QVector<float> &values,
                                       const VORN_MissingData &missing)
    : mType(type), mMissing(missing)
{
    requireForm<float>(type);
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(DataType type, const QVector<unsigned short> &values,
                                       const VORN_MissingData &missing)
    : mType(type), mMissing(missing)
{
    requireForm<half>(type);
    nObjects = adopt(mVectors, halves(values));
}

VORN_DataContainer::VORN_DataContainer(DataType type, const QVector<int> &values,
                                       const VORN_MissingData &missing)
    : mType(type), mMissing(missing)
{
    requireForm<qint32>(type);
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(DataType type, const QVector<qint64> &values,
                                       const VORN_MissingData &missing)
    : mType(type), mMissing(missing)
{
    requireForm<qint64>(type);
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(DataType type, const QVector<signed char> &values,
                                       const VORN_MissingData &missing)
    : mType(type), mMissing(missing)
{
    requireForm<qint8>(type);
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(DataType type, const QVector<short> &values,
                                       const VORN_MissingData &missing)
    : mType(type), mMissing(missing)
{
    requireForm<qint16>(type);
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(const QVector<unsigned char> &values,
                                       const QVector<unsigned int> &colors,
                                       const VORN_MissingData &missing)
    : mType(UInt8Data), mColorTable(colors), mMissing(missing)
{
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(const QVector<unsigned short> &values,
                                       const QVector<unsigned int> &colors,
                                       const VORN_MissingData &missing)
    : mType(UInt16Data), mColorTable(colors), mMissing(missing)
{
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(const QVector<unsigned int> &values,
                                       const VORN_MissingData &missing)
    : mType(UInt32Data), mMissing(missing)
{
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(const QVector<quint64> &values,
                                       const VORN_MissingData &missing)
    : mType(UInt64Data), mMissing(missing)
{
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(const QVector<QString> &values,
                                       const VORN_MissingData &missing)
    : mType(StringData), mMissing(missing)
{
    nObjects = adopt(mVectors, values);
}

VORN_DataContainer::VORN_DataContainer(const QString *values, int count,
                                       const VORN_MissingData &missing)
    : mType(StringData), mMissing(missing)
{
    nObjects = adopt(mVectors, copied(values, count));
}

VORN_DataContainer::VORN_DataContainer(DataType type, const void *values, int count,
                                       const VORN_MissingData &missing)
    : VORN_DataContainer(type, values, count, QVector<unsigned int>(), missing)
{
}

VORN_DataContainer::VORN_DataContainer(DataType type, const void *values, int count,
                                       const QVector<unsigned int> &colors,
                                       const VORN_MissingData &missing)
    : mType(type), mColorTable(colors), mMissing(missing)
{
    const bool found = visitForm(type, [&](auto form) {
        using T = ElementOfForm<decltype(form)>;
        nObjects = adopt(mVectors, copied(static_cast<const T *>(values), count));
    });
    require(found, "Invalid data type");
}

double VORN_DataContainer::value(int id) const
{
    return ContainerAccess::readElement(*this, id, "Missing data value",
                                        [](const auto &element) { return toNumber(element); });
}

qint64 VORN_DataContainer::intvalue(int id) const
{
    return ContainerAccess::readElement(
        *this, id, "Data value is missing",
        [](const auto &element) { return toInteger<qint64>(element); });
}

quint64 VORN_DataContainer::uintvalue(int id) const
{
    return ContainerAccess::readElement(
        *this, id, "Data value is missing",
        [](const auto &element) { return toInteger<quint64>(element); });
}

QString VORN_DataContainer::strvalue(int id) const
{
    return ContainerAccess::readElement(*this, id, "Data value is missing",
                                        [](const auto &element) { return textOf(element); });
}

const void *VORN_DataContainer::getNumericDataPtr() const
{
    require(mType != StringData, "Invalid data type");
    return getDataPtr();
}

const void *VORN_DataContainer::getDataPtr() const
{
    const void *first = nullptr;
    ContainerAccess::visitValues(*this, [&first](const auto *values) { first = values; });
    return first;
}

void *VORN_DataContainer::getDataPtr()
{
    void *first = nullptr;
    const bool found =
        ContainerAccess::visitVector(*this, [&first](auto &vector) { first = vector.data(); });
    require(found, "Invalid data type");
    return first;
}

bool VORN_DataContainer::compareData(const VORN_ConstDataContainer &other) const
{
    return ContainerAccess::equalData(*this, other);
}

int VORN_DataContainer::compareValues(int id1, int id2) const
{
    return ContainerAccess::compare(*this, id1, id2);
}

void VORN_DataContainer::incSampleIndex(double &index, double &, double &) const
{
    index += 1.0;
}

void VORN_DataContainer::getSortedIndices(QVector<int> &indices) const
{
    ContainerAccess::sortedIndices(*this, indices);
}
