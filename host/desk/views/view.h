// SPDX-License-Identifier: MIT
/// What all views have in common: a map layer, a graph and a table differ in what they draw and in how
/// they turn a region of pixels into objects.
#pragma once
#include <QPainterPath>
#include <QString>
#include <QVector>
#include <functional>
#include <optional>
#include "datainterface/MLinker.h"
#include "datainterface/TimeStamp.h"
#include "desk/project/workspace.h"

class QPainter;
class QWidget;

namespace meridor {

/// Follows the selection and the time of its geography through the library's links: a view that
/// changes the selection becomes the primary selector and drives the views that it is linked with; a
/// view outside that group keeps its picture until it is driven again. Derived classes are created
/// with new, call join() when they are complete, and are owned by the widget that shows them.
class View : public MLinker {
    Q_OBJECT
public:
    View(Workspace &workspace, int geography);

    int geography() const { return mGeography; }
    Workspace &workspace() const { return mWorkspace; }
    /// The time that the view shows.
    qint64 time() const { return mTime; }
    /// The realization of a dataset that the view shows, from 0: that of setRealization(), or the last
    /// one of a dataset that has fewer.
    int realizationOf(int dataset) const;
    /// Shows another realization of its datasets.
    void setRealization(int realization);
    /// Such as "realization 3 of 30"; empty if no dataset of the view has several.
    QString realizationNote() const;
    virtual QString title() const = 0;
    /// The widget that is updated when the picture changed.
    virtual QWidget *widget() const = 0;
    /// Draws the view as it is, for pictures and printing.
    virtual void draw(QPainter &painter, const QSize &size) = 0;
    /// The objects that the view shows in a region of its widget, in pixels; an empty region is a
    /// click at its first point.
    virtual QVector<unsigned int> objectsIn(const QPainterPath &region) = 0;
    /// The datasets that the view shows; it is closed when one of them is removed.
    virtual QVector<int> datasets() const = 0;
    /// The datasets whose values it shows.
    virtual QVector<int> valueDatasets() const { return datasets(); }

    /// The user selected a region: selects its objects and drives the linked views.
    void brush(const QPainterPath &region, SelectionMode mode);
    /// Selects objects on behalf of this view, and drives the linked views.
    void choose(const QVector<unsigned int> &objects, SelectionMode mode);
    void chooseNothing();
    /// Steps through the selections, see Selection.
    void stepBack();
    void stepForward();
    /// Shows another time, here and in the linked views.
    void goTo(qint64 time);
    /// The object under the mouse; -1: none. All linked views mark it.
    void hover(int object);

    bool UpdateView() final;
    void ClearSelection() final;
    void AttributeChanged(const changedAttributes &change) final;

Q_SIGNALS:
    void shownTimeChanged(qint64 time);

protected:
    /// Registers the view and shows the present time and selection.
    void join();
    /// Another time is shown; values and shapes may be others. Called within Workspace::look().
    virtual void timeChanged() = 0;
    /// The values of a shown dataset changed. Called within Workspace::look().
    virtual void valuesChanged() { timeChanged(); }
    /// Called instead of timeChanged() when all that is shown holds at the other time, too.
    virtual void timePassed() {}
    /// Whether all that is shown at the present time is the same at another one. A sentence that
    /// names the time is not.
    virtual bool holdsAt(qint64 time) const;
    /// The flags of selected objects changed: see Selection.
    virtual void selectionChanged() = 0;
    /// Another object is hovered, or its value or place changed. The widget is updated in any case; called for each move of the
    /// mouse, so the picture below the mark must not be made anew.
    virtual void hoverChanged() {}

private:
    void showTime(bool reread);
    void findSpan();
    void drive(const std::function<void()> &change);

    Workspace &mWorkspace;
    int mGeography;
    qint64 mTime = 0;
    int mRealization = 0;
    std::optional<Interval> mSpan; ///< in which neither shapes nor values change; none: not known
    bool mIsChoosing = false;      ///< this view changes the selection now
    bool mIsStale = false;         ///< selected flags changed since the last selectionChanged()
    bool mIsHoverStale = false;
    bool mMustReread = false; ///< values changed while the library was at work
};

} // namespace meridor
