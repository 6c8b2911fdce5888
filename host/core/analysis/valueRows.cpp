// SPDX-License-Identifier: MIT
// Times are integers, so every interval becomes a half-open span [start, end), which keeps cutting
// and comparing free of cases. A span remembers whether its end was inclusive, since a date or a
// moment is shown by the end that was stored.
//
// Values are gathered for a block of objects: slices are read once a block for all its objects,
// series once an object. The block is as large as kBlockCells allows.
#include "core/analysis/valueRows.h"
#include <QHash>
#include <QSet>
#include <algorithm>
#include <limits>
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/shapeAccess.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/dataContainer.h"
#include "fennimark/FMObjectChain.h"
#include "fennimark/Fennims.h"

namespace meridor {
namespace {

constexpr qint64 kBlockCells = qint64(1) << 20;
constexpr int kGuessedSeries = 64; ///< values of one object, for the size of a block
constexpr int kMostColumns = 20000;
constexpr qint64 kFirst = std::numeric_limits<qint64>::min();
constexpr qint64 kLast = std::numeric_limits<qint64>::max();

struct Span {
    qint64 start = kFirst;
    qint64 end = kLast;  ///< exclusive
    bool closed = false; ///< end - 1 was stored, as an inclusive end
    bool meets(qint64 first, qint64 last) const { return start <= last && first < end; }
};

Span spanOf(const TimeStamp &stamp)
{
    Span span;
    span.start =
        stamp.inclusiveStart || stamp.startTime == kFirst ? stamp.startTime : stamp.startTime + 1;
    span.closed = stamp.inclusiveEnd && stamp.endTime != kLast;
    span.end = span.closed ? stamp.endTime + 1 : stamp.endTime;
    return span;
}

Interval intervalOf(const Span &span)
{
    return {span.start, span.closed ? span.end - 1 : span.end, true, span.closed};
}

CellKind cellKind(int dataset)
{
    const MDataset &held = *datasetOf(dataset);
    return !held.IsNumeric()  ? CellKind::Text
           : held.IsInteger() ? CellKind::Integer
                              : CellKind::Decimal;
}

CellKind timeKind(TimeFormat format)
{
    switch (format) {
    case TF_Date:
        return CellKind::Date;
    case TF_DateTime:
        return CellKind::Moment;
    case TF_Time:
        return CellKind::Clock;
    default:
        return CellKind::Integer;
    }
}

/// The values of one dataset for a block of objects.
class ValueSource {
public:
    explicit ValueSource(int dataset)
        : mDataset(dataset), mKind(cellKind(dataset)), mProps(VORN_GetDatasetProperties(dataset))
    {
    }
    int dataset() const { return mDataset; }
    CellKind kind() const { return mKind; }
    bool isStatic() const { return mProps.isStatic; }
    int realizations() const { return std::max(1, mProps.realizationCount); }
    qint64 perObject() const
    {
        return isStatic() ? 1 : isSeries() ? kGuessedSeries : dataTimes(mDataset).size();
    }

    void load(int realization, int first, int last)
    {
        mFirst = first;
        const int known = std::min(realization, realizations() - 1);
        if (isSeries())
            loadSeries(known, last);
        else
            loadSlices(known, last);
    }
    const std::vector<Span> &spans(int object) const
    {
        return isSeries() ? series(object).spans : mSpans;
    }
    const TableCell &cell(int object, size_t span) const
    {
        return isSeries() ? series(object).cells[span]
                          : mSlices[span][static_cast<size_t>(object - mFirst)];
    }
    /// Missing if there is no value at the time.
    const TableCell &at(int object, qint64 time) const
    {
        static const TableCell missing;
        const std::vector<Span> &all = spans(object);
        const auto after =
            std::upper_bound(all.begin(), all.end(), time,
                             [](qint64 t, const Span &span) { return t < span.start; });
        if (after == all.begin() || std::prev(after)->end <= time)
            return missing;
        return cell(object, static_cast<size_t>(after - all.begin()) - 1);
    }

private:
    struct Series {
        std::vector<Span> spans;
        std::vector<TableCell> cells;
    };

