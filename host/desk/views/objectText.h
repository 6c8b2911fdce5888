// SPDX-License-Identifier: MIT
/// How views name objects for people.
#pragma once
#include <QString>
#include <QtGlobal>
#include <vector>

class MAttributes;

namespace meridor {

/// Names the objects of a geography one at a time, without reading the names of all.
class ObjectText {
public:
    explicit ObjectText(int geography = -1) : mGeography(geography) {}
    /// Another dataset may hold the names or keys now.
    void forget() { mIsKnown = false; }
    /// The name, else the key; of a cell, its column and row. Reads the library.
    QString of(int object, qint64 time);

private:
    void find();

    int mGeography;
    bool mIsKnown = false;
    int mNames = -1;
    int mKeys = -1;
    int mColumns = 0; ///< of a grid; 0: the objects are no cells
};

/// One byte for each object, or cell, which is not 0 where the flag is set; null if there are no
/// flags.
/// @param scratch  holds the flags of cells, which are stored as bits.
const unsigned char *flagBytes(MAttributes *attributes, int attribute,
                               std::vector<unsigned char> &scratch);

} // namespace meridor
