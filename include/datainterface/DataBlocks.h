// SPDX-License-Identifier: MIT
/// The block store: byte arrays by integer id, in a write-back cache over one scratch file.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QString>
#include "datainterface/export.h"

/// Sets the scratch directory, which is created when missing, and the limit of the cache in bytes,
/// and starts an empty scratch file. Geometry stores keep their large files in the same directory.
/// Raises "opened" when the file cannot be created.
DATAINTERFACE_EXPORT void InitializeDataManager(const QString &directory, int cacheBytes);
/// Drops every block and starts a new, empty scratch file.
DATAINTERFACE_EXPORT void ResetDataManager();
/// Drops every block and deletes the scratch file.
DATAINTERFACE_EXPORT void ClearDataManager();
/// Stores bytes as a new block. A block that the host stores itself is saved with the project and
/// is restored under the same id.
/// @return the id of the block; ids ascend from 0 and are never reused. Raises "result", with
///         nothing changed, when the cache has to write back another block and cannot; the call can
///         be repeated when there is room.
DATAINTERFACE_EXPORT int SaveDataBlock(const QByteArray &bytes);
/// Returns false with `bytes` unchanged when the id is unknown, and false with `bytes` empty when
/// the read fails. The array shares its bytes with the cache. Raises "result" as SaveDataBlock
/// does.
DATAINTERFACE_EXPORT bool ReadDataBlock(int id, QByteArray &bytes);
/// Deletes a block. The result is false when the block had not been written to the scratch file; it
/// is deleted all the same.
DATAINTERFACE_EXPORT bool DeleteDataBlock(int id);
/// Writes all blocks in ascending order of id. False when the user cancels or a write fails.
DATAINTERFACE_EXPORT bool SaveProjectData(QDataStream &out, bool compress);
/// Reads what SaveProjectData wrote. False when the user cancels or the data are corrupt. Raises
/// "File stream not open" without a scratch file.
DATAINTERFACE_EXPORT bool RestoreProjectData(QDataStream &in, bool compressed);
/// How SaveProjectData packs: 0 (the default) through qCompress at level 9; 1 to 12 through
/// libdeflate, in the same form. Level 1 is several times faster and gives slightly larger files,
/// level 6 is twice as fast at the same size, and level 12 is slower and gives smaller files. Other
/// levels are ignored. Level 1 packs blocks of 512 KiB and more in segments through ISA-L, so that
/// parts of them can be read from a project that stays packed (VORN_SetProjectLoading).
DATAINTERFACE_EXPORT void VORN_SetProjectCompression(int level);
