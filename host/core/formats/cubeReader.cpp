// SPDX-License-Identifier: MIT
#include "core/formats/cubeReader.h"
#include <algorithm>
#include <cmath>
#include <cpl_conv.h>
#include <cpl_error.h>
#include <limits>
#include "core/formats/cubeCells.h"
#include "core/formats/cubeFile.h"
#include "core/formats/gdalFile.h"
#include "core/formats/wholeFile.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr qint64 kStripBytes = 8 << 20;
constexpr qint64 kGroupBytes = 64 << 20;
constexpr int kMostDatasets = 10000;
constexpr qint64 kMostGridBytes = std::numeric_limits<int>::max() - 64;
/// Coordinates are rounded when they are written; a grid whose places stray further from even
/// spacing than this part of a cell is refused.
constexpr double kMostStray = 0.02;

/// The metres of a projection's unit; 1 if there is none.
double metresOf(const QString &wkt)
{
    if (wkt.isEmpty())
        return 1;
    const OGRSpatialReferenceH reference = OSRNewSpatialReference(wkt.toUtf8().constData());
    const double metres =
        reference && !OSRIsGeographic(reference) ? OSRGetLinearUnits(reference, nullptr) : 1;
    OSRDestroySpatialReference(reference);
    return metres > 0 ? metres : 1;
}

/// One side of a grid.
struct Side {
    double least = 0; ///< the outer edge of the first or last cell
    double step = 1;  ///< of cells, above 0
    int count = 0;
    bool isDescending = false;
};

bool isSameSide(const Side &a, const Side &b)
{
    return a.count == b.count && a.isDescending == b.isDescending
           && std::abs(a.step - b.step) <= 1e-6 * a.step
           && std::abs(a.least - b.least) <= 1e-3 * a.step;
}

/// Of a variable's dimension, by its places.
QString placeName(const CubeFile &cube, const CubeAxis &axis, quint64 place)
{
    const auto index = static_cast<int>(place);
    const QVector<double> numbers = cube.places(axis);
    if (index < numbers.size() && std::isfinite(numbers[index]))
        return exactNumber(numbers[index]);
    const QStringList texts = axis.coordinates ? textsOf(axis.coordinates) : QStringList();
    return index < texts.size() ? texts[index] : QString::number(place + 1);
}

} // namespace

/// The open file, and the rule of each variable that is read.
struct CubeReader::File {
    QString path;
    CubeOptions options;
    std::unique_ptr<CubeFile> cube;
    QVector<int> chosen;     ///< variables
    QVector<CellRule> rules; ///< by variable; those of chosen ones are filled
    Side xSide;
    Side ySide;

    File(QString file, CubeOptions wanted, std::unique_ptr<CubeFile> opened)
        : path(std::move(file)), options(std::move(wanted)), cube(std::move(opened))
    {
        rules.resize(static_cast<int>(cube->variables.size()));
    }

    const CubeVariable &variable(int index) const
    {
        return cube->variables[static_cast<size_t>(index)];
    }
    const CubeAxis &axis(const CubeVariable &of, int position) const
    {
        return cube->axes[static_cast<size_t>(of.axes[position])];
    }
    QString where(const CubeVariable &of) const
    {
        return QStringLiteral("%1, variable %2").arg(path, of.name);
    }
    bool isReadable(const CubeVariable &of) const
    {
        return of.hasGrid() && numericTypeOf(of.array) != GDT_Unknown;
    }

    void choose();
    Side sideOf(const CubeVariable &of, int position) const;
    void place();
    QString projection() const;
    int realizationAxis(const CubeVariable &of) const;
    void checkRealizations() const;
    int timesOf(const CubeVariable &of, QVector<CubeTimes> &all) const;
    void addGrids(int index, int times, QVector<CubeGrid> &grids) const;
};

