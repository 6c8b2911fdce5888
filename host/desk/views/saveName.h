// SPDX-License-Identifier: MIT
/// The question for the name of a file that is written.
#pragma once
#include <QString>

class QWidget;

namespace meridor {

/// @param filters  as QFileDialog takes them: "Pictures (*.png);;Drawings (*.svg)". A name without an
///                 extension gets that of the chosen filter before the dialog asks whether an existing
///                 file is to be replaced.
/// @return empty if the user gives no name.
QString askSaveName(QWidget *parent, const QString &title, const QString &filters);

} // namespace meridor
