// SPDX-License-Identifier: MIT
/// The pages of the help, which are those of the documentation.
#pragma once
#include <QUrl>

namespace meridor {

/// @param topic  a page with or without a heading, such as "meridor.md#moran", or a heading of
///               desk.md. Empty if there is no such page.
QUrl helpPage(const QString &topic);

} // namespace meridor
