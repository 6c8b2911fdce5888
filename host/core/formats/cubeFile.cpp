// SPDX-License-Identifier: MIT
#include "core/formats/cubeFile.h"
#include <QSet>
#include <QStringList>
#include <algorithm>
#include <cpl_string.h>
#include "core/formats/cfTimes.h"
#include "core/formats/gdalFile.h"

namespace meridor {
namespace {

constexpr int kMostGroupDepth = 32;

/// How the role of a dimension is recognised, by any one of these.
struct RoleSigns {
    AxisRole role;
    const char *gdalType;
    const char *axis;          ///< the attribute "axis"
    QStringList standardNames; ///< the attribute "standard_name"
    QStringList units;
    QStringList names; ///< of the dimension itself
};

const QVector<RoleSigns> &roleSigns()
{
    static const QVector<RoleSigns> signs{
        {AxisRole::X,
         GDAL_DIM_TYPE_HORIZONTAL_X,
         "X",
         {"longitude", "projection_x_coordinate", "grid_longitude",
          "projection_x_angular_coordinate"},
         {"degrees_east", "degree_east", "degrees_e", "degree_e", "degreese", "degreee"},
         {"x", "lon", "long", "longitude", "easting", "rlon"}},
        {AxisRole::Y,
         GDAL_DIM_TYPE_HORIZONTAL_Y,
         "Y",
         {"latitude", "projection_y_coordinate", "grid_latitude",
          "projection_y_angular_coordinate"},
         {"degrees_north", "degree_north", "degrees_n", "degree_n", "degreesn", "degreen"},
         {"y", "lat", "latitude", "northing", "rlat"}},
        {AxisRole::Time, GDAL_DIM_TYPE_TEMPORAL, "T", {"time"}, {}, {"time", "valid_time"}}};
    return signs;
}

AxisRole roleOf(const GdalDimension &dimension, const CubeAxis &axis)
{
    const QString type = QString::fromUtf8(GDALDimensionGetType(dimension.get()));
    const GdalArray &coordinates = axis.coordinates;
    const QString letter = coordinates ? textAttribute(coordinates, "axis").toUpper() : QString();
    const QString standard =
        coordinates ? textAttribute(coordinates, "standard_name").toLower() : QString();
    for (const RoleSigns &signs : roleSigns())
        if (type == QLatin1String(signs.gdalType) || letter == QLatin1String(signs.axis)
            || signs.standardNames.contains(standard)
            || signs.units.contains(axis.unit.trimmed().toLower()))
            return signs.role;
    if (CfTimes::isUnit(axis.unit))
        return AxisRole::Time;
    for (const RoleSigns &signs : roleSigns())
        if (signs.names.contains(axis.name.toLower()))
            return signs.role;
    return AxisRole::Other;
}

QString unitOf(const GdalArray &array)
{
    const QString unit = QString::fromUtf8(GDALMDArrayGetUnit(array.get()));
    return unit.isEmpty() ? textAttribute(array, "units") : unit;
}

size_t dimensionCount(const GdalArray &array)
{
    return GDALMDArrayGetDimensionCount(array.get());
}

/// Names in an attribute that lists variables, separated by blanks.
QStringList listed(const GdalArray &array, const char *attribute)
{
    return textAttribute(array, attribute).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QStringList stringList(char **names)
{
    QStringList list;
    for (int i = 0; names && names[i]; ++i)
        list.append(QString::fromUtf8(names[i]));
    CSLDestroy(names);
    return list;
}

} // namespace

std::unique_ptr<CubeFile> CubeFile::open(const QString &path)
{
    const QuietGdal quiet;
    // A text such as NETCDF:file:variable names one variable of a file, as a raster.
    if (path.startsWith(QLatin1String("NETCDF:")) || path.startsWith(QLatin1String("HDF5:")))
        return nullptr;
    static const char *const drivers[] = {"netCDF", "HDF5", "Zarr", nullptr};
    auto cube = std::make_unique<CubeFile>();
    cube->file = openGdalFile(path, GDAL_OF_MULTIDIM_RASTER, nullptr, drivers);
    const GdalGroup root(cube->file ? GDALDatasetGetRootGroup(cube->file.get()) : nullptr);
    if (!root)
        return nullptr;
    cube->isNetCdf = QLatin1String(GDALGetDriverShortName(GDALGetDatasetDriver(cube->file.get())))
                     == QLatin1String("netCDF");
    cube->walk(root, QString(), 0);
    cube->assignRoles();
    return cube;
}

void CubeFile::walk(const GdalGroup &group, const QString &path, int depth)
{
    for (const QString &name : stringList(GDALGroupGetMDArrayNames(group.get(), nullptr))) {
        GdalArray array(GDALGroupOpenMDArray(group.get(), name.toUtf8().constData(), nullptr));
        if (!array || dimensionCount(array) < 2)
            continue;
        CubeVariable variable;
        variable.name = path + name;
        for (const GdalDimension &dimension : dimensionsOf(array))
            variable.axes.append(axisOf(dimension));
        variable.array = std::move(array);
        variables.push_back(std::move(variable));
    }
    if (depth >= kMostGroupDepth)
        return;
    for (const QString &name : stringList(GDALGroupGetGroupNames(group.get(), nullptr))) {
        const GdalGroup inner(GDALGroupOpenGroup(group.get(), name.toUtf8().constData(), nullptr));
        if (inner)
            walk(inner, path + name + QLatin1Char('/'), depth + 1);
    }
}

int CubeFile::axisOf(const GdalDimension &dimension)
{
    const QString fullName = QString::fromUtf8(GDALDimensionGetFullName(dimension.get()));
    const quint64 size = GDALDimensionGetSize(dimension.get());
    for (size_t i = 0; i < axes.size(); ++i)
        if (axes[i].fullName == fullName && axes[i].size == size)
            return static_cast<int>(i);
    CubeAxis axis;
    axis.name = QString::fromUtf8(GDALDimensionGetName(dimension.get()));
    axis.fullName = fullName;
    axis.size = size;
    axis.coordinates.reset(GDALDimensionGetIndexingVariable(dimension.get()));
    if (axis.coordinates) {
        axis.unit = unitOf(axis.coordinates);
        axis.isCurved = dimensionCount(axis.coordinates) > 1;
        if (dimensionCount(axis.coordinates) != 1)
            axis.coordinates.reset();
    }
    axis.role = roleOf(dimension, axis);
    axes.push_back(std::move(axis));
    return static_cast<int>(axes.size()) - 1;
}

void CubeFile::assignRoles()
{
    QSet<QString> helpers;
    for (const CubeVariable &variable : variables)
        for (const char *attribute : {"coordinates", "bounds", "climatology", "grid_mapping"})
            for (const QString &name : listed(variable.array, attribute))
                helpers.insert(name);
    for (const CubeAxis &axis : axes)
        if (axis.coordinates)
            for (const char *attribute : {"bounds", "climatology"})
                for (const QString &name : listed(axis.coordinates, attribute))
                    helpers.insert(name);
    for (CubeVariable &variable : variables) {
        const QString own = variable.name.section(QLatin1Char('/'), -1);
        variable.isHelper = helpers.contains(own) || helpers.contains(variable.name);
        for (int i = 0; i < variable.axes.size(); ++i) {
            const CubeAxis &axis = axes[static_cast<size_t>(variable.axes[i])];
            variable.isCurved = variable.isCurved || axis.isCurved;
            int &position = axis.role == AxisRole::X   ? variable.x
                            : axis.role == AxisRole::Y ? variable.y
                                                       : variable.time;
            // Of two dimensions of time, such as the run and the valid time of a forecast, the one
            // that is called so is the dataset's.
            if (axis.role != AxisRole::Other
                && (position < 0 || axis.name.toLower().startsWith(QLatin1String("time"))))
                position = i;
        }
        if (variable.x >= 0 && variable.y >= 0)
            continue;
        for (const QString &name : listed(variable.array, "coordinates")) {
            const GdalArray place = find(name);
            variable.isCurved = variable.isCurved || (place && dimensionCount(place) == 2);
        }
    }
    for (CubeVariable &variable : variables)
        if (variable.time < 0 && variable.hasGrid())
            findTimes(variable);
    placeByOrder();
}

/// The times of a variable without a dimension of time: those along another of its dimensions, as
/// the valid times of the steps of a forecast, or a single one.
void CubeFile::findTimes(CubeVariable &variable)
{
    for (const QString &name : listed(variable.array, "coordinates")) {
        GdalArray places = find(name);
        const auto dimensions = places ? dimensionsOf(places) : std::vector<GdalDimension>();
        if (!places || dimensions.size() > 1 || !CfTimes::isUnit(unitOf(places)))
            continue;
        if (dimensions.empty()) {
            if (!variable.singleTime || name.startsWith(QLatin1String("valid")))
                variable.singleTime = std::move(places);
            continue;
        }
        const int axis = axisOf(dimensions.front());
        const int position = variable.axes.indexOf(axis);
        CubeAxis &along = axes[static_cast<size_t>(axis)];
        if (position < 0 || along.role == AxisRole::X || along.role == AxisRole::Y)
            continue;
        along.role = AxisRole::Time;
        along.unit = unitOf(places);
        along.coordinates = std::move(places);
        variable.time = position;
        variable.singleTime.reset();
        return;
    }
}

/// Where no dimension of the file says what it is, a grid's rows and columns are the last two.
void CubeFile::placeByOrder()
{
    for (const CubeAxis &axis : axes)
        if (axis.role != AxisRole::Other || axis.coordinates)
            return;
    for (CubeVariable &variable : variables) {
        variable.x = variable.axes.size() - 1;
        variable.y = variable.axes.size() - 2;
    }
}

GdalArray CubeFile::find(const QString &name) const
{
    const GdalGroup root(GDALDatasetGetRootGroup(file.get()));
    GdalArray found(GDALGroupResolveMDArray(root.get(), name.toUtf8().constData(), "/", nullptr));
    return found;
}

QVector<double> CubeFile::places(const CubeAxis &axis) const
{
    if (!axis.coordinates)
        return {};
    QVector<double> numbers = numbersOf(axis.coordinates);
    int has = 0;
    const double scale = GDALMDArrayGetScale(axis.coordinates.get(), &has);
    const double factor = has ? scale : 1;
    const double offset = GDALMDArrayGetOffset(axis.coordinates.get(), &has);
    const double added = has ? offset : 0;
    const double empty = GDALMDArrayGetNoDataValueAsDouble(axis.coordinates.get(), &has);
    for (double &number : numbers)
        number = has && number == empty ? qQNaN() : number * factor + added;
    return numbers;
}

QVector<double> CubeFile::bounds(const CubeAxis &axis) const
{
    if (!axis.coordinates)
        return {};
    const QString name = textAttribute(axis.coordinates, "bounds");
    const GdalArray array = name.isEmpty() ? nullptr : find(name);
    if (!array || dimensionCount(array) != 2)
        return {};
    const QVector<double> numbers = numbersOf(array);
    return static_cast<quint64>(numbers.size()) == 2 * axis.size ? numbers : QVector<double>();
}

} // namespace meridor
