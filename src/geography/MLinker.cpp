// SPDX-License-Identifier: MIT
#include "datainterface/MLinker.h"
#include <QPointer>
#include <QVector>
#include "Common/detail/failure.h"

MLinker::MLinker()
{
    mLinkedViews.insert(this);
}

MLinker::MLinker(MAttributes *attributes) : MLinker()
{
    SetAttributes(attributes);
}

MLinker::~MLinker()
{
    mMetViews.remove(this);
    for (MLinker *view : std::as_const(mMetViews)) {
        view->mLinkedViews.remove(this);
        view->mLinkingViews.remove(this);
        view->mMetViews.remove(this);
    }
    // A listener must not reach other views from here, nor operations of the derived class, which
    // no longer exists.
    mLinkedViews.clear();
    mLinkingViews.clear();
    mMetViews.clear();
    SetAttributes(nullptr);
    blockSignals(false);
    Q_EMIT ObjectManagerDying(this);
}

void MLinker::SetAttributes(MAttributes *attributes)
{
    datainterface::require(!attributes || !mAttributes || attributes == mAttributes,
                           "Attributes already exist");
    if (mAttributes && !attributes)
        mAttributes->OwnerDying(this);
    mAttributes = attributes;
    if (!attributes)
        return;
    mLinkedViews.insert(this);
    attributes->AddOwner(this);
}

// Visits a copy of the set: a view can link, unlink and delete views while it is visited.
template <class Visit> void MLinker::visitLinkedViews(Visit visit)
{
    QVector<QPointer<MLinker>> views;
    for (MLinker *view : std::as_const(mLinkedViews))
        views.append(view);
    for (const QPointer<MLinker> &view : std::as_const(views))
        if (view)
            visit(*view);
}

bool MLinker::UpdateLinkedViews()
{
    bool own = false;
    visitLinkedViews([this, &own](MLinker &view) {
        const bool updated = view.UpdateView();
        if (&view == this)
            own = updated;
    });
    return own;
}

void MLinker::ClearSelectionState()
{
    visitLinkedViews([](MLinker &view) { view.ClearSelection(); });
}

void MLinker::MakePrimarySelector()
{
    if (mIsPrimarySelector)
        return;
    mIsPrimarySelector = true;
    PrimarySelectorStatusChanged(true);
    visitLinkedViews([this](MLinker &view) {
        if (&view == this)
            return;
        view.mIsPrimarySelector = false;
        view.PrimarySelectorStatusChanged(false);
    });
}

void MLinker::Link(MLinker *view)
{
    if (!view)
        return;
    meet(view);
    mLinkedViews.insert(view);
    view->mLinkingViews.insert(this);
}

void MLinker::Unlink(MLinker *view)
{
    if (!view)
        return;
    mLinkedViews.remove(view);
    view->mLinkingViews.remove(this);
    part(view);
}

void MLinker::AddLinkingView(MLinker *view)
{
    if (!view)
        return;
    meet(view);
    mLinkingViews.insert(view);
}

void MLinker::UnlinkSource(MLinker *view)
{
    mLinkingViews.remove(view);
    part(view);
}

void MLinker::UnlinkDestination(MLinker *view)
{
    mLinkedViews.remove(view);
    part(view);
}

void MLinker::LinkViews(MLinker *a, MLinker *b)
{
    if (!a || !b)
        return;
    const QSet<MLinker *> group = a->mLinkedViews + b->mLinkedViews;
    for (MLinker *view : group)
        for (MLinker *other : group)
            if (other != view)
                view->Link(other);
}

void MLinker::AttributesDying()
{
    mAttributes = nullptr;
}

void MLinker::PrimarySelectorStatusChanged(bool)
{
}

void MLinker::AttributeChanged(const changedAttributes &)
{
}

// A link can be recorded on one side only, so both sides record in mMetViews that there was one.
void MLinker::meet(MLinker *view)
{
    mMetViews.insert(view);
    view->mMetViews.insert(this);
}

// `view` may have been destroyed unless it is in mMetViews, so it is not accessed otherwise.
void MLinker::part(MLinker *view)
{
    const auto leads = [](const MLinker *from, MLinker *to) {
        return from->mLinkedViews.contains(to) || from->mLinkingViews.contains(to);
    };
    if (!mMetViews.contains(view) || leads(this, view) || leads(view, this))
        return;
    mMetViews.remove(view);
    view->mMetViews.remove(this);
}
