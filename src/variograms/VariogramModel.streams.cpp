// SPDX-License-Identifier: MIT
// The stream form of variogram models. Named fields are read and written in the same order; the fit
// state, whose fields have no names, is read and written by one table of its types.
#include "datainterface/VariogramModel.h"
#include "Common/detail/streams.h"
#include "frame/loadContext.h"

using namespace datainterface;

namespace {

constexpr int kStructureBytes = 4 * 8 + 4;
constexpr int kBinBytes = 3 * 8 + 4;
constexpr int kStampBytes = 24;
constexpr int kCountBytes = 4;

// The fit state in the order of the stream: groups of consecutive fields of one kind.
enum class FitKind { Int, Double, Flag };
struct FitFields {
    FitKind kind;
    int count;
};
constexpr FitFields kFitFields[] = {{FitKind::Int, 3},    {FitKind::Double, 5}, {FitKind::Flag, 3},
                                    {FitKind::Int, 2},    {FitKind::Double, 1}, {FitKind::Flag, 2},
                                    {FitKind::Double, 3}, {FitKind::Int, 1},    {FitKind::Flag, 2},
                                    {FitKind::Int, 5},    {FitKind::Flag, 2}};

template <class State, class Visit> void visitFit(State &state, Visit visit)
{
    auto *ints = state.ints.begin();
    auto *doubles = state.doubles.begin();
    auto *flags = state.flags.begin();
    for (const FitFields &fields : kFitFields) {
        for (int i = 0; i < fields.count; ++i) {
            switch (fields.kind) {
            case FitKind::Int:
                visit(*ints++);
                break;
            case FitKind::Double:
                visit(*doubles++);
                break;
            case FitKind::Flag:
                visit(*flags++);
                break;
            }
        }
    }
}

QDataStream &operator<<(QDataStream &out, const EmpiricalVariogramBin &bin)
{
    return out << bin.lag << bin.direction << bin.value << bin.pairCount;
}

QDataStream &operator>>(QDataStream &in, EmpiricalVariogramBin &bin)
{
    return in >> bin.lag >> bin.direction >> bin.value >> bin.pairCount;
}

template <class T> void writeVector(QDataStream &out, const QVector<T> &elements)
{
    out << qint32(elements.size());
    for (const T &element : elements)
        out << element;
}

// Writes a map in QMap's form, the last key first.
template <class Value, class Write>
void writeTimes(QDataStream &out, const QMap<TimeStamp, Value> &map, Write write)
{
    out << qint32(map.size());
    for (auto it = map.constEnd(); it != map.constBegin();) {
        --it;
        out << it.key();
        write(it.value());
    }
}

void writeModels(QDataStream &out, const QMap<TimeStamp, VariogramModelAtT> &models)
{
    writeTimes(out, models, [&out](const VariogramModelAtT &model) { out << model; });
}

void readModels(QDataStream &in, QMap<TimeStamp, VariogramModelAtT> &models)
{
    readMap(in, models, kStampBytes + kCountBytes);
}

template <class T> void readInt(QDataStream &in, T &field)
{
    qint32 value = 0;
    in >> value;
    field = static_cast<T>(value);
}

} // namespace

QDataStream &operator<<(QDataStream &out, const VariogramBasicModel &model)
{
    return out << model.sill << model.angle << model.majorRange << model.minorRange
               << qint32(model.type);
}

QDataStream &operator>>(QDataStream &in, VariogramBasicModel &model)
{
    in >> model.sill >> model.angle >> model.majorRange >> model.minorRange;
    readInt(in, model.type);
    return in;
}

QDataStream &operator<<(QDataStream &out, const VariogramModelAtT &model)
{
    writeVector(out, model.structures);
    return out;
}

QDataStream &operator>>(QDataStream &in, VariogramModelAtT &model)
{
    readList(in, model.structures, kStructureBytes);
    return in;
}

QDataStream &operator<<(QDataStream &out, const VariogramModel &model)
{
    out << model.name << qint32(model.id) << qint32(model.modelVersion)
        << qint32(model.parameterSet);
    writeModels(out, model.centroidModels);
    writeModels(out, model.deconvolutionModels);
    writeTimes(out, model.empiricalResults,
               [&out](const EmpiricalVariogram &bins) { writeVector(out, bins); });
    out << model.dataset << model.weightsDataset << qint32(model.lagCount) << model.locations
        << qint32(model.estimator);
    visitFit(model.fit, [&out](const auto &field) { out << field; });
    return out;
}

QDataStream &operator>>(QDataStream &in, VariogramModel &model)
{
    const LoadContext context = loadContext();
    in >> model.name;
    readInt(in, model.id);
    model.modelVersion = 0;
    if (context.since(fileVersions::kModelHasVersion))
        readInt(in, model.modelVersion);
    model.parameterSet = 0;
    if (context.since(fileVersions::kModelHasParameterSet))
        readInt(in, model.parameterSet);
    readModels(in, model.centroidModels);
    readModels(in, model.deconvolutionModels);
    readMap(in, model.empiricalResults, kStampBytes + kCountBytes,
            [&in](TimeStamp &stamp, EmpiricalVariogram &bins) {
                in >> stamp;
                readList(in, bins, kBinBytes, [&in](EmpiricalVariogramBin &bin) { in >> bin; });
            });
    in >> model.dataset >> model.weightsDataset;
    readInt(in, model.lagCount);
    in >> model.locations;
    readInt(in, model.estimator);
    visitFit(model.fit, [&in](auto &field) { in >> field; });
    return in;
}
