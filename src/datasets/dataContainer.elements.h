// SPDX-License-Identifier: MIT
/// The element types of the data containers: one list of forms, and the functions on an element
/// that both containers use.
#pragma once
#include <QLocale>
#include <QString>
#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include "Common/detail/failure.h"
#include "datainterface/MDatum.h"
#include "datainterface/dataContainer.h"

namespace datainterface {

/// An element type with two codes: of an owned vector, and of borrowed raster memory.
template <class T, int Owned, int Borrowed> struct ContainerForm {
    using type = T;
    static constexpr auto owned = static_cast<VORN_DataContainer::DataType>(Owned);
    static constexpr auto borrowed = static_cast<VORN_DataContainer::DataType>(Borrowed);
    static constexpr bool holds(int code) { return code == Owned || code == Borrowed; }
};
constexpr int kNeverBorrowed = -1;
using ContainerForms = std::tuple<
    ContainerForm<double, 0x1, 0x10000>, ContainerForm<qint32, 0x30, 0x300000>,
    ContainerForm<QString, 0x8000, kNeverBorrowed>, ContainerForm<float, 0x2, 0x20000>,
    ContainerForm<half, 0x3, 0x30000>, ContainerForm<qint8, 0x10, 0x100000>,
    ContainerForm<qint16, 0x20, 0x200000>, ContainerForm<qint64, 0x40, 0x400000>,
    ContainerForm<quint8, 0x10000000, 0x1000000>, ContainerForm<quint16, 0x20000000, 0x2000000>,
    ContainerForm<quint32, 0x30000000, 0x3000000>, ContainerForm<quint64, 0x40000000, 0x4000000>>;

/// Calls `visit` with the form of a code; false when there is none.
template <class Visit> bool visitForm(int code, Visit visit)
{
    const auto tryForm = [&](auto form) { return form.holds(code) && (visit(form), true); };
    return std::apply([&](auto... form) { return (tryForm(form) || ...); }, ContainerForms{});
}
template <class Form> using ElementOfForm = typename Form::type;

/// A number outside the range becomes the nearest end of the range; a NaN becomes 0.
template <class Integer> Integer integerFrom(double value)
{
    constexpr double kLow = static_cast<double>(std::numeric_limits<Integer>::min());
    constexpr double kHigh = static_cast<double>(std::numeric_limits<Integer>::max());
    if (std::isnan(value))
        return 0;
    if (value <= kLow)
        return std::numeric_limits<Integer>::min();
    return value >= kHigh ? std::numeric_limits<Integer>::max() : static_cast<Integer>(value);
}

template <class Integer, class Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
Integer integerFrom(Number value)
{
    using Limits = std::numeric_limits<Integer>;
    if constexpr (std::is_signed_v<Number>) {
        if (value < 0 && (!std::is_signed_v<Integer> || qint64(value) < qint64(Limits::min())))
            return Limits::min();
        if (value < 0)
            return static_cast<Integer>(value);
    }
    return quint64(value) > quint64(Limits::max()) ? Limits::max() : static_cast<Integer>(value);
}

/// The integer of a datum, fitted to an `int`.
inline int integerOf(const MDatum &datum)
{
    return datum.isBeyondSigned() ? std::numeric_limits<int>::max()
                                  : integerFrom<int>(datum.integerValue());
}

constexpr double kLargestHalf = 65504.0;

/// The nearest number whose magnitude is at most `most`; an infinity and a NaN stay as they are.
inline double withinRange(double value, double most)
{
    return std::isfinite(value) ? std::clamp(value, -most, most) : value;
}

/// A number as an element of a numeric type.
template <class T, class Number> T elementFrom(Number value)
{
    if constexpr (std::is_same_v<T, half>)
        return half(static_cast<float>(withinRange(static_cast<double>(value), kLargestHalf)));
    else if constexpr (std::is_same_v<T, float> && std::is_same_v<Number, double>)
        return static_cast<float>(withinRange(value, std::numeric_limits<float>::max()));
    else if constexpr (std::is_integral_v<T>)
        return integerFrom<T>(value);
    else
        return static_cast<T>(value);
}

template <class T> double toNumber(const T &element)
{
    if constexpr (std::is_same_v<T, QString>)
        return element.toDouble();
    else if constexpr (std::is_same_v<T, half>)
        return static_cast<double>(static_cast<float>(element));
    else
        return static_cast<double>(element);
}

template <class Integer, class T> Integer toInteger(const T &element)
{
    if constexpr (std::is_integral_v<T>) {
        return static_cast<Integer>(element);
    } else if constexpr (std::is_same_v<T, QString>) {
        bool whole = false;
        const qint64 value = element.toLongLong(&whole);
        return whole ? static_cast<Integer>(value) : integerFrom<Integer>(element.toDouble());
    } else {
        return integerFrom<Integer>(toNumber(element));
    }
}

/// The shortest text that reads back as the same number.
inline QString textOf(float value)
{
    for (int digits = std::numeric_limits<float>::digits10;
         digits < std::numeric_limits<float>::max_digits10; ++digits) {
        const QString text = QString::number(static_cast<double>(value), 'g', digits);
        if (text.toFloat() == value)
            return text;
    }
    return QString::number(static_cast<double>(value), 'g',
                           std::numeric_limits<float>::max_digits10);
}
template <class T> QString textOf(const T &element)
{
    if constexpr (std::is_same_v<T, QString>)
        return element;
    else if constexpr (std::is_same_v<T, half>)
        return textOf(static_cast<float>(element));
    else if constexpr (std::is_floating_point_v<T>)
        return QString::number(element, 'g', QLocale::FloatingPointShortest);
    else
        return QString::number(element);
}

} // namespace datainterface

