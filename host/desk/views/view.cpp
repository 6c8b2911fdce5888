// SPDX-License-Identifier: MIT
#include "desk/views/view.h"
#include <QWidget>
#include <algorithm>
#include <utility>
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "datainterface/MDataset.h"
#include "datainterface/TimeAPI.h"

namespace meridor {

View::View(Workspace &workspace, int geography)
    : mWorkspace(workspace), mGeography(geography), mTime(workspace.timeOf(geography))
{
}

void View::join()
{
    mWorkspace.addView(this, mGeography);
    connect(&mWorkspace, &Workspace::datasetsChanged, this, [this](const QVector<int> &changed) {
        const QVector<int> mine = datasets();
        if (std::any_of(mine.begin(), mine.end(), [&](int id) { return changed.contains(id); }))
            showTime(true);
    });
    connect(&mWorkspace, &Workspace::objectsRemoved, this, [this](int geography) {
        if (geography == mGeography)
            mSpan.reset(); // derived classes read again
    });
    connect(&mWorkspace, &Workspace::idle, this, [this] {
        if (mMustReread)
            showTime(true);
    });
    // A selection that no view made, such as one by value, reaches all views.
    connect(&mWorkspace.selection(), &Selection::changed, this, [this](int geography) {
        const bool byView = std::any_of(
            mWorkspace.views().begin(), mWorkspace.views().end(),
            [](const MLinker *view) { return static_cast<const View *>(view)->mIsChoosing; });
        if (geography == mGeography && !byView)
            UpdateView();
    });
    showTime(true);
    mIsStale = true;
    UpdateView();
}

int View::realizationOf(int dataset) const
{
    const MDataset *const found = datasetOf(dataset);
    return found ? std::clamp(mRealization, 0, std::max(1, found->GetRealizationCount()) - 1) : 0;
}

void View::setRealization(int realization)
{
    if (mRealization == realization)
        return;
    mRealization = realization;
    showTime(true);
}

QString View::realizationNote() const
{
    for (const int dataset : valueDatasets())
        if (const QString text = realizationText(dataset, realizationOf(dataset)); !text.isEmpty())
            return text;
    return QString();
}

void View::showTime(bool reread)
{
    const qint64 time = mWorkspace.timeOf(mGeography);
    if (!reread && time == mTime)
        return;
    if (mWorkspace.isBusy()) {
        mMustReread = true;
        return;
    }
    const bool rereads = std::exchange(mMustReread, false) || reread;
    const bool isOther = time != mTime;
    if (!rereads && holdsAt(time)) {
        mTime = time;
        timePassed();
    } else {
        mTime = time;
        mSpan.reset();
        mWorkspace.look([this, rereads] {
            rereads ? valuesChanged() : timeChanged();
            findSpan();
        });
        widget()->update();
    }
    hoverChanged(); // its value, or its name alone, is another one
    if (isOther)
        Q_EMIT shownTimeChanged(time);
}

bool View::holdsAt(qint64 time) const
{
    return mSpan && TimeStamp(*mSpan).contains(time);
}

/// A view without datasets shows its geography, or tells itself when it holds.
void View::findSpan()
{
    const QVector<int> shown = datasets();
    const bool isFirst = std::all_of(shown.begin(), shown.end(),
                                     [this](int dataset) { return realizationOf(dataset) == 0; });
    Interval span;
    if (!isFirst) // the library tells the interval of the first realization
        return;
    if (shown.isEmpty() ? VORN_GetStaticObjectInterval(mGeography, mTime, span)
                        : VORN_GetNoChangeInterval(shown, mTime, span))
        mSpan = span;
}

bool View::UpdateView()
{
    showTime(false);
    if (mIsStale) {
        mIsStale = false;
        selectionChanged();
        widget()->update();
    }
    if (mIsHoverStale) {
        mIsHoverStale = false;
        hoverChanged();
        widget()->update();
    }
    return true;
}

void View::ClearSelection()
{
    chooseNothing();
}

void View::AttributeChanged(const changedAttributes &change)
{
    if (change.attribute == attribute::kSelected)
        mIsStale = true;
    else if (change.attribute == attribute::kHovered)
        mIsHoverStale = true;
}

void View::drive(const std::function<void()> &change)
{
    MakePrimarySelector();
    mIsChoosing = true;
    change();
    mIsChoosing = false;
    UpdateLinkedViews();
}

void View::choose(const QVector<unsigned int> &objects, SelectionMode mode)
{
    drive([&] { mWorkspace.selection().select(mGeography, objects, mode); });
}

void View::brush(const QPainterPath &region, SelectionMode mode)
{
    QVector<unsigned int> objects;
    if (mWorkspace.look([&] { objects = objectsIn(region); }))
        choose(objects, mode);
}

void View::chooseNothing()
{
    choose({}, SelectionMode::Replace);
}

void View::stepBack()
{
    drive([this] { mWorkspace.selection().back(mGeography); });
}

void View::stepForward()
{
    drive([this] { mWorkspace.selection().forward(mGeography); });
}

void View::hover(int object)
{
    if (mWorkspace.selection().hovered(mGeography) == object)
        return;
    mWorkspace.selection().hover(mGeography, object);
    UpdateLinkedViews();
}

void View::goTo(qint64 time)
{
    MakePrimarySelector();
    mWorkspace.setTime(mGeography, time, this);
}

} // namespace meridor
