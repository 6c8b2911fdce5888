// SPDX-License-Identifier: MIT
/// Conversions between the index of an object and the record of its geometry.
#pragma once
#include "datainterface/MVectorData.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace datainterface {

/// The object's chain; null for an index out of range and when the geometry does not have it.
FMObjectChain *chainOf(const MVectorData &geography, unsigned int object);
/// The record of the object's geometry at a time; -1 when the object does not exist then.
int recordAt(const MVectorData &geography, unsigned int object, qint64 time);
/// The object index of a record; -1 when it has none.
int objectOf(const MVectorData &geography, int recordId);

using fennimark::HeldObject;
using fennimark::HeldRecord;

} // namespace datainterface
