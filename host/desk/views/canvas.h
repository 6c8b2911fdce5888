// SPDX-License-Identifier: MIT
/// The widget that shows the layers of a map, moves over it, and turns the mouse into regions.
#pragma once
#include <QElapsedTimer>
#include <QImage>
#include <QPainterPath>
#include <QPointer>
#include <QTimer>
#include <QVector>
#include <QWidget>
#include <optional>
#include <utility>
#include "desk/draw/viewTransform.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/viewWindow.h"

namespace meridor {

/// While the map moves it is drawn at once if the last drawing was fast, else the last picture is
/// scaled. After a moment of rest it is drawn sharp, in slices between which events are handled.
/// Views are in device pixels, positions of the mouse and regions in pixels of the widget.
class MapCanvas : public QWidget {
    Q_OBJECT
public:
    explicit MapCanvas(Workspace &workspace, QWidget *parent = nullptr);

    /// From the lowest up. Not owned.
    void setLayers(const QVector<MapLayerView *> &layers);
    void setTool(ViewWindow::Tool tool);
    /// Lines in map coordinates above the layers, such as links.
    void setLinks(const QVector<QLineF> &links);
    const QVector<QLineF> &links() const { return mLinks; }

    const ViewTransform &view() const { return mView; }
    /// Whether the whole map is shown, whatever the size of the widget.
    bool isFitted() const { return mIsFitted; }
    void fit();
    /// Shows a part of the map, with a margin. A null rectangle changes nothing.
    void show(const QRectF &extent, double margin = 0.05);
    /// The extent that show() without a margin shows in the same place again: a view of an odd number
    /// of pixels has its middle half a pixel beside that of what is visible.
    QRectF shown() const;
    void zoom(double factor, const QPointF &place);
    void pan(int dx, int dy); ///< device pixels
    /// Whether the sharp picture is complete. For tests and pictures.
    bool isSharp() const { return mIsSharp; }
    /// Draws the sharp picture now.
    void finish();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user drew a region, or clicked at the only point of the path.
    void regionDrawn(const QPainterPath &region, SelectionMode mode);
    /// The mouse is over this device pixel; (-1, -1): over none.
    void pointed(const QPoint &pixel);
    void viewChanged();
    /// Keys: the next object in a direction, and selecting the hovered one.
    void stepped(int step);
    void chosen(SelectionMode mode);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;

private:
    QSize deviceSize() const;
    QRectF extent() const;
    double squeeze(const QRectF &extent) const;
    void moved();
    void drawQuick();
    void drawSlice();
    void compose();
    bool isStale() const;
    bool areSharp() const;
    void paintMarks(QPainter &painter);
    void paintTroubles(QPainter &painter);
    QPainterPath region() const;

    Workspace &mWorkspace;
    QVector<MapLayerView *> mLayers;
    QVector<QLineF> mLinks;
    ViewWindow::Tool mTool = ViewWindow::Tool::Rectangle;
    ViewTransform mView;
    bool mIsFitted = true;
    /// What show() was asked for, until the user moves the map: a view that is restored gets its size
    /// later.
    std::optional<std::pair<QRectF, double>> mAsked;
    ViewTransform mDrawn; ///< of the quick pictures
    bool mIsDrawn = false;
    QImage mImage; ///< the composed layers
    ViewTransform mImageView;
    QElapsedTimer mComposed; ///< since the last composition
    bool mIsHurried = false; ///< the composed picture is the coarse one
    double mSharpCost = 0;   ///< of the last other composition, in milliseconds
    double mCost = 0;        ///< of the last quick drawing, in milliseconds
    bool mIsSharp = false;
    bool mIsFinished = false; ///< the sharp picture is complete, but not painted
    QTimer mRest;             ///< runs out when the map has rested
    QTimer mSlice;            ///< runs while the sharp picture is drawn

    enum class Drag { None, Region, Move };
    Drag mDrag = Drag::None;
    bool mIsDragged = false; ///< farther than a click
    QPoint mPress;
    QPoint mLast;
    QPolygonF mLasso;
};

} // namespace meridor
