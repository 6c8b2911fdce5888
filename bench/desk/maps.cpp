// SPDX-License-Identifier: MIT
// A map of 100,000 districts against the plain loop over the same objects.
#include <QPainter>
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MAttributes.h"
#include "desk/draw/colorPass.h"
#include "desk/draw/flatGeometry.h"
#include "desk/draw/pickBuffer.h"
#include "desk/scenes.h"
#include "ratios.h"

namespace scenes {
namespace {

using namespace meridor;

constexpr int kRounds = 9;

class Map {
public:
    Map(int columns, int rows) : geography(addDistricts(columns, rows)), flags(columns * rows)
    {
        const int count = columns * rows;
        dataset = VORN_NewVectorDataset(geography, "values", TimeSlice, DecimalType, 1, QString());
        QVector<double> values;
        for (int i = 0; i < count; ++i)
            values.append(i * 7919 % 7000);
        VORN_AddDataValues(dataset, 0, {0, 10, true, true}, values, {}, true, true);
        VORN_GetClassNumbers(dataset, 0, kTime, {0, 1000, 2000, 3000, 4000, 5000, 6000, 7000},
                             classes);
        flags.AddAttribute();
        flags.AddAttribute();
        for (int i = 0; i < count; i += 2)
            flags.SetAttribute(1, unsigned(i), true);
        geometry.load(geography, kTime);
        view = ViewTransform::fit(geometry.bounds(), kWindow);
    }

    void draw(bool fine)
    {
        if (fine)
            buffer.draw(geometry, view.doubled(), PickStyle().doubled());
        else
            buffer.draw(geometry, view, PickStyle());
    }
    void color(bool fine, const unsigned char *selected, QImage &image)
    {
        table.build(classes.size(), sevenClasses(), classes.constData(), nullptr, selected);
        PassStyle style;
        style.outlines = fine;
        colorPass(buffer, table, style, image);
    }

    int geography;
    int dataset = -1;
    QVector<int> classes;
    MAttributes flags;
    FlatGeometry geometry;
    ViewTransform view;
    PickBuffer buffer;
    ColorTable table;
};

void firstPictures(Map &map)
{
    for (const bool fine : {false, true}) {
        QImage ours = canvas();
        QImage theirs = canvas();
        const auto times = ratios::bestInTurns(
            kRounds, 1,
            [&] {
                FlatGeometry geometry;
                geometry.load(map.geography, kTime);
                map.geometry = std::move(geometry);
                map.draw(fine);
                map.color(fine, nullptr, ours);
            },
            [&] {
                drawPlainly(map.geography, map.view, map.classes, sevenClasses(), fine, nullptr,
                            theirs);
            });
        ratios::row(fine ? "first picture with outlines, 100,000 polygons"
                         : "first picture, 100,000 polygons",
                    times.first / 1e6, fine ? "antialiased loop with pen" : "plain loop",
                    times.second / 1e6, fine ? 0.30 : 0.45, "ms");
    }
}

void sharpPictures(Map &map)
{
    for (const bool fine : {false, true}) {
        QImage ours = canvas();
        QImage theirs = canvas();
        const auto times = ratios::bestInTurns(
            kRounds, 1,
            [&] {
                map.draw(fine);
                map.color(fine, nullptr, ours);
            },
            [&] {
                drawPlainly(map.geography, map.view, map.classes, sevenClasses(), fine, nullptr,
                            theirs);
            });
        ratios::row(fine ? "sharp after a zoom, with outlines" : "sharp after a zoom",
                    times.first / 1e6, fine ? "antialiased loop with pen" : "plain loop",
                    times.second / 1e6, 0.20, "ms");
    }
}

// The colours stay, so neither side makes a table.
void pans(Map &map)
{
    QImage image = canvas();
    map.draw(false);
    map.color(false, nullptr, image);
    int direction = 64;
    const auto times = ratios::bestInTurns(
        5 * kRounds, 1,
        [&] {
            map.view.pan(direction, 0);
            direction = -direction;
            map.buffer.follow(map.geometry, map.view, PickStyle());
            colorPass(map.buffer, map.table, PassStyle(), image);
        },
        [&] {
            map.draw(false);
            colorPass(map.buffer, map.table, PassStyle(), image);
        });
    ratios::row("pan by 64 pixels", times.first / 1e6, "sharp", times.second / 1e6, 0.12, "ms");
}

void selections(Map &map)
{
    const unsigned char *selected = map.flags.GetAttributeVector(1);
    for (const bool fine : {false, true}) {
        map.draw(fine);
        QImage ours = canvas();
        QImage cached = canvas();
        drawPlainly(map.geography, map.view, map.classes, sevenClasses(), fine, nullptr, cached);
        const auto times = ratios::bestInTurns(
            kRounds, 1, [&] { map.color(fine, selected, ours); },
            [&] {
                QImage theirs = cached.copy();
                drawPlainly(map.geography, map.view, map.classes, sevenClasses(), fine, selected,
                            theirs);
                benchmark::DoNotOptimize(theirs.bits());
            });
        ratios::row(fine ? "50,000 selected, with outlines" : "50,000 selected", times.first / 1e6,
                    "the selected over a cached image", times.second / 1e6, fine ? 0.15 : 0.06,
                    "ms");
    }
}

/// What the pictures are made from, against the functions for one object.
void shapes(Map &map)
{
    const auto times = ratios::bestInTurns(
        kRounds, 1,
        [&] {
            FMShapes all;
            VORN_GetAllShapes(map.geography, kTime, all);
            benchmark::DoNotOptimize(all.vertices.data());
        },
        [&] {
            std::vector<QPointF> vertices;
            QList<QVector<QPointF>> rings;
            for (int i = 0; i < map.classes.size(); ++i) {
                const VORN_Object handle = VORN_GetObject(map.geography, unsigned(i), kTime);
                VORN_GetPolygonVertices(handle, rings);
                VORN_ReturnObject(handle);
                for (const QVector<QPointF> &ring : qAsConst(rings))
                    vertices.insert(vertices.end(), ring.begin(), ring.end());
            }
            benchmark::DoNotOptimize(vertices.data());
        });
    ratios::row("all shapes as arrays, 100,000 polygons", times.first / 1e6, "handle by handle",
                times.second / 1e6, 0.5, "ms");
}

} // namespace

void mapRows()
{
    ratios::head("maps");
    Map map(400, 250);
    firstPictures(map);
    sharpPictures(map);
    pans(map);
    selections(map);
    shapes(map);
}

} // namespace scenes
