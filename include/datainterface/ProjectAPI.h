// SPDX-License-Identifier: MIT
/// The project file: the whole model in one stream.
#pragma once
#include <QString>
#include "datainterface/export.h"

/// Writes the model in place: after a failure or a cancel the file is partial. A host that wants an
/// atomic save writes beside the target and moves. False on a failure and on a cancel, without a
/// message; an exception behind it does not come out. Containers must be checked in before.
DATAINTERFACE_EXPORT bool VORN_SaveProject(const QString &fileName);

/// Reads a project of this version or an older one. The block store is emptied once the file is
/// open, also when the file turns out to be no project; the geographies that are there stay without
/// their values, so the host unloads first. One that has the id of a geography in the file goes
/// through ControllerBase::RemoveGeography before that is read. After a failure the geographies
/// restored so far are in the controller's map. Raises "opened" when a new scratch file cannot be
/// made; no other failure raises, and none shows a message.
DATAINTERFACE_EXPORT bool VORN_LoadProject(const QString &fileName);

/// Empties the block store, calls ControllerBase::RemoveGeography for each geography in order of id
/// (deleting them is the override's part) and drops the nonconditional variogram models. Raises
/// "opened" when a new scratch file cannot be made.
DATAINTERFACE_EXPORT void VORN_UnloadProject();
