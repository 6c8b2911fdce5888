// SPDX-License-Identifier: MIT
/// What all graphs have in common: axes, zoom, the region that the user draws, the marked object, and
/// a sentence where there is nothing to draw.
#pragma once
#include <QColor>
#include <QPointer>
#include <vector>
#include "core/plot/plots.h"
#include "desk/views/objectText.h"
#include "desk/views/view.h"
#include "desk/views/viewWindow.h"

class QwtPlot;
class QwtScaleMap;

namespace meridor {

class GraphCanvas;

/// Colours of a graph on the present palette, dark or light.
struct GraphColors {
    explicit GraphColors(const QPalette &palette);
    /// A colour for a light ground, as it is shown on this one.
    QColor legible(const QColor &color) const;
    QColor ground;
    QColor ink;
    QColor softInk;
    QColor grid;
    QColor plain;       ///< of objects
    QColor fill;        ///< of bars and boxes
    QColor selected;    ///< of selected objects
    QColor selectedInk; ///< of lines and texts about them
};

/// One axis: what stands at it and the range of the values.
struct GraphScale {
    QString title = {};
    double low = 0;
    double high = 0;
    bool dates = false; ///< see GraphAxis
    bool exact = false; ///< the ends are not rounded outwards
};

/// A graph of datasets of one geography. It owns the plot, which it deletes with itself.
///
/// Keys: + and - zoom, arrows move, 0 shows all; page down and page up mark the next and the previous
/// object, space selects what is marked: with shift it is added, with control toggled.
class GraphView : public View {
    Q_OBJECT
public:
    GraphView(Workspace &workspace, int geography);
    ~GraphView() override;

    QwtPlot *plot() const { return mPlot; }
    /// The canvas of the plot.
    QWidget *widget() const final;
    void draw(QPainter &painter, const QSize &size) final;
    QVector<unsigned int> objectsIn(const QPainterPath &region) final;

    void setTool(ViewWindow::Tool tool) { mTool = tool; }
    ViewWindow::Tool tool() const { return mTool; }
    /// A sentence that tells why there is nothing to draw; empty if there is something.
    const QString &trouble() const { return mTrouble; }
    /// The figures of the graph, as its footer shows them.
    QString summary() const;
    /// The words after "meridor" that draw the same graph; empty if none do.
    virtual QStringList commandLine(const QString &picture) const = 0;

    // What the canvas asks for
    /// The object at a pixel of the canvas; -1: none.
    virtual int objectAt(const QPoint &pixel) const = 0;
    /// The text for a pixel, and for an object that is marked elsewhere.
    virtual QString textAt(const QPoint &pixel);
    virtual QString textOf(int object);
    /// Marks an object; -1: none, which graphs of groups need to know.
    virtual void drawMark(QPainter &painter, int object) = 0;
    /// A double click on no object. @return whether the graph has a use for it; else all is shown.
    virtual bool openAt(const QPoint &) { return false; }
    /// Whether a press of the left button there holds something that is dragged, instead of drawing
    /// a region.
    virtual bool grab(const QPoint &) { return false; }
    virtual void dragGrabbed(const QPoint &) {}
    /// An arrow with the Ctrl key. @return whether the graph has a use for it.
    virtual bool moveByKey(Qt::Key) { return false; }
    /// Marks the next object or, in graphs of groups, the next group.
    virtual void step(int by);
    /// What is marked.
    virtual QVector<unsigned int> marked() const;

    void zoom(double factor, const QPointF &pixel);
    void pan(const QPointF &pixels);
    void showAll();
    bool isZoomed() const { return mIsZoomed; }
    /// A place of the canvas in the units of the axes, and back.
    QPointF valueAt(const QPointF &pixel) const;
    QPointF pixelOf(const QPointF &value) const;
    /// The shown range; used to restore windows.
    QRectF shownRange() const;
    void setShownRange(const QRectF &range);
    void fitTicks();
    void refreshColors();
    /// Shortens the texts around the graph to its size: a low plot has none below it.
    void fitTexts();

Q_SIGNALS:
    /// The text of what is under the mouse; empty: nothing.
    void pointedAt(const QString &text);

protected:
    /// Reads the values of the present time. Raises a Failure if there is nothing to draw.
    virtual void read() = 0;
    /// Whether read() has taken over all times: another one is only marked, by timePassed().
    virtual bool hasAllTimes() const { return false; }
    /// Takes the selected objects over into what is drawn, and states summary().
    virtual void markSelected() = 0;
    virtual void recolor() {}
    virtual void setExporting(bool) {}
    /// The number of objects that step() goes through, and whether it stops at one.
    virtual int objectLimit() const { return 0; }
    virtual bool shows(int) const { return false; }
    /// The objects of a region, as objectsIn() has them; called if there is something to draw.
    virtual QVector<unsigned int> objectsWithin(const QPainterPath &region) = 0;
    virtual GraphScale xScale() const = 0;
    virtual GraphScale yScale() const = 0;

    void valuesChanged() override;
    void timeChanged() final;
    bool holdsAt(qint64 time) const final;
    void selectionChanged() final;
    void hoverChanged() override;

    /// @param all  figures of all objects, in the first line of the footer.
    /// @param selected  those of the selected ones, in the second; may be empty.
    void setSummary(const QString &all, const QString &selected);
    const GraphColors &colors() const { return mColors; }
    QwtScaleMap xMap() const;
    QwtScaleMap yMap() const;
    /// See flagBytes().
    const unsigned char *selectedFlags();
    /// The marked object of the geography; -1: none.
    int hoveredObject() const;
    QString nameOf(int object);
    /// Raises the Failure of a graph without values, with the time unless there is only one.
    [[noreturn]] void failWithoutValues(int dataset) const;
    /// Reads again, at the end of the work that is being done if there is any.
    void rereadSoon();
    ShownDataset shown(int dataset) const { return {dataset, realizationOf(dataset)}; }
    /// "DATASET: value" of an object at the present time.
    static QString valueText(int dataset, double value);
    /// The options of the present time in command lines; empty for static datasets.
    QStringList timeOptions() const;
    void redraw();

private:
    friend class GraphCanvas;
    void reread();
    void showScales();
    void makeScales();
    void keepRoom();
    void setTrouble(const QString &text);
    void apply(int axis, const GraphScale &scale);
    void setInterval(int axis, double low, double high);
    void updateAxes();

    QwtPlot *mPlot;
    QPointer<QWidget> mPlotWidget; ///< null once the plot was deleted
    GraphCanvas *mCanvas;
    GraphColors mColors;
    ViewWindow::Tool mTool = ViewWindow::Tool::Rectangle;
    QString mTrouble;
    QString mSummary;
    QString mSelectedSummary;
    ObjectText mNames;
    std::vector<unsigned char> mFlags;
    bool mIsZoomed = false;
    bool mIsRead = false;
    bool mMustReread = false;
    bool mIsReading = false; ///< within Workspace::look(), so names can be read
    bool mHasDates = false;
    bool mAreAxesStale = true;
    double mLastLabel = 0;       ///< pixels; the widest one at the right end so far
    bool mKeepsRoom = true;      ///< for labels; false while values change
    bool mMustMakeScales = true; ///< the scales have other fonts or another kind of values
};

} // namespace meridor
