// SPDX-License-Identifier: MIT
/// A colour for each object.
#pragma once
#include <QRgb>
#include <QVector>
#include <vector>

namespace meridor {

/// How objects are coloured by class and state. Colours are opaque.
struct ColorRule {
    QVector<QRgb> classes;              ///< by class number
    QRgb plain = qRgb(188, 188, 188);   ///< every object, without classes
    QRgb missing = qRgb(236, 236, 236); ///< an object without a class; it is hatched
    QRgb selected = qRgb(255, 149, 0);  ///< replaces the colour of a selected object
    QRgb ground = qRgb(255, 255, 255);  ///< behind the objects
    /// Whether pixels without a shown object take the ground, as in the lowest layer; otherwise what
    /// is below remains visible.
    bool fillGround = false;
    /// Whether objects that are not selected move towards the ground while any is selected, and
    /// selected objects keep their own colour.
    bool fadeOthers = false;
};

/// The colours of the numbers of a pick buffer: colour 0 is that of pixels without an object, i + 1
/// that of object i. Alpha is one of the following. An object that is not shown has the colour of no
/// object.
class ColorTable {
public:
    enum Alpha : unsigned {
        Transparent = 0, ///< no object; what is below remains visible
        Hatched = 1,     ///< an object, as a hatch
        Ground = 254,    ///< no object; the colour of the ground
        Plain = 255      ///< an object
    };
    static unsigned alphaOf(QRgb color) { return color >> 24; }
    static bool isObject(QRgb color) { return (alphaOf(color) & 1U) != 0; }

    /// Pointers may be null: no classes, all objects shown, none selected. The arrays have one entry
    /// for each of `count` objects. Flags are those of MAttributes::GetAttributeVector.
    void build(int count, const ColorRule &rule, const int *classes, const unsigned char *shown,
               const unsigned char *selected);
    const QRgb *data() const { return mColors.data(); }
    /// The numbers of the pick buffer must be below.
    std::size_t size() const { return mColors.size(); }
    /// Whether every colour replaces a pixel as it is.
    bool isPlain() const { return mIsPlain; }
    /// Whether no colour leaves visible what is below.
    bool isOpaque() const { return mIsOpaque; }
    /// Whether all objects are shown.
    bool showsAll() const { return mShowsAll; }

private:
    std::vector<QRgb> mColors{0};
    bool mIsPlain = false;
    bool mIsOpaque = false;
    bool mShowsAll = true;
};

/// The colour `share` of the way from one colour to another.
QRgb mixed(QRgb from, QRgb to, double share);

} // namespace meridor
