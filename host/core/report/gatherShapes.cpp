// SPDX-License-Identifier: MIT
#include "core/report/gatherShapes.h"
#include <QHash>
#include <algorithm>
#include <cmath>
#include "core/project/catalog.h"
#include "core/report/sharedArcs.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace meridor {
namespace {

constexpr double kPageUnits = 10000;
/// The default of `simplify` as a fraction of the longer side: about the resolution of the map.
constexpr double kFinest = 1.0 / 1500;

/// Converts map units to page units. Degrees are scaled as at the middle latitude.
class PageFrame {
public:
    explicit PageFrame(const Fennims &shapes)
    {
        const RectInT box = shapes.GetBoundingRect();
        const FMProjectionInfo projection = shapes.GetProjectionSettings();
        const bool degrees =
            projection.GetProjectionName().isEmpty() && !projection.GetGeographicCSName().isEmpty();
        constexpr double kRadian = 3.14159265358979323846 / 180;
        const double middle = qBound(-80.0, (box.yMin + box.yMax) / 2, 80.0);
        mStretch = degrees ? std::cos(middle * kRadian) : 1;
        mLeft = box.xMin;
        mTop = box.yMax;
        const double width = (box.xMax - box.xMin) * mStretch;
        const double height = box.yMax - box.yMin;
        mLonger = std::max(width, height);
        mScale = mLonger > 0 ? kPageUnits / mLonger : 1;
        mSize = QSize(static_cast<int>(std::lround(width * mScale)),
                      static_cast<int>(std::lround(height * mScale)));
    }
    QPoint place(double x, double y) const
    {
        return QPoint(static_cast<int>(std::lround((x - mLeft) * mStretch * mScale)),
                      static_cast<int>(std::lround((mTop - y) * mScale)));
    }
    QSize size() const { return mSize; }
    /// The area of the smallest bend that is kept, in squared page units.
    double bend(double simplify) const
    {
        const double side = (simplify < 0 ? kFinest * mLonger : simplify) * mScale;
        return side * side / 2;
    }

private:
    double mStretch, mLeft, mTop, mLonger, mScale;
    QSize mSize;
};

template <class Points> QVector<QPoint> onPage(const Points &points, const PageFrame &frame)
{
    QVector<QPoint> places;
    places.reserve(static_cast<int>(points.size()));
    for (const auto &point : points)
        places.append(frame.place(point.x(), point.y()));
    return places;
}

QVector<int> inSteps(const SharedArcs::Arc &arc)
{
    QVector<int> numbers;
    QPoint last;
    for (const QPoint &place : arc) {
        numbers << place.x() - last.x() << place.y() - last.y();
        last = place;
    }
    return numbers;
}

/// Collects the shapes; each record is read once, even if several steps show it.
class Shapes {
public:
    explicit Shapes(const MVectorData &geography)
        : mGeography(geography), mFennims(*geography.GetFennims()), mFrame(mFennims)
    {
        mResult.size = mFrame.size();
    }

    /// The number of the shape of an object at a time; -1 if it has none.
    int shapeAt(int object, qint64 time)
    {
        const FMObjectChain *chain =
            mFennims.GetChainById(mGeography.GetFennimId(static_cast<unsigned>(object)));
        const int record = chain ? chain->GetObservation(time).second : -1;
        if (record < 0)
            return -1;
        auto known = mByRecord.find(record);
        if (known == mByRecord.end())
            known = mByRecord.insert(record, read(record));
        return known.value();
    }

    ReportShapes finish(double simplify)
    {
        mArcs.cut(mFrame.bend(simplify));
        for (const SharedArcs::Arc &arc : mArcs.arcs()) {
            mResult.kept += static_cast<qint64>(arc.size());
            mResult.arcs.append(inSteps(arc));
        }
        for (const QVector<int> &paths : mPaths) {
            QVector<QVector<int>> parts;
            for (const int path : paths) {
                const std::vector<int> &arcs = mArcs.arcsOf(path);
                if (!arcs.empty())
                    parts.append(QVector<int>(arcs.begin(), arcs.end()));
            }
            mResult.shapes.append(parts);
        }
        return std::move(mResult);
    }
    ReportShapes &result() { return mResult; }

private:
    int read(int record)
    {
        const fennimark::HeldObject held(*mFennims.mTree, record);
        if (const auto *point = held.as<FMPoint>()) {
            mResult.places.append(mFrame.place(point->x, point->y));
            return mResult.places.size() - 1;
        }
        QVector<int> paths;
        if (const auto *polygon = held.as<FMPolygon>()) {
            for (const QPolygonF &ring : polygon->GetVertices())
                paths.append(mArcs.addRing(counted(ring)));
        } else if (const auto *line = held.as<FMLine>()) {
            for (const auto &part : line->GetVertices())
                paths.append(mArcs.addLine(counted(part)));
        }
        mPaths.append(paths);
        return mPaths.size() - 1;
    }
    template <class Points> QVector<QPoint> counted(const Points &points)
    {
        mResult.given += points.size();
        return onPage(points, mFrame);
    }

    const MVectorData &mGeography;
    const Fennims &mFennims;
    PageFrame mFrame;
    SharedArcs mArcs;
    QHash<int, int> mByRecord;
    QVector<QVector<int>> mPaths;
    ReportShapes mResult;
};

} // namespace

ReportShapes gatherShapes(int geography, const QVector<ReportStep> &steps, double simplify,
                          const std::function<void()> &stop)
{
    const auto &vector = dynamic_cast<const MVectorData &>(*geographyOf(geography));
    const int objects = VORN_GetGeographyProperties(geography).objectCount;
    Shapes shapes(vector);
    shapes.result().objects.resize(objects);
    const int different = vector.IsStatic() ? 1 : steps.size();
    for (int step = 0; step < different; ++step) {
        stop();
        const qint64 time = shapeTime(geography, steps[step].instant);
        for (int object = 0; object < objects; ++object) {
            QVector<ShapeChange> &changes = shapes.result().objects[object];
            const int shape = shapes.shapeAt(object, time);
            if (changes.isEmpty() || changes.last().shape != shape)
                changes.append({step, shape});
        }
    }
    return shapes.finish(simplify);
}

} // namespace meridor
