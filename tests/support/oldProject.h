// SPDX-License-Identifier: MIT
/// Projects as programs of any age wrote them: a map of points with datasets of every type in both
/// storages, and, from 103000 on, a raster (with datasets from 180005 on). The writer follows
/// docs/file-format.md and shares nothing with the library's readers; the geometry alone is the
/// geometry library's own.
#pragma once
#include <QByteArray>
#include <QString>
#include <QVector>

namespace oldProject {

/// The data types' old codes.
enum Type : qint32 { Integer, Decimal, Text };

struct Dataset {
    Type type;
    bool isSliced;
};

/// A contradiction that the file is to hold.
enum class Fault {
    None,
    DatasetObjectCount, ///< of the first dataset
    SourceObjectCount,  ///< huge, and that of the datasets with it
    RepeatedSlice,
    CrossedSlice,
    SliceIdTooLarge,
    SliceIdMissing, ///< a value without an id
    RepeatedHistory,
    CrossedHistory,
    UnknownType,
    UnnamedDataset,
    BothStorages,
    FewerFrequencies, ///< tables than realizations
    FewerRealizations,
    LongRealization, ///< its length is beyond the file
    ShortRealization ///< its maps are longer than its length
};

struct Sample {
    int version;
    int objects = 4;
    int times = 2;
    QVector<Dataset> datasets{{Integer, true},  {Decimal, true},  {Text, true},
                              {Integer, false}, {Decimal, false}, {Text, false}};
    Fault fault = Fault::None;
};

constexpr int kVectorId = 2;
constexpr int kRasterId = 5;
constexpr int kFirstDataset = kVectorId << 16; ///< and so on, in the order of the sample
constexpr int kFirstRaster = kRasterId << 16;
/// Of the three raster datasets: bytes, floats, floats whose missing value is minus infinity. Cell
/// 2 is missing in each.
constexpr int kRows = 2;
constexpr int kColumns = 3;
constexpr double kCells[] = {1, 2, 255, 4, 5, 6};

int realizations(int version); ///< 2, or the one that old files have
int number(int dataset, int realization, int object,
           int time); ///< an integer value; a decimal one is its 100th part
QString text(int number);
bool isPresent(int realization, int object, int time);
constexpr qint64 start(int time)
{
    return 10 * qint64(time);
} ///< of interval `time`; the last one is closed

/// The first version of every form of a project's parts, and the last of the form before it.
QVector<int> versions();
QString versionText(int version);
int streamVersion(int version); ///< of QDataStream
QByteArray write(const Sample &sample);
/// The map of points alone, as MVectorData reads it.
QByteArray writeVectorGeography(const Sample &sample);

} // namespace oldProject
