// SPDX-License-Identifier: MIT
#include "desk/dialogs/linkHistogram.h"
#include <QComboBox>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>
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
    setObjectName(QStringLiteral("linkHistogram"));
    setFocusPolicy(Qt::StrongFocus);
    setToolTip(
        tr("Objects by their number of neighbours. A click selects those of a bar, as Space does; "
           "Shift adds them, Ctrl toggles."));
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
    mTrouble.clear();
    if (set >= 0 && !mWorkspace.isBusy()) {
        try { // a set of imported lists may have none for the time that is shown
            visitNeighbors(set, mWorkspace.timeOf(mGeography),
                           [&](int object, const QVector<neighborDatum> &neighbors) {
                               const int count = std::min(neighbors.size(), kMostBars);
                               if (mObjects.size() <= count)
                                   mObjects.resize(count + 1);
                               mObjects[count].append(static_cast<unsigned int>(object));
                           });
        } catch (const std::exception &error) {
            mObjects.clear();
            mTrouble = QString::fromUtf8(error.what());
        }
    }
    moveTo(mCurrent);
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
    if (!mTrouble.isEmpty()) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect().adjusted(0, mSets->geometry().bottom(), 0, 0),
                         Qt::AlignCenter | Qt::TextWordWrap, mTrouble);
        return;
    }
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
        if (i == mCurrent && hasFocus())
            painter.drawRect(bar.adjusted(0, -1, -1, 0));
        const QRect column(bar.left() - labelWidth, 0, bar.width() + 2 * labelWidth, height());
        if (i % each == 0)
            painter.drawText(column.adjusted(0, height() - text, 0, 0), Qt::AlignCenter,
                             QString::number(i));
        if (all[i] > 0 && i % each == 0)
            painter.drawText(QRect(column.left(), bar.top() - text, column.width(), text),
                             Qt::AlignCenter, QString::number(all[i]));
    }
}

void LinkHistogram::moveTo(int neighbors)
{
    mCurrent = std::clamp(neighbors, 0, std::max(0, mObjects.size() - 1));
    if (mCurrent < mObjects.size())
        setAccessibleDescription(
            tr("%1 objects have %2 neighbours").arg(mObjects[mCurrent].size()).arg(mCurrent));
    update();
}

void LinkHistogram::selectCurrent(Qt::KeyboardModifiers keys)
{
    if (mCurrent < mObjects.size())
        mWorkspace.selection().select(mGeography, mObjects[mCurrent],
                                      keys & Qt::ShiftModifier     ? SelectionMode::Add
                                      : keys & Qt::ControlModifier ? SelectionMode::Toggle
                                                                   : SelectionMode::Replace);
}

void LinkHistogram::mousePressEvent(QMouseEvent *event)
{
    for (int i = 0; i < mObjects.size(); ++i) {
        const QRect bar = barOf(i);
        if (event->x() < bar.left() || event->x() > bar.right())
            continue;
        moveTo(i);
        selectCurrent(event->modifiers());
    }
}

void LinkHistogram::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        return moveTo(mCurrent - 1);
    case Qt::Key_Right:
        return moveTo(mCurrent + 1);
    case Qt::Key_Home:
        return moveTo(0);
    case Qt::Key_End:
        return moveTo(mObjects.size() - 1);
    case Qt::Key_Space:
        return selectCurrent(event->modifiers());
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace meridor
