// SPDX-License-Identifier: MIT
/// A small map to import.
#pragma once
#include <QByteArray>
#include <QString>
#include <QStringList>

/// Three squares as GeoJSON: "a" and "b" side by side, and "c" apart.
inline QByteArray squares()
{
    QStringList features;
    for (const auto &[key, left] : {qMakePair('a', 0), qMakePair('b', 1), qMakePair('c', 5)})
        features.append(
            QStringLiteral("{\"type\":\"Feature\",\"properties\":{\"id\":\"%1\"},"
                           "\"geometry\":{\"type\":\"Polygon\",\"coordinates\":[[[%2,0],"
                           "[%3,0],[%3,1],[%2,1],[%2,0]]]}}")
                .arg(QLatin1Char(key))
                .arg(left)
                .arg(left + 1));
    return QString("{\"type\":\"FeatureCollection\",\"features\":[" + features.join(',') + "]}")
        .toUtf8();
}