void CubeReader::File::choose()
{
    QStringList names;
    QStringList curved;
    for (const CubeVariable &of : cube->variables) {
        if (isReadable(of))
            names.append(of.name);
        if (of.isCurved && !of.isHelper)
            curved.append(of.name);
    }
    const auto refuseCurved = [&](const QString &name) {
        fail(
            QStringLiteral("%1, variable %2: the places of its cells are tables of two dimensions; "
                           "warp it to a regular grid first")
                .arg(path, name));
    };
    if (names.isEmpty() && !curved.isEmpty())
        refuseCurved(curved.first());
    if (names.isEmpty())
        fail(path + QStringLiteral(": no variable in it has a grid"));
    for (int i = 0; i < static_cast<int>(cube->variables.size()); ++i)
        if (options.fields.isEmpty() && isReadable(variable(i)) && !variable(i).isHelper)
            chosen.append(i);
    for (const QString &field : options.fields) {
        const int before = chosen.size();
        for (int i = 0; i < static_cast<int>(cube->variables.size()); ++i) {
            const QString &name = variable(i).name;
            // The name of a variable, or of a dataset: the variable and its place.
            const bool matches = name == field || field.startsWith(name + QLatin1Char(' '));
            if (matches && variable(i).isCurved)
                refuseCurved(name);
            if (matches && isReadable(variable(i)) && !chosen.contains(i))
                chosen.append(i);
            else if (matches && chosen.contains(i))
                chosen.move(chosen.indexOf(i), chosen.size() - 1);
        }
        if (chosen.size() == before
            && (chosen.isEmpty() || !field.startsWith(variable(chosen.last()).name)))
            fail(QStringLiteral("%1: no variable %2 with a grid; there are: %3")
                     .arg(path, field, someOf(names)));
    }
    if (chosen.isEmpty())
        fail(QStringLiteral("%1: no variable in it has a grid but coordinates: %2")
                 .arg(path, someOf(names)));
}

Side CubeReader::File::sideOf(const CubeVariable &of, int position) const
{
    const CubeAxis &line = axis(of, position);
    const QString what = QStringLiteral("%1, dimension %2").arg(path, line.fullName);
    Side side;
    if (line.size < 1 || line.size > quint64(std::numeric_limits<int>::max()))
        fail(what + QStringLiteral(": holds no cells"));
    side.count = static_cast<int>(line.size);
    QVector<double> places = cube->places(line);
    if (places.size() != side.count) { // without coordinates rows count from the top
        side.isDescending = position == of.y;
        return side;
    }
    double unit = 1;
    const QString name = line.unit.trimmed().toLower();
    if (name == QLatin1String("km") || name == QLatin1String("kilometers")
        || name == QLatin1String("kilometres") || name == QLatin1String("kilometer"))
        unit = 1000 / metresOf(projection());
    double most = 0;
    for (int i = 0; i < side.count; ++i) {
        if (!std::isfinite(places[i]))
            fail(what + QStringLiteral(": place %1 has no coordinate").arg(i + 1));
        places[i] *= unit;
        most = qMax(most, std::abs(places[i]));
    }
    const double spacing = side.count > 1 ? (places.last() - places.first()) / (side.count - 1) : 0;
    const bool areFloats = numericTypeOf(line.coordinates) == GDT_Float32;
    const double slack =
        kMostStray * std::abs(spacing) + (areFloats ? most * std::pow(2.0, -22) : 0);
    for (int i = 0; i < side.count; ++i)
        if (side.count > 1
            && (spacing == 0 || std::abs(places.first() + i * spacing - places[i]) > slack))
            fail(QStringLiteral("%1: its places are not evenly spaced (%2 is place %3); warp it to "
                                "a regular grid first")
                     .arg(what, exactNumber(places[i]), QString::number(i + 1)));
    side.isDescending = spacing < 0;
    side.step = std::abs(spacing);
    const QVector<double> bounds = cube->bounds(line);
    if (side.count == 1)
        side.step = bounds.size() == 2 ? std::abs(bounds[1] - bounds[0]) * unit : 0;
    side.least = qMin(places.first(), places.last()) - side.step / 2;
    return side;
}

void CubeReader::File::place()
{
    for (const int index : qAsConst(chosen)) {
        const CubeVariable &of = variable(index);
        Side x = sideOf(of, of.x);
        Side y = sideOf(of, of.y);
        // A single row has the height of its cells' width, and a single column likewise.
        const auto fillStep = [](Side &side, double step) {
            if (side.step > 0)
                return;
            side.step = step > 0 ? step : 1;
            side.least -= side.step / 2;
        };
        fillStep(x, y.step);
        fillStep(y, x.step);
        if (index == chosen.first()) {
            xSide = x;
            ySide = y;
        } else if (!isSameSide(xSide, x) || !isSameSide(ySide, y)) {
            fail(QStringLiteral("%1: %2 and %3 have different grids; fields of one grid can be "
                                "chosen")
                     .arg(path, variable(chosen.first()).name, of.name),
                 "fields");
        }
    }
}

