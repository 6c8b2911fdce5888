// SPDX-License-Identifier: MIT
// The first byte selects a reader of blocks: one of the six containers' block images, or the part
// of a project that holds the blocks. For any bytes a container either reads them or refuses them,
// and what it reads is the same after it is written and read again.
#include <QByteArray>
#include <QDataStream>
#include <QDir>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include "datainterface/DataBlocks.h"
#include "datainterface/TimeContainers.h"
#include "datainterface/vorn_error.h"

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}
template <class T> bool sameBits(const T &a, const T &b)
{
    return a == b;
}

template <class T> void readSlice(const QByteArray &image)
{
    TimeSliceData<T> slice(SaveDataBlock(image));
    const int count = slice.GetCount();
    const T last = slice.GetValue(count - 1);
    const bool isMissing = slice.IsMissing(0);
    const CheckedOut<TimeSliceData<T>> hold(slice);
    check(slice.MissingIds().contains(0) == isMissing);
    check(count == 0 || sameBits(slice.Data()[count - 1], last));
    slice.Resize(count + 2);
    slice.RemoveObjects({0, count});
    const TimeSliceData<T> copy(slice);
    check(copy.GetCount() == slice.GetCount() && copy.GetMissingIds() == slice.GetMissingIds());
}

template <class T> void readSeries(const QByteArray &image)
{
    TimeSeriesData<T> series(SaveDataBlock(image));
    T found{};
    series.GetValue(0, found);
    const int count = series.GetCount();
    check(series.GetEntries().size() == count && series.GetIntervals().size() == count);
    series.AddValue(TimeStamp(3), T());
    const TimeSeriesData<T> copy(series);
    check(copy.GetCount() == count + 1);
}

void readProject(const QByteArray &bytes)
{
    ResetDataManager();
    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_5_4);
    const bool compressed = bytes.size() % 2 == 0;
    if (!RestoreProjectData(in, compressed))
        return;
    QByteArray saved;
    QDataStream out(&saved, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_4);
    check(SaveProjectData(out, false));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    InitializeDataManager(QDir::temp().filePath("fuzz_block_images"), 1 << 20);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0 || size > 1 << 20)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data) + 1, static_cast<int>(size) - 1);
    try {
        switch (data[0] % 7) {
        case 0:
            readSlice<int>(bytes);
            break;
        case 1:
            readSlice<double>(bytes);
            break;
        case 2:
            readSlice<QString>(bytes);
            break;
        case 3:
            readSeries<int>(bytes);
            break;
        case 4:
            readSeries<double>(bytes);
            break;
        case 5:
            readSeries<QString>(bytes);
            break;
        default:
            readProject(bytes);
            break;
        }
    } catch (const vorn_error &) {
        // This is how a block of strings that cannot be read is refused.
    }
    return 0;
}
