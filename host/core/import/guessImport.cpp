// SPDX-License-Identifier: MIT
#include "core/import/guessImport.h"
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include "core/formats/cubeReader.h"
#include "core/formats/ogrReader.h"
#include "core/formats/rasterReader.h"
#include "core/project/times.h"

namespace meridor {
namespace {

constexpr qint64 kMostReadBytes = 64'000'000;
constexpr int kLeastSeries = 3; // columns whose names end in years

// Lower case, the likeliest first.
const char *const kKeys[] = {"key",  "id",     "fips", "geoid", "code", "gid",     "objectid",
                             "iso3", "iso_a3", "iso",  "fid",   "site", "station", "name"};
const char *const kStarts[] = {"start", "start_date", "startdate",  "begin",
                               "from",  "start_time", "valid_from", "date",
                               "time",  "datetime",   "year"};
const char *const kEnds[] = {"end", "end_date", "enddate", "to", "until", "end_time", "valid_to"};
const char *const kXs[] = {"x", "lon", "long", "lng", "longitude", "easting", "x_coord", "xcoord"};
const char *const kYs[] = {"y", "lat", "latitude", "northing", "y_coord", "ycoord"};

/// The fields with one of the names, in the order of the names.
template <size_t Count>
QStringList fieldsNamed(const QStringList &fields, const char *const (&names)[Count])
{
    QStringList found;
    for (const char *const name : names)
        for (const QString &field : fields)
            if (field.compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
                found.append(field);
    return found;
}

/// Ends the reading of a file once its columns are known.
struct ColumnsKnown {};

QStringList columnsOf(const QString &path, const QString &layer)
{
    QStringList columns;
    ReadOptions options;
    options.layer = layer;
    options.shapes = false;
    options.choose = [&](const FeatureTable &table) -> QSet<int> {
        columns = table.columnNames();
        throw ColumnsKnown();
    };
    try {
        columns = readFeatures(path, options).columnNames();
    } catch (const ColumnsKnown &) {
    }
    return columns;
}

/// NAME=COLUMNS for the fields whose names end in years.
QStringList seriesOf(const QStringList &fields)
{
    static const QRegularExpression year(QStringLiteral("^(.*?)([12]\\d{3})$"));
    QMap<QString, QStringList> groups;
    for (const QString &field : fields)
        if (const auto match = year.match(field); match.hasMatch())
            groups[match.captured(1)].append(field);
    QStringList series;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
        if (group->size() < kLeastSeries)
            continue;
        if (group.key().isEmpty()) {
            series.append(QStringLiteral("values=%1..%2").arg(group->first(), group->last()));
            continue;
        }
        QString name = group.key();
        while (name.size() > 1 && !name.back().isLetterOrNumber())
            name.chop(1);
        series.append(QStringLiteral("%1=%2*").arg(name, group.key()));
    }
    return series;
}

bool areTimes(const Column &column, int rows)
{
    QStringList texts;
    for (int row = 0; row < rows; ++row)
        if (const QString text = column.text(row); !text.isNull())
            texts.append(text);
    texts.removeDuplicates();
    return !texts.isEmpty() && recogniseTimes(texts);
}

struct KeyUse {
    bool isComplete = true; ///< no row lacks it
    bool repeats = false;
};

KeyUse useOf(const Column &column, int rows)
{
    KeyUse use;
    QSet<QString> seen;
    for (int row = 0; row < rows; ++row) {
        const QString text = column.text(row);
        use.isComplete = use.isComplete && !text.isNull();
        use.repeats = use.repeats || seen.contains(text);
        seen.insert(text);
    }
    return use;
}

/// Proposes a key whose values are all different, or one that repeats with times that tell its rows
/// apart.
void guessKeyAndTimes(ImportGuess &guess)
{
    const QStringList keys = fieldsNamed(guess.fields, kKeys);
    const QStringList starts = fieldsNamed(guess.fields, kStarts);
    const QStringList ends = fieldsNamed(guess.fields, kEnds);
    const QStringList wanted = keys + starts + ends;
    ImportOptions &options = guess.options;
    if (wanted.isEmpty() || QFileInfo(options.map).size() > kMostReadBytes)
        return;
    ReadOptions read;
    read.layer = options.layer;
    read.shapes = false;
    read.choose = [&](const FeatureTable &table) {
        QSet<int> kept;
        for (const QString &name : wanted)
            kept.insert(table.indexOf(name));
        return kept;
    };
    const FeatureTable table = readFeatures(options.map, read);
    const auto firstTimes = [&](const QStringList &names) {
        for (const QString &name : names)
            if (areTimes(table.columns[table.indexOf(name)], table.rows))
                return name;
        return QString();
    };
    const QString start = firstTimes(starts);
    const QString end = firstTimes(ends);
    if (!start.isEmpty() && !end.isEmpty()) {
        options.start = start;
        options.end = end;
    }
    QString repeating;
    for (const QString &name : keys) {
        const KeyUse use = useOf(table.columns[table.indexOf(name)], table.rows);
        if (use.isComplete && !use.repeats) {
            options.key = name;
            return;
        }
        if (use.isComplete && repeating.isEmpty())
            repeating = name;
    }
    if (repeating.isEmpty() || start.isEmpty())
        return;
    options.key = repeating;
    options.start = start;
    options.end = end.isEmpty() ? QStringLiteral("next") : end;
}

void guessShapes(ImportGuess &guess, const QString &layer)
{
    ImportOptions &options = guess.options;
    guess.layers = layerNames(options.map);
    options.layer = layer;
    if (layer.isEmpty() && guess.layers.size() > 1)
        options.layer = guess.layers.first();
    guess.fields = columnsOf(options.map, options.layer);
    if (guess.layers.isEmpty()) {
        guess.form = SourceForm::Table;
        options.xColumn = fieldsNamed(guess.fields, kXs).value(0);
        options.yColumn = fieldsNamed(guess.fields, kYs).value(0);
        if (options.xColumn.isEmpty() || options.yColumn.isEmpty())
            options.xColumn = options.yColumn = QString();
        else if (options.xColumn.startsWith(QLatin1String("lo"), Qt::CaseInsensitive))
            options.projection = QStringLiteral("EPSG:4326");
    }
    options.series = seriesOf(guess.fields);
    guessKeyAndTimes(guess);
}

} // namespace

ImportGuess guessImport(const QString &path, const QString &layer)
{
    ImportGuess guess;
    guess.options.map = path;
    guess.options.times = QStringLiteral("auto");
    if (isCubeFile(path)) {
        guess.form = SourceForm::Cube;
        const CubeReader reader(path, {});
        for (const CubeGrid &grid : reader.grids())
            guess.fields.append(grid.name);
        return guess;
    }
    if (isRasterFile(path)) {
        guess.form = SourceForm::Grid;
        const RasterReader reader(path, {});
        for (const RasterBand &band : reader.bands())
            guess.fields.append(band.name);
        guess.options.bandsAreTimes = guess.fields.size() > 1 && !guess.fields.contains(QString())
                                      && recogniseTimes(guess.fields);
        return guess;
    }
    guessShapes(guess, layer);
    return guess;
}

} // namespace meridor