QString CubeReader::File::projection() const
{
    if (!options.projection.isEmpty())
        return wktOf(options.projection);
    const CubeVariable &of = variable(chosen.first());
    const OGRSpatialReferenceH reference = GDALMDArrayGetSpatialRef(of.array.get());
    QString wkt = wktOf(reference);
    if (reference)
        OSRDestroySpatialReference(reference);
    if (wkt.isEmpty()) {
        const GdalArray mapping = cube->find(textAttribute(of.array, "grid_mapping"));
        for (const char *name : {"crs_wkt", "spatial_ref"})
            if (mapping && wkt.isEmpty())
                wkt = textAttribute(mapping, name);
    }
    const bool isInDegrees = axis(of, of.x).unit.startsWith(QLatin1String("degree"))
                             && axis(of, of.y).unit.startsWith(QLatin1String("degree"));
    const QString name = axis(of, of.x).coordinates
                             ? textAttribute(axis(of, of.x).coordinates, "standard_name")
                             : QString();
    if (wkt.isEmpty() && isInDegrees && name != QLatin1String("grid_longitude"))
        return wktOf(QStringLiteral("EPSG:4326"));
    return wkt;
}

int CubeReader::File::realizationAxis(const CubeVariable &of) const
{
    for (int i = 0; i < of.axes.size(); ++i)
        if (!options.realizations.isEmpty()
            && (axis(of, i).name == options.realizations
                || axis(of, i).fullName == options.realizations))
            return i;
    return -1;
}

void CubeReader::File::checkRealizations() const
{
    if (options.realizations.isEmpty())
        return;
    QStringList names;
    bool isThere = false;
    for (const int index : chosen) {
        const CubeVariable &of = variable(index);
        const int found = realizationAxis(of);
        isThere = isThere || found >= 0;
        if (found >= 0 && (found == of.x || found == of.y || found == of.time))
            fail(QStringLiteral("%1: the dimension %2 of %3 is that of its %4")
                     .arg(where(of), options.realizations, of.name,
                          found == of.time ? QStringLiteral("times") : QStringLiteral("grid")));
        for (int i = 0; i < of.axes.size(); ++i)
            if (i != of.x && i != of.y && i != of.time && !names.contains(axis(of, i).name))
                names.append(axis(of, i).name);
    }
    if (!isThere)
        fail(QStringLiteral("%1: no dimension %2 for realizations; there are: %3")
                 .arg(path, options.realizations,
                      names.isEmpty() ? QStringLiteral("none") : someOf(names)),
             "realizations");
}

/// The index of a variable's times in the list, to which new ones are added; -1 if it has none.
int CubeReader::File::timesOf(const CubeVariable &of, QVector<CubeTimes> &all) const
{
    if (of.time < 0 && !of.singleTime)
        return -1;
    CubeTimes times;
    const GdalArray *places = &of.singleTime;
    times.count = 1;
    if (of.time >= 0) {
        const CubeAxis &line = axis(of, of.time);
        if (line.size < 1 || line.size > quint64(std::numeric_limits<int>::max()))
            fail(QStringLiteral("%1, dimension %2: holds %3")
                     .arg(path, line.name,
                          line.size < 1 ? QStringLiteral("no times")
                                        : QString::number(line.size) + QStringLiteral(" times")));
        places = &line.coordinates;
        times.name = line.fullName;
        times.unit = line.unit;
        times.count = static_cast<int>(line.size);
        times.values = cube->places(line);
        times.bounds = cube->bounds(line);
    } else {
        times.name = QString::fromUtf8(GDALMDArrayGetFullName(places->get()));
        times.unit = QString::fromUtf8(GDALMDArrayGetUnit(places->get()));
        times.values = numbersOf(*places);
    }
    if (times.name.startsWith(QLatin1Char('/')))
        times.name.remove(0, 1);
    for (int i = 0; i < all.size(); ++i)
        if (all[i].name == times.name && all[i].count == times.count)
            return i;
    if (*places) {
        times.calendar = textAttribute(*places, "calendar");
        times.texts = textsOf(*places);
        if (times.values.size() != times.count && times.texts.size() != times.count)
            fail(QStringLiteral("%1, dimension %2: its times cannot be read%3")
                     .arg(path, times.name, QuietGdal::complaint()));
    }
    all.append(times);
    return all.size() - 1;
}

