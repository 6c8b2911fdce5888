// SPDX-License-Identifier: MIT
#include "core/render/mapPicture.h"
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include "core/project/cancel.h"
#include "core/render/mapFurniture.h"
#include "core/render/mapGeometry.h"
#include "core/render/pictureFile.h"

namespace meridor {
namespace {

constexpr double kThinning = 0.3;   ///< pixels; vertices closer than this are one
constexpr double kBorder = 0.9;     ///< width of the white border between areas
constexpr double kNoBorder = 0.25;  ///< borders thinner than this are not drawn
constexpr int kMostOutlined = 5000; ///< areas; an outline below more of them would cost too much
constexpr double kHatchStep = 7;

QRectF extent(const MapPicture &picture)
{
    QRectF box;
    for (const MapPanel &panel : picture.panels) {
        if (panel.layers.size() <= picture.base)
            continue;
        const MapLayer &layer = panel.layers[picture.base];
        box = box.united(layer.grid.bounds);
        for (const MapShape &shape : layer.shapes) {
            // QRectF::united ignores a box without area, such as that of a point.
            const QRectF own = boundsOf(shape.parts);
            box = box.isNull() ? own
                               : QRectF(QPointF(std::min(box.left(), own.left()),
                                                std::min(box.top(), own.top())),
                                        QPointF(std::max(box.right(), own.right()),
                                                std::max(box.bottom(), own.bottom())));
        }
    }
    return box;
}

/// Whether the coordinates are degrees.
bool isInDegrees(bool geographic, const QRectF &frame)
{
    return geographic && frame.top() >= -91 && frame.bottom() <= 91;
}

/// Where the panels of a picture stand.
class PanelGrid {
public:
    PanelGrid(const QRectF &area, int panels, const QSizeF &content, double captionHeight,
              double gap)
        : mArea(area), mCaption(captionHeight), mGap(gap)
    {
        double best = -1;
        for (int columns = 1; columns <= panels; ++columns) {
            const int rows = (panels + columns - 1) / columns;
            const QSizeF cell((area.width() - (columns - 1) * gap) / columns,
                              (area.height() - (rows - 1) * gap) / rows);
            const double scale = std::min(cell.width() / content.width(),
                                          (cell.height() - captionHeight) / content.height());
            if (scale > best * 1.001) {
                best = scale;
                mColumns = columns;
                mCell = cell;
            }
        }
    }
    /// The whole cell of a panel, with its caption.
    QRectF cell(int panel) const
    {
        return QRectF(mArea.left() + (panel % mColumns) * (mCell.width() + mGap),
                      mArea.top() + (panel / mColumns) * (mCell.height() + mGap), mCell.width(),
                      mCell.height());
    }
    QRectF map(int panel) const
    {
        const QRectF all = cell(panel);
        return QRectF(all.left(), all.top() + mCaption, std::max(1.0, all.width()),
                      std::max(1.0, all.height() - mCaption));
    }

private:
    QRectF mArea;
    QSizeF mCell;
    double mCaption;
    double mGap;
    int mColumns = 1;
};

/// The transformation from map coordinates to pixels: equal scales on both axes, centred, north up.
QTransform fit(const QRectF &frame, double squeeze, const QRectF &area)
{
    const double width = std::max(frame.width() * squeeze, 1e-12);
    const double height = std::max(frame.height(), 1e-12);
    const double scale = std::min(area.width() / width, area.height() / height);
    QTransform transform;
    transform.translate(area.center().x(), area.center().y());
    transform.scale(scale * squeeze, -scale);
    transform.translate(-frame.center().x(), -frame.center().y());
    return transform;
}

/// Draws one panel.
class PanelPainter {
public:
    PanelPainter(QPainter &painter, const MapPanel &panel, const Theme &theme, const QRectF &frame,
                 const QTransform &transform)
        : mPainter(painter),
          mPanel(panel),
          mTheme(theme),
          mFrame(transform.mapRect(frame)),
          mTransform(transform)
    {
    }
    MapDrawing draw()
    {
        for (const MapLayer &layer : mPanel.layers) {
            drawGrid(layer);
            drawAreas(layer);
            drawLines(layer);
            drawPlaces(layer);
        }
        drawLinks();
        return drawLabels();
    }

private:
    struct Drawn {
        QVector<QVector<QPointF>> rings; ///< pixels
        QColor fill;                     ///< invalid: no value
    };

