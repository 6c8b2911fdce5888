// SPDX-License-Identifier: MIT
#include "core/formats/delimitedFile.h"
#include <algorithm>
#include <cpl_vsi.h>
#include <cstring>
#include "core/formats/gdalFile.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

constexpr size_t kBlock = 1 << 18;
constexpr size_t kLongest = 32 << 20;
constexpr std::string_view kSeparators = ",;\t|";

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

} // namespace

void DelimitedFile::Close::operator()(void *file) const
{
    VSIFCloseL(static_cast<VSILFILE *>(file));
}

DelimitedFile::DelimitedFile(const QString &path, const QString &shown) : mShown(shown)
{
    const QByteArray name = path.toUtf8();
    VSIStatBufL state;
    if (VSIStatL(name.constData(), &state) == 0)
        mLength = static_cast<quint64>(state.st_size);
    mFile.reset(VSIFOpenL(name.constData(), "rb"));
    if (!mFile)
        failUnread(shown);
    fill();
    if (mEnd - mBegin >= 3 && std::memcmp(mBuffer.data(), "\xEF\xBB\xBF", 3) == 0)
        mBegin = mScan = 3;
}

DelimitedFile::~DelimitedFile() = default;

int DelimitedFile::percent() const
{
    return mLength == 0 ? 0 : static_cast<int>(qMin<quint64>(100, 100 * mRead / mLength));
}

void DelimitedFile::failAt(const QString &text) const
{
    fail(mRow == 0 ? QStringLiteral("%1, heading: %2").arg(mShown, text)
                   : QStringLiteral("%1, row %2: %3").arg(mShown, QString::number(mRow), text));
}

/// Reads a block behind the bytes of the present record; false at the end of the file.
bool DelimitedFile::fill()
{
    if (mAtEnd)
        return false;
    if (mBegin < mEnd) // the buffer is null before the first block
        std::memmove(mBuffer.data(), mBuffer.data() + mBegin, mEnd - mBegin);
    mScan -= mBegin;
    mEnd -= mBegin;
    mBegin = 0;
    if (mEnd > kLongest)
        failAt(mState == State::Quoted
                   ? QStringLiteral("a quotation mark is not closed within 32 MiB")
                   : QStringLiteral("the row is longer than 32 MiB"));
    mBuffer.resize(std::max(mBuffer.size(), mEnd + kBlock));
    auto *const file = static_cast<VSILFILE *>(mFile.get());
    const size_t count = VSIFReadL(mBuffer.data() + mEnd, 1, kBlock, file);
    if (count < kBlock) {
        mAtEnd = true;
        // A directory opens as a file does and fails only here.
        if (!VSIFEofL(file))
            failAt(QStringLiteral("the file cannot be read to its end"));
    }
    mEnd += count;
    mRead += count;
    return count > 0;
}

/// Moves mScan to the end of the present record; false at the end of the file.
bool DelimitedFile::findEnd()
{
    mState = State::FieldStart;
    mScan = mBegin;
    for (;; ++mScan) {
        if (mScan == mEnd && !fill()) {
            if (mState == State::Quoted)
                failAt(QStringLiteral("a quotation mark opens a field that is not closed"));
            return mScan > mBegin;
        }
        const char c = mBuffer[mScan];
        if (c == '\0')
            failAt(QStringLiteral("a byte of value 0: the file is no table, or in UTF-16 without a "
                                  "byte order mark"));
        if (mState == State::Quoted) {
            if (c == '"')
                mState = State::QuoteInQuotes;
        } else if (isLineEnd(c)) {
            return true;
        } else if (isSeparator(c)) {
            mState = State::FieldStart;
        } else if (c == '"' && mState != State::Plain) {
            mState = State::Quoted;
        } else {
            mState = State::Plain;
        }
    }
}

/// Splits the present record in place; pairs of quotation marks become single ones.
void DelimitedFile::split(std::vector<std::string_view> &fields)
{
    fields.clear();
    char *from = mBuffer.data() + mBegin;
    char *const end = mBuffer.data() + mScan;
    for (;;) {
        char *const start = from;
        char *to = from;
        if (from < end && *from == '"') {
            for (++from; from < end; ++from) {
                if (*from == '"' && (++from == end || *from != '"'))
                    break;
                *to++ = *from;
            }
        }
        while (from < end && !isSeparator(*from))
            *to++ = *from++;
        fields.emplace_back(start, static_cast<size_t>(to - start));
        if (from == end)
            return;
        ++from;
    }
}

bool DelimitedFile::next(std::vector<std::string_view> &fields)
{
    ++mRow;
    for (;;) {
        if (!findEnd())
            return false;
        const bool blank = mScan == mBegin;
        if (!blank)
            split(fields);
        mBegin = mScan + (mScan < mEnd ? 1 : 0);
        if (!blank)
            return true;
    }
}

void DelimitedFile::setSeparators(std::string_view separators)
{
    mIsSeparator.fill(false);
    for (const char c : separators)
        mIsSeparator[static_cast<unsigned char>(c)] = true;
}

char DelimitedFile::mostFrequentSeparator() const
{
    const std::string_view record(mBuffer.data() + mBegin, mScan - mBegin);
    std::array<int, kSeparators.size()> counts{};
    bool quoted = false;
    for (const char c : record) {
        quoted ^= c == '"';
        const size_t which = kSeparators.find(c);
        if (!quoted && which != std::string_view::npos)
            ++counts[which];
    }
    return kSeparators[static_cast<size_t>(std::max_element(counts.begin(), counts.end())
                                           - counts.begin())];
}

std::vector<std::string_view> DelimitedFile::heading()
{
    std::vector<std::string_view> fields;
    setSeparators(kSeparators);
    while (mBegin < mEnd && isLineEnd(mBuffer[mBegin]))
        ++mBegin;
    if (!findEnd())
        return fields;
    const char separator = mostFrequentSeparator();
    setSeparators({&separator, 1});
    findEnd();
    split(fields);
    mBegin = mScan + (mScan < mEnd ? 1 : 0);
    return fields;
}

} // namespace meridor
