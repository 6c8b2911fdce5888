// SPDX-License-Identifier: MIT
#include <QtTest>
#include <cmath>
#include "Common/detail/streams.h"
#include "datainterface/NonConVariogramModelManager.h"
#include "datainterface/VersionAPI.h"
#include "support/checks.h"
#include "support/support.h"

using datainterface::BytesReader;
using datainterface::BytesWriter;
using Basic = VariogramBasicModel;

namespace {

VariogramModel named(const QString &name)
{
    VariogramModel model;
    model.name = name;
    return model;
}

QByteArray saved(const NonConVariogramModelManager &manager)
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    manager.SaveNonconditionalVariogramModelsToStream(out);
    return bytes;
}

bool restore(NonConVariogramModelManager &manager, const QByteArray &bytes)
{
    BytesReader in(bytes);
    manager.RestoreNonconditionalVariogramModelsFromStream(in);
    return in.status() == QDataStream::Ok;
}

} // namespace

// Lacks the slot for removals.
class PartialListener : public QObject {
    Q_OBJECT
public:
    QStringList heard;
public Q_SLOTS:
    void NonConVariogramModelAddedSlot(qint32 id) { heard << QString("added %1").arg(id); }
    void NonConVariogramModelChangedSlot(qint32 id) { heard << QString("changed %1").arg(id); }
};

class TestNonConVariogramModelManager : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { dataInterfaceVersionLoading = 400021; }

    void idsAreNeverUsedTwice()
    {
        NonConVariogramModelManager manager;
        const int first = manager.AddNonConVariogramModel(named("a"));
        const int last = manager.AddNonConVariogramModel(named("b"));
        QVERIFY(manager.RemoveNonConVariogramModel(last));
        const QByteArray bytes = saved(manager);

        NonConVariogramModelManager loaded;
        QVERIFY(restore(loaded, bytes));
        QCOMPARE(saved(loaded), bytes);
        QCOMPARE(loaded.GetNonConVariogramModelIds(), QList<int>{first});
        QCOMPARE(loaded.AddNonConVariogramModel(named("c")), last + 1);
        loaded.RemoveAllNonConVariogramModels();
        QCOMPARE(loaded.AddNonConVariogramModel(named("d")), last + 2);
        VariogramModel model;
        QVERIFY(loaded.GetNonConVariogramModel(last + 2, model));
        QCOMPARE(model.id, last + 2);

        model.id = last + 1; // gone
        QVERIFY(!loaded.RemoveNonConVariogramModel(model.id));
        QVERIFY(!loaded.ReplaceNonConVariogramModel(model));
        QVERIFY(!loaded.DuplicateNonConVariogramModel(model.id));
        QVERIFY(loaded.DuplicateNonConVariogramModel(last + 2));
        QVERIFY(loaded.DuplicateNonConVariogramModel(last + 2));
        QCOMPARE(loaded.GetNonConVariogramModelNames(),
                 (QList<QString>{"d", "d copy", "d copy 2"}));
    }

    void listenersHearWhatTheyHaveSlotsFor()
    {
        NonConVariogramModelManager manager;
        PartialListener listener;
        QVERIFY(!manager.AddNonConVariogramModelListener(nullptr));
        QVERIFY(manager.AddNonConVariogramModelListener(&listener));
        QSignalSpy removed(&manager,
                           &NonConVariogramModelManager::NonConVariogramModelRemovedSignal);
        VariogramModel model = named("a");
        model.id = manager.AddNonConVariogramModel(model);
        QVERIFY(manager.ReplaceNonConVariogramModel(model));
        QVERIFY(manager.RemoveNonConVariogramModel(model.id));
        QCOMPARE(listener.heard, (QStringList{"added 0", "changed 0"}));
        QCOMPARE(removed.size(), 1);
    }

    void corruptStreamsLeaveNothing()
    {
        NonConVariogramModelManager manager;
        manager.AddNonConVariogramModel(named("a"));
        manager.AddNonConVariogramModel(named("b"));
        const QByteArray bytes = saved(manager);
        QList<QByteArray> corrupt;
        for (int length = 0; length < bytes.size(); ++length)
            corrupt << bytes.left(length);
        corrupt << bytes.left(bytes.size() - 4)
                       + QByteArray::fromHex("00000001"); // the next id is in use
        corrupt << QByteArray::fromHex("7fffffff") + bytes.mid(4);
        for (const QByteArray &image : corrupt) {
            NonConVariogramModelManager loaded;
            loaded.AddNonConVariogramModel(named("old"));
            QVERIFY2(!restore(loaded, image), qPrintable(QString::number(image.size())));
            QVERIFY(loaded.GetNonConVariogramModelIds().isEmpty());
        }
    }

    void propertiesSumUpTheStructures()
    {
        VariogramModel model = named("m");
        const Basic nugget(Basic::Nugget, 1.0, 0.0, 2.0, 2.0);
        const Basic exponential(Basic::Exponential, 3.0, 0.0, 3.0, 3.0);
        model.centroidModels[stamp("[1, 5)")].structures = {nugget, exponential};
        NonConVariogramModelManager manager;
        const int plain = manager.AddNonConVariogramModel(model);
        model.centroidModels[stamp("[5, 8]")].structures = {
            nugget, {Basic::Power, 2.0, 0.0, 0.5, 0.75}, exponential};
        const int power = manager.AddNonConVariogramModel(model);

        const auto props = manager.GetNonConVariogramModelProps();
        QCOMPARE(props.keys(), (QList<int>{plain, power}));
        QCOMPARE(answers({props[plain].hasPowerModel, props[plain].isAnisotropic,
                          props[power].hasPowerModel, props[power].isAnisotropic}),
                 "nnyy");
        QCOMPARE(props[plain].models.first().sill, 4.0);
        QCOMPARE(props[plain].models.first().range, exponential.GetEpsilonRange(1e-6));
        const VariogramModelAtTProps atT = props[power].models.last();
        QCOMPARE(atT.sill, -1.0); // stays, also for the structure behind
        QCOMPARE(atT.range, HUGE_VAL);
        QCOMPARE(atT.powerValue, HUGE_VAL); // no geography to measure it on
        QCOMPARE(atT.structures.size(), 3);
        QCOMPARE(atT.structures[1].exponent, 0.75);
    }
};

QTEST_GUILESS_MAIN(TestNonConVariogramModelManager)
#include "tst_NonConVariogramModelManager.moc"
