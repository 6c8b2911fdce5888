// SPDX-License-Identifier: MIT
#include "support/model.h"
#include <QApplication>
#include <QFile>
#include <QProgressDialog>
#include <QRandomGenerator>
#include <QRectF>
#include <QSet>
#include <algorithm>
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/vorn_error.h"
#include "frame/frameState.h"

namespace {

QString text(const QList<DataId> &ids, const MDataSource *source = nullptr)
{
    QStringList parts;
    for (const DataId &id : ids)
        parts.append(QString::number(id)
                     + QLatin1String(source && source->GetDataset(id) ? " alive" : ""));
    return parts.join(QLatin1Char(','));
}

QString text(const QSet<int> &objects)
{
    QList<int> sorted = objects.values();
    std::sort(sorted.begin(), sorted.end());
    QStringList parts;
    for (int object : sorted)
        parts.append(QString::number(object));
    return parts.join(QLatin1Char(','));
}

} // namespace

void RecordingController::RemoveGeography(int id)
{
    delete GetGeoData().take(id);
}

void RecordingController::AddToLog(const QString &line, bool)
{
    log.append(line);
}

int RecordingController::CreateGraphWindow(GraphTypes type, const QVector<int> &dataIds, qint64 t,
                                           const QString &title, const ColorSchemeInfo &,
                                           const QPointF *points, const QRectF *bounds)
{
    graphs.append({type, dataIds, t, title, points, bounds});
    return graphs.size();
}

TestModel::TestModel(int cacheBytes)
{
    InitializeCInterface(&controller);
    InitializeDataManager(mDirectory.filePath(QStringLiteral("blocks")), cacheBytes);
}

bool TestModel::load(const QByteArray &project) const
{
    QFile file(path(QStringLiteral("foreign")));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    file.write(project);
    file.close();
    return VORN_LoadProject(file.fileName());
}

void TestModel::loadFlipped(const QByteArray &project, int count,
                            const std::function<void()> &look) const
{
    QRandomGenerator random(20260101);
    for (int i = 0; i < count; ++i) {
        QByteArray damaged = project;
        const int at = static_cast<int>(random.bounded(damaged.size()));
        damaged[at] = static_cast<char>(damaged[at] ^ (1 << random.bounded(8)));
        if (load(damaged)) {
            try {
                look();
                VORN_SaveProject(path(QStringLiteral("again")));
            } catch (const vorn_error &) { // a block of another size than its dataset says
            }
        }
        VORN_UnloadProject();
    }
}

QProgressDialog *progressBar()
{
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (widget->objectName() == QLatin1String("ProgressBar"))
            return qobject_cast<QProgressDialog *>(widget);
    return nullptr;
}

TestModel::~TestModel()
{
    VORN_AbortNewVectorGeography();
    VORN_UnloadProject();
    ClearDataManager();
    datainterface::setController(nullptr);
}

MVectorData &TestModel::vectorData(int geographyId)
{
    return dynamic_cast<MVectorData &>(*controller.GetGeoData().value(geographyId));
}

int addPoints(int count, const QString &name, TimeFormat format, qint64 start, qint64 end)
{
    VORN_StartNewVectorGeography(QRectF(0, 0, count, count), start, end, -1);
    for (int i = 0; i < count; ++i) {
        const int chain = VORN_CreateNewObjectChain();
        VORN_AddPointToChain(static_cast<unsigned int>(chain), QPointF(i, i),
                             {start, end, true, true});
    }
    return VORN_FinishVectorGeography(name, QStringLiteral("made for a test"), format);
}

int addPolygons(const QList<QVector<QPointF>> &rings)
{
    VORN_StartNewVectorGeography(QRectF(0, 0, 10, 10), 0, 10, -1);
    for (const QVector<QPointF> &ring : rings) {
        const int chain = VORN_CreateNewObjectChain();
        VORN_AddPolygonToChain(static_cast<unsigned int>(chain), ring.toList(),
                               {0, 10, true, true});
    }
    return VORN_FinishVectorGeography(QStringLiteral("polygons"), QStringLiteral("made for a test"),
                                      TF_Integer);
}

void Listener::DatasetsDyingSlot(const QList<DataId> &ids)
{
    calls.append("dying " + text(ids, source));
}

void Listener::DatasetsAddedSlot(const QList<DataId> &ids, bool flag)
{
    calls.append("added " + text(ids) + (flag ? " true" : " false"));
}

void Listener::DatasetsChangedSlot(const QList<DataId> &ids)
{
    calls.append("changed " + text(ids));
}

void Listener::DatasetNameChangedSlot(const DataId &id, const QString &name)
{
    calls.append("renamed " + QString::number(id) + ' ' + name);
}

void Listener::SuspendDataUsageSlot(MDataSource *)
{
    calls.append("suspend");
}

void Listener::ResumeDataUsageSlot(MDataSource *)
{
    calls.append("resume");
}

void Listener::GeographyNameChangedSlot(MGeoData *, const char *name)
{
    calls.append("geography " + QString::fromLocal8Bit(name));
}

void Listener::ObjectsWillBeRemovedSlot(int geographyId, const QSet<int> &objects)
{
    calls.append("will remove " + QString::number(geographyId) + ": " + text(objects));
}

void Listener::ObjectsWereRemovedSlot(int geographyId, const QSet<int> &objects)
{
    calls.append("removed " + QString::number(geographyId) + ": " + text(objects));
}

void Listener::VariogramModelAddedSlot(const DataId &id, qint32 model)
{
    calls.append("model added " + QString::number(id) + '/' + QString::number(model));
}

void Listener::VariogramModelRemovedSlot(const DataId &id, qint32 model)
{
    calls.append("model removed " + QString::number(id) + '/' + QString::number(model));
}

void Listener::VariogramModelChangedSlot(const DataId &id, qint32 model)
{
    calls.append("model changed " + QString::number(id) + '/' + QString::number(model));
}
