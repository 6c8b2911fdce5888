// SPDX-License-Identifier: MIT
#include "desk/views/classPanel.h"
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>
#include "core/project/text.h"
#include "core/render/classes.h"
#include "core/render/palette.h"
#include "desk/views/classLimits.h"

namespace meridor {
namespace {

constexpr int kBars = 60;
constexpr int kMostClasses = 64;
const QString kOwnLimits = QStringLiteral("own"); ///< in the list of methods

} // namespace

LimitsHistogram::LimitsHistogram(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("limits"));
    setAccessibleName(tr("Limits between classes"));
    setToolTip(tr("Drag a limit, or use the arrows; Insert adds one, Delete removes it."));
    setFocusPolicy(Qt::StrongFocus);
}

QSize LimitsHistogram::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 24, fontMetrics().height() * 6};
}

void LimitsHistogram::show(const QVector<double> &values, const QVector<double> &limits,
                           const QVector<QColor> &colors)
{
    if (mIsDragged)
        return; // the user holds a limit
    mInner = innerLimits(limits);
    mColors = colors;
    mCurrent = std::clamp(mCurrent, 0, std::max(0, static_cast<int>(mInner.size()) - 1));
    mBars.clear();
    mLow = mHigh = 0;
    const auto ends = std::minmax_element(values.begin(), values.end());
    if (!values.isEmpty()) {
        mLow = *ends.first;
        mHigh = *ends.second;
    }
    if (!limits.isEmpty()) {
        mLow = std::min(mLow, limits.first());
        mHigh = std::max(mHigh, limits.last());
    }
    const double width = mHigh - mLow;
    if (width > 0 && std::isfinite(width)) {
        mBars.fill(0, kBars);
        for (const double value : values)
            ++mBars[std::min(kBars - 1, static_cast<int>((value - mLow) / width * kBars))];
    }
    update();
}

QRectF LimitsHistogram::plot() const
{
    const double margin = fontMetrics().height() / 2.0;
    return QRectF(rect()).adjusted(margin, margin, -margin, -1.5 * fontMetrics().height());
}

double LimitsHistogram::xOf(double value) const
{
    const QRectF area = plot();
    return mHigh > mLow ? area.left() + (value - mLow) / (mHigh - mLow) * area.width()
                        : area.center().x();
}

double LimitsHistogram::valueAt(double x) const
{
    const QRectF area = plot();
    return mLow + std::clamp((x - area.left()) / area.width(), 0.0, 1.0) * (mHigh - mLow);
}

void LimitsHistogram::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRectF area = plot();
    painter.fillRect(rect(), palette().color(QPalette::Base));
    const QColor ink = palette().color(QPalette::Text);
    if (mBars.isEmpty()) {
        painter.setPen(ink);
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         tr("There are no different values."));
        return;
    }
    const int most = std::max(1, *std::max_element(mBars.begin(), mBars.end()));
    QColor faint = ink;
    faint.setAlpha(60);
    for (int i = 0; i < mBars.size(); ++i) {
        const double middle = mLow + (i + 0.5) / mBars.size() * (mHigh - mLow);
        const auto at = std::lower_bound(mInner.begin(), mInner.end(), middle) - mInner.begin();
        const double height = area.height() * mBars[i] / most;
        const QRectF bar(area.left() + i * area.width() / mBars.size(), area.bottom() - height,
                         area.width() / mBars.size(), height);
        painter.fillRect(bar, mColors.value(static_cast<int>(at), faint));
        painter.setPen(faint);
        painter.drawRect(bar);
    }
    for (int i = 0; i < mInner.size(); ++i) {
        const bool isCurrent = i == mCurrent && hasFocus();
        painter.setPen(
            QPen(isCurrent ? palette().color(QPalette::Highlight) : ink, isCurrent ? 3 : 1.5));
        painter.drawLine(QPointF(xOf(mInner[i]), area.top()),
                         QPointF(xOf(mInner[i]), area.bottom() + fontMetrics().height() / 4.0));
    }
    painter.setPen(ink);
    const QRectF below(area.left(), area.bottom() + fontMetrics().height() / 4.0, area.width(),
                       fontMetrics().height() * 1.2);
    painter.drawText(below, Qt::AlignLeft, shortNumber(mLow, 3));
    painter.drawText(below, Qt::AlignRight, shortNumber(mHigh, 3));
    if (!mInner.isEmpty() && (hasFocus() || mIsDragged))
        painter.drawText(below, Qt::AlignHCenter, shortNumber(mInner.value(mCurrent), 4));
}

int LimitsHistogram::limitNear(double x) const
{
    int found = -1;
    double nearest = fontMetrics().height() / 2.0;
    for (int i = 0; i < mInner.size(); ++i) {
        const double distance = std::abs(xOf(mInner[i]) - x);
        if (distance < nearest) {
            nearest = distance;
            found = i;
        }
    }
    return found;
}