    bool isSeries() const
    {
        return !mProps.isStatic && mProps.storageType == MVectorDataset::TimeSeries;
    }
    const Series &series(int object) const { return mSeries[static_cast<size_t>(object - mFirst)]; }

    void loadSlices(int realization, int last)
    {
        QVector<Interval> times;
        if (!isStatic())
            VORN_GetAllDatasetTimes(mDataset, realization, times);
        mSpans.clear();
        mSlices.clear();
        for (const Interval &time : times)
            loadSlice(realization, last, spanOf(time), instantOf(time));
        if (isStatic())
            loadSlice(realization, last, Span(), 0);
    }

    void loadSlice(int realization, int last, const Span &span, qint64 time)
    {
        stopIfCancelled();
        const VORN_ConstDataContainer values(mDataset, time, realization, false);
        std::vector<TableCell> cells(static_cast<size_t>(last - mFirst));
        for (int object = mFirst; object < std::min(last, values.count()); ++object)
            if (!values.isMissing(object))
                cells[static_cast<size_t>(object - mFirst)] = cellOf(values, object);
        mSpans.push_back(span);
        mSlices.push_back(std::move(cells));
    }

    TableCell cellOf(const VORN_ConstDataContainer &values, int object) const
    {
        switch (mKind) {
        case CellKind::Integer:
            return values.intvalue(object);
        case CellKind::Decimal:
            return values.value(object);
        default:
            return values.strvalue(object);
        }
    }

    void loadSeries(int realization, int last)
    {
        mSeries.assign(static_cast<size_t>(last - mFirst), Series());
        for (int object = mFirst; object < last; ++object) {
            if ((object - mFirst) % 256 == 0)
                stopIfCancelled();
            QVector<Interval> times;
            VORN_GetDataIntervals(mDataset, realization, object, times);
            Series &series = mSeries[static_cast<size_t>(object - mFirst)];
            for (const Interval &time : qAsConst(times)) {
                datum value;
                const bool there = VORN_GetDataValue(
                    mDataset, realization, static_cast<unsigned>(object), instantOf(time), value);
                series.spans.push_back(spanOf(time));
                series.cells.push_back(there ? cellOf(value) : TableCell());
            }
        }
    }

    TableCell cellOf(const datum &value) const
    {
        switch (mKind) {
        case CellKind::Integer:
            return static_cast<qint64>(value.integerValue);
        case CellKind::Decimal:
            return value.decimalValue;
        default:
            return value.stringValue;
        }
    }

    int mDataset;
    CellKind mKind;
    DatasetProps mProps;
    int mFirst = 0;
    std::vector<Span> mSpans; ///< of slices
    std::vector<std::vector<TableCell>> mSlices;
    std::vector<Series> mSeries;
};

/// A time of an object's existence, and the record of its shape.
struct Piece {
    Span span;
    int record = -1;
};

enum class Part { Key, Name, Start, End, Realization, Datasets };
constexpr const char *kParts[] = {"key", "name", "start", "end", "realization", "datasets"};

QVector<Part> chosenParts(const QStringList &names)
{
    QVector<Part> parts;
    for (const QString &name : names) {
        const int index = rowParts().indexOf(name);
        if (index < 0)
            failUsage(QStringLiteral("%1 is no column; there are: %2")
                          .arg(name, rowParts().join(QStringLiteral(", "))),
                      "columns");
        if (parts.contains(static_cast<Part>(index)))
            failUsage(QStringLiteral("the column %1 is named twice").arg(name), "columns");
        parts.append(static_cast<Part>(index));
    }
    return parts;
}

} // namespace

QStringList rowParts()
{
    QStringList names;
    for (const char *name : kParts)
        names.append(QLatin1String(name));
    return names;
}

struct ValueRows::State {
    explicit State(const RowPlan &wanted)
        : plan(wanted),
          axis(axisOf(wanted.geography)),
          geography(dynamic_cast<const MVectorData *>(geographyOf(wanted.geography)))
    {
        if (!geography)
            fail(QStringLiteral("%1 is a grid, which has no rows")
                     .arg(geographyName(wanted.geography)));
        for (const int dataset : plan.datasets)
            if (VORN_GetGeographyId(dataset) != plan.geography)
                fail(QStringLiteral("%1 is not of %2")
                         .arg(datasetName(dataset), geographyName(plan.geography)));
        addSources();
        addColumns();
    }

