// SPDX-License-Identifier: MIT
// A scatter plot of 1,000,000 points against Qwt's curves of dots with their best attribute.
#include <QPainter>
#include <QPen>
#include <cmath>
#include <qwt_plot_curve.h>
#include <qwt_scale_map.h>
#include <random>
#include "datainterface/GeographyAPI.h"
#include "desk/draw/colorPass.h"
#include "desk/draw/discs.h"
#include "desk/draw/flatGeometry.h"
#include "desk/draw/pickBuffer.h"
#include "desk/scenes.h"
#include "ratios.h"

namespace scenes {
namespace {

using namespace meridor;

constexpr int kCount = 1000000;
constexpr int kRounds = 7;

std::vector<QPointF> cloud()
{
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    std::vector<QPointF> places(kCount);
    for (QPointF &place : places) {
        const double x = normal(random);
        place = QPointF(x, 0.6 * x + 0.8 * normal(random));
    }
    return places;
}

/// A curve of dots on a window of its own axes.
class Dots {
public:
    Dots(const QVector<QPointF> &points, int size, const QColor &color, const QRectF &axes)
    {
        curve.setStyle(QwtPlotCurve::Dots);
        QPen pen(color, size);
        pen.setCapStyle(Qt::RoundCap);
        curve.setPen(pen);
        curve.setSamples(points);
        x.setPaintInterval(0, kWindow.width());
        x.setScaleInterval(axes.left(), axes.right());
        y.setPaintInterval(kWindow.height(), 0);
        y.setScaleInterval(axes.top(), axes.bottom());
    }
    void draw(QImage &image) const
    {
        QPainter painter(&image);
        curve.draw(&painter, x, y, QRectF(QPointF(), QSizeF(kWindow)));
    }

    QwtPlotCurve curve;
    QwtScaleMap x;
    QwtScaleMap y;
};

const std::vector<QwtPlotCurve::PaintAttributes> kAttributes{{},
                                                             QwtPlotCurve::FilterPoints,
                                                             QwtPlotCurve::ImageBuffer,
                                                             QwtPlotCurve::FilterPoints
                                                                 | QwtPlotCurve::ImageBuffer};

void setAttributes(QwtPlotCurve &curve, QwtPlotCurve::PaintAttributes wanted)
{
    for (const auto one :
         {QwtPlotCurve::FilterPoints, QwtPlotCurve::ImageBuffer, QwtPlotCurve::ClipPolygons})
        curve.setPaintAttribute(one, wanted.testFlag(one));
}

} // namespace

void scatterRows()
{
    ratios::head("scatter plots and places");
    const std::vector<QPointF> places = cloud();
    FlatGeometry geometry;
    geometry.setPlaces(places);
    const ViewTransform view = ViewTransform::fitAxes(geometry.bounds(), kWindow);
    constexpr int kSize = 5;
    const std::vector<QRgb> gray{qRgb(188, 188, 188)};
    const std::vector<QRgb> orange{qRgb(255, 149, 0)};
    QImage ours = canvas();
    QImage theirs = canvas();
    Dots dots(QVector<QPointF>(places.data(), places.data() + places.size()), kSize, Qt::gray,
              geometry.bounds());
    double least = INFINITY;
    double peer = INFINITY;
    for (const auto attributes : kAttributes) {
        setAttributes(dots.curve, attributes);
        const auto times = ratios::bestInTurns(
            kRounds, 1,
            [&] {
                ours.fill(Qt::white);
                paintDiscs(places, view, kSize, false, gray, ours);
            },
            [&] {
                theirs.fill(Qt::white);
                dots.draw(theirs);
            });
        least = std::min(least, times.first);
        peer = std::min(peer, times.second);
    }
    ratios::row("discs of 1,000,000 points", least / 1e6, "QwtPlotCurve, best attributes",
                peer / 1e6, 0.4, "ms");

    QImage marked = canvas();
    // The selection of a brush: a curve for each state is the usual way.
    std::vector<unsigned char> flags(kCount);
    for (int i = 0; i < kCount; ++i)
        flags[std::size_t(i)] = places[std::size_t(i)].x() > 0.5 ? 1 : 0;
    least = peer = INFINITY;
    for (const auto attributes : kAttributes) {
        const auto times = ratios::bestInTurns(
            kRounds, 1,
            [&] {
                std::vector<QPointF> selected;
                for (std::size_t i = 0; i < places.size(); ++i)
                    if (flags[i])
                        selected.push_back(places[i]);
                std::copy_n(ours.constBits(), ours.sizeInBytes(), marked.bits());
                paintDiscs(selected, view, kSize, false, orange, marked);
            },
            [&] {
                QVector<QPointF> parts[2];
                for (std::size_t i = 0; i < places.size(); ++i)
                    parts[flags[i]].append(places[i]);
                theirs.fill(Qt::white);
                for (int state = 0; state < 2; ++state) {
                    Dots curve(parts[state], kSize, state ? Qt::red : Qt::gray, geometry.bounds());
                    setAttributes(curve.curve, attributes);
                    curve.draw(theirs);
                }
            });
        least = std::min(least, times.first);
        peer = std::min(peer, times.second);
    }
    ratios::row("brushing 1,000,000 points", least / 1e6, "two curves, best attributes", peer / 1e6,
                0.25, "ms");

    VORN_StartNewVectorGeography(QRectF(-9, -9, 18, 18), 0, 10, -1);
    for (const QPointF &place : places)
        VORN_AddPointToChain(unsigned(VORN_CreateNewObjectChain()), place, {0, 10, true, true});
    const int id = VORN_FinishVectorGeography("points", QString(), TF_Integer);
    const auto times = ratios::bestInTurns(
        5, 1,
        [&] {
            FMShapes all;
            VORN_GetAllShapes(id, kTime, all);
            benchmark::DoNotOptimize(all.vertices.data());
        },
        [&] {
            std::vector<QPointF> all(places.size());
            for (int i = 0; i < kCount; ++i)
                VORN_GetPointVertex(id, unsigned(i), kTime, all[std::size_t(i)]);
            benchmark::DoNotOptimize(all.data());
        });
    ratios::row("1,000,000 places as arrays", times.first / 1e6, "VORN_GetPointVertex",
                times.second / 1e6, 0.18, "ms");
    VORN_RemoveGeography(id);
}

} // namespace scenes
