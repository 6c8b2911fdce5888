// SPDX-License-Identifier: MIT
/// The block store: bytes by integer id, in a write-back cache over one scratch file.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QString>
#include "datainterface/export.h"

/// Sets the scratch directory (made when missing) and the cache's limit in bytes, and starts an
/// empty scratch file. Geometry stores keep their large files in that directory, too. Raises
/// "opened" when the file cannot be made.
DATAINTERFACE_EXPORT void InitializeDataManager(const QString &directory, int cacheBytes);
/// Forgets every block and starts a new empty scratch file.
DATAINTERFACE_EXPORT void ResetDataManager();
/// Forgets every block and deletes the scratch file.
DATAINTERFACE_EXPORT void ClearDataManager();
/// Stores bytes as a new block. A block of the host's own is saved with the project and comes back
/// under its id.
/// @return the new block's id; ids rise from 0 and are never reused. Raises "result", with nothing
/// changed, when the cache must write something back for it and cannot; the call can be made again
/// when there is room.
DATAINTERFACE_EXPORT int SaveDataBlock(const QByteArray &bytes);
/// False, with `bytes` untouched, when the id is unknown; false with `bytes` empty when the read
/// fails. The bytes are shared with the cache. Raises "result" as SaveDataBlock does.
DATAINTERFACE_EXPORT bool ReadDataBlock(int id, QByteArray &bytes);
/// False when the block never reached the scratch file; it is gone all the same.
DATAINTERFACE_EXPORT bool DeleteDataBlock(int id);
/// All blocks, in ascending id order; false when the user cancels or the device refuses.
DATAINTERFACE_EXPORT bool SaveProjectData(QDataStream &out, bool compress);
/// False when the user cancels or the data are bad. Raises "File stream not open" without a scratch
/// file.
DATAINTERFACE_EXPORT bool RestoreProjectData(QDataStream &in, bool compressed);
/// How SaveProjectData packs: 0 (the default) through qCompress at level 9; 1 to 12 through
/// libdeflate into the same form for readers. Level 1 is several times faster and its files some
/// percent larger, level 6 is twice as fast at the same size, level 12 is slower and its files are
/// smaller. Other levels are ignored.
DATAINTERFACE_EXPORT void VORN_SetProjectCompression(int level);
