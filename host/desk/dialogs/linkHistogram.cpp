// SPDX-License-Identifier: MIT
#include "desk/dialogs/linkHistogram.h"
#include <QComboBox>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "datainterface/MGeoData.h"
#include "desk/dialogs/methodForm.h"
#include "desk/project/workspace.h"

namespace meridor {

LinkHistogram::LinkHistogram(Workspace &workspace, MethodForm &form, QWidget *parent)
    : QWidget(parent), mWorkspace(workspace), mForm(form), mSets(new QComboBox(this))
{
    setAccessibleName(tr("Numbers of neighbours"));
    mSets->setObjectName(QStringLiteral("shown set"));
    mSets->setAccessibleName(tr("Shown weight set"));
    setMinimumHeight(fontMetrics().height() * 8);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mSets);
    layout->addStretch();
    connect(mSets, qOverload<int>(&QComboBox::activated), this,
            [this] { mWorkspace.setShownWeights(mGeography, mSets->currentData().toInt()); });
    connect(&form, &MethodForm::changed, this, &LinkHistogram::refill);
    connect(&workspace, &Workspace::weightSetsChanged, this, &LinkHistogram::refill);
    connect(&workspace, &Workspace::shownWeightsChanged, this, &LinkHistogram::refill);
    connect(&workspace, &Workspace::idle, this, &LinkHistogram::refill);
    connect(&workspace, &Workspace::timeChanged, this, &LinkHistogram::read);
    connect(&workspace.selection(), &Selection::hoverChanged, this, [this] { update(); });
    refill();
}

QSize LinkHistogram::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 50, fontMetrics().height() * 12};
}

void LinkHistogram::refill()
{
    mGeography = MethodArguments(mForm.parameters()).id(QStringLiteral("geography"));
    mSets->clear();
    mSets->addItem(tr("No neighbours are shown"), -1);
    if (MGeoData *const geography = geographyOf(mGeography))
        for (const int id : geography->GetSpatialWeightsIds())
            mSets->addItem(VORN_GetSpatialWeightSetProperties(id).name, id);
    mSets->setCurrentIndex(std::max(0, mSets->findData(mWorkspace.shownWeights(mGeography))));
    read();
}

void LinkHistogram::read()
{
    mObjects.clear();
    const int set = mSets->currentData().toInt();
    // An object with thousands of neighbours is counted in the last bar.
    constexpr int kMostBars = 200;
    if (set >= 0 && !mWorkspace.isBusy())
        mWorkspace.look([&] {
            visitNeighbors(set, mWorkspace.timeOf(mGeography),
                           [&](int object, const QVector<neighborDatum> &neighbors) {
                               const int count = std::min(neighbors.size(), kMostBars);
                               if (mObjects.size() <= count)
                                   mObjects.resize(count + 1);
                               mObjects[count].append(static_cast<unsigned int>(object));
                           });
        });
    update();
}

QVector<int> LinkHistogram::counts() const
{
    QVector<int> counts;
    for (const QVector<unsigned int> &objects : mObjects)
        counts.append(objects.size());
    return counts;
}

QRect LinkHistogram::barOf(int neighbors) const
{
    const QVector<int> all = counts();
    if (neighbors < 0 || neighbors >= all.size())
        return QRect();
    const int text = fontMetrics().height();
    const int top = mSets->geometry().bottom() + text + 4;
    const int bottom = height() - text - 2;
    const int most = std::max(1, *std::max_element(all.begin(), all.end()));
    const int left = width() * neighbors / all.size();
    const int right = width() * (neighbors + 1) / all.size();
    const int length = std::max(all[neighbors] > 0 ? 1 : 0, (bottom - top) * all[neighbors] / most);
    return QRect(left + 1, bottom - length, std::max(1, right - left - 2), length);
}

void LinkHistogram::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QVector<int> all = counts();
    const auto hovered = static_cast<unsigned int>(mWorkspace.selection().hovered(mGeography));
    const int text = fontMetrics().height();
    const int labelWidth = fontMetrics().horizontalAdvance(QStringLiteral("0000"));
    const int each = std::max(1, labelWidth * all.size() / std::max(1, width()) + 1);
    for (int i = 0; i < all.size(); ++i) {
        const QRect bar = barOf(i);
        const bool isHovered = std::binary_search(mObjects[i].begin(), mObjects[i].end(), hovered);
        painter.fillRect(bar, palette().color(isHovered ? QPalette::Highlight : QPalette::Mid));
        painter.setPen(palette().color(QPalette::WindowText));
        const QRect column(bar.left() - labelWidth, 0, bar.width() + 2 * labelWidth, height());
        if (i % each == 0)
            painter.drawText(column.adjusted(0, height() - text, 0, 0), Qt::AlignCenter,
                             QString::number(i));
        if (all[i] > 0 && i % each == 0)
            painter.drawText(QRect(column.left(), bar.top() - text, column.width(), text),
                             Qt::AlignCenter, QString::number(all[i]));
    }
}

void LinkHistogram::mousePressEvent(QMouseEvent *event)
{
    for (int i = 0; i < mObjects.size(); ++i) {
        const QRect bar = barOf(i);
        if (event->x() < bar.left() || event->x() > bar.right())
            continue;
        mWorkspace.selection().select(mGeography, mObjects[i],
                                      event->modifiers() & Qt::ShiftModifier ? SelectionMode::Add
                                      : event->modifiers() & Qt::ControlModifier
                                          ? SelectionMode::Toggle
                                          : SelectionMode::Replace);
    }
}

} // namespace meridor
