// SPDX-License-Identifier: MIT
#include <QtTest>
#include "fennimark/FMProjectionInfo.h"
#include "support/checks.h"

namespace {

const char *const kUtm =
    R"wkt(PROJCS["WGS 84 / UTM zone 33N",GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563,)wkt"
    R"wkt(AUTHORITY["EPSG","7030"]],AUTHORITY["EPSG","6326"]],PRIMEM["Greenwich",0,AUTHORITY["EPSG","8901"]],)wkt"
    R"wkt(UNIT["degree",0.0174532925199433,AUTHORITY["EPSG","9122"]],AUTHORITY["EPSG","4326"]],)wkt"
    R"wkt(PROJECTION["Transverse_Mercator"],PARAMETER["latitude_of_origin",0],PARAMETER["central_meridian",15],)wkt"
    R"wkt(UNIT["metre",1,AUTHORITY["EPSG","9001"]],AXIS["Easting",EAST],AXIS["Northing",NORTH],AUTHORITY["EPSG","32633"]])wkt";
const char *const kUtm2 =
    R"wkt(PROJCRS["WGS 84 / UTM zone 33N",BASEGEOGCRS["WGS 84",DATUM["World Geodetic System 1984",)wkt"
    R"wkt(ELLIPSOID["WGS 84",6378137,298.257223563,LENGTHUNIT["foot",1]]],PRIMEM["Greenwich",0,)wkt"
    R"wkt(ANGLEUNIT["degree",0.0174532925199433]],ID["EPSG",4326]],CONVERSION["UTM zone 33N",)wkt"
    R"wkt(METHOD["Transverse Mercator",ID["EPSG",9807]],PARAMETER["Longitude of natural origin",15,)wkt"
    R"wkt(ANGLEUNIT["grad",0.015707963267949]],PARAMETER["False easting",500000,LENGTHUNIT["chain",20]]],)wkt"
    R"wkt(CS[Cartesian,2],AXIS["(E)",east,ORDER[1],LENGTHUNIT["metre",1]],AXIS["(N)",north,ORDER[2],)wkt"
    R"wkt(LENGTHUNIT["metre",1]],ID["EPSG",32633]])wkt";
const char *const kGrads =
    R"wkt(geogcs("NTF ""Paris""", datum("NTF", spheroid("Clarke 1880",6378249.2,293.4660212936269)), )wkt"
    R"wkt(primem("Paris",2.5969213) , unit("grad",0.015707963267949)))wkt";

} // namespace

class TestFMProjectionInfo : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void namesAndUnitsAreRead()
    {
        // The names: projection, geographic, linear, angular.
        const auto row = [](const char *name, const QString &wkt, const QStringList &names,
                            int code) {
            const InCase inCase(name);
            FMProjectionInfo info;
            QVERIFY(FMProjectionInfo::FromWkt(wkt, info));
            const auto told = [](const FMProjectionInfo &of) {
                return QStringList{of.GetProjectionName(), of.GetGeographicCSName(),
                                   of.GetLinUnitName(), of.GetAngUnitName()};
            };
            QCOMPARE(told(info), names);
            QCOMPARE(info.mAngUnitCode, code);
            FMProjectionInfo again;
            QVERIFY(FMProjectionInfo::FromUtf8(info.ToUtf8(), again));
            QCOMPARE(told(again), names);
            QCOMPARE(again.mAngUnitCode, code);
            QCOMPARE(again.GetWkt(), wkt);
            FMProjectionInfo kept;
            for (int size = 0; size < wkt.size(); ++size)
                QVERIFY(!FMProjectionInfo::FromWkt(wkt.left(size), kept));
            QVERIFY(told(kept).join(QString()).isEmpty());
        };
        const QString utm = QString::fromLatin1(kUtm);
        const QStringList utmNames{"WGS 84 / UTM zone 33N", "WGS 84", "metre", "degree"};
        const QString vertical(",VERT_CS[\"height\",UNIT[\"yard\",0.9144]]]");
        const QString target("],TARGETCRS[GEOGCRS[\"other\",UNIT[\"radian\",1]]]]");
        row("projected, form 1", utm, utmNames, 9102);
        row("projected, form 2", kUtm2, utmNames, 9102);
        row("round brackets, lower case, quotes", kGrads, {"", "NTF \"Paris\"", "", "grad"}, 9105);
        row("compound", "COMPD_CS[\"both\"," + utm + vertical, utmNames, 9102);
        row("bound", "BOUNDCRS[SOURCECRS[" + utm + target, utmNames, 9102);
        row("radian", "GEOGCS[\"g\",UNIT[\"radian\",1.0]]", {"", "g", "", "radian"}, 9101);
        row("unknown unit", "GEOGCS[\"g\",UNIT[\"mil\",0.00098]]", {"", "g", "", "mil"}, 0);
        row("geographic, form 2 with units at the axes",
            "GEOGCRS[\"g\",CS[ellipsoidal,2],AXIS[\"lat\",north,"
            "ANGLEUNIT[\"degree\",0.0174532925199433]]]",
            {"", "g", "", "degree"}, 9102);
    }
    void malformedTextIsRefused()
    {
        FMProjectionInfo info;
        for (const QString &wkt : {
                 QString(), QStringLiteral("GEOGCS"),
                 QStringLiteral("VERT_CS[\"height\",UNIT[\"metre\",1]]"), // another system
                 QStringLiteral("GEOGCS[\"g\",UNIT[\"degree\",1)]"),
                 QStringLiteral("GEOGCS[\"g\",UNIT[\"degree\",1]],"),
                 QStringLiteral("GEOGCS[\"g\",,UNIT[\"degree\",1]]"),
                 QString("GEOGCS[\"g\"," + QStringLiteral("A[").repeated(100000)),  // too deep
                 QString("GEOGCS[\"" + QString(2000000, QLatin1Char('g')) + "\"]"), // too long
             })
            QVERIFY2(!FMProjectionInfo::FromWkt(wkt, info), qPrintable(wkt.left(80)));
    }
    void foreignBytesAreRefused()
    {
        FMProjectionInfo info;
        for (const QByteArray &bytes :
             {QByteArray(), QByteArray("a\nb\nc\nd\n9102"), QByteArray("a\nb\nc\nd\nx\n"),
              QByteArray("\xff\nb\nc\nd\n1\n")})
            QVERIFY(!FMProjectionInfo::FromUtf8(bytes, info));
        QVERIFY(FMProjectionInfo::FromUtf8(FMProjectionInfo().ToUtf8(), info));
    }
};

QTEST_GUILESS_MAIN(TestFMProjectionInfo)
#include "tst_FMProjectionInfo.moc"
