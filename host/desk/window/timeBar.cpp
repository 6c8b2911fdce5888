// SPDX-License-Identifier: MIT
#include "desk/window/timeBar.h"
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <algorithm>
#include "core/project/catalog.h"
#include "desk/models/plainText.h"
#include "desk/views/view.h"

namespace meridor {
namespace {

constexpr double kSpeeds[] = {0.5, 1, 2, 4, 8, 16}; // steps a second
constexpr int kUsualSpeed = 2;
constexpr int kMostNameWidth = 16; // heights of the font

enum class Sign { Back, Play, Pause, Forth };

/// In the colour of the palette's texts, unlike those of the style.
QIcon signIcon(Sign sign, const QPalette &palette)
{
    QPainterPath path; // in a square of 16
    const auto triangle = [&path](double from, double to) {
        path.addPolygon(QPolygonF({{from, 3}, {to, 8}, {from, 13}, {from, 3}}));
    };
    switch (sign) {
    case Sign::Back:
        triangle(12, 4);
        path.addRect(3, 3, 1.5, 10);
        break;
    case Sign::Play:
        triangle(4, 13);
        break;
    case Sign::Pause:
        path.addRect(4, 3, 3, 10);
        path.addRect(9, 3, 3, 10);
        break;
    case Sign::Forth:
        triangle(4, 12);
        path.addRect(11.5, 3, 1.5, 10);
        break;
    }
    QIcon icon;
    for (const bool isEnabled : {true, false}) {
        for (const int side : {16, 32, 64}) {
            QPixmap picture(side, side);
            picture.fill(Qt::transparent);
            QPainter painter(&picture);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.scale(side / 16.0, side / 16.0);
            painter.fillPath(path, palette.color(isEnabled ? QPalette::Active : QPalette::Disabled,
                                                 QPalette::Text));
            painter.end();
            icon.addPixmap(picture, isEnabled ? QIcon::Normal : QIcon::Disabled);
        }
    }
    return icon;
}

/// The last step that is not after `time`.
int stepAt(const QVector<qint64> &steps, qint64 time)
{
    const auto after = std::upper_bound(steps.begin(), steps.end(), time);
    return std::max(0, static_cast<int>(after - steps.begin()) - 1);
}

} // namespace

TimeBar::TimeBar(Workspace &workspace, QWidget *parent)
    : QWidget(parent),
      mWorkspace(workspace),
      mName(new QLabel),
      mSlider(new QSlider(Qt::Horizontal)),
      mTime(new QLabel),
      mSpeed(new QComboBox),
      mInStep(new QCheckBox(tr("In step")))
{
    setObjectName(QStringLiteral("timeBar"));
    setAccessibleName(tr("Time"));
    auto *const row = new QHBoxLayout(this);
    mName->setObjectName(QStringLiteral("timeGeography"));
    mName->setTextFormat(Qt::PlainText);
    row->addWidget(mName);
    mBack = makeButton(tr("Step back"), "timePrevious");
    connect(mBack, &QToolButton::clicked, this, &TimeBar::previous);
    mPlay = makeButton(tr("Play"), "timePlay");
    mPlay->setCheckable(true);
    connect(mPlay, &QToolButton::toggled, this, &TimeBar::play);
    mForth = makeButton(tr("Step forward"), "timeNext");
    connect(mForth, &QToolButton::clicked, this, &TimeBar::next);
    for (QToolButton *const button : {mBack, mPlay, mForth})
        row->addWidget(button);
    mSlider->setObjectName(QStringLiteral("timeSlider"));
    mSlider->setAccessibleName(tr("Time of the shown geography"));
    mSlider->setPageStep(10);
    row->addWidget(mSlider, 1);
    mTime->setObjectName(QStringLiteral("timeText"));
    mTime->setAccessibleName(tr("Shown time"));
    row->addWidget(mTime);
    for (const double speed : kSpeeds)
        mSpeed->addItem(tr("%1 a second").arg(speed));
    mSpeed->setObjectName(QStringLiteral("timeSpeed"));
    mSpeed->setAccessibleName(tr("Speed of playing"));
    mSpeed->setCurrentIndex(kUsualSpeed);
    row->addWidget(mSpeed);
    mInStep->setObjectName(QStringLiteral("timeInStep"));
    mInStep->setToolTip(tr("All geographies with times of the same kind show the same time"));
    row->addWidget(mInStep);

    connect(mSlider, &QSlider::valueChanged, this, &TimeBar::goToStep);
    connect(mSpeed, qOverload<int>(&QComboBox::currentIndexChanged), this, &TimeBar::setSpeed);
    connect(mInStep, &QCheckBox::toggled, this, &TimeBar::setInStep);
    connect(&mTimer, &QTimer::timeout, this, [this] {
        if (!mWorkspace.isBusy())
            next();
    });
    setSpeed(kUsualSpeed);
    showSigns();
    connect(&workspace, &Workspace::timeChanged, this, [this](int geography) {
        if (geography == mGeography)
            showTime();
    });
    const auto again = [this](int geography) {
        if (geography == mGeography)
            showSteps();
    };
    connect(&workspace, &Workspace::stepsChanged, this, again);
    connect(&workspace, &Workspace::geographyRenamed, this, again);
    connect(&workspace, &Workspace::geographyDying, this, [this](int geography) {
        if (geography == mGeography)
            setGeography(-1, nullptr);
    });
    showSteps();
}

QToolButton *TimeBar::makeButton(const QString &name, const char *objectName)
{
    auto *const button = new QToolButton;
    button->setObjectName(QLatin1String(objectName));
    button->setAccessibleName(name);
    button->setToolTip(name);
    button->setAutoRaise(true);
    return button;
}

void TimeBar::showSigns()
{
    mBack->setIcon(signIcon(Sign::Back, palette()));
    mPlay->setIcon(signIcon(isPlaying() ? Sign::Pause : Sign::Play, palette()));
    mForth->setIcon(signIcon(Sign::Forth, palette()));
}

void TimeBar::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showSigns();
}

