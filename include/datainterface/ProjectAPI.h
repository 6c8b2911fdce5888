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

/// Empties the block store, calls ControllerBase::RemoveGeography for each geography in order of id
/// (the override deletes them) and deletes the nonconditional variogram models. Raises "opened"
/// when a new scratch file cannot be created.
DATAINTERFACE_EXPORT void VORN_UnloadProject();
