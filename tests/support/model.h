// SPDX-License-Identifier: MIT
/// A model to test on: a host's controller, a block store of its own, and small geographies built
/// as hosts build them.
#pragma once
#include <QList>
#include <QObject>
#include <QPair>
#include <QPointF>
#include <QRectF>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <QVector>
#include <algorithm>
#include <functional>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataId.h"
#include "datainterface/TimeFormat.h"

class MDataSource;
class MVectorData;
class QProgressDialog;

/// Owns what it removes, as hosts do, and keeps what it is asked.
class RecordingController : public ControllerBase {
public:
    void RemoveGeography(int id) override;
    void AddToLog(const QString &text, bool fromHost) override;
    int CreateGraphWindow(GraphTypes type, const QVector<int> &dataIds, qint64 t,
                          const QString &title, const ColorSchemeInfo &colors,
                          const QPointF *points, const QRectF *bounds) override;

    QStringList log;
    struct Graph {
        GraphTypes type;
        QVector<int> dataIds;
        qint64 t;
        QString title;
        const QPointF *points;
        const QRectF *bounds;
    };
    QList<Graph> graphs;
};

/// The library started for a scope, with an empty model.
class TestModel {
public:
    explicit TestModel(int cacheBytes = 1000000);
    ~TestModel();

    RecordingController controller;
    QString path(const QString &name) const { return mDirectory.filePath(name); }
    MVectorData &vectorData(int geographyId);
    bool load(const QByteArray &project) const; ///< from a file of these bytes
    int ownerlessBlocks() const;                ///< blocks in the store that no container names
    /// Loads the project with one bit flipped, `count` times. A flipped bit need not show: most of
    /// a file is values. It must not end the process, and what was read of it must be fit to be
    /// looked at and saved.
    void loadFlipped(const QByteArray &project, int count, const std::function<void()> &look) const;

private:
    QTemporaryDir mDirectory;
};

/// Everything that a host can see of the model, but for the times at which datasets were made.
QStringList contents(const TestModel &model);

/// The progress bar as a host reaches it; null when there is none.
QProgressDialog *progressBar();

/// A geography of `count` points on a diagonal that all exist over [start, end]; its id.
int addPoints(int count, const QString &name = QStringLiteral("points"),
              TimeFormat format = TF_Integer, qint64 start = 0, qint64 end = 1000);
/// A raster geography over [0, end], with cells of one by one from the origin on unless `bounds` is
/// given; its id.
int addGrid(qint64 rows, qint64 columns, const QRectF &bounds = QRectF(), qint64 end = 100);
/// A geography of one polygon a ring, all of which exist over [0, 10]; its id.
int addPolygons(const QList<QVector<QPointF>> &rings);

/// Notes each call of the slots of a data source's and a geography's listener as one line of text.
class Listener : public QObject {
    Q_OBJECT
public:
    QStringList calls;
    MDataSource *source = nullptr; ///< when set, dying datasets are looked up in it

public Q_SLOTS:
    void DatasetsDyingSlot(const QList<DataId> &ids);
    void DatasetsAddedSlot(const QList<DataId> &ids, bool flag);
    void DatasetsChangedSlot(const QList<DataId> &ids) { note("changed", listed(ids)); }
    void DatasetNameChangedSlot(const DataId &id, const QString &name)
    {
        note("renamed", QString::number(id) + ' ' + name);
    }
    void SuspendDataUsageSlot(MDataSource *) { calls.append("suspend"); }
    void ResumeDataUsageSlot(MDataSource *) { calls.append("resume"); }
    void GeographyNameChangedSlot(MGeoData *, const char *name) { note("geography", name); }
    void ObjectsWillBeRemovedSlot(int geography, const QSet<int> &objects)
    {
        note("will remove", QString::number(geography) + ": " + listed(objects));
    }
    void ObjectsWereRemovedSlot(int geography, const QSet<int> &objects)
    {
        note("removed", QString::number(geography) + ": " + listed(objects));
    }
    void VariogramModelAddedSlot(const DataId &id, qint32 model) { note("added", id, model); }
    void VariogramModelRemovedSlot(const DataId &id, qint32 model) { note("removed", id, model); }
    void VariogramModelChangedSlot(const DataId &id, qint32 model) { note("changed", id, model); }

private:
    template <class Id> static QString listed(const QList<Id> &ids);
    static QString listed(const QSet<int> &objects)
    {
        QList<int> sorted = objects.values();
        std::sort(sorted.begin(), sorted.end());
        return listed(sorted);
    }
    void note(const char *what, const QString &whom) { calls.append(what + (' ' + whom)); }
    void note(const char *what, const DataId &id, qint32 model)
    {
        calls.append(QStringLiteral("model %1 %2/%3").arg(what).arg(id).arg(model));
    }
};

template <class Id> QString Listener::listed(const QList<Id> &ids)
{
    QStringList parts;
    for (const int id : ids)
        parts.append(QString::number(id));
    return parts.join(',');
}