/// Adds a grid for each combination of places of a variable's other dimensions.
void CubeReader::File::addGrids(int index, int times, QVector<CubeGrid> &grids) const
{
    const CubeVariable &of = variable(index);
    const CellRule &rule = rules[index];
    const int realizations = realizationAxis(of);
    QVector<int> others;
    CubeGrid grid;
    grid.unit = QString::fromUtf8(GDALMDArrayGetUnit(of.array.get()));
    if (grid.unit.isEmpty())
        grid.unit = textAttribute(of.array, "units");
    grid.title = textAttribute(of.array, "long_name");
    grid.type = rule.type;
    grid.bits = rule.bits;
    grid.missing = rule.hasFill ? rule.missing : MissingFlag();
    grid.times = times;
    grid.variable = index;
    grid.places.fill(0, of.axes.size());
    for (int i = 0; i < of.axes.size(); ++i) {
        if (axis(of, i).size < 1)
            fail(QStringLiteral("%1: the dimension %2 has no places")
                     .arg(where(of), axis(of, i).name));
        if (i == realizations)
            grid.realizations = static_cast<int>(qMin<quint64>(axis(of, i).size, 1 << 20));
        else if (i != of.x && i != of.y && i != of.time)
            others.append(i);
    }
    quint64 count = 1;
    for (const int other : qAsConst(others))
        count *= qMin<quint64>(axis(of, other).size, kMostDatasets + 1);
    if (count + static_cast<quint64>(grids.size()) > kMostDatasets)
        fail(QStringLiteral("%1: its dimensions would become %2 datasets; at most %3 are read, and "
                            "one dimension can become realizations")
                 .arg(where(of), QString::number(count), QString::number(kMostDatasets)),
             "realizations");
    for (quint64 number = 0; number < count; ++number) {
        grid.name = of.name;
        quint64 rest = number;
        QString places;
        for (int i = others.size(); i-- > 0;) {
            const CubeAxis &other = axis(of, others[i]);
            grid.places[others[i]] = rest % other.size;
            if (other.size > 1)
                places.prepend(QStringLiteral(" %1=%2").arg(
                    other.name, placeName(*cube, other, rest % other.size)));
            rest /= other.size;
        }
        grid.name += places;
        const bool isWanted = options.fields.isEmpty() || options.fields.contains(of.name)
                              || options.fields.contains(grid.name);
        if (isWanted)
            grids.append(grid);
    }
}

bool isCubeFile(const QString &path)
{
    const auto cube = CubeFile::open(path);
    return cube
           && std::any_of(cube->variables.begin(), cube->variables.end(),
                          [](const CubeVariable &of) {
                              return !of.isHelper && (of.hasGrid() || of.isCurved)
                                     && numericTypeOf(of.array) != GDT_Unknown;
                          });
}

CubeReader::CubeReader(const QString &path, const CubeOptions &options)
{
    const QuietGdal quiet;
    auto opened = CubeFile::open(path);
    if (!opened)
        failUnread(path);
    requireWholeFile(path, nullptr);
    mFile = std::make_unique<File>(path, options, std::move(opened));
    File &file = *mFile;
    file.choose();
    file.checkRealizations();
    file.place();
    mColumns = file.xSide.count;
    mRows = file.ySide.count;
    mBounds = QRectF(file.xSide.least, file.ySide.least, file.xSide.step * mColumns,
                     file.ySide.step * mRows);
    mProjection = file.projection();
    const CubeVariable &first = file.variable(file.chosen.first());
    if (!file.axis(first, first.x).coordinates)
        mNotes.append(
            path + QStringLiteral(": has no place on the map; cells are squares of 1 from (0, 0)"));
    for (const int index : qAsConst(file.chosen)) {
        const CubeVariable &of = file.variable(index);
        file.rules[index] = cellRule(*file.cube, of, options, file.where(of));
        const CellRule &rule = file.rules[index];
        const qint64 bytes = qint64(mColumns) * qMax(rule.bits, rule.rawBits) / 8;
        if (mRows > std::numeric_limits<int>::max() / mColumns || bytes > kMostGridBytes / mRows)
            fail(QStringLiteral("%1: %2 by %3 cells are more than a grid can hold")
                     .arg(file.where(of), QString::number(mColumns), QString::number(mRows)));
        if (options.packed && (rule.scale != 1 || rule.offset != 0))
            mNotes.append(
                QStringLiteral("%1: cells stay as they are stored; a value is cell * %2 + %3")
                    .arg(file.where(of), exactNumber(rule.scale), exactNumber(rule.offset)));
        file.addGrids(index, file.timesOf(of, mTimes), mGrids);
    }
}

