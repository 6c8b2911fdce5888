// SPDX-License-Identifier: MIT
/// The handle of a geometry that is checked out.
#pragma once

class HilbertTree;
class HilbertTreeRecord;

/// Names a record of a geography's tree and keeps its live object in memory. The tree owns the
/// object; the handle is a plain value, and copies of it are the same check-out. The handle is
/// valid until VORN_ReturnObject, which must be called once while the geography exists. Both
/// pointers null: no object.
struct VORN_Object {
    HilbertTree *tree = nullptr;
    HilbertTreeRecord *record = nullptr;
};