void TimeBar::setGeography(int geography, View *view)
{
    mView = view;
    if (geography == mGeography)
        return;
    play(false);
    mGeography = geography;
    showSteps();
}

void TimeBar::showSteps()
{
    const int count = mGeography < 0 ? 0 : mWorkspace.stepsOf(mGeography).size();
    const QSignalBlocker quiet(mSlider);
    mSlider->setRange(0, std::max(0, count - 1));
    const QString name = mGeography < 0 ? QString() : geographyName(mGeography);
    mName->setText(
        fontMetrics().elidedText(name, Qt::ElideMiddle, kMostNameWidth * fontMetrics().height()));
    mName->setToolTip(plainTip(name));
    setEnabled(count > 1);
    int width = 0;
    if (count > 1) {
        const TimeAxis axis = axisOf(mGeography);
        const QVector<qint64> &steps = mWorkspace.stepsOf(mGeography);
        for (const qint64 time : {steps.first(), steps.last()})
            width = std::max(width, fontMetrics().horizontalAdvance(axis.show(time)));
    }
    mTime->setMinimumWidth(width);
    showTime();
}

void TimeBar::showTime()
{
    if (mGeography < 0) {
        mTime->clear();
        return;
    }
    const qint64 time = mWorkspace.timeOf(mGeography);
    const QVector<qint64> &steps = mWorkspace.stepsOf(mGeography);
    const QSignalBlocker quiet(mSlider);
    mSlider->setValue(stepAt(steps, time));
    mTime->setText(steps.size() > 1 ? axisOf(mGeography).show(time)
                                    : tr("does not change over time"));
}

void TimeBar::goToStep(int step)
{
    if (mGeography < 0)
        return;
    const QVector<qint64> &steps = mWorkspace.stepsOf(mGeography);
    if (step < 0 || step >= steps.size())
        return;
    const qint64 time = steps[step];
    if (mView && mView->geography() == mGeography)
        mView->goTo(time);
    else
        mWorkspace.setTime(mGeography, time);
}

void TimeBar::first()
{
    mSlider->setValue(mSlider->minimum());
}

void TimeBar::previous()
{
    mSlider->setValue(mSlider->value() - 1);
}

void TimeBar::next()
{
    if (mSlider->value() == mSlider->maximum())
        play(false);
    mSlider->setValue(mSlider->value() + 1);
}

void TimeBar::last()
{
    mSlider->setValue(mSlider->maximum());
}

void TimeBar::play(bool plays)
{
    if (plays == mTimer.isActive())
        return;
    if (plays && mSlider->value() == mSlider->maximum())
        first();
    plays ? mTimer.start() : mTimer.stop();
    mPlay->setChecked(plays);
    showSigns();
    Q_EMIT playing(plays);
}

void TimeBar::setInStep(bool inStep)
{
    mInStep->setChecked(inStep);
    mWorkspace.setInStep(inStep);
    if (inStep && mGeography >= 0)
        mWorkspace.setTime(mGeography, mWorkspace.timeOf(mGeography));
}

void TimeBar::setSpeed(int index)
{
    mTimer.setInterval(static_cast<int>(1000 / kSpeeds[index]));
}

} // namespace meridor
