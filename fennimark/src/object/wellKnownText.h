// SPDX-License-Identifier: MIT
/// The names and units of a coordinate system in well-known text, form 1 or 2.
#pragma once
#include <QString>

namespace fennimark {

struct SystemNames {
    QString projection; ///< empty when the system is not projected
    QString geographic;
    QString linearUnit;
    QString angularUnit;
    double angularFactor = 0.0; ///< radians in one angular unit; 0 unknown
};

/// Reads the names of the outermost projected and geographic system. False for text that is not a
/// well-formed projected or geographic system, nor a compound or bound system of one.
bool readWellKnownText(const QString &text, SystemNames &names);

} // namespace fennimark
