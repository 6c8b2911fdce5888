// SPDX-License-Identifier: MIT
/// Fills a table row by row with the texts of a file: decodes them and recognises missing cells.
#pragma once
#include <vector>
#include "core/formats/ogrReader.h"
#include "core/formats/textEncoding.h"

namespace meridor {

class TableWriter {
public:
    TableWriter(FeatureTable &table, const ReadOptions &options, const QString &encoding);

    /// Adds a column without a type. Raises WrongEncoding for its name, like addCell for a text.
    Column &addColumn(std::string_view name);
    /// Called after the last column: checks the names and determines which columns are kept.
    void startRows();
    bool isKept(int column) const { return mKept[static_cast<size_t>(column)]; }

    /// Adds the cell of the present row to the next column that is kept.
    void addCell(int column, std::string_view text);
    /// Adds the point of two cells, if the options name them.
    bool addPoint();
    void endRow(int percent);
    QString decoded(const char *text) { return mDecoder.decoded(text); }

private:
    int requireCoordinate(const QString &name) const;
    double coordinate(int column) const;

    FeatureTable &mTable;
    const ReadOptions &mOptions;
    TextDecoder mDecoder;
    std::vector<bool> mKept;
    std::vector<QByteArray> mMissing;
    std::vector<QByteArray> mMissingKeys;
    int mKey = -1;
    int mX = -1;
    int mY = -1;
};

} // namespace meridor
