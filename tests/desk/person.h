// SPDX-License-Identifier: MIT
/// What a person does with the desktop, for its tests: mouse, keys, drops and names of files. Nothing
/// here depends on the speed of the machine, on the activation that progress dialogs take away, or on
/// the settings of a user.
#pragma once
#include <QApplication>
#include <QPointF>
#include <QString>
#include <QTemporaryDir>
#include <QVector>
#include <QtTest>
#include <functional>
#include "desk/window/application.h"

class QMimeData;
class QWidget;

namespace meridor {

/// Milliseconds until a wait for an event fails. It ends as soon as the event comes, so only a failing
/// test takes long.
constexpr int kPatience = 120'000;

/// Settings, recovery copies and caches of one test program, without copies at intervals. To be made
/// before the application.
class OwnHome {
public:
    OwnHome();

private:
    QTemporaryDir mFolder;
};

template <class Test> int runTest(int argc, char **argv)
{
    const OwnHome home;
    Application application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

/// Keeps a warning of the offscreen platform about each window out of the output. To be called when
/// the test runs, since QTest brings its own handler of messages.
void muteSizeHints();
/// Waits until the window has the activation, which shortcuts need.
bool activate(QWidget &window);
/// Runs the events and timers that are due.
void settle();

/// Moves the focus to the widget and types.
void type(QWidget &widget, Qt::Key key, Qt::KeyboardModifiers keys = {});
/// Presses at the first place, moves through all, and releases at the last one.
void drag(QWidget &widget, const QVector<QPointF> &places, Qt::KeyboardModifiers keys = {},
          Qt::MouseButton button = Qt::LeftButton);
void click(QWidget &widget, const QPointF &place, Qt::KeyboardModifiers keys = {});
/// Moves the mouse without a button.
void pointAt(QWidget &widget, const QPointF &place);
/// @param clicks  of the wheel, away from the person.
void turnWheel(QWidget &widget, const QPointF &place, int clicks);
/// Drags onto a widget and lets go. @return whether it took the data.
bool drop(QWidget &widget, const QMimeData &data);
/// Calls what asks for the name of a file, and gives it one in the dialog. @return whether it asked.
bool withFileName(const QString &file, const std::function<void()> &ask);

/// The weight set "queen", row-standardized, of polygons. @return its id; -1 if it was not made.
int makeQueen(Workspace &workspace, int geography);

/// For messages of failures.
QString text(const QVector<unsigned int> &objects);

} // namespace meridor
