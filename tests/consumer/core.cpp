// SPDX-License-Identifier: MIT
// A foreign program over MeridorCore: makes a project, saves it, loads it and asks for statistics.
#include <QTemporaryDir>
#include <cstdio>
#include "core/analysis/statistics.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/session.h"
#include "datainterface/DataAPI.h"
#include "datainterface/RasterAPI.h"

namespace {

void makeProject()
{
    const int land = VORN_CreateNewRasterGeography(QStringLiteral("land"), 2, 3, QRectF(0, 0, 3, 2),
                                                   Interval{0, 10, true, true}, TF_Integer,
                                                   QString(), QString());
    const int height =
        VORN_NewRasterDataset(land, QStringLiteral("height"), RasterDecimalType, 1, 64, QString());
    VORN_AddRasterValues(height, 0, Interval{0, 10, true, true}, QVector<double>{0, 1, 2, 3, 4, 5},
                         -1.0, true, true);
}

/// The result of the program's calls as one text.
QString outcome()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("land.vorn"));
    meridor::Session session({directory.filePath(QStringLiteral("scratch"))});
    makeProject();
    session.save(path);
    session.load(path);
    const meridor::Statistics found =
        meridor::statisticsOfAll(meridor::findDataset(QStringLiteral("height")));
    try {
        meridor::findDataset(QStringLiteral("depth"));
    } catch (const meridor::Failure &failure) {
        return QStringLiteral("%1 values, mean %2; %3")
            .arg(found.count)
            .arg(found.mean)
            .arg(failure.text());
    }
    return QStringLiteral("an unknown dataset was found");
}

} // namespace

int main()
{
    const QString found = outcome();
    std::printf("%s\n", qPrintable(found));
    return found == QStringLiteral("6 values, mean 2.5; no dataset depth; there are: height") ? 0
                                                                                              : 1;
}
