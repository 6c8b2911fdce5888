// SPDX-License-Identifier: MIT
/// Geometry for tests: random shapes from a seed, brick walls, and GEOS as the reference.
#pragma once
#include <QPolygonF>
#include <QString>
#include <cmath>
#include <geos_c.h>
#include <memory>
#include <random>
#include "fennimark/FMLine.h"
#include "fennimark/FMPolygon.h"

namespace cases {

constexpr double kPi = 3.14159265358979323846;

using Random = std::mt19937;

inline double real(Random &random, double low, double high)
{
    return std::uniform_real_distribution<double>(low, high)(random);
}
inline int whole(Random &random, int low, int high)
{
    return std::uniform_int_distribution<int>(low, high)(random);
}

/// A ring around a centre with that many vertices: simple, with dents down to a third of the
/// radius.
inline QPolygonF star(Random &random, int vertices, const QPointF &center, double radius)
{
    QPolygonF ring;
    for (int i = 0; i < vertices; ++i) {
        const double angle = 2.0 * kPi * (i + real(random, 0.0, 0.9)) / vertices;
        const double reach = radius * real(random, 0.35, 1.0);
        ring.append(center + QPointF(std::cos(angle), std::sin(angle)) * reach);
    }
    return ring;
}

/// Any ring on whole coordinates: crossings, doubled edges and repeated vertices included.
inline QPolygonF tangle(Random &random, int vertices, int extent)
{
    QPolygonF ring;
    for (int i = 0; i < vertices; ++i)
        ring.append(QPointF(whole(random, 0, extent), whole(random, 0, extent)));
    return ring;
}

inline QPolygonF rectangle(double x0, double y0, double x1, double y1)
{
    return QPolygonF(QVector<QPointF>{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
}

/// The same ring with every edge cut into `pieces`.
inline QPolygonF refined(const QPolygonF &ring, int pieces)
{
    QPolygonF result;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF from = ring[i];
        const QPointF to = ring[(i + 1) % ring.size()];
        for (int k = 0; k < pieces; ++k)
            result.append(from + (to - from) * (double(k) / pieces));
    }
    return result;
}

inline QPolygonF turned(const QPolygonF &ring, double degrees, const QPointF &offset)
{
    const double c = std::cos(degrees * kPi / 180.0);
    const double s = std::sin(degrees * kPi / 180.0);
    QPolygonF result;
    for (const QPointF &p : ring)
        result.append(QPointF(c * p.x() - s * p.y(), s * p.x() + c * p.y()) + offset);
    return result;
}

class Geos {
public:
    Geos() : mHandle(GEOS_init_r()) {}
    ~Geos() { GEOS_finish_r(mHandle); }
    Geos(const Geos &) = delete;
    Geos &operator=(const Geos &) = delete;
    operator GEOSContextHandle_t() const { return mHandle; }

    struct Delete {
        GEOSContextHandle_t handle;
        void operator()(GEOSGeometry *geometry) const { GEOSGeom_destroy_r(handle, geometry); }
    };
    using Geometry = std::unique_ptr<GEOSGeometry, Delete>;

    Geometry own(GEOSGeometry *geometry) const { return Geometry(geometry, Delete{mHandle}); }
    Geometry point(const QPointF &p) const
    {
        return own(GEOSGeom_createPointFromXY_r(mHandle, p.x(), p.y()));
    }
    Geometry line(const QVector<QPointF> &vertices) const
    {
        return own(GEOSGeom_createLineString_r(mHandle, sequence(vertices)));
    }
    /// One shell and its holes.
    Geometry polygon(const QList<QPolygonF> &rings) const
    {
        QVector<GEOSGeometry *> made;
        for (QPolygonF ring : rings) {
            ring.append(ring.first());
            made.append(GEOSGeom_createLinearRing_r(mHandle, sequence(ring)));
        }
        return own(GEOSGeom_createPolygon_r(mHandle, made[0], made.data() + 1,
                                            static_cast<unsigned>(made.size() - 1)));
    }
    double area(const GEOSGeometry *geometry) const
    {
        double result = 0.0;
        GEOSArea_r(mHandle, geometry, &result);
        return result;
    }

private:
    GEOSCoordSequence *sequence(const QVector<QPointF> &vertices) const
    {
        return GEOSCoordSeq_copyFromBuffer_r(mHandle,
                                             reinterpret_cast<const double *>(vertices.constData()),
                                             static_cast<unsigned>(vertices.size()), 0, 0);
    }
    GEOSContextHandle_t mHandle;
};

} // namespace cases
