// SPDX-License-Identifier: MIT
#include "core/import/geographyBuilder.h"
#include <QFileInfo>
#include "core/formats/sourceFile.h"
#include "core/project/failure.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

/// Discards the builder at the end of its scope unless the geography was finished.
class BuilderGuard {
public:
    BuilderGuard() = default;
    ~BuilderGuard()
    {
        if (!mFinished)
            VORN_AbortNewVectorGeography();
    }
    BuilderGuard(const BuilderGuard &) = delete;
    BuilderGuard &operator=(const BuilderGuard &) = delete;
    void finished() { mFinished = true; }

private:
    bool mFinished = false;
};

QList<QList<QPointF>> asLists(const ShapeParts &shape)
{
    QList<QList<QPointF>> parts;
    for (const auto &part : shape)
        parts.append(QList<QPointF>(part.begin(), part.end()));
    return parts;
}

bool addShape(unsigned int chain, ShapeKind kind, const ShapeParts &shape, const Interval &when)
{
    switch (kind) {
    case ShapeKind::Points:
        return VORN_AddPointToChain(chain, shape.first().first(), when);
    case ShapeKind::Lines:
        return VORN_AddLineToChain(chain, asLists(shape), when);
    default:
        return VORN_AddPolygonToChain(chain, asLists(shape), when);
    }
}

void addObject(const ImportPlan &plan, int object)
{
    const int chain = VORN_CreateNewObjectChain();
    if (chain < 0)
        fail(QStringLiteral("%1: no room for object %2")
                 .arg(plan.map.file, plan.objects.key(object)));
    for (const int row : plan.objects.rows(object)) {
        const ShapeParts shape = plan.map.shapes->parts(row);
        if (shape.isEmpty())
            continue;
        if (!addShape(static_cast<unsigned int>(chain), plan.map.shapeKind, shape,
                      plan.spanOf(row)))
            fail(QStringLiteral("%1: the shape of object %2 is no shape of a geography")
                     .arg(place(plan.map, row), plan.objects.key(object)));
    }
}

QString history(const ImportPlan &plan)
{
    const QString &source = plan.map.file;
    return QStringLiteral("Imported from %1, layer %2")
        .arg(isConnection(source) ? source : QFileInfo(source).fileName(), plan.map.layer);
}

} // namespace

int buildGeography(const ImportPlan &plan, const std::function<void(int)> &progress)
{
    if (!VORN_StartNewVectorGeography(plan.map.shapes->bounds(), plan.hull.startTime,
                                      plan.hull.endTime, -1))
        fail(QStringLiteral("a geography is being built already"));
    BuilderGuard guard;
    if (plan.options.snap > 0)
        VORN_SetAdjacencyTolerance(plan.options.snap);
    if (!plan.map.projection.isEmpty())
        VORN_SetNewGeographyProjection(plan.map.projection);
    for (int i = 0; i < plan.objects.size(); ++i) {
        addObject(plan, i);
        if (i % 64 == 0)
            progress(static_cast<int>(95LL * i / plan.objects.size()));
    }
    progress(95);
    const QString name = plan.options.name.isEmpty() ? plan.map.layer : plan.options.name;
    guard.finished();
    const int id = VORN_FinishVectorGeography(VORN_GetUniqueGeographyName(name), history(plan),
                                              plan.axis.format());
    if (id < 0)
        fail(QStringLiteral("%1: the geography could not be made").arg(plan.map.file));
    return id;
}

} // namespace meridor
