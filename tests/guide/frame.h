// SPDX-License-Identifier: MIT
// What the programs of the guide share. Text before the first mark is not shown in the guide.
// [frame]
#pragma once
#include <QTemporaryDir>
#include <cstdio>
#include "datainterface/DataInterface.h"

/// The library calls its host through a controller. A host has to delete what it removes.
class Host : public ControllerBase {
public:
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }
    bool HasGUI() override { return false; }
};

/// The library for the length of a scope, with a scratch directory and a cache for values.
class Library {
public:
    explicit Library(ControllerBase &host, int cacheBytes = 64 << 20)
    {
        InitializeCInterface(&host);
        InitializeDataManager(mScratch.path(), cacheBytes);
    }
    ~Library()
    {
        VORN_UnloadProject();
        ClearDataManager();
    }
    QString path(const QString &name) const { return mScratch.filePath(name); }

private:
    QTemporaryDir mScratch;
};

/// A geography of points that exist from 1900 to 2000; times are numbers.
inline int addTowns(const QVector<QPointF> &places)
{
    VORN_StartNewVectorGeography(QRectF(0, 0, 10, 10), 1900, 2000, -1);
    for (const QPointF &place : places)
        VORN_AddPointToChain(static_cast<unsigned>(VORN_CreateNewObjectChain()), place,
                             Interval{1900, 2000, true, true});
    return VORN_FinishVectorGeography("towns", "surveyed", TF_Integer);
}
