// SPDX-License-Identifier: MIT
/// The project file: the whole model in one stream.
#pragma once
#include <QString>
#include "datainterface/export.h"

/// Writes the model directly to the file, which is incomplete after a failure or a cancel. A host
/// that needs an atomic save writes to another file and renames it. Returns false on a failure and
/// on a cancel, without a message; exceptions are caught. All containers must be checked in before.
/// Also false, with the file untouched, when a data source was resized to another number of objects
/// than its geography has.
DATAINTERFACE_EXPORT bool VORN_SaveProject(const QString &fileName);

/// Reads a project of this version or an older one. The block store is emptied once the file is
/// open, even if the file is not a project. Present geographies stay but lose their values, so the
/// host should unload first. ControllerBase::RemoveGeography is called for a present geography
/// before one with the same id is read. After a failure the geographies that were restored are in
/// the controller's map. Raises "opened" when a new scratch file cannot be created; no other
/// failure raises, and none shows a message.
DATAINTERFACE_EXPORT bool VORN_LoadProject(const QString &fileName);

/// Whether VORN_LoadProject leaves the values packed in the file, for hosts that read only some of
/// them. Off by default: a load then unpacks all of them.
///
/// A load with this setting on reads geographies and shapes, and of each block its place in the
/// file. A block is unpacked when it is first read, and is cached like any other. The file stays
/// open until the next load or unload:
/// - A file that another one replaced by a rename stays readable. One that was written in place, or
///   cut, is recognised by its size and time of change.
/// - A block that is damaged, or whose file was changed, fails when it is read, as ReadDataBlock
///   does, with the failure result of the call that needed it; other blocks stay readable.
/// - VORN_SaveProject to this file unpacks all blocks first and fails, with the file untouched, if
///   one of them cannot be unpacked. To another file it copies the blocks that are still packed as
///   they are, unless VORN_SetProjectCompression is at level 0, for which they are packed again.
///
/// Files before version 180005, which hold values among the datasets, and sequential devices are
/// loaded whole. The setting applies to later loads.
DATAINTERFACE_EXPORT void VORN_SetProjectLoading(bool keepPacked);

/// The name of the project file of which a block could not be read since it was loaded; empty when
/// all could. Results since then may lack values. Kept until the next load or unload, also when the
/// store is closed.
DATAINTERFACE_EXPORT QString VORN_GetUnreadableProjectFile();

/// Empties the block store, calls ControllerBase::RemoveGeography for each geography in order of id
/// (the override deletes them) and deletes the nonconditional variogram models. Raises "opened"
/// when a new scratch file cannot be created.
DATAINTERFACE_EXPORT void VORN_UnloadProject();
