// SPDX-License-Identifier: MIT
/// The times of a geography: a slider over the steps at which something changes, and playing them.
#pragma once
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QSlider;
class QToolButton;

namespace meridor {

class View;
class Workspace;

class TimeBar : public QWidget {
    Q_OBJECT
public:
    explicit TimeBar(Workspace &workspace, QWidget *parent = nullptr);

    /// @param view  the one whose group follows; null: all views do.
    void setGeography(int geography, View *view);
    int geography() const { return mGeography; }
    bool isPlaying() const { return mTimer.isActive(); }

public Q_SLOTS:
    void first();
    void previous();
    void next();
    void last();
    void play(bool plays);
    void setInStep(bool inStep);

Q_SIGNALS:
    void playing(bool plays);

protected:
    void changeEvent(QEvent *event) override;

private:
    void showSteps();
    void showTime();
    void goToStep(int step);
    void setSpeed(int index);
    void showSigns();
    QToolButton *makeButton(const QString &name, const char *objectName);

    Workspace &mWorkspace;
    int mGeography = -1;
    QPointer<View> mView;
    QTimer mTimer;
    QLabel *mName;
    QSlider *mSlider;
    QLabel *mTime;
    QToolButton *mBack;
    QToolButton *mPlay;
    QToolButton *mForth;
    QComboBox *mSpeed;
    QCheckBox *mInStep;
};

} // namespace meridor
