// SPDX-License-Identifier: MIT
/// Names that the user can tell apart.
#pragma once
#include <QSet>
#include <QString>

namespace datainterface {

/// `name`, or "name n" with the first n from 2 on that is not taken. Case counts.
QString uniqueName(const QString &name, const QSet<QString> &taken);

} // namespace datainterface
