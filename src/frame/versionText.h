// SPDX-License-Identifier: MIT
/// The version of the project form as the file and the user see it.
#pragma once

namespace datainterface {

/// serializationVersionNumber as major.minor.build.
constexpr char kVersionText[] = "4.00.021";

} // namespace datainterface