    /// Invalid for a shape without a value, or in a layer without classes.
    static QColor fillOf(const MapShape &shape, const MapLayer &layer)
    {
        return shape.isMarked ? colors::selected : layer.colors.value(shape.classIndex);
    }

    bool isOutside(const QRectF &box) const
    {
        return box.right() < mFrame.left() || box.left() > mFrame.right()
               || box.bottom() < mFrame.top() || box.top() > mFrame.bottom();
    }
    /// Whether a box has to be clipped; half a pixel is left to rounding.
    bool exceeds(const QRectF &box) const
    {
        return !mFrame.adjusted(-0.5, -0.5, 0.5, 0.5).contains(box.topLeft())
               || !mFrame.adjusted(-0.5, -0.5, 0.5, 0.5).contains(box.bottomRight());
    }
    void pauseAt(int shape) const
    {
        if (shape % 64 == 0)
            stopIfCancelled();
    }

    QVector<QVector<QPointF>> ringsOf(const MapShape &shape) const
    {
        QVector<QVector<QPointF>> rings;
        for (const auto &part : shape.parts)
            rings.append(mapped(part, mTransform, kThinning));
        const QRectF box = boundsOf(rings);
        if (isOutside(box))
            return {};
        if (exceeds(box)) {
            for (auto &ring : rings)
                ring = clippedRing(ring, mFrame);
            rings.erase(std::remove_if(rings.begin(), rings.end(),
                                       [](const auto &ring) { return ring.size() < 3; }),
                        rings.end());
        }
        return rings;
    }
    static QPainterPath pathOf(const QVector<QVector<QPointF>> &rings)
    {
        QPainterPath path;
        path.setFillRule(Qt::OddEvenFill); // rings are not marked as outer rings or holes
        for (const auto &ring : rings) {
            path.addPolygon(QPolygonF(ring));
            path.closeSubpath();
        }
        return path;
    }

    void drawAreas(const MapLayer &layer)
    {
        QVector<Drawn> areas;
        double side = 0;
        for (int i = 0; i < layer.shapes.size(); ++i) {
            pauseAt(i);
            if (layer.shapes[i].kind != MapShape::Area)
                continue;
            const Drawn area{ringsOf(layer.shapes[i]), fillOf(layer.shapes[i], layer)};
            if (area.rings.isEmpty())
                continue;
            const QRectF box = boundsOf(area.rings);
            side += std::sqrt(box.width() * box.height());
            areas.append(area);
        }
        if (areas.isEmpty())
            return;
        // Borders become thinner with the areas, since they hide a part of their colours.
        const double border =
            mTheme.unit(kBorder) * std::min(1.0, side / areas.size() / mTheme.unit(18));
        if (layer.colors.isEmpty()) {
            for (const Drawn &area : areas)
                if (area.fill.isValid())
                    mPainter.fillPath(pathOf(area.rings), area.fill);
            strokeAreas(areas, QPen(colors::softInk, std::max(mTheme.unit(1.4), 2 * border)));
        } else {
            fillAreas(areas, border);
        }
    }
    void strokeAreas(const QVector<Drawn> &areas, QPen pen)
    {
        pen.setJoinStyle(Qt::RoundJoin);
        mPainter.setBrush(Qt::NoBrush);
        mPainter.setPen(pen);
        for (int i = 0; i < areas.size(); ++i) {
            pauseAt(i);
            mPainter.drawPath(pathOf(areas[i].rings));
        }
    }
    void fillAreas(const QVector<Drawn> &areas, double border)
    {
        // An outline below the fill separates light classes from the background.
        if (areas.size() <= kMostOutlined)
            strokeAreas(areas, QPen(colors::outline, mTheme.unit(2.4)));
        const bool hasBorder = border >= kNoBorder;
        QPen pen(colors::border, border);
        pen.setJoinStyle(Qt::RoundJoin);
        // Without borders the edges of neighbours would blend with the ground between them.
        mPainter.setRenderHint(QPainter::Antialiasing, hasBorder);
        for (int i = 0; i < areas.size(); ++i) {
            pauseAt(i);
            const QPainterPath path = pathOf(areas[i].rings);
            const bool hasValue = areas[i].fill.isValid();
            mPainter.setPen(hasBorder ? pen : QPen(Qt::NoPen));
            mPainter.setBrush(hasValue ? areas[i].fill : colors::missing);
            mPainter.drawPath(path);
            if (hasValue)
                continue;
            mPainter.setPen(QPen(colors::hatch, mTheme.unit(1.2)));
            mPainter.drawLines(hatchLines(areas[i].rings, mTheme.unit(kHatchStep)));
            mPainter.strokePath(path, QPen(colors::hatch, std::max(border, 0.5)));
        }
        mPainter.setRenderHint(QPainter::Antialiasing, true);
    }

