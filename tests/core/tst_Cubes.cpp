// SPDX-License-Identifier: MIT
#include <QtTest>
#include <cmath>
#include <cpl_vsi.h>
#include <gdal.h>
#include "core/formats/cfTimes.h"
#include "core/formats/cubeWriter.h"
#include "core/grids/gridValues.h"
#include "core/import/cubeImporter.h"
#include "core/workshop.h"
#include "datainterface/MRasterDataset.h"
#include "support/checks.h"

using namespace meridor;

namespace {

using Attributes = QMap<QByteArray, QVariant>;

/// A file written through GDAL, as the services that publish them do: variables by name.
class CubeMaker {
public:
    explicit CubeMaker(const QString &path, const char *format = "FORMAT=NC4")
    {
        GDALAllRegister();
        const char *const options[] = {format, nullptr};
        mFile = GDALCreateMultiDimensional(GDALGetDriverByName("netCDF"), path.toUtf8(), nullptr,
                                           options);
        mRoot = GDALDatasetGetRootGroup(mFile);
    }
    ~CubeMaker()
    {
        for (GDALDimensionH dimension : qAsConst(mDimensions))
            GDALDimensionRelease(dimension);
        GDALGroupRelease(mRoot);
        GDALClose(mFile);
    }
    void dimension(const QByteArray &name, const QVector<double> &places,
                   const Attributes &attributes = {})
    {
        mDimensions[name] = GDALGroupCreateDimension(mRoot, name, nullptr, nullptr,
                                                     static_cast<GUInt64>(places.size()), nullptr);
        if (!attributes.isEmpty())
            variable(name, {name}, GDT_Float64, places, attributes);
    }
    /// Attributes that GDAL keeps beside the others: units, scale, offset, fill.
    void variable(const QByteArray &name, const QVector<QByteArray> &dimensions, GDALDataType type,
                  const QVector<double> &values, Attributes attributes = {})
    {
        std::vector<GDALDimensionH> handles;
        std::vector<size_t> count;
        for (const QByteArray &dimension : dimensions) {
            handles.push_back(mDimensions[dimension]);
            count.push_back(GDALDimensionGetSize(handles.back()));
        }
        const std::vector<GUInt64> start(count.size(), 0);
        GDALExtendedDataTypeH cell = GDALExtendedDataTypeCreate(type);
        GDALExtendedDataTypeH number = GDALExtendedDataTypeCreate(GDT_Float64);
        GDALMDArrayH array =
            GDALGroupCreateMDArray(mRoot, name, handles.size(), handles.data(), cell, nullptr);
        GDALMDArraySetUnit(array, attributes.take("units").toByteArray());
        if (attributes.contains("scale"))
            GDALMDArraySetScale(array, attributes.take("scale").toDouble());
        if (attributes.contains("offset"))
            GDALMDArraySetOffset(array, attributes.take("offset").toDouble());
        if (attributes.contains("fill"))
            GDALMDArraySetNoDataValueAsDouble(array, attributes.take("fill").toDouble());
        for (const QByteArray &key : attributes.keys()) {
            const QVariant value = attributes[key];
            const bool isText = value.type() == QVariant::ByteArray;
            GDALExtendedDataTypeH text = GDALExtendedDataTypeCreateString(0);
            GDALAttributeH attribute =
                GDALMDArrayCreateAttribute(array, key, 0, nullptr, isText ? text : number, nullptr);
            if (isText)
                GDALAttributeWriteString(attribute, value.toByteArray());
            else
                GDALAttributeWriteDouble(attribute, value.toDouble());
            GDALAttributeRelease(attribute);
            GDALExtendedDataTypeRelease(text);
        }
        const auto bytes = static_cast<size_t>(values.size()) * sizeof(double);
        if (!GDALMDArrayWrite(array, start.data(), count.data(), nullptr, nullptr, number,
                              values.constData(), values.constData(), bytes))
            qFatal("%s cannot be written", name.constData());
        GDALExtendedDataTypeRelease(number);
        GDALExtendedDataTypeRelease(cell);
        GDALMDArrayRelease(array);
    }

private:
    GDALDatasetH mFile = nullptr;
    GDALGroupH mRoot = nullptr;
    QMap<QByteArray, GDALDimensionH> mDimensions;
};

const Attributes kEast{{"units", QByteArray("degrees_east")}};
const Attributes kNorth{{"units", QByteArray("degrees_north")}};

Attributes timeUnit(const char *unit, const char *calendar = "standard")
{
    return {{"units", QByteArray(unit)}, {"calendar", QByteArray(calendar)}};
}

/// `count` numbers from `first` on.
QVector<double> run(int count, double first = 0, double step = 1)
{
    QVector<double> numbers;
    for (int i = 0; i < count; ++i)
        numbers.append(first + i * step);
    return numbers;
}

QString importOf(Workshop &shop, const QString &path)
{
    VORN_UnloadProject();
    shop.notes.clear();
    shop.options.map = path;
    try {
        const Progress progress("Import", "Importing...");
        shop.report = importCube(shop.options, shop, progress);
    } catch (const Failure &failure) {
        return failure.text();
    }
    return QString();
}

/// "time=first cell..last cell" of each time, of the first realization.
QString told(const QString &dataset)
{
    const int id = findDataset(dataset);
    QStringList texts;
    for (const Interval &when : dataTimes(id)) {
        const QVector<double> cells = gridValues(id, instantOf(when));
        texts.append(axisOf(VORN_GetGeographyId(id)).show(when) + '=' + cellText(id, cells.first())
                     + ".." + cellText(id, cells.last()));
    }
    return texts.join(' ');
}

} // namespace

