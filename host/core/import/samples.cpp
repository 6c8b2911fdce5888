// SPDX-License-Identifier: MIT
#include "core/import/samples.h"
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include "core/project/failure.h"

namespace meridor {

QString samplesDirectory(const QStringList &wanted)
{
    const QString program = QCoreApplication::applicationDirPath();
    QStringList places = wanted;
    places.append(program + QStringLiteral("/../share/meridor/samples"));
    // This file is written by the build and not installed, so the program contains no path of the
    // source tree.
    QFile note(program + QStringLiteral("/samples-directory"));
    if (note.open(QIODevice::ReadOnly))
        places.append(QString::fromUtf8(note.readAll()).trimmed());
    for (const QString &place : std::as_const(places))
        if (!place.isEmpty() && QDir(place).exists(QStringLiteral("us_income")))
            return QDir::cleanPath(place);
    fail(QStringLiteral("there is no sample data"), "samples");
}

ImportOptions sampleImport(Sample sample, const QString &directory)
{
    ImportOptions options;
    options.times = QStringLiteral("auto");
    const auto file = [&](const char *name) -> QString {
        return directory + QLatin1Char('/') + QLatin1String(name);
    };
    const auto grid = [&](const char *name) {
        options.map = file(name);
        options.times = QStringLiteral("date");
        options.bandsAreTimes = true;
    };
    switch (sample) {
    case Sample::History:
        options.map = file("us_states_history/states_1783_2000.geojson");
        options.name = QStringLiteral("states and territories");
        options.key = QStringLiteral("id");
        options.start = QStringLiteral("start_date");
        options.end = QStringLiteral("end_date");
        options.fields = QStringList{QStringLiteral("name"), QStringLiteral("terr_type"),
                                     QStringLiteral("area_sqmi")};
        break;
    case Sample::Income:
        options.map = file("us_income/states48.geojson");
        options.name = QStringLiteral("states");
        options.key = QStringLiteral("fips");
        options.tables =
            QStringList{file("us_income/income_1929_2009.csv"), file("us_income/admission.csv")};
        options.series = QStringList{QStringLiteral("income=1929..2009")};
        options.start = QStringLiteral("admitted");
        options.strict = true;
        break;
    case Sample::Rain:
        grid("carolina_climate/pr_1999.tif");
        break;
    case Sample::Temperature:
        grid("carolina_climate/tas_1999.tif");
        break;
    case Sample::Counties:
        options.map = file("nc_sids/nc_counties.geojson");
        options.name = QStringLiteral("counties");
        options.key = QStringLiteral("fips");
        options.fields = QStringList{QStringLiteral("name")};
        break;
    }
    return options;
}

} // namespace meridor
