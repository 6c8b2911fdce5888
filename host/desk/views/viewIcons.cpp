// SPDX-License-Identifier: MIT
#include "desk/views/viewIcons.h"
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace meridor {
namespace {

/// In a square of 24 units.
QPainterPath pathOf(ViewIcon which)
{
    QPainterPath path;
    const auto line = [&path](std::initializer_list<QPointF> points) {
        path.moveTo(*points.begin());
        for (const QPointF &point : points)
            path.lineTo(point);
    };
    switch (which) {
    case ViewIcon::Select:
        path.addRect(3, 5, 13, 11);
        line({{13, 12}, {21, 16}, {17, 17}, {15.5, 21}, {13, 12}});
        break;
    case ViewIcon::Lasso:
        line({{4, 13}, {7, 5}, {16, 4}, {21, 10}, {15, 15}, {10, 13}, {4, 13}});
        line({{4, 13}, {6, 21}});
        break;
    case ViewIcon::Circle:
        path.addEllipse(4, 4, 16, 16);
        line({{12, 12}, {18, 7}});
        break;
    case ViewIcon::Move:
        line({{12, 3}, {12, 21}});
        line({{3, 12}, {21, 12}});
        line({{9, 6}, {12, 3}, {15, 6}});
        line({{9, 18}, {12, 21}, {15, 18}});
        line({{6, 9}, {3, 12}, {6, 15}});
        line({{18, 9}, {21, 12}, {18, 15}});
        break;
    case ViewIcon::Back:
        line({{20, 12}, {4, 12}});
        line({{10, 6}, {4, 12}, {10, 18}});
        break;
    case ViewIcon::Forward:
        line({{4, 12}, {20, 12}});
        line({{14, 6}, {20, 12}, {14, 18}});
        break;
    case ViewIcon::Clear:
        path.addRect(4, 4, 16, 16);
        line({{8, 8}, {16, 16}});
        line({{16, 8}, {8, 16}});
        break;
    case ViewIcon::Invert:
        path.addRect(4, 4, 16, 16);
        for (int x = 6; x <= 18; x += 3)
            line({{4.0, double(x)}, {double(x), 4.0}});
        break;
    case ViewIcon::Link:
        path.addRoundedRect(3, 9, 10, 6, 3, 3);
        path.addRoundedRect(11, 9, 10, 6, 3, 3);
        break;
    case ViewIcon::Export:
        line({{12, 3}, {12, 15}});
        line({{7, 10}, {12, 15}, {17, 10}});
        line({{4, 15}, {4, 20}, {20, 20}, {20, 15}});
        break;
    case ViewIcon::Fit:
        line({{4, 9}, {4, 4}, {9, 4}});
        line({{15, 4}, {20, 4}, {20, 9}});
        line({{20, 15}, {20, 20}, {15, 20}});
        line({{9, 20}, {4, 20}, {4, 15}});
        path.addRect(8.5, 8.5, 7, 7);
        break;
    case ViewIcon::Classes:
        path.addRect(4, 13, 4, 7);
        path.addRect(10, 8, 4, 12);
        path.addRect(16, 4, 4, 16);
        break;
    case ViewIcon::More:
        line({{5, 5}, {11, 12}, {5, 19}});
        line({{13, 5}, {19, 12}, {13, 19}});
        break;
    case ViewIcon::Focus:
        path.addEllipse(4, 4, 12, 12);
        line({{14.5, 14.5}, {21, 21}});
        line({{7, 10}, {13, 10}});
        line({{10, 7}, {10, 13}});
        break;
    }
    return path;
}

class LineIcon final : public QIconEngine {
public:
    explicit LineIcon(ViewIcon which) : mWhich(which) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette::ColorGroup group =
            mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / 24.0, rect.height() / 24.0);
        painter->setPen(QPen(QGuiApplication::palette().color(group, QPalette::ButtonText), 1.6,
                             Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawPath(pathOf(mWhich));
        painter->restore();
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }
    QIconEngine *clone() const override { return new LineIcon(mWhich); }

private:
    ViewIcon mWhich;
};

} // namespace

QIcon viewIcon(ViewIcon which)
{
    return QIcon(new LineIcon(which));
}

} // namespace meridor