/// Cubes of named variables and dimensions, as weather services and models publish them.
class TestCubes : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void countsTimesInTheirCalendar()
    {
        const auto check = [](const char *unit, const char *calendar, double value,
                              const char *moment) {
            const InCase inCase(QByteArray(unit) + ' ' + calendar);
            const auto seconds = CfTimes(unit, calendar, "f").secondsSince1970(value);
            QCOMPARE(seconds
                         ? QDateTime::fromSecsSinceEpoch(*seconds, Qt::UTC).toString(Qt::ISODate)
                         : QString("none"),
                     QString(moment));
        };
        check("hours since 1900-01-01 00:00:00.0", "gregorian", 1051896, "2020-01-01T00:00:00Z");
        check("days since 2000-1-1", "", -0.25, "1999-12-31T18:00:00Z");
        check("seconds since 1970-01-01T00:00:00Z", "proleptic_gregorian", 1e9,
              "2001-09-09T01:46:40Z");
        check("minutes since 2000-01-01 02:00 +02:00", "standard", 90, "2000-01-01T01:30:00Z");
        // Before 1582-10-15 the standard calendar is the Julian one, two days apart in the year 1.
        check("hours since 1-1-1 00:00:0.0", "standard", 17347584, "1980-01-01T00:00:00Z");
        check("days since 0001-01-01", "proleptic_gregorian", 722814, "1980-01-01T00:00:00Z");
        check("days since 2000-02-28", "noleap", 1, "2000-03-01T00:00:00Z");
        check("days since 1850-1-1", "365_day", 54750 + 59, "2000-03-01T00:00:00Z");
        check("days since 1850-1-1", "standard", 1e20, "none");
        check("days since 1850-1-1", "standard", std::nan(""), "none");
        const auto refused = [](const char *unit, const char *calendar, const char *text) {
            try {
                CfTimes(unit, calendar, "f");
                QFAIL(unit);
            } catch (const Failure &failure) {
                QVERIFY2(failure.text().contains(text), failure.what());
            }
        };
        refused("months since 2000-01-01", "", "has no fixed length");
        refused("days since 2000-01-01", "360_day", "days that do not exist");
        refused("days since the flood", "", "names no moment");
    }

    void unpacksAndPlaces()
    {
        Workshop shop;
        const QString path = shop.file("era.nc", "");
        {
            CubeMaker cube(path);
            cube.dimension("time", {1051902, 1051896}, timeUnit("hours since 1900-01-01"));
            cube.dimension("latitude", {51, 50.5, 50}, kNorth);
            cube.dimension("longitude", {358, 358.5}, kEast);
            cube.variable("t2m", {"time", "latitude", "longitude"}, GDT_Int16,
                          {10, 20, 30, 40, 50, -32767, -10, -20, -30, -40, -50, -60},
                          {{"scale", 0.5},
                           {"offset", 280.0},
                           {"fill", -32767.0},
                           {"units", QByteArray("K")}});
        }
        QCOMPARE(importOf(shop, path), QString());
        QCOMPARE(told("t2m"), QString("2020-01-01T00:00:00=275..250 2020-01-01T06:00:00=285..nan"));
        const GeoProps place = VORN_GetGeographyProperties(shop.report.geography);
        QCOMPARE(place.bounds, QRectF(357.75, 49.75, 1.0, 1.5));
        QVERIFY(place.metaData.value("Projection").toString().contains("WGS 84"));
        shop.options.packed = true;
        QCOMPARE(importOf(shop, path), QString());
        QCOMPARE(told("t2m"), QString("2020-01-01T00:00:00=-10..-60 2020-01-01T06:00:00=10..nan"));
        QVERIFY(shop.notes.join(' ').contains("a value is cell * 0.5 + 280"));
    }

    void turnsRowsAndColumns()
    {
        const auto check = [](bool isNorthUp, bool isEastFirst, const QVector<QByteArray> &order) {
            Workshop shop;
            const QString path = shop.file("g.nc", "");
            {
                CubeMaker cube(path);
                cube.dimension("x", isEastFirst ? run(3, 2, -1) : run(3),
                               {{"axis", QByteArray("X")}});
                cube.dimension("y", isNorthUp ? run(2, 1, -1) : run(2),
                               {{"axis", QByteArray("Y")}});
                cube.dimension("t", {3, 5}, {{"axis", QByteArray("T")}});
                QVector<double> cells(12);
                for (int t = 0; t < 2; ++t)
                    for (int row = 0; row < 2; ++row) // of the map, from the top
                        for (int column = 0; column < 3; ++column) {
                            QMap<QByteArray, int> at{{"t", t},
                                                     {"y", isNorthUp ? row : 1 - row},
                                                     {"x", isEastFirst ? 2 - column : column}};
                            const QMap<QByteArray, int> size{{"t", 2}, {"y", 2}, {"x", 3}};
                            int index = 0;
                            for (const QByteArray &name : order)
                                index = index * size[name] + at[name];
                            cells[index] = 100 * t + 10 * row + column;
                        }
                cube.variable("v", order, GDT_Float32, cells);
            }
            QCOMPARE(importOf(shop, path), QString());
            QCOMPARE(gridValues(findDataset("v"), 5),
                     (QVector<double>{100, 101, 102, 110, 111, 112}));
        };
        for (const bool isNorthUp : {false, true})
            for (const bool isEastFirst : {false, true})
                for (const auto &order :
                     {QVector<QByteArray>{"t", "y", "x"}, {"x", "y", "t"}, {"y", "t", "x"}})
                    check(isNorthUp, isEastFirst, order);
    }

    void splitsOtherDimensions()
    {
        Workshop shop;
        const QString path = shop.file("ens.nc", "");
        {
            CubeMaker cube(path);
            cube.dimension(
                "time", {0.5, 1.5},
                {{"units", QByteArray("days since 2001-01-31")}, {"bounds", QByteArray("edges")}});
            cube.dimension("nv", {0, 1});
            cube.variable("edges", {"time", "nv"}, GDT_Float64, {0, 1, 1, 2});
            cube.dimension("number", {1, 2}, {{"units", QByteArray("1")}});
            cube.dimension("level", {1000, 850}, {{"units", QByteArray("hPa")}});
            cube.dimension("lat", {10, 20}, kNorth);
            cube.dimension("lon", {1, 2}, kEast);
            cube.variable("q", {"time", "number", "level", "lat", "lon"}, GDT_Float64, run(32));
            cube.variable("land", {"lat", "lon"}, GDT_Byte, {1, 0, 1, 1});
        }
        QCOMPARE(importOf(shop, path), QString());
        QCOMPARE(shop.report.datasets.size(), 5);
        QCOMPARE(told("q number=2 level=850"), QString("2001-01-31=14..13 2001-02-01=30..29"));
        QCOMPARE(told("land"), QString("2001-01-31/2001-02-01=1..0"));
        shop.options.realizations = "number";
        shop.options.fields = QStringList{"q level=850"};
        QCOMPARE(importOf(shop, path), QString());
        QCOMPARE(shop.report.datasets.size(), 1);
        const int id = findDataset("q level=850");
        QCOMPARE(VORN_GetDatasetProperties(id).realizationCount, 2);
        double value = 0;
        QVERIFY(rasterOf(id)->GetValue(1, 0, 0, instantOf(dataTimes(id)[1]), value));
        QCOMPARE(value, 30.0);
        const auto refused = [&](const QString &realizations, const QString &field,
                                 const char *text) {
            shop.options.realizations = realizations;
            shop.options.fields = field.isEmpty() ? QStringList() : QStringList{field};
            const QString failure = importOf(shop, path);
            QVERIFY2(failure.contains(text), qPrintable(failure));
            QVERIFY(geographyIds().isEmpty());
        };
        refused("step", "", "no dimension step for realizations; there are: number, level");
        refused("lat", "", "is that of its grid");
        refused("", "t2m", "no variable t2m with a grid; there are: q, land");
    }

    void knowsWhatMeansNoData()
    {
        const auto check = [](GDALDataType type, const QVector<double> &cells,
                              const Attributes &attributes, const QString &missing) {
            const InCase inCase(attributes);
            Workshop shop;
            const QString path = shop.file("m.nc", "");
            {
                CubeMaker cube(path);
                cube.dimension("y", run(2), {{"axis", QByteArray("Y")}});
                cube.dimension("x", run(cells.size() / 2), {{"axis", QByteArray("X")}});
                cube.variable("v", {"y", "x"}, type, cells, attributes);
            }
            QCOMPARE(importOf(shop, path), QString());
            QString letters;
            for (const double value : gridValues(findDataset("v"), 0))
                letters += std::isnan(value) ? 'm' : '.';
            QCOMPARE(letters, missing);
        };
        const double nan = std::nan("");
        check(GDT_Float32, {1, nan, 3, 4}, {}, "...m");
        check(GDT_Float32, {1, nan, 3, 4}, {{"fill", nan}}, "...m");
        check(GDT_Float64, {1, 1e20, nan, 4}, {{"fill", 1e20}}, "m..m");
        check(GDT_Float32, {1, 9.9692099683868690e+36, 3, 4}, {}, "...m");
        check(GDT_Int16, {1, -9, 7, 4}, {{"fill", -9.0}, {"missing_value", 7.0}}, "m..m");
        check(GDT_Int16, {1, -9, 7, 4}, {{"valid_min", 0.0}, {"valid_max", 4.0}}, "m..m");
        check(GDT_Int16, {0, 1000, 1001, 5},
              {{"scale", 0.001}, {"valid_min", 0.0}, {"valid_max", 1.0}}, "m...");
        check(GDT_Byte, {1, 2, 3, 255}, {{"fill", 255.0}}, ".m..");
    }

    void comesBackFromEachFormat()
    {
        const auto check = [](const char *name, const char *driver, GDALDataType type) {
            const InCase inCase(QByteArray(name) + ' ' + GDALGetDataTypeName(type));
            Workshop shop;
            const QString path = shop.file("in.nc", "");
            {
                CubeMaker cube(path);
                cube.dimension("time", {0, 31, 59}, timeUnit("days since 2001-01-01"));
                cube.dimension("number", {1, 2}, {{"units", QByteArray("1")}});
                cube.dimension("lat", {20, 10}, kNorth);
                cube.dimension("lon", {1, 2, 3}, kEast);
                QVector<double> cells = run(36);
                std::fill(cells.begin(), cells.begin() + 6, 0); // a block of zeros
                cube.variable("rain_fall", {"time", "number", "lat", "lon"}, type, cells,
                              {{"fill", 35.0}, {"units", QByteArray("mm")}});
                cube.variable("land", {"lat", "lon"}, GDT_Byte, QVector<double>(6, 0));
            }
            shop.options.realizations = "number";
            shop.options.end = "next";
            QCOMPARE(importOf(shop, path), QString());
            const QString rain = told("rain_fall");
            const QString land = told("land");
            QVERIFY2(rain.contains("2001-02=12..17"), qPrintable(rain));
            const QVector<int> ids = shop.report.datasets;
            const QRectF bounds = VORN_GetGeographyProperties(shop.report.geography).bounds;
            const QString target = QFileInfo(path).path() + '/' + name;
            const auto times = dataTimes(ids.first());
            exportCube(target, driver, ids, times.first().startTime, times.last().endTime);
            shop.options.realizations = "realization";
            shop.options.end.clear();
            QCOMPARE(importOf(shop, target), QString());
            QCOMPARE(told("rain_fall"), rain);
            QCOMPARE(told("land"), land);
            const GeoProps place = VORN_GetGeographyProperties(shop.report.geography);
            QCOMPARE(place.bounds, bounds);
            QVERIFY(place.metaData["Projection"].toString().contains("WGS 84"));
            const int id = findDataset("rain_fall");
            QCOMPARE(VORN_GetDatasetProperties(id).realizationCount, 2);
            QCOMPARE(VORN_GetDatasetMetaData(id, "Unit"), QString("mm"));
            QVERIFY(rasterOf(id)->IsPixelMissing(1, 2, 1, instantOf(dataTimes(id).last())));
            // A part of the times; a target that is there is replaced.
            exportCube(target, driver, {id}, dataTimes(id)[1].startTime,
                       dataTimes(id)[1].startTime);
            QCOMPARE(importOf(shop, target), QString());
            QCOMPARE(told("rain_fall"), QString("2001-02=12..17"));
            QCOMPARE(QDir(QFileInfo(path).path())
                         .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                     (QStringList{"in.nc", "map.geojson", name, "scratch"}));
        };
        for (const GDALDataType type :
             {GDT_Byte, GDT_Int16, GDT_Float32, GDT_Float64, GDT_UInt64}) {
            check("out.nc", "", type);
            check("out.zarr", "zarr", type);
        }
    }

    void keepsTheUnitOfAProjection()
    {
        for (const auto &[projection, unit] :
             {std::pair("EPSG:2264", "US_survey_foot"), std::pair("EPSG:2222", "foot"),
              std::pair("+proj=utm +zone=17 +units=km", "km"), std::pair("EPSG:32617", "m"),
              std::pair("+proj=utm +zone=17 +to_meter=0.9144", "0.9144 m")}) {
            const InCase inCase(projection);
            Workshop shop;
            const QString path = shop.file("in.nc", "");
            {
                CubeMaker cube(path);
                cube.dimension("y", {20, 10}, {{"axis", QByteArray("Y")}});
                cube.dimension("x", {100, 110, 120}, {{"axis", QByteArray("X")}});
                cube.variable("v", {"y", "x"}, GDT_Float32, run(6));
            }
            shop.options.projection = projection;
            QCOMPARE(importOf(shop, path), QString());
            const QString folder = QFileInfo(path).path();
            const QVector<int> ids = shop.report.datasets;
            for (const char *name : {"/out.nc", "/out.zarr"})
                exportCube(folder + name, QString(), ids, 0, 0);
            QFile attributes(folder + "/out.zarr/x/.zattrs");
            QVERIFY(attributes.open(QIODevice::ReadOnly));
            const QByteArray text = attributes.readAll();
            QVERIFY2(text.contains(QByteArray("\"units\":\"") + unit + '"'), text.constData());
            shop.options.projection.clear();
            for (const char *name : {"/out.nc", "/out.zarr"}) {
                QCOMPARE(importOf(shop, folder + name), QString());
                QCOMPARE(VORN_GetGeographyProperties(shop.report.geography).bounds,
                         QRectF(95, 5, 30, 20));
            }
        }
    }

    void writesObjectsByTime()
    {
        Workshop shop(squares(), "id,v2000,v2001,note2001\na,1,2.5,x\nb,4,,\nc,,8,\u00e9t\u00e9\n");
        shop.options.tables = QStringList{shop.table()};
        shop.options.series = QStringList{"v=v2000..v2001", "note=note2001@2001"};
        QCOMPARE(shop.run(), QString());
        const QString target = QFileInfo(shop.table()).path() + "/o";
        const auto refuse = [&](const QString &path, bool overwrite, const char *text) {
            try {
                requireCubeWritable(path, "zarr", overwrite);
                QFAIL(qPrintable(path));
            } catch (const Failure &failure) {
                QVERIFY2(failure.text().contains(text), failure.what());
            }
        };
        for (const char *format : {"netcdf", "zarr"}) {
            const QString path = target + '.' + format;
            exportCube(path, format, {findDataset("v"), findDataset("note")}, 2000, 2001);
            const GDALDatasetH file =
                GDALOpenEx(path.toUtf8(), GDAL_OF_MULTIDIM_RASTER, nullptr, nullptr, nullptr);
            QVERIFY2(file, qPrintable(path));
            const GDALGroupH root = GDALDatasetGetRootGroup(file);
            const GDALMDArrayH v = GDALGroupOpenMDArray(root, "v", nullptr);
            QVector<double> values(6);
            const GUInt64 start[] = {0, 0};
            const size_t count[] = {2, 3};
            const GDALExtendedDataTypeH number = GDALExtendedDataTypeCreate(GDT_Float64);
            QVERIFY(GDALMDArrayRead(v, start, count, nullptr, nullptr, number, values.data(),
                                    values.data(), 48));
            QString told;
            for (const double value : qAsConst(values))
                told += std::isnan(value) ? QString("m ") : QString::number(value) + ' ';
            QCOMPARE(told, QString("1 4 m 2.5 m 8 "));
            const auto texts = [&](const char *name, std::vector<size_t> extent) {
                const GDALMDArrayH array = GDALGroupOpenMDArray(root, name, nullptr);
                const GDALExtendedDataTypeH text = GDALExtendedDataTypeCreateString(0);
                QVector<char *> read(3);
                QStringList list;
                if (GDALMDArrayRead(array, start, extent.data(), nullptr, nullptr, text,
                                    read.data(), read.data(), 24))
                    for (char *one : qAsConst(read)) {
                        list.append(QString::fromUtf8(one));
                        VSIFree(one);
                    }
                GDALExtendedDataTypeRelease(text);
                GDALMDArrayRelease(array);
                return list;
            };
            QCOMPARE(texts("key", {3}), (QStringList{"a", "b", "c"}));
            QCOMPARE(texts("note", {1, 3}),
                     (QStringList{"x", "", QString::fromUtf8("\u00e9t\u00e9")}));
            GDALExtendedDataTypeRelease(number);
            GDALMDArrayRelease(v);
            GDALGroupRelease(root);
            GDALClose(file);
        }
        refuse(target + ".zarr", false, "is there already");
        requireCubeWritable(target + ".zarr", "zarr", true);
        refuse(QFileInfo(target).path(), true, "holds no Zarr store");
    }

    void takesTimesThatAreNoDimension()
    {
        Workshop shop;
        const QString path = shop.file("run.nc", "");
        const auto make = [&](const char *named) {
            CubeMaker cube(path);
            cube.dimension("step", {0, 6}, {{"units", QByteArray("hours")}});
            cube.dimension("lat", {1, 2}, kNorth);
            cube.dimension("lon", {1, 2}, kEast);
            cube.variable("time", {}, GDT_Float64, {24}, timeUnit("hours since 2001-01-01"));
            cube.variable("valid", {"step"}, GDT_Float64, {24, 30},
                          timeUnit("hours since 2001-01-01"));
            cube.variable("v", {"step", "lat", "lon"}, GDT_Float64, run(8),
                          {{"coordinates", QByteArray(named)}});
        };
        make("time");
        QCOMPARE(importOf(shop, path), QString());
        QCOMPARE(told("v step=6"), QString("2001-01-02=6..5"));
        make("time valid");
        QCOMPARE(importOf(shop, path), QString());
        QCOMPARE(told("v"), QString("2001-01-02T00:00:00=2..1 2001-01-02T06:00:00=6..5"));
    }

    void refusesFilesThatEndEarly()
    {
        for (const char *format : {"FORMAT=NC", "FORMAT=NC2", "FORMAT=NC4"}) {
            Workshop shop;
            const QString path = shop.file("cut.nc", "");
            {
                CubeMaker cube(path, format);
                cube.dimension("y", run(40), {{"axis", QByteArray("Y")}});
                cube.dimension("x", run(30), {{"axis", QByteArray("X")}});
                cube.variable("v", {"y", "x"}, GDT_Float32, run(1200));
            }
            QCOMPARE(importOf(shop, path), QString());
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray whole = file.readAll();
            file.close();
            for (const int length : {3, 40, 200, 1000, 3000, whole.size() - 4}) {
                const InCase inCase(QByteArray(format) + ' ' + QByteArray::number(length));
                shop.file("cut.nc", whole.left(length));
                const QString failure = importOf(shop, path);
                QVERIFY2(failure.contains("cut.nc"), qPrintable(failure));
                QVERIFY(geographyIds().isEmpty());
            }
        }
    }

    void refusesWhatIsNoGrid()
    {
        const auto check = [](const std::function<void(CubeMaker &)> &make, const char *text) {
            Workshop shop;
            const QString path = shop.file("bad.nc", "");
            {
                CubeMaker cube(path);
                make(cube);
            }
            const QString failure = importOf(shop, path);
            QVERIFY2(failure.contains(text) && failure.contains("bad.nc"), qPrintable(failure));
            QVERIFY(geographyIds().isEmpty());
        };
        const auto plain = [](CubeMaker &cube, const QVector<double> &lat,
                              const QVector<double> &times, const Attributes &unit) {
            cube.dimension("time", times, unit);
            cube.dimension("lat", lat, kNorth);
            cube.dimension("lon", {1, 2}, kEast);
            cube.variable("v", {"time", "lat", "lon"}, GDT_Float32,
                          run(times.size() * lat.size() * 2));
        };
        const Attributes days = timeUnit("days since 2000-01-01");
        check(
            [&](CubeMaker &c) {
                plain(c, {1, 2, 4}, {0}, days);
            },
            "lat: its places are not evenly");
        check([&](CubeMaker &c) { plain(c, {1, 1}, {0}, days); }, "lat: its places are not evenly");
        check(
            [&](CubeMaker &c) {
                plain(c, {1, std::nan("")}, {0}, days);
            },
            "lat: place 2 has no coordinate");
        check(
            [&](CubeMaker &c) {
                plain(c, {1, 2}, {0, 3, 0}, days);
            },
            "time: places 1 and 3 hold at one time");
        check([&](CubeMaker &c) { plain(c, {1, 2}, {0, 1e30}, days); }, "time: 1e+30 days");
        check(
            [&](CubeMaker &c) {
                plain(c, {1, 2}, {0}, timeUnit("days since 2000-01-01", "360_day"));
            },
            "calendar 360_day");
        check(
            [&](CubeMaker &c) {
                plain(c, {1, 2}, {0.5}, timeUnit("eras"));
            },
            "0.5 (place 1) is no whole number");
        check(
            [](CubeMaker &c) {
                c.dimension("j", run(2));
                c.dimension("i", run(2));
                c.variable("lat", {"j", "i"}, GDT_Float64, run(4), kNorth);
                c.variable("lon", {"j", "i"}, GDT_Float64, run(4), kEast);
                c.variable("sst", {"j", "i"}, GDT_Float32, run(4),
                           {{"coordinates", QByteArray("lat lon")}});
            },
            "variable sst: the places of its cells are tables of two dimensions");
        check(
            [&](CubeMaker &c) {
                plain(c, {1, 2}, {0}, days);
                c.dimension("x", run(4), {{"axis", QByteArray("X")}});
                c.variable("w", {"lat", "x"}, GDT_Float32, run(8));
            },
            "v and w have different grids");
    }
};

QTEST_GUILESS_MAIN(TestCubes)
#include "tst_Cubes.moc"
