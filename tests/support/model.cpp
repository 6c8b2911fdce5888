// SPDX-License-Identifier: MIT
#include "support/model.h"
#include <QApplication>
#include <QFile>
#include <QProgressDialog>
#include <QRandomGenerator>
#include <QRectF>
#include <QSet>
#include <algorithm>
#include "Common/DataManager.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/VariogramAPI.h"
#include "datainterface/WeightsAPI.h"
#include "datainterface/vorn_error.h"
#include "frame/frameState.h"
#include "support/support.h"

namespace {

QString shown(const QVariant &value)
{
    QString text;
    QDebug(&text) << value << value.isNull();
    return text;
}

QString shown(const QVector<neighborDatum> &neighbors)
{
    QString text;
    for (const neighborDatum &one : neighbors)
        text += QStringLiteral(" %1*%2@%3/%4")
                    .arg(one.id)
                    .arg(double(one.weight))
                    .arg(double(one.angle))
                    .arg(double(one.distance));
    return text;
}

// Everything that a host can see of a dataset, but for the time at which it was made.
QStringList contentsOf(MDataset &dataset)
{
    const int id = dataset.GetId();
    const DatasetProps props = VORN_GetDatasetProperties(id);
    QStringList lines{QStringLiteral("dataset %1 %2 %3 %4")
                          .arg(id)
                          .arg(props.name, props.path, text(props.timeBounds))};
    for (auto tag = props.metaData.cbegin(); tag != props.metaData.cend(); ++tag)
        lines.append(tag.key() + ' ' + shown(tag.value()));
    for (int model : VORN_GetVariogramModelIds(id))
        lines.append(QStringLiteral("model %1").arg(model));
    const QMap<MDatum, int> counts = dataset.GetDataFrequencies();
    for (auto count = counts.cbegin(); count != counts.cend(); ++count)
        lines.append(QStringLiteral("%1 %2: %3")
                         .arg(count.key().toDouble())
                         .arg(QString::fromUtf8(count.key().charstr()))
                         .arg(count.value()));
    for (int realization = 0; realization < props.realizationCount; ++realization) {
        for (qint64 t = 0; t < 30; t += 5) {
            QVector<datum> values;
            QSet<int> missing;
            QString line = QString::number(VORN_GetDataValues(id, realization, t, values, missing));
            for (int object = 0; object < values.size(); ++object)
                line += missing.contains(object) ? QStringLiteral(" -")
                                                 : QStringLiteral(" %1/%2/%3")
                                                       .arg(values[object].decimalValue)
                                                       .arg(values[object].integerValue)
                                                       .arg(values[object].stringValue);
            lines.append(line);
        }
    }
    return lines;
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

int TestModel::ownerlessBlocks() const
{
    QVector<int> owned;
    for (const MGeoData *geography : controller.GetGeoData())
        geography->AppendBlockIds(owned);
    int count = 0;
    for (const auto &extent : blockStore().Inspect().extents)
        count += extent.inUse && !owned.contains(extent.id);
    return count;
}

QStringList contents(const TestModel &model)
{
    QStringList lines;
    for (int geography : model.controller.GetGeoData().keys()) {
        const GeoProps props = VORN_GetGeographyProperties(geography);
        lines.append(QStringLiteral("geography %1 %2 %3 %4 %5")
                         .arg(props.id)
                         .arg(props.name)
                         .arg(props.objectCount)
                         .arg(props.isStatic)
                         .arg(text(props.timeBounds)));
        for (const SpatialWeightSetProps &set : props.weightSets) {
            for (int object = 0; object < props.objectCount; ++object) {
                QVector<neighborDatum> list;
                VORN_GetSpatialWeights(set.id, static_cast<unsigned int>(object), 5, list,
                                       VORN_MissingData());
                lines.append(set.name + shown(list));
            }
        }
        MDataSource &source = *model.controller.GetGeoData()[geography]->GetDataSource();
        QList<int> ids(props.datasetIds.begin(), props.datasetIds.end());
        std::sort(ids.begin(), ids.end());
        for (int id : ids)
            lines += contentsOf(*source.GetDataset(id));
    }
    for (const VariogramModelProps &props : model.controller.GetNonConVariogramModelProps())
        lines.append(QStringLiteral("%1 %2").arg(props.id).arg(props.name));
    return lines;
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

int addGrid(qint64 rows, qint64 columns, const QRectF &bounds, qint64 end)
{
    return VORN_CreateNewRasterGeography(
        QStringLiteral("grid"), static_cast<unsigned int>(rows), static_cast<unsigned int>(columns),
        bounds.isNull() ? QRectF(0, 0, static_cast<int>(columns), static_cast<int>(rows)) : bounds,
        {0, end, true, true}, TF_Integer, QStringLiteral("made"), QStringLiteral("none"));
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
    QStringList parts;
    for (const DataId &id : ids)
        parts.append(QString::number(id) + (source && source->GetDataset(id) ? " alive" : ""));
    note("dying", parts.join(','));
}

void Listener::DatasetsAddedSlot(const QList<DataId> &ids, bool flag)
{
    note("added", listed(ids) + (flag ? " true" : " false"));
}
