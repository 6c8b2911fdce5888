// SPDX-License-Identifier: MIT
/// Small and random geographies for the tests of the record store.
#pragma once
#include <QBuffer>
#include <QDataStream>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>
#include <random>
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/Fennims.h"
#include "fennimark/VORNBuilder.h"
#include "support/checks.h"

inline timeRange span(double start, double end, unsigned char flags = 0xFF)
{
    return {start, end, flags};
}

inline RectInT extent(double size, double start = 0, double end = 100)
{
    return RectInT{Rect2D{0, size, 0, size}, timeRange{start, end, 0xFF}};
}

inline FMPolygon *square(double x, double y, double size = 1)
{
    return new FMPolygon(
        QVector<QPointF>{{x, y}, {x + size, y}, {x + size, y + size}, {x, y + size}});
}

/// Finishes a builder and opens the file.
inline std::unique_ptr<Fennims> opened(VORNBuilder &builder)
{
    QTemporaryDir directory;
    const QByteArray path = QFile::encodeName(directory.filePath(QStringLiteral("geometry")));
    auto fennims = std::make_unique<Fennims>();
    QFile file(QFile::decodeName(path));
    if (!builder.Finish(path.constData(), nullptr) || !file.open(QIODevice::ReadOnly))
        return nullptr;
    QDataStream in(&file);
    return fennims->Open(in, nullptr) ? std::move(fennims) : nullptr;
}

inline QByteArray saved(Fennims &fennims)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    return fennims.Save(out, nullptr) ? bytes : QByteArray();
}

inline bool open(Fennims &fennims, const QByteArray &bytes)
{
    QDataStream in(bytes);
    return fennims.Open(in, nullptr);
}

/// countDown is a progress callback that returns true callsLeft - 1 times.
inline int callsLeft = 0;
inline bool countDown(int, const char *)
{
    return --callsLeft > 0;
}

/// One observation as it was given, to be compared with the store.
struct Given {
    int chain;
    timeRange range;
    std::shared_ptr<FMObject> object;
    int record = -1;
};

/// A random geography and the plain list of its observations.
class RandomGeography {
public:
    enum Kind { Points, Lines, Polygons };

    /// @param observations  in each chain, one after the other in time; 1: all share one range.
    /// @param step          coordinates are multiples of it (0: any double); `offset` is added to
    /// them.
    RandomGeography(unsigned seed, Kind kind, int chains, int observations, double step,
                    double offset)
        : mRandom(walkSeed(seed)), mKind(kind), mStep(step), mOffset(offset)
    {
        VORNBuilder builder(extent(100), nullptr, nullptr);
        for (int i = 0; i < chains; ++i) {
            QVector<TreeObject *> objects;
            QVector<timeRange> ranges;
            double time = observations > 1 ? std::floor(uniform(0, 20)) : 0;
            for (int j = 0; j < observations; ++j) {
                const double end = observations > 1 ? time + 1 + std::floor(uniform(0, 10)) : 100;
                given.push_back({i, span(time, end, j + 1 < observations ? 0xF0 : 0xFF),
                                 std::shared_ptr<FMObject>(newObject()), -1});
                objects.append(given.back().object->Copy());
                ranges.append(given.back().range);
                time = end + std::floor(uniform(0, 3));
            }
            builder.CreateChain(objects, ranges, -1);
        }
        fennims = opened(builder);
        for (Given &one : given) {
            const FMObjectChain *chain = fennims ? fennims->GetChainById(one.chain) : nullptr;
            if (chain)
                one.record = chain->GetObservation(qint64(one.range.start)).second;
        }
    }

    FMObject *newObject()
    {
        switch (mKind) {
        case Points:
            return new FMPoint(place());
        case Lines:
            return new FMLine({blob(2 + int(uniform(0, 20)))});
        case Polygons:
            return new FMPolygon(blob(3 + int(uniform(0, 20))));
        }
        return nullptr;
    }
    QPointF place() { return {coordinate(0, 100), coordinate(0, 100)}; }
    double uniform(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(mRandom);
    }

    /// The given observation of a record id; null when there is none.
    const Given *of(int record) const
    {
        const auto found = std::find_if(given.begin(), given.end(), [record](const Given &one) {
            return one.record == record;
        });
        return found == given.end() ? nullptr : &*found;
    }
    /// Whether its chain has not been removed.
    bool holds(const Given &one) const { return fennims->GetChainById(one.chain); }

    std::vector<Given> given;
    std::unique_ptr<Fennims> fennims;

private:
    double coordinate(double low, double high)
    {
        const double value = uniform(low, high);
        return mOffset + (mStep > 0 ? std::floor(value / mStep) * mStep : value);
    }
    /// A star around a place: a ring without crossings, or the vertices of a line.
    QVector<QPointF> blob(int vertices)
    {
        const QPointF center = place();
        QVector<QPointF> ring;
        for (int i = 0; i < vertices; ++i) {
            const double angle = 2 * M_PI * i / vertices, radius = uniform(1, 5);
            ring.append(center + QPointF(radius * std::cos(angle), radius * std::sin(angle)));
        }
        return ring;
    }

    std::mt19937 mRandom;
    Kind mKind;
    double mStep, mOffset;
};
