// SPDX-License-Identifier: MIT
/// A session of MeridorCore with files of its own, for tests that import something first.
#pragma once
#include <QFile>
#include <QTemporaryDir>
#include "core/geostatistics/variogramModels.h"
#include "core/import/mapImporter.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/session.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/ProjectAPI.h"
#include "support/squares.h"

namespace meridor {

/// A session with a directory of files, and what it noted.
class Workshop : public Notes {
public:
    mutable QStringList notes;
    ImportOptions options;
    ImportReport report;

    explicit Workshop(const QByteArray &map = squares(), const QByteArray &table = QByteArray())
        : mSession({mDirectory.filePath("scratch")}, user())
    {
        options.map = file("map.geojson", map);
        options.key = "id";
        options.times = "auto";
        if (!table.isEmpty())
            mTable = file("t.csv", table);
    }
    QString file(const QString &name, const QByteArray &content) const
    {
        QFile file(mDirectory.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(name));
        return file.fileName();
    }
    const QString &table() const { return mTable; }
    void note(const QString &text) const override { notes.append(text); }

    /// What went wrong; empty when nothing did.
    QString run()
    {
        VORN_UnloadProject();
        notes.clear();
        try {
            const Progress progress("Import", "Importing...");
            report = importMap(options, *this, progress);
        } catch (const Failure &failure) {
            return failure.text();
        }
        return QString();
    }
    /// "time=value" of each entry, blank-separated.
    QString told(const QString &dataset, const QString &key) const
    {
        const int id = findDataset(dataset);
        const int object = findObject(report.geography, key);
        const bool always = VORN_GetDatasetProperties(id).isStatic;
        QVector<Interval> intervals;
        VORN_GetDataIntervals(id, 0, object, intervals);
        QStringList texts;
        for (const Interval &interval : intervals) {
            datum value;
            const bool there =
                VORN_GetDataValue(id, 0, static_cast<unsigned>(object), instantOf(interval), value);
            texts.append((always ? QString("always") : axisOf(report.geography).show(interval))
                         + '=' + (there ? textOf(value) : QString("missing")));
        }
        return texts.join(' ');
    }

private:
    SessionUser user() const
    {
        SessionUser user;
        user.notes = this;
        user.variogramFitter = &fitRequestedModel;
        return user;
    }

    QTemporaryDir mDirectory;
    Session mSession;
    QString mTable;
};

} // namespace meridor
