// SPDX-License-Identifier: MIT
/// Reads a table of texts: one record a line, fields parted by commas, semicolons, tabulators or
/// bars, and quoted where they contain one of these, a quotation mark or a line break.
#pragma once
#include <QString>
#include <array>
#include <memory>
#include <string_view>
#include <vector>

namespace meridor {

/// A record may have at most 32 MiB, so a file without line breaks takes no more memory than that.
class DelimitedFile {
public:
    /// @param path   any file that GDAL's virtual file system opens. @param shown  for messages.
    DelimitedFile(const QString &path, const QString &shown);
    ~DelimitedFile();

    /// The first record. The separator is the one that occurs most often in it, outside quotes.
    std::vector<std::string_view> heading();
    /// Reads the next record that is not blank; false at the end of the file. The fields are valid
    /// until the next call. Raises a Failure that names the row for a quotation mark that is not
    /// closed, a byte of value 0, and a record that is too long.
    bool next(std::vector<std::string_view> &fields);
    /// The part of the file that was read, in percent.
    int percent() const;

private:
    enum class State { FieldStart, Plain, Quoted, QuoteInQuotes };
    bool fill();
    bool findEnd();
    void split(std::vector<std::string_view> &fields);
    void setSeparators(std::string_view separators);
    bool isSeparator(char c) const { return mIsSeparator[static_cast<unsigned char>(c)]; }
    char mostFrequentSeparator() const;
    [[noreturn]] void failAt(const QString &text) const;

    struct Close {
        void operator()(void *file) const;
    };
    QString mShown;
    std::unique_ptr<void, Close> mFile;
    quint64 mLength = 0;
    quint64 mRead = 0;
    std::vector<char> mBuffer;
    size_t mBegin = 0; ///< of the present record in mBuffer
    size_t mScan = 0;  ///< its end, as far as it was found
    size_t mEnd = 0;   ///< of the bytes in mBuffer
    State mState = State::FieldStart;
    std::array<bool, 256> mIsSeparator{};
    bool mAtEnd = false;
    int mRow = 0; ///< of the present record; 0 is the heading
};

} // namespace meridor
