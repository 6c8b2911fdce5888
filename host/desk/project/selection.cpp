// SPDX-License-Identifier: MIT
#include "desk/project/selection.h"
#include <algorithm>
#include <iterator>
#include "core/analysis/selection.h"
#include "core/project/catalog.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

constexpr int kMostSteps = 50;
constexpr int kMostRemembered = 5'000'000; ///< objects in all steps of a geography

QVector<unsigned int> difference(const QVector<unsigned int> &from,
                                 const QVector<unsigned int> &without)
{
    QVector<unsigned int> rest;
    std::set_difference(from.begin(), from.end(), without.begin(), without.end(),
                        std::back_inserter(rest));
    return rest;
}

} // namespace

MAttributes *Selection::attributes(int geography)
{
    return sharedAttributes(geography);
}

void Selection::replace(int geography, const Step &objects)
{
    MAttributes *const flags = attributes(geography);
    if (!flags)
        return;
    const Step before = flags->GetIdsByState(attribute::kSelected, true);
    const Step gone = difference(before, objects);
    const Step added = difference(objects, before);
    if (gone.isEmpty() && added.isEmpty())
        return;
    flags->SetAttributeIds(attribute::kSelected, gone, false);
    flags->SetAttributeIds(attribute::kSelected, added, true);
    Q_EMIT changed(geography);
}

void Selection::remember(int geography)
{
    QVector<Step> &past = mPast[geography];
    past.append(selected(geography));
    qint64 total = 0;
    for (const Step &step : past)
        total += step.size();
    while (past.size() > kMostSteps || (total > kMostRemembered && past.size() > 1))
        total -= past.takeFirst().size();
    mFuture.remove(geography);
}

void Selection::select(int geography, const QVector<unsigned int> &objects, SelectionMode mode)
{
    MAttributes *const flags = attributes(geography);
    if (!flags)
        return;
    const unsigned int count = geographyOf(geography)->GetObjectCount();
    Step wanted = objects;
    std::sort(wanted.begin(), wanted.end());
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    wanted.erase(std::lower_bound(wanted.begin(), wanted.end(), count), wanted.end());
    const Step before = selected(geography);
    if (mode != SelectionMode::Replace) {
        Step joined;
        const auto into = std::back_inserter(joined);
        if (mode == SelectionMode::Add)
            std::set_union(before.begin(), before.end(), wanted.begin(), wanted.end(), into);
        else
            std::set_symmetric_difference(before.begin(), before.end(), wanted.begin(),
                                          wanted.end(), into);
        wanted = joined;
    }
    if (wanted == before)
        return;
    remember(geography);
    replace(geography, wanted);
}

void Selection::clear(int geography)
{
    select(geography, {});
}

QVector<unsigned int> Selection::selected(int geography)
{
    MAttributes *const flags = attributes(geography);
    return flags ? flags->GetIdsByState(attribute::kSelected, true) : QVector<unsigned int>();
}

int Selection::count(int geography)
{
    MAttributes *const flags = attributes(geography);
    return flags ? flags->GetStateCount(attribute::kSelected, true) : 0;
}

bool Selection::isSelected(int geography, unsigned int object)
{
    MAttributes *const flags = attributes(geography);
    return flags && flags->GetAttribute(attribute::kSelected, object);
}

int Selection::hovered(int geography) const
{
    const int object = mHovered.value(geography, -1);
    const MGeoData *const data = object >= 0 ? geographyOf(geography) : nullptr;
    const MAttributes *const flags = data ? data->GetAttributes(0) : nullptr;
    return flags && flags->GetAttribute(attribute::kHovered, static_cast<unsigned int>(object))
               ? object
               : -1;
}

void Selection::hover(int geography, int object)
{
    const int before = hovered(geography);
    MAttributes *const flags = attributes(geography);
    if (before == object || !flags)
        return;
    mHovered[geography] = object;
    if (before >= 0)
        flags->SetAttribute(attribute::kHovered, static_cast<unsigned int>(before), false);
    if (object >= 0)
        flags->SetAttribute(attribute::kHovered, static_cast<unsigned int>(object), true);
    Q_EMIT hoverChanged(geography, object);
}

bool Selection::back(int geography)
{
    if (!canGoBack(geography))
        return false;
    const Step step = mPast[geography].takeLast();
    mFuture[geography].append(selected(geography));
    replace(geography, step);
    return true;
}

bool Selection::forward(int geography)
{
    if (!canGoForward(geography))
        return false;
    const Step step = mFuture[geography].takeLast();
    mPast[geography].append(selected(geography));
    replace(geography, step);
    return true;
}

void Selection::forget(int geography)
{
    mHovered.remove(geography);
    mPast.remove(geography);
    mFuture.remove(geography);
}

} // namespace meridor
