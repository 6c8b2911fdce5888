// SPDX-License-Identifier: MIT
/// The form in which classes are edited: method, count, colours, and limits that are dragged in a
/// histogram of the values.
#pragma once
#include <QColor>
#include <QVector>
#include <QWidget>
#include <optional>
#include "core/render/classification.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QSpinBox;

namespace meridor {

/// A histogram of values with the limits between classes. Limits move by the mouse and by keys: up
/// and down choose one, left and right move it, Insert adds one and Delete removes it. Escape gives a
/// drag of the mouse up.
class LimitsHistogram : public QWidget {
    Q_OBJECT
public:
    explicit LimitsHistogram(QWidget *parent = nullptr);

    /// @param limits  ascending, one more than colours; empty: classes without limits.
    void show(const QVector<double> &values, const QVector<double> &limits,
              const QVector<QColor> &colors);
    /// Between the classes: without the first and the last.
    const QVector<double> &inner() const { return mInner; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    void innerChanged(const QVector<double> &inner);
    /// The mouse takes hold of a limit.
    void dragBegan();
    /// What was before the drag holds again.
    void dragGivenUp();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QRectF plot() const;
    double xOf(double value) const;
    double valueAt(double x) const;
    int limitNear(double x) const;
    void moveTo(int limit, double value);

    double mLow = 0;
    double mHigh = 0;
    QVector<int> mBars;
    QVector<double> mInner;
    QVector<QColor> mColors;
    int mCurrent = 0;
    bool mIsDragged = false;
    double mGrip = 0;        ///< from the mouse to the limit that it holds, in pixels
    QVector<double> mBefore; ///< the limits before the drag
};

class ClassPanel : public QWidget {
    Q_OBJECT
public:
    explicit ClassPanel(QWidget *parent = nullptr);

    /// What is edited. No signal is emitted.
    /// @param allTimes  nothing: values that do not change have no such choice.
    void show(const ClassRule &rule, std::optional<bool> allTimes, bool isNumeric);
    void showValues(const QVector<double> &values, const QVector<double> &limits,
                    const QVector<QColor> &colors);

Q_SIGNALS:
    void ruleChanged(const ClassRule &rule, bool allTimes);

private:
    void edited();
    void tellRule();
    void enableParts();

    ClassRule mRule;
    ClassRule mKept; ///< before a limit was dragged
    bool mIsShowing = false;
    bool mIsNumeric = true;
    QComboBox *mMethod;
    QSpinBox *mCount;
    QComboBox *mPalette;
    QCheckBox *mReversed;
    QCheckBox *mAllTimes;
    LimitsHistogram *mHistogram;
};

} // namespace meridor
