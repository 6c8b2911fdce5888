// SPDX-License-Identifier: MIT
/// The summary of a dataset that a host is given.
#pragma once
#include <QMap>
#include <QString>
#include <QVariant>
#include "datainterface/TimeStamp.h"
#include "datainterface/VariogramModel.h"

/// An id of -1 means that there is no such dataset.
struct DatasetProps {
    /// Whether a dataset has one version of its values or several.
    enum RealizationKind : int { OneRealization = 1, SeveralRealizations = 2 };

    int id = -1;
    QString name;
    int dataType = 0;                     ///< DataType
    int storageType = 0;                  ///< MVectorDataset::StorageType of a vector dataset
    int realizationKind = OneRealization; ///< RealizationKind
    int realizationCount = -1;
    int bitDepth = 0; ///< of raster cells
    QString path;     ///< MDataset::GetHierarchyPathAsString
    QMap<QString, QVariant> metaData;
    TimeStamp timeBounds; ///< TimeStamp::Invalid without data
    bool isStatic = false;
    bool isInvalid = false; ///< holds no usable value
    QMap<int, VariogramModelProps> variogramProps;
};
