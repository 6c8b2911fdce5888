// SPDX-License-Identifier: MIT
/// Names that are unique among given ones.
#pragma once
#include <QSet>
#include <QString>

namespace datainterface {

/// `name`, or "name n" with the first n from 2 on that is not taken. Upper and lower
/// case differ.
QString uniqueName(const QString &name, const QSet<QString> &taken);

} // namespace datainterface