    RowPlan plan;
    TimeAxis axis;
    const MVectorData *geography;
    QVector<Part> parts;
    std::unique_ptr<ValueSource> key;
    std::unique_ptr<ValueSource> name;
    std::vector<std::unique_ptr<ValueSource>> values;
    /// With `wide`: the times of each dataset that have a column.
    std::vector<std::vector<Span>> times;
    QVector<TableColumn> columns;
    QVector<int> chosen;
    int realizations = 1; ///< that are passed
    int firstRealization = 0;
    bool varies = false; ///< rows are split by time

    std::vector<ValueSource *> sources() const
    {
        std::vector<ValueSource *> all{key.get(), name.get()};
        for (const auto &source : values)
            all.push_back(source.get());
        all.erase(std::remove(all.begin(), all.end(), nullptr), all.end());
        return all;
    }

    void addSources()
    {
        const int keys = keyDataset(plan.geography);
        const int names = nameDataset(plan.geography);
        parts = chosenParts(plan.parts);
        const bool byDefault = parts.isEmpty();
        const bool withKey = byDefault || parts.contains(Part::Key);
        const bool withName = names >= 0 && (byDefault || parts.contains(Part::Name));
        chosen = plan.datasets;
        if (chosen.isEmpty())
            for (const int dataset : datasetIds(plan.geography))
                if (!(withKey && dataset == keys) && !(withName && dataset == names))
                    chosen.append(dataset);
        if (!byDefault && !parts.contains(Part::Datasets))
            chosen.clear();
        if (withKey && keys >= 0)
            key = std::make_unique<ValueSource>(keys);
        if (withName)
            name = std::make_unique<ValueSource>(names);
        for (const int dataset : qAsConst(chosen))
            values.push_back(std::make_unique<ValueSource>(dataset));
        for (const ValueSource *source : sources()) {
            varies = varies || !source->isStatic();
            realizations = std::max(realizations, source->realizations());
        }
        if (plan.realization) {
            firstRealization = *plan.realization;
            realizations = 1;
        }
        varies = !plan.wide
                 && (varies || (plan.shapes && !geography->IsStatic())
                     || parts.contains(Part::Start) || parts.contains(Part::End));
        if (!byDefault)
            return;
        parts.append(Part::Key);
        if (name)
            parts.append(Part::Name);
        if (varies && !plan.at)
            parts << Part::Start << Part::End;
        if (realizations > 1)
            parts.append(Part::Realization);
        parts.append(Part::Datasets);
    }

    void addColumn(const QString &wanted, CellKind kind)
    {
        const auto taken = [this](const QString &known) {
            return std::any_of(columns.begin(), columns.end(), [&known](const TableColumn &column) {
                return column.name.compare(known, Qt::CaseInsensitive) == 0;
            });
        };
        QString unique = wanted;
        for (int n = 2; taken(unique); ++n)
            unique = QStringLiteral("%1_%2").arg(wanted).arg(n);
        columns.append({unique, kind});
    }

