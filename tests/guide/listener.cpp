// SPDX-License-Identifier: MIT
// [all]
#include "frame.h"

/// A view that prints what it hears. The slots are connected by their signatures.
class Listener : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void DatasetsAddedSlot(const QList<DataId> &ids, bool) { tell("added", ids); }
    void DatasetsChangedSlot(const QList<DataId> &ids) { tell("changed", ids); }
    void DatasetsDyingSlot(const QList<DataId> &ids) { tell("will be removed", ids); }
    void DatasetNameChangedSlot(const DataId &, const QString &name) { say("now named " + name); }
    void GeographyNameChangedSlot(MGeoData *, const char *name)
    {
        say(QString("now called ") + name);
    }
    void ObjectsWillBeRemovedSlot(int, const QSet<int> &ids) { say(text("will be removed", ids)); }
    void ObjectsWereRemovedSlot(int, const QSet<int> &ids) { say(text("were removed", ids)); }
    void SuspendDataUsageSlot(MDataSource *) { say("releases its values"); }
    void ResumeDataUsageSlot(MDataSource *) { say("may read values again"); }

    static void say(const QString &text) { std::printf("  %s\n", qPrintable(text)); }
    static QString text(const char *what, const QSet<int> &objects)
    {
        return QString("%1 objects %2").arg(objects.size()).arg(what);
    }
    static void tell(const char *what, const QList<DataId> &ids)
    {
        for (const DataId &id : ids)
            say(VORN_GetDatasetProperties(id).name + ' ' + what);
    }
};

int main()
{
    Host host;
    const Library library(host);
    const int towns = addTowns({{1, 1}, {5, 2}, {4, 8}});
    auto *geography = static_cast<MGeoData *>(VORN_GetGeography(towns));
    Listener listener;
    geography->AddListener(&listener);

    std::puts("a dataset is created, filled and announced");
    const int rent = VORN_NewVectorDataset(towns, "rent", TimeSlice, DecimalType, 1, "");
    const Interval fifties{1950, 1960, true, false};
    VORN_AddDataValues(rent, 0, fifties, QVector<double>{4.5, 3, 6}, {}, true, true);
    VORN_NewDatasetCreated(rent);

    std::puts("a value is changed and announced");
    VORN_AddDataValue(rent, 0, 2, fifties, 7.0, true, true);
    VORN_DatasetChanged(rent);

    std::puts("names change");
    geography->GetDataSource()->SetDisplayName(rent, "monthly rent");
    geography->SetName("market towns");

    std::puts("the dataset is removed");
    VORN_RemoveDataset(rent);

    std::puts("a listener without the slots is refused");
    std::fflush(stdout); // Qt names the slot on standard error
    QObject deaf;
    try {
        geography->AddListener(&deaf);
    } catch (const vorn_error &error) {
        Listener::say(QString(error.what()).section('\n', 0, 0));
    }
    geography->RemoveListener(&listener);
}

#include "listener.moc"
