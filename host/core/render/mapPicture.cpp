// SPDX-License-Identifier: MIT
#include "core/render/mapPicture.h"
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace meridor {

const QColor kMissingColor(0xc9, 0xcc, 0xcf);

namespace {

const QColor kInk(0x1f, 0x2a, 0x33);
const QColor kSoftInk(0x5f, 0x6c, 0x76);
const QColor kBorder(0xff, 0xff, 0xff);
const QColor kOutline(0x8a, 0x96, 0x9e);
const QColor kGround(0xf4, 0xf6, 0xf7);

/// Scales lengths with the picture; the scale is 1 for 1600 by 1000 pixels.
class Layout {
public:
    explicit Layout(const QSize &size)
        : mUnit(std::min(size.width() / 1600.0, size.height() / 1000.0)), mSize(size)
    {
    }
    double unit(double length) const { return length * mUnit; }
    QFont font(double points, QFont::Weight weight = QFont::Normal) const
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(std::max(6, static_cast<int>(std::lround(unit(points)))));
        font.setWeight(weight);
        font.setHintingPreference(QFont::PreferNoHinting);
        return font;
    }
    double margin() const { return unit(48); }
    double legendWidth() const { return unit(330); }
    QRectF mapArea() const
    {
        const double top = unit(150);
        return QRectF(margin(), top, mSize.width() - 3 * margin() - legendWidth(),
                      mSize.height() - top - unit(76));
    }
    QPointF legendTopLeft() const
    {
        return QPointF(mSize.width() - margin() - legendWidth(), unit(170));
    }
    QSize size() const { return mSize; }

private:
    double mUnit;
    QSize mSize;
};

QRectF extent(const QVector<MapShape> &shapes)
{
    QRectF box;
    bool any = false;
    for (const MapShape &shape : shapes) {
        for (const auto &part : shape.parts) {
            for (const QPointF &point : part) {
                if (!any)
                    box = QRectF(point, QSizeF(0, 0));
                any = true;
                box.setLeft(std::min(box.left(), point.x()));
                box.setRight(std::max(box.right(), point.x()));
                box.setTop(std::min(box.top(), point.y()));
                box.setBottom(std::max(box.bottom(), point.y()));
            }
        }
    }
    return box;
}

/// The transformation from map coordinates to pixels: equal scales on both axes, centred, north up.
QTransform fit(const MapPicture &picture, const QRectF &area)
{
    constexpr double kRadian = 3.14159265358979323846 / 180;
    const QRectF box = picture.frame.isEmpty() ? extent(picture.shapes) : picture.frame;
    const double squeeze =
        picture.geographic ? std::max(0.1, std::cos(box.center().y() * kRadian)) : 1.0;
    const double width = std::max(box.width() * squeeze, 1e-12);
    const double height = std::max(box.height(), 1e-12);
    const double scale = std::min(area.width() / width, area.height() / height);
    QTransform transform;
    transform.translate(area.center().x(), area.center().y());
    transform.scale(scale * squeeze, -scale);
    transform.translate(-box.center().x(), -box.center().y());
    return transform;
}

QPainterPath areaPath(const MapShape &shape, const QTransform &transform)
{
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill); // rings are not marked as outer rings or holes
    for (const auto &part : shape.parts) {
        path.addPolygon(transform.map(QPolygonF(part)));
        path.closeSubpath();
    }
    return path;
}

QColor colorOf(const MapPicture &picture, const MapShape &shape)
{
    return shape.classIndex < 0 ? kMissingColor : picture.legend[shape.classIndex].color;
}

