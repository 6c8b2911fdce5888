// SPDX-License-Identifier: MIT
/// From the index of an object to the record of its geometry and back.
#pragma once
#include "datainterface/MVectorData.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace datainterface {

/// The object's chain; null for an index out of range and when the geometry has lost it.
FMObjectChain *chainOf(const MVectorData &geography, unsigned int object);
/// The record that carries the object's geometry at a time; -1 when it does not exist then.
int recordAt(const MVectorData &geography, unsigned int object, qint64 time);
/// The object index behind a record; -1 when it has none.
int objectOf(const MVectorData &geography, int recordId);

using fennimark::HeldObject;
using fennimark::HeldRecord;

} // namespace datainterface