    /// A casing below all lines separates light classes from the background.
    void drawLines(const MapLayer &layer)
    {
        if (!layer.colors.isEmpty())
            drawLines(layer, true);
        drawLines(layer, false);
    }
    void drawLines(const MapLayer &layer, bool casing)
    {
        mPainter.setBrush(Qt::NoBrush);
        for (int i = 0; i < layer.shapes.size(); ++i) {
            pauseAt(i);
            const MapShape &shape = layer.shapes[i];
            if (shape.kind != MapShape::Line)
                continue;
            const bool classed = !layer.colors.isEmpty();
            const QColor fill = fillOf(shape, layer);
            const bool hasValue = fill.isValid();
            if (casing && !hasValue)
                continue;
            mPainter.setPen(QPen(casing     ? colors::outline
                                 : hasValue ? fill
                                 : classed  ? colors::hatch
                                            : colors::softInk,
                                 mTheme.unit(casing                ? 5
                                             : classed || hasValue ? 3
                                                                   : 1.6),
                                 classed && !hasValue ? Qt::DashLine : Qt::SolidLine, Qt::FlatCap,
                                 Qt::RoundJoin));
            for (const auto &part : shape.parts) {
                const QVector<QPointF> line = mapped(part, mTransform, kThinning);
                const QRectF box = boundsOf({line});
                if (isOutside(box))
                    continue;
                if (!exceeds(box))
                    mPainter.drawPolyline(QPolygonF(line));
                else
                    for (const auto &piece : clippedLine(line, mFrame))
                        mPainter.drawPolyline(QPolygonF(piece));
            }
        }
    }

    void drawPlaces(const MapLayer &layer)
    {
        const auto count =
            std::count_if(layer.shapes.begin(), layer.shapes.end(),
                          [](const MapShape &shape) { return shape.kind == MapShape::Place; });
        // The radius decreases with the number of points, but a colour remains readable.
        const bool classed = !layer.colors.isEmpty();
        const double radius =
            classed ? mTheme.unit(qBound(3.6, 90 / std::sqrt(static_cast<double>(count) + 1), 11.0))
                    : mTheme.unit(2.6);
        for (int i = 0; i < layer.shapes.size(); ++i) {
            pauseAt(i);
            const MapShape &shape = layer.shapes[i];
            if (shape.kind != MapShape::Place)
                continue;
            const QColor own = fillOf(shape, layer);
            const bool hasValue = own.isValid();
            const QColor fill = hasValue ? own : classed ? QColor(Qt::white) : colors::softInk;
            mPainter.setBrush(fill);
            mPainter.setPen(QPen(hasValue ? fill.darker(170) : colors::softInk, mTheme.unit(1)));
            for (const auto &part : shape.parts)
                for (const QPointF &point : part)
                    if (const QPointF at = mTransform.map(point);
                        mFrame.adjusted(-1, -1, 1, 1).contains(at))
                        mPainter.drawEllipse(at, radius, radius);
        }
    }

    /// Draws cells as one image of the device's pixels, or of finer ones for a device without: other
    /// readers would smooth a small image.
    void drawGrid(const MapLayer &layer)
    {
        const MapGrid &grid = layer.grid;
        if (grid.rows < 1 || grid.columns < 1)
            return;
        const QRectF whole = mTransform.mapRect(grid.bounds);
        const QRectF shown = whole.intersected(mFrame);
        if (shown.isEmpty())
            return;
        drawHatch(mPainter, shown, mTheme);
        const bool hasPixels = mPainter.device()->devType() == QInternal::Image;
        const double fine = hasPixels ? 1 : 2;
        const QRectF box = hasPixels ? QRectF(shown.toAlignedRect()) : shown;
        QImage image((box.size() * fine).toSize().expandedTo(QSize(1, 1)),
                     QImage::Format_ARGB32_Premultiplied);
        QVector<QRgb> fills;
        for (const QColor &color : layer.colors)
            fills.append(color.rgb());
        for (int y = 0; y < image.height(); ++y) {
            pauseAt(y);
            auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
            const double down =
                (box.top() + (y + 0.5) / image.height() * box.height() - whole.top())
                / whole.height();
            const int row = static_cast<int>(std::floor(down * grid.rows));
            for (int x = 0; x < image.width(); ++x) {
                const double across =
                    (box.left() + (x + 0.5) / image.width() * box.width() - whole.left())
                    / whole.width();
                const int column = static_cast<int>(std::floor(across * grid.columns));
                const bool isInside =
                    row >= 0 && row < grid.rows && column >= 0 && column < grid.columns;
                const int index =
                    isInside ? grid.classes[row * grid.columns + column] : MapGrid::kMissing;
                line[x] = index == MapGrid::kMissing  ? 0
                          : index == MapGrid::kMarked ? colors::selected.rgb()
                                                      : fills[index];
            }
        }
        mPainter.drawImage(box, image);
    }

