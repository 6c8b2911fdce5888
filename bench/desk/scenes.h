// SPDX-License-Identifier: MIT
/// What the desktop draws in its benchmarks, and the plain ways to draw it that it is compared with.
#pragma once
#include <QImage>
#include <QRgb>
#include <QSize>
#include <QVector>
#include "desk/draw/colorTable.h"
#include "desk/draw/viewTransform.h"

namespace scenes {

constexpr QSize kWindow(1600, 1000);
constexpr qint64 kTime = 5;

inline QImage canvas()
{
    QImage image(kWindow, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

inline meridor::ColorRule sevenClasses()
{
    meridor::ColorRule rule;
    rule.fillGround = true;
    for (int i = 0; i < 7; ++i)
        rule.classes.append(qRgb(255 - 30 * i, 240 - 20 * i, 160 + 10 * i));
    return rule;
}

/// A geography of columns * rows polygons of 16 vertices that share their borders, one map unit each.
int addDistricts(int columns, int rows);

/// Draws the objects in the window, one after the other, through the public functions of the
/// library: a query, a handle for each object, its vertices, drawPolygon.
/// @param flags  null: all objects; otherwise only those with a flag, in the last colour of the rule.
void drawPlainly(int geography, const meridor::ViewTransform &view, const QVector<int> &classes,
                 const meridor::ColorRule &rule, bool fine, const unsigned char *flags,
                 QImage &image);

// The rows of the table, in turns with their peers. The functions that print them are one a file.
void mapRows();
void scatterRows();
void gridRows();

} // namespace scenes
