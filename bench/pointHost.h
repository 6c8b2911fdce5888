// SPDX-License-Identifier: MIT
/// A host with one geography of points in rows of 100 and one dataset of decimals on them, filled
/// slice by slice.
#pragma once
#include <QTemporaryDir>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/ProjectAPI.h"

class PointHost : public ControllerBase {
public:
    PointHost(int points, int cacheBytes)
    {
        InitializeCInterface(this);
        InitializeDataManager(directory.filePath(QStringLiteral("blocks")), cacheBytes);
        VORN_StartNewVectorGeography(QRectF(0, 0, 100, 100), 0, 1, -1);
        for (int i = 0; i < points; ++i) {
            const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
            VORN_AddPointToChain(chain, QPointF(i % 100, i / 100), {0, 1, true, true});
        }
        const int geography =
            VORN_FinishVectorGeography(QStringLiteral("grid"), QString(), TF_Integer);
        dataset = VORN_NewVectorDataset(geography, QStringLiteral("values"), TimeSlice, DecimalType,
                                        1, QString());
    }
    ~PointHost() override
    {
        VORN_UnloadProject();
        ClearDataManager();
    }
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }
    QString path() const { return directory.filePath(QStringLiteral("project")); }
    MDataSource &source() const { return *GetGeoData().value(dataset >> 16)->GetDataSource(); }

    QTemporaryDir directory;
    int dataset = -1;
};
