// SPDX-License-Identifier: MIT
// A map of 100,000 polygons beside a plain loop that draws the same polygons with the same painter:
// antialiased, filled and with a border. The map also has a legend and a scale bar.
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPolygonF>
#include <cmath>
#include <random>
#include "core/render/mapPicture.h"
#include "ratios.h"

namespace {

constexpr int kSide = 316; ///< squared: about 100,000
constexpr int kVertices = 40;

/// Cells of a jittered lattice with `kVertices` vertices each, as boundaries of districts are.
meridor::MapPicture districts()
{
    std::mt19937 generator(11);
    std::uniform_real_distribution<double> jitter(-0.06, 0.06);
    meridor::MapPicture picture;
    picture.metresPerUnit = 1000;
    picture.legend.append({"class", {{Qt::yellow, "low", 1}, {Qt::blue, "high", 1}}});
    meridor::MapLayer layer;
    layer.colors = {Qt::yellow, Qt::blue};
    for (int i = 0; i < kSide * kSide; ++i) {
        QVector<QPointF> ring;
        for (int k = 0; k < kVertices; ++k) {
            const double side = 4.0 * k / kVertices;
            const double along = side - std::floor(side);
            const double x = side < 1 ? along : side < 2 ? 1 : side < 3 ? 1 - along : 0;
            const double y = side < 1 ? 0 : side < 2 ? along : side < 3 ? 1 : 1 - along;
            ring.append({i % kSide + x + jitter(generator), i / kSide + y + jitter(generator)});
        }
        meridor::MapShape shape;
        shape.parts.append(ring);
        shape.classIndex = i % 2;
        layer.shapes.append(shape);
    }
    meridor::MapPanel panel;
    panel.layers.append(layer);
    picture.panels.append(panel);
    return picture;
}

void plainLoop(const meridor::MapPicture &picture)
{
    const meridor::MapLayer &layer = picture.panels.first().layers.first();
    QImage image(picture.size.pixels, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 0.5));
    const double scale = 880.0 / kSide;
    for (const meridor::MapShape &shape : layer.shapes) {
        QPolygonF polygon;
        for (const QPointF &point : shape.parts.first())
            polygon.append({60 + scale * point.x(), 940 - scale * point.y()});
        painter.setBrush(layer.colors[shape.classIndex]);
        painter.drawPolygon(polygon);
    }
    painter.end();
    benchmark::DoNotOptimize(image.bits());
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int none = 1;
    const QApplication application(none, argv);
    const meridor::MapPicture picture = districts();
    return ratios::run(
        argc, argv,
        {{"map of 100,000 polygons of 40 vertices", "plain QPainter loop", 1.0,
          ratios::repeat([&] { benchmark::DoNotOptimize(meridor::draw(picture).bits()); }),
          ratios::repeat([&] { plainLoop(picture); })}});
}
