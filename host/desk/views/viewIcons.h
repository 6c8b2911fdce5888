// SPDX-License-Identifier: MIT
/// Icons of the views' tools, drawn as lines in the colour of the palette's texts, sharp at every
/// scale.
#pragma once
#include <QIcon>

namespace meridor {

enum class ViewIcon {
    Select,
    Lasso,
    Circle,
    Move,
    Back,
    Forward,
    Clear,
    Invert,
    Link,
    Export,
    Fit,
    Focus,
    Classes,
    More
};

QIcon viewIcon(ViewIcon which);

} // namespace meridor
