// SPDX-License-Identifier: MIT
/// The variables of a multidimensional file and what their dimensions mean.
#pragma once
#include <QString>
#include <QVector>
#include <vector>
#include "core/formats/gdalArray.h"
#include "core/formats/gdalHandle.h"

namespace meridor {

enum class AxisRole { Other, X, Y, Time };

/// A dimension.
struct CubeAxis {
    QString name;
    QString fullName; ///< with its groups
    quint64 size = 0;
    AxisRole role = AxisRole::Other;
    GdalArray coordinates; ///< null if the file has none; always of one dimension
    QString unit;
    bool isCurved = false; ///< its coordinates depend on another dimension as well
};

/// A variable of at least two dimensions. Positions are those in `axes`; -1 for none.
struct CubeVariable {
    QString name; ///< with its groups, "group/name"
    GdalArray array;
    QVector<int> axes; ///< indices into CubeFile::axes
    int x = -1;
    int y = -1;
    int time = -1;
    GdalArray singleTime;  ///< of a variable without a dimension of time; null if it has none
    bool isHelper = false; ///< coordinates, bounds and the like of other variables
    bool isCurved = false; ///< its places on the map are a variable of two dimensions

    bool hasGrid() const { return x >= 0 && y >= 0 && !isCurved; }
};

/// Open as long as its handles are used.
struct CubeFile {
    GdalFile file;
    bool isNetCdf = false;
    std::vector<CubeAxis> axes;
    std::vector<CubeVariable> variables;

    /// Null if GDAL reads the file as no cube.
    static std::unique_ptr<CubeFile> open(const QString &path);
    /// The places of a dimension, with scale and offset applied; empty if there are none.
    QVector<double> places(const CubeAxis &axis) const;
    /// The bounds of the places of a dimension: two for each; empty if there are none.
    QVector<double> bounds(const CubeAxis &axis) const;
    GdalArray find(const QString &name) const;

private:
    void walk(const GdalGroup &group, const QString &path, int depth);
    int axisOf(const GdalDimension &dimension);
    void assignRoles();
    void findTimes(CubeVariable &variable);
    void placeByOrder();
};

} // namespace meridor
