// SPDX-License-Identifier: MIT
// A new geography is written to a scratch file by the builder and then opened by the controller, in
// the same way as a geography from a file.
#include "datainterface/GeographyAPI.h"
#include <QFile>
#include <QPolygonF>
#include <cmath>
#include <memory>
#include "Common/detail/tempFile.h"
#include "api/shapeCalls.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "fennimark/VORNBuilder.h"
#include "project/scratchDirectory.h"

using namespace datainterface;

namespace {

struct NewGeography {
    NewGeography(const RectInT &box, const FMProjectionInfo *projection)
        : bounds(box), builder(std::make_unique<VORNBuilder>(bounds, nullptr, projection))
    {
    }

    RectInT bounds;
    double tolerance = 0.0;
    bool hasChains = false;
    std::unique_ptr<VORNBuilder> builder;
};

std::unique_ptr<NewGeography> gNewGeography; // null while none is being built

// Removes a file at the end of its scope.
class FileRemover {
public:
    explicit FileRemover(const QString &path) : mPath(path) {}
    ~FileRemover() { QFile::remove(mPath); }
    FileRemover(const FileRemover &) = delete;
    FileRemover &operator=(const FileRemover &) = delete;
    const QString &path() const { return mPath; }

private:
    const QString mPath;
};

bool startNewGeography(const RectInT &bounds, const FMProjectionInfo *projection)
{
    gNewGeography = std::make_unique<NewGeography>(bounds, projection);
    return true;
}

// Adds the geometry that `makeObject` makes. Out of memory, for a very long vertex list, is
// reported as a geometry that cannot be added.
template <class MakeObject>
bool addToChain(unsigned int chain, const Interval &interval, MakeObject makeObject)
{
    if (!gNewGeography)
        return false;
    TreeObject *object = nullptr;
    try {
        object = makeObject();
    } catch (...) {
        return false;
    }
    constexpr bool takeOver = true;
    return gNewGeography->builder->AddObjectsToChain(static_cast<int>(chain), {object},
                                                     {rangeOf(interval)}, takeOver)
           != nullptr;
}

} // namespace

bool VORN_StartNewVectorGeography(int likeGeography)
{
    if (gNewGeography)
        return false;
    return onGeography<MVectorData>(likeGeography, false, [](const MVectorData &geography) {
        const FMProjectionInfo projection = geography.GetFennims()->GetProjectionSettings();
        return startNewGeography(geography.GetBoundingRect(), &projection);
    });
}

bool VORN_StartNewVectorGeography(const QRectF &bounds, qint64 start, qint64 end,
                                  int projectionFrom)
{
    if (gNewGeography)
        return false;
    const RectInT box = boxOf(bounds, {start, end, true, true});
    if (projectionFrom < 0)
        return startNewGeography(box, nullptr);
    return onGeography<MVectorData>(projectionFrom, false, [&box](const MVectorData &geography) {
        const FMProjectionInfo projection = geography.GetFennims()->GetProjectionSettings();
        return startNewGeography(box, &projection);
    });
}

bool VORN_SetNewGeographyProjection(const QString &wkt)
{
    FMProjectionInfo projection;
    if (!gNewGeography || gNewGeography->hasChains || !FMProjectionInfo::FromWkt(wkt, projection))
        return false;
    const double tolerance = gNewGeography->tolerance;
    startNewGeography(RectInT(gNewGeography->bounds), &projection);
    return VORN_SetAdjacencyTolerance(tolerance);
}

bool VORN_SetAdjacencyTolerance(double tolerance)
{
    if (!gNewGeography || !std::isfinite(tolerance) || tolerance < 0.0)
        return false;
    gNewGeography->tolerance = tolerance;
    gNewGeography->builder->SetAdjacencyTolerance(tolerance);
    return true;
}

int VORN_CreateNewObjectChain()
{
    if (!gNewGeography)
        return -1;
    const FMObjectChain *chain = gNewGeography->builder->CreateChain({}, {}, -1);
    gNewGeography->hasChains = true;
    return chain ? chain->id : -1;
}

bool VORN_AddPointToChain(unsigned int chain, const QPointF &point, const Interval &interval)
{
    return addToChain(chain, interval, [&point] { return new FMPoint(point); });
}

bool VORN_AddLineToChain(unsigned int chain, const QList<QList<QPointF>> &parts,
                         const Interval &interval)
{
    return addToChain(chain, interval, [&parts] {
        QList<QVector<QPointF>> vertices;
        for (const QList<QPointF> &part : parts)
            vertices.append(part.toVector());
        return new FMLine(vertices);
    });
}

bool VORN_AddPolygonToChain(unsigned int chain, const QList<QList<QPointF>> &rings,
                            const Interval &interval)
{
    return addToChain(chain, interval, [&rings] {
        QList<QPolygonF> polygons;
        for (const QList<QPointF> &ring : rings)
            polygons.append(QPolygonF(ring.toVector()));
        return new FMPolygon(polygons, 0);
    });
}

bool VORN_AddPolygonToChain(unsigned int chain, const QList<QPointF> &ring,
                            const Interval &interval)
{
    return VORN_AddPolygonToChain(chain, QList<QList<QPointF>>{ring}, interval);
}

bool VORN_AbortNewVectorGeography()
{
    const bool wasBuilding = gNewGeography != nullptr;
    gNewGeography.reset();
    return wasBuilding;
}

int VORN_FinishVectorGeography(const QString &name, const QString &history, TimeFormat format)
{
    if (!gNewGeography)
        return 0;
    std::unique_ptr<NewGeography> finished = std::move(gNewGeography);
    if (!finished->builder->IsValid())
        return -1;
    const FileRemover file(uniqueTempFile(scratchDirectory(), "TMP"));
    if (!finished->builder->Finish(file.path().toLocal8Bit().constData(), nullptr))
        return -1;
    finished.reset(); // its memory is not needed while the geography is loaded
    return controller()->AddNewVectorGeography(file.path(), name, history, format, -1, nullptr);
}
