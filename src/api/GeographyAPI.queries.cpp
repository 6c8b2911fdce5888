// SPDX-License-Identifier: MIT
// Spatial queries for objects. The geometry library returns records, which are converted to object
// indices here; a record without an object becomes -1.
#include "datainterface/GeographyAPI.h"
#include "Common/detail/failure.h"
#include "api/shapeCalls.h"
#include "datainterface/MRasterDataSource.h"
#include "fennimark/FMPolygon.h"

using namespace datainterface;

namespace {

QVector<unsigned int> objectsOf(const MVectorData &geography, const QVector<int> &records)
{
    QVector<unsigned int> objects;
    objects.reserve(records.size());
    for (const int record : records)
        objects.append(static_cast<unsigned int>(objectOf(geography, record)));
    return objects;
}

/// Calls `find(fennims, records)` on a vector geography; false for another kind.
template <class Find> bool queryVectors(int geographyId, QVector<unsigned int> &objects, Find find)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        QVector<int> records;
        find(*geography.GetFennims(), records);
        objects = objectsOf(geography, records);
        return true;
    });
}

/// Calls `find(source, pixels)` on a raster; false for another kind and when `find` returns false.
template <class Find>
bool queryCells(const MGeoData &geography, QVector<unsigned int> &objects, Find find)
{
    const auto *source = asKind<MRasterDataSource>(geography.GetDataSource());
    QVector<MRasterDataSource::Pixel> pixels;
    if (!source || !find(*source, pixels))
        return false;
    objects.clear();
    objects.reserve(pixels.size());
    for (const auto &pixel : qAsConst(pixels))
        objects.append(source->IndexFromColRow(pixel.first, pixel.second));
    return true;
}

/// The objects that meet a polygon. @param overlap  set to the common areas unless it is null.
void queryVectors(const MVectorData &geography, const FMPolygon &polygon, qint64 time,
                  QVector<unsigned int> &objects, QVector<double> *overlap)
{
    const Fennims &fennims = *geography.GetFennims();
    QVector<int> candidates;
    fennims.OverlapsMBRs(polygon.GetBounds(), time, candidates);
    QVector<int> hits;
    QVector<double> areas;
    for (const int candidate : qAsConst(candidates)) {
        const HeldObject held(*fennims.mTree, candidate);
        double area = 0.0;
        bool isHit = false;
        if (const auto *other = held.as<FMPolygon>())
            isHit = polygon.OverlapsPolygon(*other, overlap ? &area : nullptr);
        else if (const auto *shape = held.as<FMObject>())
            isHit = polygon.Overlaps(*shape);
        if (isHit) {
            hits.append(candidate);
            areas.append(area);
        }
    }
    objects = objectsOf(geography, hits);
    if (overlap)
        *overlap = areas;
}

} // namespace

bool VORN_RectQuery(int geographyId, const QRectF &rect, qint64 time,
                    QVector<unsigned int> &objects)
{
    return queryVectors(geographyId, objects, [&](const Fennims &fennims, QVector<int> &records) {
        fennims.RectQuery(boxOf(rect), time, records);
    });
}

bool VORN_MBRQuery(int geographyId, const QRectF &rect, qint64 time, QVector<unsigned int> &objects)
{
    return queryVectors(geographyId, objects, [&](const Fennims &fennims, QVector<int> &records) {
        fennims.OverlapsMBRs(boxOf(rect), time, records);
    });
}

bool VORN_RectTimeQuery(int geographyId, const QRectF &rect, qint64 start, qint64 end,
                        QVector<unsigned int> &objects)
{
    return queryVectors(geographyId, objects, [&](const Fennims &fennims, QVector<int> &records) {
        fennims.mTree->Overlaps(boxOf(rect, {start, end, true, true}), records);
    });
}

bool VORN_CircleQuery(int geographyId, const QPointF &center, double radius, qint64 time,
                      QVector<unsigned int> &objects)
{
    return onGeography(geographyId, false, [&](MGeoData &geography) {
        if (const auto *vectors = asKind<MVectorData>(&geography)) {
            QVector<int> records;
            vectors->GetFennims()->CircleQuery(center.x(), center.y(), radius, time, records);
            objects = objectsOf(*vectors, records);
            return true;
        }
        return queryCells(geography, objects, [&](const MRasterDataSource &source, auto &pixels) {
            return source.CircleQuery(center, radius, pixels);
        });
    });
}

bool VORN_ObjectQuery(int geographyId, unsigned int object, int otherGeography, qint64 time,
                      QVector<unsigned int> &objects)
{
    return onShape<TreeObject>(geographyId, object, time, [&](const TreeObject &found) {
        return onGeography<MVectorData>(otherGeography, false, [&](const MVectorData &other) {
            const auto *shape = dynamic_cast<const FMObject *>(&found);
            require(shape != nullptr, "Invalid object type");
            QVector<int> records;
            other.GetFennims()->ObjectQuery(*shape, time, records);
            objects = objectsOf(other, records);
            return true;
        });
    });
}

bool VORN_PolygonQuery(VORN_Object polygon, int geographyId, qint64 time,
                       QVector<unsigned int> &objects, QVector<double> *overlap)
{
    const HandleObject held(polygon);
    const auto *shape = held.as<FMPolygon>();
    require(shape != nullptr, "Invalid object type");
    return onGeography(geographyId, false, [&](MGeoData &geography) {
        if (const auto *vectors = asKind<MVectorData>(&geography)) {
            const bool hasAreas =
                vectors->GetFennims()->GetGeographyType() == Fennims::PolygonGeography
                && shape->IsSimple();
            queryVectors(*vectors, *shape, time, objects, hasAreas ? overlap : nullptr);
            return true;
        }
        return queryCells(geography, objects, [&](const MRasterDataSource &source, auto &pixels) {
            return source.PolygonQuery(shape, pixels);
        });
    });
}
