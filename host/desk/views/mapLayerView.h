// SPDX-License-Identifier: MIT
/// A layer of a map: the objects of one geography, in the classes of a dataset or as outlines. What
/// depends on the kind of geography is in the derived classes.
#pragma once
#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <memory>
#include <optional>
#include "core/render/classification.h"
#include "core/render/mapPicture.h"
#include "desk/draw/viewTransform.h"
#include "desk/views/view.h"

class QPalette;

namespace meridor {

/// Colours that follow the palette of the window.
struct MapColors {
    explicit MapColors(const QPalette &palette);
    QRgb ground;
    QRgb outline;
    QRgb missing;
    QRgb hatch;
    QRgb plain;
    QRgb selected;
};

/// The canvas asks a layer for pictures of a ViewTransform in device pixels: a quick one while the
/// map moves, and a sharp one at rest, in slices. A layer that has a trouble() shows what it can.
class MapLayerView : public View {
    Q_OBJECT
public:
    static constexpr int kMostClasses = 64;

    /// @param dataset  -1: only the outlines of the geography.
    /// @param canvas   see View::widget.
    static MapLayerView *make(Workspace &workspace, int geography, int dataset, QWidget &canvas);

    QString title() const override;
    QWidget *widget() const override { return &mCanvas; }
    void draw(QPainter &painter, const QSize &size) override;
    QVector<int> datasets() const override;
    int dataset() const { return mDataset; }

    /// Whether shapes or values change: values can also in a geography whose shapes hold for good.
    bool isTimed() const;

    const ClassRule &rule() const { return mRule; }
    /// One legend for all times, instead of one for each.
    bool hasAllTimes() const { return mHasAllTimes; }
    /// False, with nothing changed, after telling the user why.
    bool setRule(const ClassRule &rule, bool allTimes);
    /// Colours of the classes and of missing values, from the lowest class; those beyond their number
    /// are the rule's.
    void setOwnColors(const QVector<QColor> &classes, const QColor &missing, const QColor &line);
    /// Diameter of points, in pixels of a screen of 96 dots an inch; 0: the usual one.
    void setPlaceSize(double size);
    bool isVisible() const { return mIsVisible; }
    void setVisible(bool visible);

    /// Null without a dataset or without classes.
    const Classification *classes() const { return mClasses.get(); }
    QColor colorOf(int classIndex) const;
    QColor missingColor(const MapColors &colors) const;
    QColor lineColor(const MapColors &colors) const;
    LegendBlock legend() const;
    /// The number of objects or cells that exist; -1: not counted.
    qint64 drawn() const;
    /// The objects of a class; -1: those without a value.
    virtual QVector<unsigned int> objectsOfClass(int classIndex) = 0;
    /// The class of an entry of the legend.
    int classOfEntry(int entry) const;
    /// The values that exist at the time, in no order; a sample of many.
    virtual QVector<double> valueSample() = 0;
    /// Why the layer shows nothing, or no values, in one sentence; else empty.
    const QString &trouble() const { return mTrouble; }

    /// The extent at all times; null if there is none.
    QRectF extent() const { return mExtent; }
    /// The extent of objects at the time; null if none exists.
    virtual QRectF extentOf(const QVector<unsigned int> &objects) const = 0;

    // Drawing. The views are in device pixels.
    /// Draws the picture of a view coarsely. It reads the library only if readsLibrary().
    virtual void drawQuick(const ViewTransform &view) = 0;
    /// A slice of the sharp picture. @return whether the picture is complete.
    virtual bool drawSharp(const ViewTransform &view) = 0;
    /// Whether that picture is complete.
    virtual bool isSharp(const ViewTransform &view) const = 0;
    virtual bool readsLibrary() const { return false; }
    /// Paints the best picture of a view that was drawn over what the image holds; the coarse one if
    /// `isHurried`, which takes a fraction of the time.
    virtual void paint(const ViewTransform &view, const MapColors &colors, bool isHurried,
                       QImage &image) = 0;
    /// The same of the lowest layer, on the ground: the image holds nothing yet.
    virtual void paintLowest(const ViewTransform &view, const MapColors &colors, bool isHurried,
                             QImage &image)
    {
        image.fill(colors.ground);
        paint(view, colors, isHurried, image);
    }
    /// Whether paint() would give another picture than last time.
    bool isStale() const { return mIsStale; }
    void setFresh() { mIsStale = false; }

    // Objects
    /// The object seen at a pixel; -1 if there is none.
    virtual int objectAt(const QPoint &pixel) const = 0;
    /// The objects that exist at the time, ascending, for stepping through them.
    virtual int nextObject(int object, int step) const = 0;
    /// The outline of an object, in pixels of the view.
    virtual QPainterPath shapeOf(unsigned int object, const ViewTransform &view) const = 0;
    /// Name, value and neighbours of an object, in one line.
    QString describe(unsigned int object);
    /// The neighbours of the hovered object by the weight set that is shown.
    const QVector<unsigned int> &hoveredNeighbors() const { return mNeighbors; }

    /// The layer of a printed map, clipped by `view`; its classes have these colours, and the
    /// selected objects are marked.
    virtual MapLayer pictureLayer(const ViewTransform &view) = 0;

Q_SIGNALS:
    void legendChanged();
    /// Another object of the geography is hovered, or what describe() says of it changed.
    void hoverDescribed();

protected:
    MapLayerView(Workspace &workspace, int geography, int dataset, QWidget &canvas);

    /// Reads the shapes of the time, unless they are known. Raises a Failure.
    virtual void readShapes() = 0;
    /// Reads the values of the time and counts the classes. Raises a Failure.
    virtual void readValues() = 0;
    /// The shapes are unknown: objects were removed.
    virtual void forgetShapes() = 0;
    /// The colours changed, not the values.
    virtual void colorsChanged() = 0;

    void timeChanged() override;
    void valuesChanged() override;
    bool holdsAt(qint64 time) const override;
    void selectionChanged() override;
    void hoverChanged() override;
    void setStale() { mIsStale = true; }
    void setTrouble(const QString &trouble) { mTrouble = trouble; }
    double placeSize() const { return mPlaceSize; }
    QVector<QColor> classColors() const;

    QVector<qint64> mCounts; ///< by class
    qint64 mMissing = 0;
    bool mIsCounted = true;
    QRectF mExtent;

private:
    void refresh(bool reclassify);
    void classify(const ClassRule &rule, bool allTimes);

    QWidget &mCanvas;
    int mDataset;
    int mNameDataset;
    int mKeyDataset;
    ClassRule mRule;
    bool mHasAllTimes = true;
    bool mIsVisible = true;
    bool mIsStale = true;
    std::unique_ptr<Classification> mClasses;
    QVector<QColor> mOwnColors;
    QColor mOwnMissing;
    QColor mOwnLine;
    double mPlaceSize = 0;
    QString mTrouble;
    QVector<unsigned int> mNeighbors;
};

} // namespace meridor
