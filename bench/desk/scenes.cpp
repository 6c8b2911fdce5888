// SPDX-License-Identifier: MIT
#include "desk/scenes.h"
#include <QPainter>
#include <QPolygonF>
#include <random>
#include "datainterface/GeographyAPI.h"

namespace scenes {
namespace {

constexpr int kBends = 3; // within an edge; 4 edges of 4 vertices

/// The edges of a jittered lattice, each drawn once, so that both neighbours have the same vertices.
class Lattice {
public:
    Lattice(int columns, int rows) : mColumns(columns)
    {
        std::mt19937 random(11);
        std::uniform_real_distribution<double> jitter(-0.06, 0.06);
        for (int i = 0; i < (columns + 1) * (rows + 1); ++i) {
            const QPointF corner(i % (columns + 1), i / (columns + 1));
            for (int bend = 0; bend <= kBends; ++bend) {
                const double along = bend / (kBends + 1.0);
                const QPointF shift(jitter(random), jitter(random));
                mAcross.append(corner + QPointF(along, 0) + (bend ? shift : QPointF()));
                mDown.append(corner + QPointF(0, along) + (bend ? shift : QPointF()));
            }
        }
    }
    QList<QPointF> ring(int column, int row) const
    {
        QList<QPointF> ring;
        const int corner = row * (mColumns + 1) + column;
        const int right = corner + 1;
        const int lower = corner + mColumns + 1;
        for (int i = 0; i <= kBends; ++i)
            ring.append(mAcross[corner * (kBends + 1) + i]);
        for (int i = 0; i <= kBends; ++i)
            ring.append(mDown[right * (kBends + 1) + i]);
        ring.append(QPointF(column + 1, row + 1));
        for (int i = kBends; i > 0; --i)
            ring.append(mAcross[lower * (kBends + 1) + i]);
        for (int i = kBends + 1; i > 0; --i)
            ring.append(i > kBends ? QPointF(column, row + 1) : mDown[corner * (kBends + 1) + i]);
        return ring;
    }

private:
    int mColumns;
    QVector<QPointF> mAcross;
    QVector<QPointF> mDown;
};

} // namespace

int addDistricts(int columns, int rows)
{
    const Lattice lattice(columns, rows);
    VORN_StartNewVectorGeography(QRectF(0, 0, columns, rows), 0, 10, -1);
    for (int i = 0; i < columns * rows; ++i)
        VORN_AddPolygonToChain(unsigned(VORN_CreateNewObjectChain()),
                               lattice.ring(i % columns, i / columns), {0, 10, true, true});
    return VORN_FinishVectorGeography("districts", QString(), TF_Integer);
}

void drawPlainly(int geography, const meridor::ViewTransform &view, const QVector<int> &classes,
                 const meridor::ColorRule &rule, bool fine, const unsigned char *flags,
                 QImage &image)
{
    QVector<unsigned int> objects;
    VORN_RectQuery(geography, view.visible(), kTime, objects);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, fine);
    painter.setPen(fine ? QPen(QColor(110, 110, 110), 0.5) : QPen(Qt::NoPen));
    QList<QVector<QPointF>> rings;
    QPolygonF pixels;
    for (const unsigned int object : qAsConst(objects)) {
        if (flags && !flags[object])
            continue;
        const VORN_Object handle = VORN_GetObject(geography, object, kTime);
        VORN_GetPolygonVertices(handle, rings);
        VORN_ReturnObject(handle);
        painter.setBrush(QColor(flags ? rule.selected : rule.classes[classes[int(object)]]));
        for (const QVector<QPointF> &ring : qAsConst(rings)) {
            pixels.resize(ring.size());
            for (int i = 0; i < ring.size(); ++i)
                pixels[i] = view.toPixel(ring[i]);
            painter.drawPolygon(pixels);
        }
    }
}

} // namespace scenes