    void addColumns()
    {
        for (const Part part : qAsConst(parts)) {
            switch (part) {
            case Part::Key:
                key ? addColumn(datasetName(key->dataset()), key->kind())
                    : addColumn(QStringLiteral("object"), CellKind::Integer);
                break;
            case Part::Name:
                addColumn(name ? datasetName(name->dataset()) : QStringLiteral("name"),
                          CellKind::Text);
                break;
            case Part::Start:
                addColumn(QStringLiteral("start"), timeKind(axis.format()));
                break;
            case Part::End:
                addColumn(QStringLiteral("end"), timeKind(axis.format()));
                break;
            case Part::Realization:
                addColumn(QStringLiteral("realization"), CellKind::Integer);
                break;
            case Part::Datasets:
                for (const auto &source : values)
                    plan.wide ? addTimes(*source)
                              : addColumn(datasetName(source->dataset()), source->kind());
                break;
            }
        }
    }

    /// A column for each time; with one changing dataset the time alone is its name.
    void addTimes(const ValueSource &source)
    {
        const QString own = datasetName(source.dataset());
        times.emplace_back();
        if (source.isStatic()) {
            times.back().push_back(Span());
            addColumn(own, source.kind());
            return;
        }
        const auto changing = std::count_if(values.begin(), values.end(),
                                            [](const auto &held) { return !held->isStatic(); });
        for (const Interval &time :
             dataTimes(source.dataset(), std::min(firstRealization, source.realizations() - 1))) {
            const Span span = spanOf(time);
            if (plan.within && !span.meets(plan.within->first, plan.within->second))
                continue;
            if (columns.size() >= kMostColumns)
                fail(
                    QStringLiteral("more than %1 columns; a table of rows or fewer times is needed")
                        .arg(kMostColumns),
                    "layout");
            times.back().push_back(span);
            const QString when = axis.show(time);
            addColumn(changing > 1 ? own + QLatin1Char(' ') + when : when, source.kind());
        }
    }

    /// The existence of an object, in order of time. Shapes that follow each other without a gap are
    /// one piece, unless the shapes are wanted.
    std::vector<Piece> piecesOf(int object) const
    {
        const FMObjectChain *chain = geography->GetFennims()->GetChainById(
            geography->GetFennimId(static_cast<unsigned>(object)));
        std::vector<Piece> pieces;
        if (!chain)
            return pieces;
        for (const auto &observation : chain->GetObservations()) {
            const Piece piece{geography->IsStatic() ? Span() : spanOf(TimeStamp(observation.first)),
                              observation.second};
            if (!plan.shapes && !pieces.empty() && pieces.back().span.end == piece.span.start) {
                pieces.back().span.end = piece.span.end;
                pieces.back().span.closed = piece.span.closed;
            } else {
                pieces.push_back(piece);
            }
        }
        return pieces;
    }

    bool isWanted(const Span &span) const
    {
        return (!plan.within || span.meets(plan.within->first, plan.within->second))
               && (!plan.at || span.meets(*plan.at, *plan.at));
    }
};

namespace {

/// Cuts the existence of an object at the ends of all values.
class Cutter {
public:
    void cut(const Piece &piece, int object, const std::vector<ValueSource *> &sources,
             bool keepsEmpty, std::vector<Piece> &rows)
    {
        mEnds.clear();
        mEnds.push_back(piece.span.start);
        mEnds.push_back(piece.span.end);
        for (const ValueSource *source : sources)
            if (!source->isStatic())
                for (const Span &span : source->spans(object))
                    if (span.meets(piece.span.start, piece.span.end - 1)) {
                        mEnds.push_back(std::max(span.start, piece.span.start));
                        mEnds.push_back(std::min(span.end, piece.span.end));
                    }
        std::sort(mEnds.begin(), mEnds.end());
        mEnds.erase(std::unique(mEnds.begin(), mEnds.end()), mEnds.end());
        const bool changes = std::any_of(sources.begin(), sources.end(),
                                         [](const ValueSource *s) { return !s->isStatic(); });
        for (size_t i = 0; i + 1 < mEnds.size(); ++i) {
            Piece row{{mEnds[i], mEnds[i + 1], false}, piece.record};
            row.span.closed = piece.span.closed && row.span.end == piece.span.end;
            bool held = !changes;
            for (const ValueSource *source : sources)
                held = (!source->isStatic() && covers(*source, object, row.span)) || held;
            if (held || (keepsEmpty && row.span.start != kFirst && row.span.end != kLast))
                rows.push_back(row);
        }
    }

private:
    static bool covers(const ValueSource &source, int object, Span &row)
    {
        const std::vector<Span> &all = source.spans(object);
        const auto after =
            std::upper_bound(all.begin(), all.end(), row.start,
                             [](qint64 t, const Span &span) { return t < span.start; });
        if (after == all.begin() || std::prev(after)->end <= row.start)
            return false;
        row.closed = row.closed || (std::prev(after)->closed && std::prev(after)->end == row.end);
        return true;
    }