CubeReader::~CubeReader() = default;

int CubeReader::timesTogether(const CubeGrid &grid) const
{
    const CubeVariable &of = mFile->variable(grid.variable);
    if (of.time < 0)
        return 1;
    const CellRule &rule = mFile->rules[grid.variable];
    const qint64 bytes = qint64(mColumns) * mRows * (rule.bits + rule.rawBits) / 8;
    const qint64 most = qMax<qint64>(1, kGroupBytes / qMax<qint64>(1, bytes));
    size_t count = 0;
    GUInt64 *blocks = GDALMDArrayGetBlockSize(of.array.get(), &count);
    qint64 together = static_cast<size_t>(of.time) < count
                          ? static_cast<qint64>(qMin<GUInt64>(blocks[of.time], 1 << 30))
                          : 1;
    CPLFree(blocks);
    if (of.time > of.x || of.time > of.y) // the times of a cell lie together
        together = most;
    return static_cast<int>(qBound<qint64>(1, together, most));
}

MissingFlag CubeReader::read(const CubeGrid &grid, int realization, int time, int count,
                             char *cells, const std::function<void(int)> &progress) const
{
    const QuietGdal quiet;
    const File &file = *mFile;
    const CubeVariable &of = file.variable(grid.variable);
    const CellRule &rule = file.rules[grid.variable];
    const auto size = static_cast<size_t>(of.axes.size());
    std::vector<GUInt64> start(grid.places.begin(), grid.places.end());
    std::vector<size_t> counts(size, 1);
    const int realizations = file.realizationAxis(of);
    if (realizations >= 0)
        start[static_cast<size_t>(realizations)] = static_cast<GUInt64>(realization);
    if (of.time >= 0) {
        start[static_cast<size_t>(of.time)] = static_cast<GUInt64>(time);
        counts[static_cast<size_t>(of.time)] = static_cast<size_t>(count);
    }
    const auto x = static_cast<size_t>(of.x);
    const auto y = static_cast<size_t>(of.y);
    counts[x] = static_cast<size_t>(mColumns);

    size_t blockCount = 0;
    GUInt64 *blocks = GDALMDArrayGetBlockSize(of.array.get(), &blockCount);
    const qint64 block =
        y < blockCount ? qMax<qint64>(
            1, static_cast<qint64>(qMin<GUInt64>(blocks[y], static_cast<GUInt64>(mRows))))
                       : 1;
    CPLFree(blocks);
    // Strips are whole rows of the file's blocks, so that no block is read twice.
    const qint64 rowBytes = qint64(mColumns) * count * rule.rawBits / 8;
    const int step = static_cast<int>(
        qMin<qint64>(mRows, qMax<qint64>(1, kStripBytes / rowBytes / block) * block));
    std::vector<char> raw(static_cast<size_t>(rowBytes * step));
    const GdalCellType type(GDALMDArrayGetDataType(of.array.get()));
    qint64 missing = 0;
    for (int row = 0; row < mRows; row += step) {
        const int rows = qMin(step, mRows - row);
        start[y] = static_cast<GUInt64>(row);
        counts[y] = static_cast<size_t>(rows);
        CPLErrorReset();
        if (!GDALMDArrayRead(of.array.get(), start.data(), counts.data(), nullptr, nullptr,
                             type.get(), raw.data(), raw.data(), raw.size())
            || CPLGetLastErrorType() >= CE_Failure)
            fail(QStringLiteral("%1: broken at time %2, row %3%4")
                     .arg(file.where(of), QString::number(time + 1), QString::number(row + 1),
                          QuietGdal::complaint()));
        std::vector<qint64> steps(size, 1);
        for (size_t i = size - 1; i-- > 0;)
            steps[i] = steps[i + 1] * static_cast<qint64>(counts[i + 1]);
        StripForm strip{of.time < 0 ? 1 : count, rows, mColumns, 0, steps[y], steps[x]};
        if (of.time >= 0)
            strip.timeStep = steps[static_cast<size_t>(of.time)];
        missing +=
            convertCells(rule, raw.data(), strip,
                         {mRows, row, !file.ySide.isDescending, file.xSide.isDescending}, cells);
        progress(static_cast<int>(100LL * (row + rows) / mRows));
    }
    return missing > 0 ? rule.missing : MissingFlag();
}

} // namespace meridor
