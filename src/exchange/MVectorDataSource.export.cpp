// SPDX-License-Identifier: MIT
#include "datainterface/MVectorDataSource.h"
#include "exchange/dbfExport.h"
#include "exchange/exportTable.h"
#include "exchange/textExports.h"

using namespace datainterface;

bool MVectorDataSource::ExportDatasetsAsDBF(const QString &fileName, const QList<DataId> &ids,
                                            TimeFormat format, qint64 start, qint64 end,
                                            const QString &missing, int realization)
{
    DbfExport writer;
    return runExport(*this, {fileName, QString(), ids, format, start, end, missing, realization},
                     writer);
}

bool MVectorDataSource::ExportDatasetsAsGeoeas(const QString &fileName, const QString &title,
                                               const QList<DataId> &ids, TimeFormat format,
                                               qint64 start, qint64 end, const QString &missing,
                                               int realization)
{
    GeoeasExport writer;
    return runExport(*this, {fileName, title, ids, format, start, end, missing, realization},
                     writer);
}

bool MVectorDataSource::ExportDatasetsAsCSV(const QString &fileName, const QList<DataId> &ids,
                                            TimeFormat format, qint64 start, qint64 end,
                                            const QString &missing, int realization)
{
    CsvExport writer;
    return runExport(*this, {fileName, QString(), ids, format, start, end, missing, realization},
                     writer);
}