    void drawLinks()
    {
        const double width = mPanel.links.size() > 3000 ? 0.8 : 1.4;
        QVector<QLineF> lines;
        for (const QLineF &link : mPanel.links) {
            const QVector<QPointF> ends{mTransform.map(link.p1()), mTransform.map(link.p2())};
            for (const auto &piece : clippedLine(ends, mFrame))
                lines.append(QLineF(piece.first(), piece.last()));
        }
        // A light casing separates the links from dark classes.
        QColor casing(Qt::white);
        casing.setAlphaF(0.7);
        for (const QPen &pen :
             {QPen(casing, mTheme.unit(3 * width)), QPen(colors::ink, mTheme.unit(width))}) {
            mPainter.setPen(pen);
            for (int i = 0; i < lines.size(); ++i) {
                pauseAt(i);
                mPainter.drawLine(lines[i]);
            }
        }
        mPainter.setBrush(Qt::white);
        mPainter.setPen(QPen(colors::ink, mTheme.unit(2)));
        for (const QPointF &island : mPanel.islands)
            if (const QPointF at = mTransform.map(island); mFrame.contains(at))
                mPainter.drawEllipse(at, mTheme.unit(6), mTheme.unit(6));
    }

    MapDrawing drawLabels()
    {
        struct Candidate {
            QString text;
            QRectF box;
            double size;
        };
        const QFont font = mTheme.font(16);
        const QFontMetricsF metrics(font);
        QVector<Candidate> candidates;
        MapDrawing result;
        for (int i = 0; i < mPanel.labels.size(); ++i) {
            pauseAt(i);
            const MapLabel &label = mPanel.labels[i];
            QVector<QVector<QPointF>> parts;
            for (const auto &part : label.parts)
                parts.append(mapped(part, mTransform, 1));
            const QRectF extent = boundsOf(parts);
            const QSizeF size(metrics.horizontalAdvance(label.text), metrics.height());
            double width = 0;
            QPointF at = label.isArea
                             ? labelPlace(parts, width)
                             : extent.center() + QPointF(mTheme.unit(14) + size.width() / 2, 0);
            // A text may reach beyond its object, but must remain recognizable as its own.
            const bool fits = !label.isArea || size.width() <= 1.7 * width;
            const QRectF box(at - QPointF(size.width() / 2, size.height() / 2), size);
            if (fits && mFrame.contains(box))
                candidates.append({label.text, box, extent.width() * extent.height()});
            else
                ++result.labelsOmitted;
        }
        std::stable_sort(candidates.begin(), candidates.end(),
                         [](const Candidate &a, const Candidate &b) { return a.size > b.size; });
        QVector<QRectF> taken;
        for (const Candidate &candidate : candidates) {
            const QRectF room = candidate.box.adjusted(-mTheme.unit(2), 0, mTheme.unit(2), 0);
            if (std::any_of(taken.begin(), taken.end(),
                            [&](const QRectF &other) { return other.intersects(room); })) {
                ++result.labelsOmitted;
                continue;
            }
            taken.append(room);
            ++result.labelsDrawn;
            drawHaloText(candidate.text, font,
                         candidate.box.topLeft() + QPointF(0, metrics.ascent()));
        }
        return result;
    }
    void drawHaloText(const QString &text, const QFont &font, const QPointF &baseline)
    {
        QPainterPath path;
        path.addText(baseline, font, text);
        QColor halo(Qt::white);
        halo.setAlphaF(0.92);
        mPainter.strokePath(path,
                            QPen(halo, mTheme.unit(5), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        mPainter.setFont(font);
        mPainter.setPen(colors::ink);
        mPainter.drawText(baseline, text);
    }

    QPainter &mPainter;
    const MapPanel &mPanel;
    const Theme &mTheme;
    QRectF mFrame; ///< pixels
    QTransform mTransform;
};

/// @return the height of the caption of a panel; 0 if no panel has one.
double captionHeight(const MapPicture &picture, const Theme &theme)
{
    const bool any = std::any_of(picture.panels.begin(), picture.panels.end(),
                                 [](const MapPanel &panel) { return !panel.caption.isEmpty(); });
    return any ? QFontMetricsF(theme.font(24, QFont::Bold)).height() + theme.unit(6) : 0;
}

void drawCaption(QPainter &painter, const Theme &theme, const MapPanel &panel, const QRectF &cell)
{
    const QFont font = theme.font(24, QFont::Bold);
    const QFontMetricsF metrics(font);
    const double width =
        std::min(cell.width(), metrics.horizontalAdvance(panel.caption) + theme.unit(14));
    drawText(painter, font, colors::ink, cell.topLeft(), width, panel.caption);
    const QFontMetricsF small(theme.smallFont());
    drawText(painter, theme.smallFont(), colors::softInk,
             QPointF(cell.left() + width, cell.top() + metrics.ascent() - small.ascent()),
             cell.width() - width, panel.note);
}

} // namespace

double squeezeOf(bool geographic, const QRectF &frame)
{
    constexpr double kRadian = 3.14159265358979323846 / 180;
    return isInDegrees(geographic, frame) ? std::max(0.1, std::cos(frame.center().y() * kRadian))
                                          : 1.0;
}

MapDrawing drawMap(QPainter &painter, const MapPicture &picture)
{
    const Theme theme(picture.size);
    QRectF area = theme.drawTexts(painter, picture.texts);
    const Legend legend(picture.legend, theme, theme.legendSpace(area.size()));
    if (!legend.isEmpty()) {
        legend.draw(painter, QPointF(area.right() - legend.width(), area.top()));
        area.setRight(area.right() - legend.width() - theme.unit(36));
    }
    const QRectF frame = picture.frame.isEmpty() ? extent(picture) : picture.frame;
    const double squeeze = squeezeOf(picture.geographic, frame);
    const bool isSingle = picture.panels.size() == 1;
    const bool inDegrees = isInDegrees(picture.geographic, frame);
    if (inDegrees && isSingle)
        area.adjust(graticuleRoom(theme).width(), 0, 0, -graticuleRoom(theme).height());
    if (picture.metresPerUnit > 0)
        area.setBottom(area.bottom() - scaleBarHeight(theme));

    const PanelGrid grid(
        area, std::max(1, static_cast<int>(picture.panels.size())),
        QSizeF(std::max(frame.width() * squeeze, 1e-12), std::max(frame.height(), 1e-12)),
        captionHeight(picture, theme), theme.unit(26));
    MapDrawing result;
    for (int i = 0; i < picture.panels.size(); ++i) {
        stopIfCancelled();
        const QTransform transform = fit(frame, squeeze, grid.map(i));
        const QRectF pixels = transform.mapRect(frame);
        drawCaption(painter, theme, picture.panels[i], grid.cell(i));
        if (picture.isFramed)
            painter.fillRect(pixels, colors::ground);
        if (inDegrees)
            drawGraticule(painter, theme, frame, transform, isSingle);
        PanelPainter panel(painter, picture.panels[i], theme, frame, transform);
        const MapDrawing drawn = panel.draw();
        result.labelsDrawn += drawn.labelsDrawn;
        result.labelsOmitted += drawn.labelsOmitted;
        if (picture.isFramed) {
            painter.setPen(QPen(colors::outline, theme.unit(1)));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(pixels);
        }
    }
    if (picture.metresPerUnit > 0 && !picture.panels.isEmpty())
        drawScaleBar(painter, theme, area.bottomLeft(), area.width() / 4,
                     picture.metresPerUnit / std::abs(fit(frame, squeeze, grid.map(0)).m22()));
    return result;
}

QImage draw(const MapPicture &picture)
{
    QImage image(picture.size.pixels, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    drawMap(painter, picture);
    return image;
}

MapDrawing savePicture(const MapPicture &picture, const QString &path)
{
    MapDrawing result;
    savePicture(path, picture.size.pixels, picture.texts.title,
                [&](QPainter &painter) { result = drawMap(painter, picture); });
    return result;
}

} // namespace meridor
