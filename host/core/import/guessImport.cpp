// SPDX-License-Identifier: MIT
#include "core/import/guessImport.h"
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <cmath>
#include <optional>
#include "core/formats/cubeReader.h"
#include "core/formats/ogrReader.h"
#include "core/formats/rasterReader.h"
#include "core/formats/sourceFile.h"
#include "core/formats/values.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/times.h"

namespace meridor {
namespace {

constexpr qint64 kMostReadBytes = 64'000'000;
constexpr int kLeastSeries = 3; // columns whose names end in years
constexpr int kFirstYear = 1000;
constexpr int kLastYear = 2999;

// The following names are compared by their letters and digits alone, in lower case: "Valid from"
// and "validFrom" are "validfrom". The likeliest are first.
const char *const kKeys[] = {"key",     "id",      "geoid", "fips",     "fipscode", "nuts",
                             "nutsid",  "code",    "iso3",  "isoa3",    "iso2",     "isoa2",
                             "isocode", "iso3166", "iso",   "iso31662", "gid",      "objectid",
                             "fid",     "ogcfid",  "ags",   "uuid",     "site",     "station",
                             "siteid",  "plot",    "well",  "sensor",   "stid",     "placeid"};
const char *const kStarts[] = {
    "start",    "startdate", "starttime", "begin",   "begindate", "begintime", "from",  "fromdate",
    "datefrom", "validfrom", "since",     "date",    "datetime",  "timestamp", "time",  "datum",
    "fecha",    "day",       "obsdate",   "obstime", "year",      "jahr",      "annee", "ano"};
const char *const kEnds[] = {"end",    "enddate", "endtime", "to",         "todate",
                             "dateto", "validto", "until",   "validuntil", "finish"};
/// Times that need not be years or dates.
const char *const kCounts[] = {"time", "t", "step", "wave", "round"};
struct NamePair {
    const char *x;
    const char *y;
    bool isGeographic;
};
const NamePair kPlaces[] = {{"lon", "lat", true},
                            {"long", "lat", true},
                            {"lng", "lat", true},
                            {"longitude", "latitude", true},
                            {"decimallongitude", "decimallatitude", true},
                            {"x", "y", false},
                            {"easting", "northing", false},
                            {"eastings", "northings", false},
                            {"xcoord", "ycoord", false},
                            {"coordx", "coordy", false},
                            {"pointx", "pointy", false},
                            {"utmx", "utmy", false},
                            {"rechtswert", "hochwert", false}};
const char *const kPatterns[] = {"d.M.yyyy",          "yyyy/M/d",          "yyyyMMdd",
                                 "d/M/yyyy",          "M/d/yyyy",          "d-M-yyyy",
                                 "d.M.yyyy HH:mm",    "yyyy/M/d HH:mm",    "d/M/yyyy HH:mm",
                                 "M/d/yyyy HH:mm",    "yyyy-MM-dd HH:mm",  "d.M.yyyy HH:mm:ss",
                                 "yyyy/M/d HH:mm:ss", "d/M/yyyy HH:mm:ss", "M/d/yyyy HH:mm:ss"};

QString normalised(const QString &name)
{
    QString letters;
    for (const QChar &each : name.normalized(QString::NormalizationForm_D))
        if (each.isLetterOrNumber())
            letters.append(each.toLower());
    return letters;
}

template <size_t Count> bool isOneOf(const QString &name, const char *const (&names)[Count])
{
    return std::any_of(std::begin(names), std::end(names),
                       [&name](const char *each) { return name == QLatin1String(each); });
}

/// The fields with one of the names, in the order of the names.
template <size_t Count>
QStringList fieldsNamed(const QStringList &fields, const char *const (&names)[Count])
{
    QStringList found;
    for (const char *const name : names)
        for (const QString &field : fields)
            if (normalised(field) == QLatin1String(name))
                found.append(field);
    return found;
}

/// Fields that hold keys by their names: of the list, then with endings such as "county_id" and
/// "GEOID20", then names.
QStringList keyFields(const QStringList &fields)
{
    static const QRegularExpression words(
        QStringLiteral("(?:^|[^a-z])(?:id|code|nr|key)$|(?:^|_)(?:id|code)_|"
                       "^(?:geoid|fips|nuts|iso)[_\\d]\\w*$"));
    static const QRegularExpression camel(QStringLiteral("[a-z](?:Id|ID|Code)$"));
    QStringList found = fieldsNamed(fields, kKeys);
    for (const QString &field : fields)
        if (!found.contains(field)
            && (words.match(field.toLower()).hasMatch() || camel.match(field).hasMatch()))
            found.append(field);
    for (const QString &field : fields)
        if (normalised(field) == QLatin1String("name"))
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

/// The distinct texts of a column, without missing ones.
QStringList textsOf(const Column &column, int rows)
{
    QSet<QString> texts;
    for (int row = 0; row < rows; ++row)
        if (const QString text = column.text(row); !text.isNull())
            texts.insert(text);
    return texts.values();
}

bool areYears(const QStringList &texts)
{
    return std::all_of(texts.begin(), texts.end(), [](const QString &text) {
        bool isNumber = false;
        const int year = text.toInt(&isNumber);
        return isNumber && year >= kFirstYear && year <= kLastYear;
    });
}

struct TimeField {
    QString name; ///< empty: there is none
    QString pattern;
    bool isYears = false;
};

/// The only pattern that all texts have; empty if there is none, or if several would read other
/// days, such as 1/2/2000.
QString patternOf(const QStringList &texts)
{
    QString found;
    for (const char *const candidate : kPatterns) {
        const QString pattern = QLatin1String(candidate);
        const bool fits = std::all_of(texts.begin(), texts.end(), [&](const QString &text) {
            return text.size() >= 8 && !isoTime(text, pattern).isNull();
        });
        if (!fits)
            continue;
        if (!found.isEmpty())
            return QString();
        found = pattern;
    }
    return found;
}

/// Whole numbers are times if they are years or days such as 20050608, or if the name says so:
/// "from" and "to" name the ends of links, too.
TimeField timeFieldOf(const Column &column, int rows)
{
    const QStringList texts = textsOf(column, rows);
    if (texts.isEmpty())
        return {};
    const auto format = recogniseTimes(texts);
    if (format && *format == TF_Integer) {
        if (areYears(texts))
            return {column.name, QString(), true};
        if (isOneOf(normalised(column.name), kCounts))
            return {column.name, QString(), false};
    } else if (format) {
        return {column.name, QString(), false};
    }
    const QString pattern = patternOf(texts);
    return pattern.isEmpty() ? TimeField() : TimeField{column.name, pattern, false};
}

TimeField firstTimes(const FeatureTable &table, const QStringList &names)
{
    for (const QString &name : names)
        if (const TimeField found = timeFieldOf(table.columns[table.indexOf(name)], table.rows);
            !found.name.isEmpty())
            return found;
    return {};
}

struct KeyUse {
    bool isComplete = true; ///< no row lacks it
    bool repeats = false;
};

/// Of one column, or of two together if there is a second one.
KeyUse useOf(const Column &column, const Column *second, int rows)
{
    KeyUse use;
    QSet<QString> seen;
    for (int row = 0; row < rows; ++row) {
        QString text = column.text(row);
        use.isComplete = use.isComplete && !text.isNull();
        if (second)
            text = QString::number(text.size()) + QLatin1Char(' ') + text + second->text(row);
        use.repeats = use.repeats || seen.contains(text);
        seen.insert(text);
    }
    return use;
}

bool isTextual(const Column &column, int rows)
{
    for (int row = 0; row < rows; ++row)
        if (const std::string_view cell = column.view(row); !cell.empty())
            if (!toDecimal(std::string(cell)))
                return true;
    return false;
}

/// The field that repeats and tells, with the start, the rows apart: of the named ones, else, if
/// there are several rows at a time, the first one of texts.
QString repeatingKey(const FeatureTable &table, const QStringList &named, const QString &start)
{
    const Column &times = table.columns[table.indexOf(start)];
    const auto isKey = [&](const Column &column) {
        const KeyUse own = useOf(column, nullptr, table.rows);
        return own.isComplete && own.repeats && !useOf(column, &times, table.rows).repeats;
    };
    for (const QString &name : named)
        if (isKey(table.columns[table.indexOf(name)]))
            return name;
    if (!useOf(times, nullptr, table.rows).repeats)
        return QString();
    for (const Column &column : table.columns)
        if (column.name != start && isTextual(column, table.rows) && isKey(column))
            return column.name;
    return QString();
}

/// Proposes a key whose values are all different, or one that repeats with times that tell its rows
/// apart.
void guessKeyAndTimes(ImportGuess &guess, const FeatureTable &table)
{
    ImportOptions &options = guess.options;
    const TimeField start = firstTimes(table, fieldsNamed(guess.fields, kStarts));
    TimeField end = firstTimes(table, fieldsNamed(guess.fields, kEnds));
    if (end.pattern != start.pattern)
        end = TimeField();
    if (!start.name.isEmpty() && !end.name.isEmpty()) {
        options.start = start.name;
        options.end = end.name;
        options.timePattern = start.pattern;
    }
    QStringList keys = keyFields(guess.fields);
    for (const QString &used : {options.xColumn, options.yColumn, start.name, end.name})
        keys.removeAll(used);
    for (const QString &name : std::as_const(keys)) {
        const KeyUse use = useOf(table.columns[table.indexOf(name)], nullptr, table.rows);
        if (use.isComplete && !use.repeats) {
            options.key = name;
            return;
        }
    }
    if (start.name.isEmpty())
        return;
    options.key = repeatingKey(table, keys, start.name);
    if (options.key.isEmpty())
        return;
    options.start = start.name;
    options.timePattern = start.pattern;
    // A year holds for itself, a date or moment until the next one.
    if (end.name.isEmpty())
        options.end = start.isYears ? start.name : QStringLiteral("next");
    else
        options.end = end.name;
}

/// Numbers with a comma, in a table that has none with a point.
bool hasDecimalCommas(const FeatureTable &table)
{
    bool hasCommas = false;
    for (const Column &column : table.columns) {
        for (int row = 0; row < table.rows; ++row) {
            const std::string cell(column.view(row));
            if (cell.find('.') != std::string::npos && toDecimal(cell))
                return false;
            hasCommas = hasCommas || looksLikeDecimalComma(cell);
        }
    }
    return hasCommas;
}

/// Whether all values of a column are numbers within a limit.
bool areWithin(const Column &column, int rows, double limit, char decimal)
{
    for (int row = 0; row < rows; ++row) {
        const std::string_view cell = column.view(row);
        if (cell.empty())
            continue;
        const auto number = toDecimal(cell, decimal);
        if (!number || !(std::abs(*number) <= limit))
            return false;
    }
    return true;
}

/// @param table  null: the values are not known, and the names decide.
void guessPlaces(ImportGuess &guess, const FeatureTable *table)
{
    constexpr double kAny = 1e300;
    ImportOptions &options = guess.options;
    const char decimal = options.decimal.isEmpty() ? '.' : ',';
    for (const NamePair &pair : kPlaces) {
        const char *const xNames[] = {pair.x};
        const char *const yNames[] = {pair.y};
        const QString x = fieldsNamed(guess.fields, xNames).value(0);
        const QString y = fieldsNamed(guess.fields, yNames).value(0);
        if (x.isEmpty() || y.isEmpty())
            continue;
        const auto within = [&](const QString &field, double limit) {
            return !table
                   || areWithin(table->columns[table->indexOf(field)], table->rows, limit, decimal);
        };
        if (!within(x, kAny) || !within(y, kAny))
            continue;
        options.xColumn = x;
        options.yColumn = y;
        if (pair.isGeographic && within(x, 360) && within(y, 90))
            options.projection = QStringLiteral("EPSG:4326");
        return;
    }
}

/// The values of a file, without its shapes; none of a large file and of a database.
std::optional<FeatureTable> valuesOf(const ImportOptions &options)
{
    if (isConnection(options.map) || QFileInfo(options.map).size() > kMostReadBytes)
        return std::nullopt;
    ReadOptions read;
    read.layer = options.layer;
    read.shapes = false;
    return readFeatures(options.map, read);
}

void guessShapes(ImportGuess &guess, const QString &layer)
{
    ImportOptions &options = guess.options;
    guess.layers = layerNames(options.map);
    options.layer = layer;
    if (layer.isEmpty() && guess.layers.size() > 1)
        options.layer = guess.layers.first();
    guess.fields = columnsOf(options.map, options.layer);
    const bool isTable = guess.layers.isEmpty() || !canHaveShapes(options.map, options.layer);
    const std::optional<FeatureTable> values = valuesOf(options);
    if (isTable) {
        guess.form = SourceForm::Table;
        if (values && hasDecimalCommas(*values))
            options.decimal = QStringLiteral(",");
        guessPlaces(guess, values ? &*values : nullptr);
    }
    options.series = seriesOf(guess.fields);
    if (values)
        guessKeyAndTimes(guess, *values);
}

} // namespace

ImportGuess guessImport(const QString &path, const QString &layer)
{
    if (isStream(path)) // it is read more than once, and a wait for a pipe would stop a window
        fail(QStringLiteral("%1: is a pipe or a device and no file").arg(path));
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
