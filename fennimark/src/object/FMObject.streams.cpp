// SPDX-License-Identifier: MIT
// The stream form of one object. The bytes are little-endian and do not depend on the byte order
// and the version of the stream:
//
//     point            | f64 x | f64 y |
//     line, polygon    | u32 part count | u32 size of each part | f64 x, f64 y of each vertex |
//
// The vertices are those that were given, also when they are not finite.
#include <QDataStream>
#include <QtEndian>
#include "fennimark/FMPoint.h"
#include "shape/shape.h"

namespace {

constexpr int kForm = 1;
constexpr std::size_t kChunk = 1U << 15; // elements read at once: a wrong count reserves no memory
constexpr quint64 kMaxVertices = 0x7ffffffe;

template <class T> struct Wire;
template <> struct Wire<quint32> {
    using Word = quint32;
};
template <> struct Wire<double> {
    using Word = quint64;
};

template <class T> bool write(QDataStream &out, const T *values, std::size_t count)
{
    T chunk[4096 / sizeof(T)];
    for (std::size_t done = 0; done < count;) {
        const std::size_t step = std::min(count - done, sizeof chunk / sizeof(T));
        qToLittleEndian<typename Wire<T>::Word>(values + done, static_cast<qsizetype>(step), chunk);
        const int bytes = static_cast<int>(step * sizeof(T));
        if (out.writeRawData(reinterpret_cast<const char *>(chunk), bytes) != bytes)
            return false;
        done += step;
    }
    return out.status() == QDataStream::Ok;
}

template <class T> bool read(QDataStream &in, T *values, std::size_t count)
{
    const int bytes = static_cast<int>(count * sizeof(T));
    if (in.readRawData(reinterpret_cast<char *>(values), bytes) != bytes)
        return false;
    qFromLittleEndian<typename Wire<T>::Word>(values, static_cast<qsizetype>(count), values);
    return true;
}

/// Reads elements of `Width` numbers each until the list has `count` of them.
template <class T, std::size_t Width = 1, class Element>
bool readGrowing(QDataStream &in, std::vector<Element> &list, quint64 count)
{
    while (list.size() < count) {
        const std::size_t step = std::min<std::size_t>(kChunk, count - list.size());
        const std::size_t first = list.size();
        list.resize(first + step);
        if (!read(in, reinterpret_cast<T *>(&list[first]), step * Width))
            return false;
    }
    return true;
}

} // namespace

bool FMObject::SaveToStream(QDataStream &out)
{
    if (mKind == fennimark::ObjectKind::Point) {
        const auto &point = static_cast<const FMPoint &>(*this);
        const double place[2] = {point.x, point.y};
        return write(out, place, 2);
    }
    const fennimark::GeometryView given = fennimark::givenVertices(*this);
    return write(out, &given.partCount, 1) && write(out, given.partSizes, given.partCount)
           && write(out, reinterpret_cast<const double *>(given.vertices),
                    2 * std::size_t(given.vertexCount));
}

bool FMObject::RestoreFromStream(QDataStream &in, int form)
{
    if (form != kForm)
        return false;
    if (mKind == fennimark::ObjectKind::Point) {
        double place[2];
        if (!read(in, place, 2))
            return false;
        auto &point = static_cast<FMPoint &>(*this);
        point.x = place[0];
        point.y = place[1];
        return true;
    }
    auto backing = std::make_unique<fennimark::ObjectBacking>();
    quint32 parts = 0;
    if (!read(in, &parts, 1) || parts > kMaxVertices
        || !readGrowing<quint32>(in, backing->partSizes, parts))
        return false;
    quint64 total = 0;
    for (const quint32 size : backing->partSizes)
        total += size;
    if (total > kMaxVertices || !readGrowing<double, 2>(in, backing->vertices, total))
        return false;
    adopt(std::move(backing));
    mSimplicity = fennimark::Simplicity::Unknown;
    return true;
}