/// What the two containers have in common, generic over both and over the element types.
struct ContainerAccess {
    /// Calls `visit` with the first element (const T *) of the active values.
    template <class Visit> static void visitValues(const VORN_DataContainer &container, Visit visit)
    {
        const bool found = datainterface::visitForm(container.mType, [&](auto form) {
            visit(
                std::get<QVector<datainterface::ElementOfForm<decltype(form)>>>(container.mVectors)
                    .constData());
        });
        datainterface::require(found, "Invalid data type");
    }
    template <class Visit>
    static void visitValues(const VORN_ConstDataContainer &container, Visit visit)
    {
        switch (container.mType) {
        case VORN_DataContainer::DoubleData:
            return visit(container.data.doubleVectorData.constData());
        case VORN_DataContainer::Int32Data:
            return visit(container.data.int32VectorData.constData());
        case VORN_DataContainer::StringData:
            return visit(container.data.stringVectorData.constData());
        default:
            break;
        }
        const bool found = datainterface::visitForm(container.mType, [&](auto form) {
            using T = datainterface::ElementOfForm<decltype(form)>;
            if constexpr (!std::is_same_v<T, QString>)
                visit(std::get<const T *>(container.mCells));
        });
        datainterface::require(found, "Invalid data type");
    }
    /// Calls `visit` with the active vector, for a change.
    template <class Visit> static bool visitVector(VORN_DataContainer &container, Visit visit)
    {
        return datainterface::visitForm(container.mType, [&](auto form) {
            visit(std::get<QVector<datainterface::ElementOfForm<decltype(form)>>>(
                container.mVectors));
        });
    }

    static bool isEmpty(const VORN_DataContainer &container)
    {
        return container.type() == VORN_DataContainer::NoData;
    }
    static bool isEmpty(const VORN_ConstDataContainer &container) { return container.id() == -1; }

    /// Makes the checks of a read of one value, then calls `read` on the element.
    template <class Container, class Read>
    static auto readElement(const Container &container, int id, const char *missingText, Read read)
    {
        using datainterface::require;
        require(!isEmpty(container), "Empty data container");
        require(id >= 0 && id < container.nObjects, "id>=0 and id<nObjects");
        require(!container.isMissing(id), missingText);
        decltype(read(std::declval<const double &>())) result{};
        visitValues(container, [&](const auto *values) { result = read(values[id]); });
        return result;
    }

    template <class Container>
    static bool equalData(const Container &container, const VORN_ConstDataContainer &other)
    {
        using datainterface::require;
        require(!isEmpty(container) && !isEmpty(other), "Empty data container");
        if (container.nObjects != other.nObjects)
            return false;
        bool equal = false;
        visitValues(container, [&](const auto *values) {
            visitValues(other, [&](const auto *others) {
                if constexpr (std::is_same_v<std::decay_t<decltype(*values)>,
                                             std::decay_t<decltype(*others)>>)
                    equal = equalElements(container, values, other, others);
            });
        });
        return equal;
    }
    template <class Container, class T>
    static bool equalElements(const Container &container, const T *values,
                              const VORN_ConstDataContainer &other, const T *others)
    {
        for (int id = 0; id < container.nObjects; ++id) {
            const bool missing = container.isMissing(id);
            if (missing != other.isMissing(id) || (!missing && !(values[id] == others[id])))
                return false;
        }
        return true;
    }

    template <class Container> static int compare(const Container &container, int id1, int id2)
    {
        using datainterface::require;
        require(id1 >= 0 && id1 < container.nObjects, "id1>=0 and id1<nObjects");
        require(id2 >= 0 && id2 < container.nObjects, "id2>=0 and id2<nObjects");
        const bool missing1 = container.isMissing(id1);
        const bool missing2 = container.isMissing(id2);
        if (missing1 || missing2)
            return static_cast<int>(missing1) - static_cast<int>(missing2);
        int order = 0;
        visitValues(container, [&](const auto *values) {
            order = static_cast<int>(values[id2] < values[id1])
                    - static_cast<int>(values[id1] < values[id2]);
        });
        return order;
    }

    template <class Container>
    static void sortedIndices(const Container &container, QVector<int> &indices)
    {
        indices.clear();
        if (isEmpty(container))
            return;
        visitValues(container, [&](const auto *values) {
            for (int id = 0; id < container.nObjects; ++id) {
                if (!container.isMissing(id) && isSortable(values[id]))
                    indices.append(id);
            }
            std::sort(indices.begin(), indices.end(),
                      [values](int a, int b) { return values[a] < values[b]; });
        });
    }
    template <class T> static bool isSortable(const T &element)
    {
        if constexpr (std::is_same_v<T, QString> || std::is_integral_v<T>)
            return true;
        else
            return std::isfinite(datainterface::toNumber(element));
    }
};
