// SPDX-License-Identifier: MIT
/// The metadata of a geography that describe its coordinate system.
#pragma once

class FMProjectionInfo;
class MMetaData;

namespace datainterface {

/// The form of the unit of an unprojected geography: its name when the geography is created, its
/// code when it is opened or restored. Hosts and files rely on both.
enum class AngularUnit { Name, Code };

/// Sets the tags "Projection" and "Distance unit".
void setProjectionTags(MMetaData &metaData, const FMProjectionInfo &projection, AngularUnit unit);

} // namespace datainterface