    std::vector<qint64> mEnds;
};

} // namespace

ValueRows::ValueRows(const RowPlan &plan) : mState(std::make_unique<State>(plan))
{
}

ValueRows::~ValueRows() = default;

const QVector<TableColumn> &ValueRows::columns() const
{
    return mState->columns;
}

const QVector<int> &ValueRows::datasets() const
{
    return mState->chosen;
}

ShapeKind ValueRows::shapeKind() const
{
    switch (VORN_GetGeographyProperties(mState->plan.geography).type) {
    case GeoProps::Points:
        return ShapeKind::Points;
    case GeoProps::Lines:
        return ShapeKind::Lines;
    default:
        return ShapeKind::Polygons;
    }
}

namespace {

/// Makes the rows of one pass.
template <class State> class RowMaker {
public:
    RowMaker(const State &state, TableSink &sink) : mState(state), mSink(sink) {}

    void object(int realization, int object)
    {
        mRealization = realization;
        const std::vector<Piece> pieces = mState.piecesOf(object);
        const bool exists = std::any_of(pieces.begin(), pieces.end(), [this](const Piece &piece) {
            return mState.isWanted(piece.span);
        });
        if (!exists)
            return;
        if (mState.plan.wide)
            return wide(object, pieces);
        if (!mState.varies)
            return write(object, pieces.front());
        mRows.clear();
        for (const Piece &piece : pieces)
            if (mState.isWanted(piece.span))
                mCutter.cut(piece, object, mState.sources(), mState.plan.shapes, mRows);
        const qint64 before = mCount;
        for (const Piece &row : mRows)
            if (mState.isWanted(row.span))
                write(object, row);
        if (mCount > before || !(mState.plan.at || mState.plan.shapes))
            return;
        for (const Piece &piece : pieces) // without values
            if (mState.isWanted(piece.span))
                write(object, piece);
    }
    qint64 count() const { return mCount; }

private:
    /// The shape of a row in the wide form: that of the time, else the only one.
    Piece only(int object, const std::vector<Piece> &pieces) const
    {
        for (const Piece &piece : pieces)
            if (mState.plan.at && piece.span.meets(*mState.plan.at, *mState.plan.at))
                return piece;
        if (mState.plan.shapes && pieces.size() > 1)
            fail(QStringLiteral("%1 has %2 shapes, and one row: a time is needed")
                     .arg(objectKeys(mState.plan.geography, {object}).first(),
                          QString::number(pieces.size())),
                 "at");
        return pieces.front();
    }

    void wide(int object, const std::vector<Piece> &pieces)
    {
        const Piece piece = only(object, pieces);
        begin(object, mState.plan.at.value_or(pieces.back().span.start));
        for (size_t i = 0; i < mState.values.size(); ++i) {
            for (const Span &time : mState.times[i]) {
                const bool exists =
                    std::any_of(pieces.begin(), pieces.end(), [&time](const Piece &held) {
                        return held.span.meets(time.start, time.end - 1);
                    });
                const ValueSource &source = *mState.values[i];
                mDatasets.push_back(exists ? source.at(object, source.isStatic() ? 0 : time.start)
                                           : TableCell());
            }
        }
        end(piece);
    }

    void write(int object, const Piece &piece)
    {
        const qint64 time = mState.plan.at.value_or(piece.span.start);
        begin(object, time);
        for (const auto &source : mState.values)
            mDatasets.push_back(source->at(object, time));
        end(piece);
    }

    void begin(int object, qint64 time)
    {
        mDatasets.clear();
        mKey = mState.key ? mState.key->at(object, 0) : TableCell(qint64(object) + 1);
        mName = mState.name ? mState.name->at(object, time) : TableCell();
    }

    void end(const Piece &piece)
    {
        mCells.clear();
        for (const Part part : mState.parts) {
            switch (part) {
            case Part::Key:
                mCells.push_back(mKey);
                break;
            case Part::Name:
                mCells.push_back(mName);
                break;
            case Part::Start:
                mCells.push_back(piece.span.start == kFirst ? TableCell()
                                                            : start(piece.span.start));
                break;
            case Part::End:
                mCells.push_back(piece.span.end == kLast ? TableCell() : endOf(piece.span));
                break;
            case Part::Realization:
                mCells.push_back(qint64(mRealization) + 1);
                break;
            case Part::Datasets:
                mCells.insert(mCells.end(), mDatasets.begin(), mDatasets.end());
                break;
            }
        }
        if (mState.plan.shapes)
            mShape = partsOf(*mState.geography, piece.record);
        mSink.row(mCells, mState.plan.shapes ? &mShape : nullptr);
        if (++mCount % 256 == 0)
            stopIfCancelled();
    }

    TableCell start(qint64 time)
    {
        if (mState.axis.format() == TF_Integer)
            return time;
        auto known = mStarts.find(time);
        if (known == mStarts.end())
            known = mStarts.insert(time, mState.axis.show(time));
        return *known;
    }

    TableCell endOf(const Span &span)
    {
        if (mState.axis.format() == TF_Integer)
            return span.end - 1;
        QHash<qint64, QString> &texts = span.closed ? mClosedEnds : mOpenEnds;
        auto known = texts.find(span.end);
        if (known == texts.end())
            known = texts.insert(span.end, mState.axis.showEnd(intervalOf(span)));
        return *known;
    }

    const State &mState;
    TableSink &mSink;
    Cutter mCutter;
    int mRealization = 0;
    qint64 mCount = 0;
    std::vector<Piece> mRows;
    std::vector<TableCell> mDatasets;
    std::vector<TableCell> mCells;
    TableCell mKey;
    TableCell mName;
    ShapeParts mShape;
    QHash<qint64, QString> mStarts; ///< texts of times
    QHash<qint64, QString> mOpenEnds;
    QHash<qint64, QString> mClosedEnds;
};

} // namespace

qint64 ValueRows::pass(TableSink &sink, const std::function<void(int)> &meter) const
{
    const auto objects = static_cast<int>(mState->geography->GetObjectCount());
    qint64 perObject = 1;
    for (const ValueSource *source : mState->sources())
        perObject += source->perObject();
    const auto block = static_cast<int>(qBound<qint64>(1, kBlockCells / perObject, 1 << 20));
    sink.begin(mState->columns);
    RowMaker<State> rows(*mState, sink);
    for (int realization = 0; realization < mState->realizations; ++realization) {
        for (int first = 0; first < objects; first += block) {
            const int last = std::min(objects, first + block);
            for (ValueSource *source : mState->sources())
                source->load(mState->firstRealization + realization, first, last);
            for (int object = first; object < last; ++object) {
                rows.object(mState->firstRealization + realization, object);
                if (object % 256 == 0)
                    meter(static_cast<int>((qint64(realization) * objects + object) * 100
                                           / (qint64(mState->realizations) * objects)));
            }
        }
    }
    sink.end();
    return rows.count();
}

} // namespace meridor
