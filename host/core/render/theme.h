// SPDX-License-Identifier: MIT
/// What maps and graphs have in common: size, colours, fonts, title and footnote.
#pragma once
#include <QColor>
#include <QFont>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <algorithm>
#include "core/export.h"

class QPainter;

namespace meridor {

struct PictureSize {
    QSize pixels{1600, 1000};
    double scale = 1; ///< of texts, lines and points, relative to those that suit the pixels
};

/// The texts around a picture.
struct PictureTexts {
    QString title;
    QString subtitle;
    QString footnote;
};

namespace colors {
extern MERIDOR_EXPORT const QColor missing; ///< ground of the hatching
extern MERIDOR_EXPORT const QColor hatch;
extern MERIDOR_EXPORT const QColor selected; ///< marked objects
extern MERIDOR_EXPORT const QColor ink;
extern MERIDOR_EXPORT const QColor softInk;
extern MERIDOR_EXPORT const QColor outline;
extern MERIDOR_EXPORT const QColor border;
extern MERIDOR_EXPORT const QColor ground;
extern MERIDOR_EXPORT const QColor grid;
} // namespace colors

/// Lengths and fonts for a size of picture. A length of 1 is one pixel of a picture of 1600 by 1000
/// pixels; texts do not shrink below a readable size, however small the picture.
class MERIDOR_EXPORT Theme {
public:
    explicit Theme(const PictureSize &size);
    QSize size() const { return mSize; }
    /// Of texts, lines and what stands beside texts.
    double unit(double length) const { return length * mUnit; }
    double margin() const { return mMargin; }
    QFont font(double height, QFont::Weight weight = QFont::Normal) const;
    QFont titleFont() const { return font(38, QFont::Bold); }
    QFont subtitleFont() const { return font(23); }
    QFont textFont() const { return font(20); }
    QFont smallFont() const { return font(17); }
    /// The largest size of a legend beside a picture: a third of it, or more if texts need it.
    QSizeF legendSpace(const QSizeF &picture) const
    {
        return {std::max(0.34 * picture.width(), std::min(0.5 * picture.width(), unit(300))),
                picture.height()};
    }
    /// Draws title, subtitle and footnote. @return what is left for the picture itself.
    QRectF drawTexts(QPainter &painter, const PictureTexts &texts) const;

private:
    QSize mSize;
    double mUnit;
    double mMargin;
};

/// Draws one line of text, elided if it is wider than `width`. @return the y below the line.
MERIDOR_EXPORT double drawText(QPainter &painter, const QFont &font, const QColor &color,
                               const QPointF &topLeft, double width, const QString &text,
                               Qt::Alignment alignment = Qt::AlignLeft);
/// The text broken between words into lines of at most `width` pixels. What remains is in the last
/// line, elided.
MERIDOR_EXPORT QStringList brokenLines(const QString &text, const QFont &font, double width,
                                       int mostLines);
/// A number with its digits in groups of three, separated by thin spaces.
MERIDOR_EXPORT QString grouped(double value, int decimals);
/// The fewest decimal places, at most 8, that change no number by more than half a percent of the
/// smallest difference of two consecutive ones.
MERIDOR_EXPORT int decimalsFor(const QVector<double> &ascending);

} // namespace meridor