void drawAreas(QPainter &painter, const MapPicture &picture, const QTransform &transform,
               const Layout &layout)
{
    QVector<QPainterPath> paths;
    for (const MapShape &shape : picture.shapes)
        paths.append(shape.kind == MapShape::Area ? areaPath(shape, transform) : QPainterPath());
    // An outline below the fill separates light classes from the background.
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kOutline, layout.unit(2.4), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const QPainterPath &path : paths)
        painter.drawPath(path);
    painter.setPen(QPen(kBorder, layout.unit(0.9), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (int i = 0; i < paths.size(); ++i) {
        painter.setBrush(colorOf(picture, picture.shapes[i]));
        painter.drawPath(paths[i]);
    }
}

void drawLines(QPainter &painter, const MapPicture &picture, const QTransform &transform,
               const Layout &layout)
{
    painter.setBrush(Qt::NoBrush);
    for (const MapShape &shape : picture.shapes) {
        if (shape.kind != MapShape::Line)
            continue;
        painter.setPen(QPen(colorOf(picture, shape), layout.unit(3), Qt::SolidLine, Qt::RoundCap,
                            Qt::RoundJoin));
        for (const auto &part : shape.parts)
            painter.drawPolyline(transform.map(QPolygonF(part)));
    }
}

void drawPlaces(QPainter &painter, const MapPicture &picture, const QTransform &transform,
                const Layout &layout)
{
    const auto count =
        std::count_if(picture.shapes.begin(), picture.shapes.end(),
                      [](const MapShape &shape) { return shape.kind == MapShape::Place; });
    // The radius of points decreases with their number.
    const double radius =
        layout.unit(qBound(2.0, 40 / std::sqrt(static_cast<double>(count) + 1), 9.0));
    painter.setPen(QPen(kInk, layout.unit(0.8)));
    for (const MapShape &shape : picture.shapes) {
        if (shape.kind != MapShape::Place)
            continue;
        painter.setBrush(colorOf(picture, shape));
        for (const auto &part : shape.parts)
            for (const QPointF &point : part)
                painter.drawEllipse(transform.map(point), radius, radius);
    }
}

void drawHeading(QPainter &painter, const MapPicture &picture, const Layout &layout)
{
    const double width = layout.size().width() - 2 * layout.margin();
    const double below = drawText(painter, layout.font(42, QFont::Bold), kInk,
                                  QPointF(layout.margin(), layout.unit(36)), width, picture.title);
    drawText(painter, layout.font(24), kSoftInk, QPointF(layout.margin(), below + layout.unit(4)),
             width, picture.subtitle);
}

void drawLegend(QPainter &painter, const MapPicture &picture, const Layout &layout)
{
    const QPointF corner = layout.legendTopLeft();
    double y = drawText(painter, layout.font(22, QFont::DemiBold), kInk, corner,
                        layout.legendWidth(), picture.legendTitle)
               + layout.unit(14);
    const double box = layout.unit(30);
    const QFont font = layout.font(20);
    const double textHeight = QFontMetricsF(font).height();
    const auto entry = [&](const QColor &color, const QString &text, qint64 count) {
        painter.setPen(QPen(kOutline, layout.unit(1)));
        painter.setBrush(color);
        painter.drawRect(QRectF(corner.x(), y, layout.unit(44), box));
        const double textY = y + (box - textHeight) / 2;
        const double left = corner.x() + layout.unit(58);
        const double countWidth = layout.unit(56);
        const double width = layout.legendWidth() - layout.unit(58) - countWidth;
        drawText(painter, font, kInk, QPointF(left, textY), width, text);
        drawText(painter, font, kSoftInk, QPointF(left + width, textY), countWidth,
                 QString::number(count), Qt::AlignRight);
        y += box + layout.unit(10);
    };
    // The largest class is on top.
    for (int i = picture.legend.size() - 1; i >= 0; --i)
        entry(picture.legend[i].color, picture.legend[i].text, picture.legend[i].count);
    if (picture.missingCount > 0) {
        y += layout.unit(8);
        entry(kMissingColor, QStringLiteral("no value"), picture.missingCount);
    }
}

} // namespace

QImage draw(const MapPicture &picture)
{
    const Layout layout(picture.size);
    QImage image(picture.size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    const QTransform transform = fit(picture, layout.mapArea());
    if (!picture.frame.isEmpty())
        painter.fillRect(transform.mapRect(picture.frame), kGround);
    drawAreas(painter, picture, transform, layout);
    drawLines(painter, picture, transform, layout);
    drawPlaces(painter, picture, transform, layout);
    drawHeading(painter, picture, layout);
    drawLegend(painter, picture, layout);
    drawText(painter, layout.font(16), kSoftInk,
             QPointF(layout.margin(), picture.size.height() - layout.unit(44)),
             picture.size.width() - 2 * layout.margin(), picture.footnote);
    return image;
}

} // namespace meridor
