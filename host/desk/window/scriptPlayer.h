// SPDX-License-Identifier: MIT
/// Plays steps of a user, for tests and for the pictures of the documentation.
#pragma once
#include <QJsonArray>
#include <QString>

namespace meridor {

class MainWindow;
class MethodRegister;
class Workspace;

/// The steps of a file. Raises a Failure that names the file if it holds none.
QJsonArray stepsOfFile(const QString &path);

/// The steps are described in docs/desk.md. Raises a Failure that names the first step that fails,
/// and why.
void playSteps(MainWindow &window, Workspace &workspace, const MethodRegister &methods,
               const QJsonArray &steps);

/// Lets windows and timers work.
void rest(int milliseconds);

/// The window, and the dialogs above it, as they are on the screen, as a PNG file. Raises a Failure.
void saveWindow(MainWindow &window, const QString &file);

} // namespace meridor
