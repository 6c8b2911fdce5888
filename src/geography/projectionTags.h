// SPDX-License-Identifier: MIT
/// What a geography's metadata say of its coordinate system.
#pragma once

class FMProjectionInfo;
class MMetaData;

namespace datainterface {

/// How the unit of an unprojected geography is told: by name while it is made, by its code when it
/// is opened or restored. Hosts and files have come to hold both.
enum class AngularUnit { Name, Code };

/// Sets the tags "Projection" and "Distance unit".
void setProjectionTags(MMetaData &metaData, const FMProjectionInfo &projection, AngularUnit unit);

} // namespace datainterface