void LimitsHistogram::moveTo(int limit, double value)
{
    const double pixel = (mHigh - mLow) / std::max(1.0, plot().width());
    const auto moved = withMovedLimit(mInner, limit, value, mLow, mHigh, pixel);
    if (!moved)
        return;
    mInner = *moved;
    update();
    Q_EMIT innerChanged(mInner);
}

void LimitsHistogram::mousePressEvent(QMouseEvent *event)
{
    const int limit = limitNear(event->localPos().x());
    if (event->button() != Qt::LeftButton || limit < 0)
        return;
    mCurrent = limit;
    mIsDragged = true;
    mGrip = xOf(mInner[limit]) - event->localPos().x();
    mBefore = mInner;
    update();
    Q_EMIT dragBegan();
}

void LimitsHistogram::mouseMoveEvent(QMouseEvent *event)
{
    if (mIsDragged)
        moveTo(mCurrent, valueAt(event->localPos().x() + mGrip));
}

void LimitsHistogram::mouseReleaseEvent(QMouseEvent *)
{
    if (!mIsDragged)
        return;
    mIsDragged = false;
    update();
    if (mInner != mBefore)
        Q_EMIT innerChanged(mInner); // shown anew, with all of its colours
}

bool LimitsHistogram::event(QEvent *event)
{
    // The key that clears the selection gives a drag up first.
    if (event->type() == QEvent::ShortcutOverride && mIsDragged
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void LimitsHistogram::keyPressEvent(QKeyEvent *event)
{
    const double step = (mHigh - mLow) / 100;
    switch (event->key()) {
    case Qt::Key_Up:
        mCurrent = std::min(mCurrent + 1, std::max(0, static_cast<int>(mInner.size()) - 1));
        return update();
    case Qt::Key_Down:
        mCurrent = std::max(mCurrent - 1, 0);
        return update();
    case Qt::Key_Left:
        return moveTo(mCurrent, mInner.value(mCurrent) - step);
    case Qt::Key_Right:
        return moveTo(mCurrent, mInner.value(mCurrent) + step);
    case Qt::Key_Insert: {
        if (mInner.size() >= kMostClasses - 1 || !(mHigh > mLow))
            return;
        const double low = mInner.isEmpty() ? mLow : mInner[mCurrent];
        const double high = mCurrent + 1 < mInner.size() ? mInner[mCurrent + 1] : mHigh;
        const double middle = low + (high - low) / 2;
        if (middle > low && middle < high) {
            mInner.insert(mInner.isEmpty() ? 0 : mCurrent + 1, middle);
            Q_EMIT innerChanged(mInner);
        }
        return;
    }
    case Qt::Key_Delete:
        if (mInner.size() > 1) {
            mInner.removeAt(mCurrent);
            mCurrent = std::min(mCurrent, static_cast<int>(mInner.size()) - 1);
            Q_EMIT innerChanged(mInner);
        }
        return;
    case Qt::Key_Escape:
        if (!mIsDragged)
            break;
        mIsDragged = false;
        if (std::exchange(mInner, mBefore) != mBefore)
            Q_EMIT dragGivenUp();
        return update();
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

namespace {

/// A strip of the colours of a palette.
QIcon rampIcon(const QVector<QColor> &colors, const QSize &size)
{
    QPixmap strip(size);
    strip.fill(Qt::transparent);
    QPainter painter(&strip);
    for (int i = 0; i < colors.size(); ++i)
        painter.fillRect(QRectF(i * size.width() / double(colors.size()), 0,
                                size.width() / double(colors.size()) + 1, size.height()),
                         colors[i]);
    return QIcon(strip);
}

} // namespace

ClassPanel::ClassPanel(QWidget *parent)
    : QWidget(parent),
      mMethod(new QComboBox(this)),
      mCount(new QSpinBox(this)),
      mPalette(new QComboBox(this)),
      mReversed(new QCheckBox(tr("From last colour to first"), this)),
      mAllTimes(new QCheckBox(tr("One legend for all times"), this)),
      mHistogram(new LimitsHistogram(this))
{
    setObjectName(QStringLiteral("classes"));
    const std::pair<const char *, QString> methods[] = {
        {"jenks", tr("Natural breaks")},       {"quantile", tr("Quantiles")},
        {"equal", tr("Equal intervals")},      {"stddev", tr("Standard deviations")},
        {"box", tr("Quartiles and outliers")}, {"unique", tr("Unique values")}};
    for (const auto &[name, text] : methods)
        mMethod->addItem(text, QLatin1String(name));
    mMethod->addItem(tr("Own limits"), kOwnLimits);
    mCount->setRange(1, kMostClasses);
    const QSize strip(4 * fontMetrics().height(), fontMetrics().height());
    mPalette->setIconSize(strip);
    mPalette->addItem(tr("As suits"), QString());
    for (const QString &name : paletteNames())
        mPalette->addItem(rampIcon(sequentialColors(name, 7), strip), name, name);
    for (const QString &name : unorderedPaletteNames())
        mPalette->addItem(rampIcon(categoricalColors(7, name), strip), name, name);
    const auto name = [](QWidget *widget, const char *object, const QString &text) {
        widget->setObjectName(QLatin1String(object));
        widget->setAccessibleName(text);
    };
    name(mMethod, "classMethod", tr("Method of classes"));
    name(mCount, "classCount", tr("Number of classes"));
    name(mPalette, "classPalette", tr("Colours"));
    name(mReversed, "classReversed", mReversed->text());
    name(mAllTimes, "classAllTimes", mAllTimes->text());
    auto *const layout = new QVBoxLayout(this);
    auto *const form = new QFormLayout;
    form->addRow(tr("&Method"), mMethod);
    form->addRow(tr("&Number"), mCount);
    form->addRow(tr("Co&lours"), mPalette);
    form->addRow(QString(), mReversed);
    form->addRow(QString(), mAllTimes);
    layout->addLayout(form);
    layout->addWidget(mHistogram);
    layout->addStretch();

    connect(mMethod, QOverload<int>::of(&QComboBox::activated), this, [this] { edited(); });
    connect(mCount, QOverload<int>::of(&QSpinBox::valueChanged), this, [this] { edited(); });
    connect(mPalette, QOverload<int>::of(&QComboBox::activated), this, [this] { edited(); });
    connect(mReversed, &QCheckBox::toggled, this, [this] { edited(); });
    connect(mAllTimes, &QCheckBox::toggled, this, [this] { edited(); });
    connect(mHistogram, &LimitsHistogram::innerChanged, this, [this](const QVector<double> &inner) {
        mRule.limits = inner;
        mMethod->setCurrentIndex(mMethod->findData(kOwnLimits));
        edited();
    });
    connect(mHistogram, &LimitsHistogram::dragBegan, this, [this] { mKept = mRule; });
    connect(mHistogram, &LimitsHistogram::dragGivenUp, this, [this] {
        show(mKept,
             mAllTimes->isHidden() ? std::nullopt : std::make_optional(mAllTimes->isChecked()),
             mIsNumeric);
        tellRule();
    });
}

void ClassPanel::show(const ClassRule &rule, std::optional<bool> allTimes, bool isNumeric)
{
    mIsShowing = true;
    mRule = rule;
    mIsNumeric = isNumeric;
    const QString method = rule.method.isEmpty()
                               ? isNumeric ? QStringLiteral("jenks") : QStringLiteral("unique")
                               : rule.method;
    mMethod->setCurrentIndex(rule.limits.isEmpty() ? mMethod->findData(method)
                                                   : mMethod->findData(kOwnLimits));
    mCount->setValue(rule.limits.isEmpty() ? rule.count : rule.limits.size() + 1);
    mPalette->setCurrentIndex(std::max(0, mPalette->findText(rule.palette, Qt::MatchFixedString)));
    mReversed->setChecked(rule.reversed);
    mAllTimes->setVisible(allTimes.has_value());
    mAllTimes->setChecked(allTimes.value_or(true));
    enableParts();
    mIsShowing = false;
}

void ClassPanel::showValues(const QVector<double> &values, const QVector<double> &limits,
                            const QVector<QColor> &colors)
{
    mHistogram->setVisible(mIsNumeric && !limits.isEmpty());
    mHistogram->show(values, limits, colors);
}

void ClassPanel::enableParts()
{
    const QString method = mMethod->currentData().toString();
    mMethod->setEnabled(mIsNumeric);
    mCount->setEnabled(mIsNumeric && classificationNames().contains(method));
}

void ClassPanel::edited()
{
    if (mIsShowing)
        return;
    const bool isOwn = mMethod->currentData() == kOwnLimits;
    if (isOwn && mRule.limits.isEmpty())
        mRule.limits = mHistogram->inner();
    if (!isOwn || mRule.limits.isEmpty()) {
        mRule.limits.clear();
        mRule.method = mIsNumeric && !isOwn ? mMethod->currentData().toString() : QString();
        mRule.count = mCount->value();
    } else {
        mRule.method.clear();
    }
    mRule.palette = mPalette->currentData().toString();
    mRule.reversed = mReversed->isChecked();
    enableParts();
    tellRule();
}

void ClassPanel::tellRule()
{
    Q_EMIT ruleChanged(mRule, mAllTimes->isHidden() || mAllTimes->isChecked());
}

} // namespace meridor
