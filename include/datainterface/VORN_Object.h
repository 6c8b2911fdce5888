// SPDX-License-Identifier: MIT
/// The handle of one geometry that is checked out.
#pragma once

class HilbertTree;
class HilbertTreeRecord;

/// Both null: no object. Passed by value; good until VORN_ReturnObject, which is called once, while
/// the geography lives.
struct VORN_Object {
    HilbertTree *tree = nullptr;
    HilbertTreeRecord *record = nullptr;
};
