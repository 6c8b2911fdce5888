// SPDX-License-Identifier: MIT
/// Offers work that was not saved, with two buttons.
#pragma once
#include <QFrame>
#include "desk/project/workspace.h"

namespace meridor {

/// Disappears when it is answered. "Discard" deletes the file.
class RecoveryBar : public QFrame {
    Q_OBJECT
public:
    explicit RecoveryBar(const Recovery &recovery, QWidget *parent = nullptr);

Q_SIGNALS:
    void recoverWanted();
};

} // namespace meridor
