// SPDX-License-Identifier: MIT
// Geographies out of files, tables in memory and arrays.
#include <cmath>
#include <pybind11/stl.h>
#include "call.h"
#include "core/formats/cubeReader.h"
#include "core/formats/rasterReader.h"
#include "core/formats/wellKnownBinary.h"
#include "core/import/cubeImporter.h"
#include "core/import/mapImporter.h"
#include "core/import/rasterImporter.h"
#include "core/project/catalog.h"
#include "core/project/progress.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/RasterAPI.h"
#include "intervals.h"
#include "nouns.h"

namespace meridor::python {
namespace {

/// The options of an import by their names in Python.
ImportOptions optionsOf(const py::dict &given)
{
    ImportOptions options;
    options.times = QStringLiteral("auto");
    const std::pair<const char *, QString *> texts[] = {{"layer", &options.layer},
                                                        {"name", &options.name},
                                                        {"key", &options.key},
                                                        {"start", &options.start},
                                                        {"end", &options.end},
                                                        {"x", &options.xColumn},
                                                        {"y", &options.yColumn},
                                                        {"crs", &options.projection},
                                                        {"observations", &options.observations},
                                                        {"encoding", &options.encoding},
                                                        {"decimal", &options.decimal},
                                                        {"times", &options.times},
                                                        {"time_pattern", &options.timePattern},
                                                        {"dataset", &options.dataset},
                                                        {"no_data", &options.noData},
                                                        {"realizations", &options.realizations}};
    const std::pair<const char *, QStringList *> lists[] = {{"fields", &options.fields},
                                                            {"tables", &options.tables},
                                                            {"series", &options.series},
                                                            {"observed", &options.observed},
                                                            {"types", &options.types},
                                                            {"missing", &options.missing},
                                                            {"missing_also", &options.missingAlso}};
    const std::pair<const char *, bool *> flags[] = {{"attributes", &options.attributes},
                                                     {"packed", &options.packed},
                                                     {"strict", &options.strict},
                                                     {"bands_are_times", &options.bandsAreTimes}};
    for (const auto &[name, text] : texts)
        if (given.contains(name))
            *text = given[name].cast<QString>();
    for (const auto &[name, list] : lists)
        if (given.contains(name))
            *list = textsOf(given[name]);
    for (const auto &[name, flag] : flags)
        if (given.contains(name))
            *flag = given[name].cast<bool>();
    if (given.contains("snap"))
        options.snap = given["snap"].cast<double>();
    return options;
}

/// @param raster  whether a file that holds a map and a raster, or a cube, is read as a raster.
int importFile(const QString &path, const py::dict &given, bool raster, const py::object &progress)
{
    ImportOptions options = optionsOf(given);
    options.map = path;
    return onFiles([&] {
        return atLength(progress, [&] {
            const Notes &notes = session().notes();
            const Progress bar("Import", "Importing...");
            if (!raster && isCubeFile(path))
                return importCube(options, notes, bar).geography;
            return raster || isRasterFile(path) ? importRaster(options, notes, bar).geography
                                                : importMap(options, notes, bar).geography;
        });
    });
}

/// A column as (name, "decimal" and an array of float64, "integer" and an array of int64 with a
/// mask, or "text" and a list).
void appendColumn(FeatureTable &table, const py::tuple &given)
{
    Column column;
    column.name = given[0].cast<QString>();
    column.typed = true;
    column.cells = std::make_shared<Cells>(table.spool);
    const auto kind = given[1].cast<std::string>();
    const auto append = [&column](const QString &text) {
        const QByteArray bytes = text.toUtf8();
        column.cells->append({bytes.constData(), static_cast<size_t>(bytes.size())});
    };
    if (kind == "decimal") {
        column.kind = ValueKind::Decimal;
        const auto values = given[2].cast<py::array_t<double, py::array::c_style>>();
        for (py::ssize_t i = 0; i < values.size(); ++i)
            append(std::isnan(values.data()[i]) ? QString() : exactNumber(values.data()[i]));
    } else if (kind == "integer") {
        column.kind = ValueKind::Integer;
        const auto values = given[2].cast<py::array_t<qint64, py::array::c_style>>();
        const auto mask = given[3].cast<py::array_t<bool, py::array::c_style>>();
        for (py::ssize_t i = 0; i < values.size(); ++i)
            append(mask.data()[i] ? QString() : QString::number(values.data()[i]));
    } else {
        column.kind = ValueKind::Text;
        for (const py::handle text : given[2])
            append(text.is_none() ? QString() : text.cast<QString>());
    }
    table.columns.append(column);
}

/// @param source  where the table came from, for messages and the history.
int importTable(const QString &source, const QString &projection, const py::iterable &columns,
                const py::iterable &shapes, const py::dict &given, const py::object &progress)
{
    const ImportOptions options = optionsOf(given);
    FeatureTable table;
    table.file = source;
    table.layer = options.name;
    table.projection = projection;
    inTurn([&] {
        table.shapes = std::make_shared<Shapes>(table.spool);
        for (const py::handle column : columns)
            appendColumn(table, column.cast<py::tuple>());
        for (const py::handle shape : shapes) {
            takeWellKnownBinary(table, shape.is_none()
                                           ? QByteArray()
                                           : QByteArray::fromStdString(shape.cast<std::string>()));
            ++table.rows;
        }
    });
    return atLength(progress, [&] {
        const Progress bar("Import", "Importing...");
        return importMap(table, options, session().notes(), bar).geography;
    });
}

int newGrid(const QString &name, unsigned rows, unsigned columns, double left, double bottom,
            double right, double top, const py::object &span, const QString &format,
            const QString &projection)
{
    TimeFormat times = TF_Integer;
    for (const TimeFormat known : {TF_Date, TF_Time, TF_DateTime, TF_Integer})
        if (format == QLatin1String(timeFormatName(known)))
            times = known;
    const auto [start, end, closed] = span.is_none()
                                          ? std::tuple<qint64, qint64, bool>(0, 0, true)
                                          : span.cast<std::tuple<qint64, qint64, bool>>();
    const int id = VORN_CreateNewRasterGeography(VORN_GetUniqueGeographyName(name), rows, columns,
                                                 QRectF(left, bottom, right - left, top - bottom),
                                                 intervalOf(start, end, closed), times,
                                                 QStringLiteral("Made of an array"), projection);
    if (id < 0)
        fail(QStringLiteral("a grid of %1 rows and %2 columns cannot be made")
                 .arg(rows)
                 .arg(columns));
    if (span.is_none())
        geographyOf(id)->SetStatic(true);
    return id;
}

int newGridDataset(int geography, const QString &name, bool integers, int bits, int realizations,
                   const QString &unit)
{
    requireNewDatasetName(geography, name);
    const int id =
        VORN_NewRasterDataset(geography, name, integers ? RasterIntegerType : RasterDecimalType,
                              realizations, bits, QString());
    if (id < 0)
        fail(QStringLiteral("dataset %1 could not be made").arg(name));
    if (!unit.isEmpty())
        VORN_SetDatasetMetaData(id, QStringLiteral("Unit"), unit);
    if (VORN_GetGeographyProperties(geography).isStatic)
        datasetOf(id)->SetStatic(true);
    return id;
}

template <class T>
bool addGrid(int id, int realization, const Interval &when, const py::array &cells, double missing)
{
    const auto held = cells.cast<py::array_t<T, py::array::c_style | py::array::forcecast>>();
    QVector<T> copy(static_cast<int>(held.size()));
    std::copy(held.data(), held.data() + held.size(), copy.begin());
    return VORN_AddRasterValues(id, realization, when, copy, static_cast<T>(missing), true, false);
}

/// Adds the cells of one time, row by row from the top. `missing` is the value of missing cells.
void addCells(int id, int realization, qint64 start, qint64 end, bool closed,
              const py::array &cells, double missing)
{
    if (!datasetOf(id))
        fail(QStringLiteral("the dataset is no longer in the project"));
    const Interval when = intervalOf(start, end, closed);
    const bool stored = datasetOf(id)->IsInteger()
                            ? addGrid<int>(id, realization, when, cells, missing)
                        : VORN_GetDatasetProperties(id).bitDepth == 32
                            ? addGrid<float>(id, realization, when, cells, missing)
                            : addGrid<double>(id, realization, when, cells, missing);
    if (!stored)
        fail(QStringLiteral("dataset %1 does not take its cells").arg(datasetName(id)));
}

} // namespace

void addExchange(py::module_ &module)
{
    module.def("import_file", &importFile, py::arg("path"), py::arg("options"), py::arg("raster"),
               py::arg("progress"));
    module.def("import_table", &importTable, py::arg("source"), py::arg("projection"),
               py::arg("columns"), py::arg("shapes"), py::arg("options"), py::arg("progress"));
    module.def(
        "new_grid",
        [](const QString &name, unsigned rows, unsigned columns, double left, double bottom,
           double right, double top, const py::object &span, const QString &format,
           const QString &projection) {
            return inTurn([&] {
                return newGrid(name, rows, columns, left, bottom, right, top, span, format,
                               projection);
            });
        },
        py::arg("name"), py::arg("rows"), py::arg("columns"), py::arg("left"), py::arg("bottom"),
        py::arg("right"), py::arg("top"), py::arg("span"), py::arg("time_format"),
        py::arg("projection"));
    module.def("new_grid_dataset", [](int geography, const QString &name, bool integers, int bits,
                                      int realizations, const QString &unit) {
        return inTurn(
            [&] { return newGridDataset(geography, name, integers, bits, realizations, unit); });
    });
    module.def("add_cells", [](int id, int realization, qint64 start, qint64 end, bool closed,
                               const py::array &cells, double missing) {
        inTurn([&] { addCells(id, realization, start, end, closed, cells, missing); });
    });
    module.def("finish_grid_dataset", [](int id) {
        inTurn([&] {
            VORN_RecalculateDataFrequencies(id);
            VORN_NewDatasetCreated(id);
        });
    });
}

} // namespace meridor::python
