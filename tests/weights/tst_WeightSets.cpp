// SPDX-License-Identifier: MIT
// Sets on their geography: ids, names, notices, lists put in by hand, handles, and the forms of
// files of each age.
#include <memory>
#include "Common/DataManager.h"
#include "Common/detail/streams.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/MissingData.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/VersionAPI.h"
#include "datainterface/WeightsAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/streamed.h"
#include "support/support.h"

using datainterface::BytesReader;
using datainterface::BytesWriter;

namespace {

using List = QVector<neighborDatum>;

class WeightListener : public QObject {
    Q_OBJECT
public:
    QStringList calls;
    void note(const char *what, MGeoData *geography, int id, const char *name = "")
    {
        calls.append(QStringLiteral("%1 %2/%3 %4")
                         .arg(what)
                         .arg(geography->GetId())
                         .arg(id & 0xffff)
                         .arg(name));
    }

public Q_SLOTS:
    void WeightSetAddedSlot(MGeoData *geography, qint32 id) { note("added", geography, id); }
    void WeightSetRemovedSlot(MGeoData *geography, qint32 id) { note("removed", geography, id); }
    void WeightSetChangedSlot(MGeoData *geography, qint32 id) { note("changed", geography, id); }
    void WeightSetRenamedSlot(MGeoData *geography, qint32 id, const char *name)
    {
        note("renamed", geography, id, name);
    }
};

int addSquares(int count)
{
    QList<QVector<QPointF>> rings;
    for (double x = 0; x < count; ++x)
        rings.append({{x, 0}, {x + 1, 0}, {x + 1, 1}, {x, 1}});
    return addPolygons(rings);
}

neighborDatum entry(int id, float weight)
{
    return {id, weight, 0.5F, 2.0F};
}

QString text(const List &list)
{
    QStringList parts;
    for (const neighborDatum &one : list)
        parts.append(QStringLiteral("%1*%2").arg(one.id).arg(one.weight));
    return parts.join(' ');
}

QString listAt(int set, unsigned int id, qint64 t, const QSet<int> &missing = {})
{
    List list;
    return VORN_GetSpatialWeights(set, id, t, list, VORN_MissingData(missing))
               ? text(list)
               : QStringLiteral("none");
}

// A set's body as a file of `version` holds it, with lists for two objects over [0, 9].
struct OldSet {
    int version = serializationVersionNumber;
    int method = NearestNeighbors;
    int weights = RowStandardizedWeight;
    bool isCluster = false;
    int nextId = 9;
    int egoCount = 2;

    QByteArray bytes(int id) const
    {
        QByteArray result;
        BytesWriter out(&result);
        if (version >= 120000)
            out << qint32(id) << qint32(nextId) << QStringLiteral("set");
        out << qint32(0) << qint32(method) << qint32(weights) << qint32(5) << qint32(2) << qint32(1)
            << 7.5;
        if (version >= 107000)
            out << 3.0;
        out << 2.0;
        if (version >= 104000)
            out << qint8(1);
        if (version >= 105000 && version < 107000)
            out << qint8(7);
        if (version >= 105000)
            out << QStringLiteral("information");
        out << qint32(1) << stamp("[0, 9]") << qint32(egoCount);
        for (int ego = 0; ego < egoCount; ++ego) {
            if (version >= 201042)
                out << qint32(40 + ego);
            else if (version >= 130000)
                out << qint32(1) << qint32(1) << 0.5F << 0.25F;
            else
                out << qint32(1) << qint32(1) << 0.5 << 0.25;
        }
        if (version >= 112000)
            out << qint8(isCluster);
        return result;
    }
};

// Reads only what MGeoData holds.
class BareGeography : public MVectorData {
public:
    BareGeography() : MVectorData(QStringLiteral("bare"), TF_Date, QString()) {}
    bool restoreBase(QDataStream &in) { return MGeoData::RestoreFromStream(in); }
};

// As files from 180000 on hold it.
QByteArray geographyBytes(const QList<QPair<int, QByteArray>> &sets)
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << QStringLiteral("old") << qint32(3) << qint32(8) << qint8(1) << qint32(0);
    out << qint32(TF_Integer) << qint32(-1) << qint32(0) << qint32(sets.size());
    for (const auto &[id, body] : sets) {
        out << qint32(id);
        out.writeRawData(body.constData(), body.size());
    }
    return bytes;
}

} // namespace

class TestWeightSets : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void creatorsRefuse()
    {
        TestModel model;
        const int geographies[] = {addPoints(3), addSquares(3), addGrid(2, 2)};
        // The weights that each creator takes for points, polygons and cells.
        const QList<int> plain{0, 1, 2, 3};
        const QList<int> accepted[4][3] = {{plain, {}, {}},               // nearest
                                           {plain, {}, plain},            // in range
                                           {{}, {0, 1, 2, 4, 5, 99}, {}}, // polygons
                                           {{}, {}, {0, 1, 2, 3, 99}}};   // adjacent cells
        const auto create = [](int creator, int id, int weights, neighborMethodType method) {
            const auto type = static_cast<spatialWeightType>(weights);
            return creator == 0
                       ? VORN_CreateNearestNeighborWeightSet(id, "a", "b", 2, type, true, 1, 1)
                   : creator == 1 ? VORN_CreateRangeWeightSet(id, "a", "b", 2.0, type, true, 1, 1)
                   : creator == 2
                       ? VORN_CreatePolygonWeightSet(id, "a", "b", 1, true, type, true, 1, 1)
                       : VORN_CreateAdjacentPixelWeightSet(id, "a", "b", method, type, true, 1, 1);
        };
        for (int creator = 0; creator < 4; ++creator) {
            for (int kind = 0; kind < 3; ++kind) {
                QList<int> found;
                for (int weights : {-1, 0, 1, 2, 3, 4, 5, 6, 99, 100}) {
                    const InCase inWeights(weights);
                    const int id = create(creator, geographies[kind], weights, RookNeighbors);
                    if (id < 0)
                        continue;
                    found.append(weights);
                    QCOMPARE(id >> 16, geographies[kind]);
                    const SpatialWeightSetProps props = VORN_GetSpatialWeightSetProperties(id);
                    QCOMPARE(props.id, id);
                    QCOMPARE(props.name, "a");
                    QVERIFY(!props.isClusterSet);
                    QVERIFY(props.includeEgo);
                    QCOMPARE(VORN_IsCustomWeightSet(id), (weights == 99));
                }
                QCOMPARE(found, accepted[creator][kind]);
            }
            QCOMPARE(create(creator, geographies[2] + 1, 1, QueenNeighbors), -1);
        }
        QCOMPARE(create(3, geographies[2], 1, RangeNeighbors), -1);
        QCOMPARE(VORN_GetGeographyProperties(geographies[2]).weightSets.size(), 9);
    }

    void defaultSetsAreNamedApart()
    {
        TestModel model;
        const auto names = [&model](int id) {
            MGeoData *geography = model.controller.GetGeoData().value(id);
            for (int i = 0; i < 3; ++i)
                geography->AddSpatialWeightSet(
                    MGeoData::CreateDefaultAdjacencySet(geography, i == 1));
            QStringList texts;
            for (int set : geography->GetSpatialWeightsIds())
                texts.append(geography->GetSpatialWeightSet(set)->GetName() + ' '
                             + listAt(set, 0, 0));
            return texts.join("; ");
        };
        QCOMPARE(
            names(addSquares(2)),
            QString("Queen neighbors 1*1; Queen neighbors 2 0*0.5 1*0.5; Queen neighbors 3 1*1"));
        QCOMPARE(names(addPoints(2)),
                 QString("Nearest 5 neighbors 1*1; Nearest 5 neighbors 2 0*0.5 "
                         "1*0.5; Nearest 5 neighbors 3 1*1"));
        QCOMPARE(names(addGrid(1, 2)),
                 QString("Rook neighbors (E-W-N-S) 1*1; Rook neighbors (E-W-N-S) 2 0*0.5 1*0.5; "
                         "Rook neighbors (E-W-N-S) 3 1*1"));
        QCOMPARE(raisedText([] { MGeoData::CreateDefaultAdjacencySet(nullptr, false); }),
                 QString("rd"));
    }

    void noticesOfASetsLife()
    {
        TestModel model;
        const int id = addPoints(2);
        MGeoData &geography = model.vectorData(id);
        WeightListener listener;
        QVERIFY(geography.AddSpatialWeightSetListener(&listener));
        QObject deaf;
        QCOMPARE(raisedText([&] { geography.AddSpatialWeightSetListener(&deaf); }),
                 QString("Can't connect signals"));
        const int set = VORN_CreateClusterSet(id, "clusters", "by hand");
        const auto call = [=](const char *what, int later, const char *name = "") {
            return QStringLiteral("%1 %2/%3 %4")
                .arg(what)
                .arg(id)
                .arg((set & 0xffff) + later)
                .arg(name);
        };
        QVERIFY(VORN_AddToClusterSet(set, 1, {0, 5, true, false}, {entry(0, 1)}));
        QVERIFY(geography.RenameSpatialWeightSet(set, "other"));
        QVERIFY(geography.DuplicateSpatialWeightSet(set));
        QCOMPARE(geography.GetSpatialWeightsIds(), (QList<int>{set, set + 1}));
        QCOMPARE(geography.GetSpatialWeightsNames(), (QList<QString>{"other", "other copy"}));
        QVERIFY(VORN_RemoveClusterSet(set));
        geography.RemoveAllSpatialWeightSets();
        QCOMPARE(listener.calls,
                 (QStringList{call("added", 0), call("changed", 0), call("renamed", 0, "other"),
                              call("renamed", 0, "other"), call("renamed", 1, "other copy"),
                              call("added", 1), call("removed", 0), call("removed", 1)}));
        geography.RemoveSpatialWeightSetListener(&listener);
        VORN_CreateClusterSet(id, "unheard", "");
        QCOMPARE(listener.calls.size(), 8);
        for (int unknown : {set, -1, 5 << 16}) {
            const InCase inUnknown(unknown);
            QCOMPARE(answers({VORN_RemoveClusterSet(unknown), VORN_IsCustomWeightSet(unknown),
                              geography.RenameSpatialWeightSet(unknown, "x"),
                              geography.DuplicateSpatialWeightSet(unknown),
                              geography.GetSpatialWeightSet(unknown),
                              VORN_GetSpatialWeightsHandle(unknown, 1, false).set,
                              VORN_PrecalculateSpatialWeights(unknown, 1, false),
                              VORN_AddToClusterSet(unknown, 0, {0, 5, true, false}, {})}),
                     "nnnnnnnn");
            QVERIFY(geography.GetSpatialWeightsForObject(unknown, 1, 1).isEmpty());
            QCOMPARE(VORN_GetSpatialWeightSetProperties(unknown).id, -1);
        }
    }

    void listsByHand()
    {
        TestModel model;
        const int id = addPoints(3);
        const int set = VORN_CreateClusterSet(id, "clusters", "");
        QCOMPARE(answers({VORN_IsCustomWeightSet(set),
                          VORN_GetSpatialWeightSetProperties(set).isClusterSet}),
                 "yy");
        QCOMPARE(listAt(set, 1, 3), QString("none")); // and nothing is calculated
        QVERIFY(
            VORN_AddToClusterSet(set, 1, {0, 5, true, false}, {entry(0, 0.25F), entry(2, 4.0F)}));
        QVERIFY(VORN_AddToClusterSet(set, 1, {5, 8, true, true}, {entry(2, 0.5F)}));
        QCOMPARE(listAt(set, 1, 0), QString("0*0.25 2*4"));
        QCOMPARE(listAt(set, 1, 5), QString("2*0.5"));
        QCOMPARE(listAt(set, 0, 5), QString());
        QCOMPARE(listAt(set, 1, 9), QString("none"));
        QCOMPARE(listAt(set, 3, 5), QString("none"));
        QCOMPARE(listAt(set, 1, 0, {0}), QString("2*4")); // the others keep their weights
        // Only the same span takes more.
        QVERIFY(VORN_AddToClusterSet(set, 1, {0, 5, true, false}, {entry(2, 3.0F)}));
        QCOMPARE(answers({VORN_AddToClusterSet(set, 1, {4, 6, true, true}, {entry(2, 1.0F)}),
                          VORN_AddToClusterSet(set, 1, {20, 10, true, true}, {}),
                          VORN_AddToClusterSet(set, 1, {20, 21, false, false}, {}),
                          VORN_AddToClusterSet(set, 3, {10, 20, true, true}, {}),
                          VORN_AddToClusterSet(set, -1, {10, 20, true, true}, {})}),
                 "nnnnn");
        QCOMPARE(listAt(set, 1, 4), QString("2*3"));
        // A copy has blocks of its own.
        QVERIFY(model.vectorData(id).DuplicateSpatialWeightSet(set));
        // Replacing gives up both spans in the way.
        AdjacencySet &held = *model.vectorData(id).GetSpatialWeightSet(set);
        QCOMPARE(text(held.GetAdjacencyTimes()), text(stamps("[0, 5) [5, 8]")));
        QVERIFY(held.AddToSpatialWeights(0, {entry(1, 1.0F)}, stamp("[4, 6]"), true));
        QCOMPARE(text(held.GetAdjacencyTimes()), text(stamps("[4, 6]")));
        QCOMPARE(listAt(set, 0, 6) + listAt(set, 1, 6), QString("1*1"));
        QCOMPARE(listAt(set + 1, 1, 1), QString("2*3"));
        QCOMPARE(answers({held.HasPrecalculatedSpatialWeights(3),
                          held.HasPrecalculatedSpatialWeights(4)}),
                 "ny");
    }

    void handlesThatNoLongerHold()
    {
        TestModel model;
        const int id = addPoints(4);
        const int set =
            VORN_CreateNearestNeighborWeightSet(id, "a", "", 1, ConstantWeight, false, 1, 1);
        AdjacencySet &held = *model.vectorData(id).GetSpatialWeightSet(set);
        const auto holds = [](const WeightsAtT &handle) {
            List list;
            int size = 0;
            const bool isRead = VORN_GetSpatialWeights(handle, 0, list, VORN_MissingData());
            return isRead == VORN_GetSpatialWeightsSize(handle, size) && isRead
                   && text(list) == "1*1";
        };
        List list;
        int size = 0;
        QVERIFY(!holds(WeightsAtT()));
        WeightsAtT handle = VORN_GetSpatialWeightsHandle(set, 5, false);
        QVERIFY(holds(handle));
        QVERIFY(!VORN_GetSpatialWeights(handle, 4, list, VORN_MissingData()));
        QVERIFY(VORN_GetSpatialWeightsSize(handle, size));
        QCOMPARE(size, 2 * (4 + 28) + 2 * (4 + 2 * 28)); // the inner points have two nearest
        held.ClearSpatialWeights();
        QVERIFY(!holds(handle));
        handle = VORN_GetSpatialWeightsHandle(set, 5, false);
        QVERIFY(holds(handle));
        VORN_RemoveClusterSet(set);
        QVERIFY(!holds(handle));
    }

    void whatChangesTheObjectsClears()
    {
        TestModel model;
        const int id = addPoints(4);
        const int set =
            VORN_CreateNearestNeighborWeightSet(id, "a", "", 1, ConstantWeight, false, 1, 1);
        QCOMPARE(listAt(set, 3, 5), QString("2*1"));
        model.vectorData(id).RemoveObjects({1, 2});
        QVERIFY(model.vectorData(id).GetSpatialWeightSet(set)->IsEmpty());
        QCOMPARE(listAt(set, 1, 5), QString("0*1"));
        QCOMPARE(listAt(set, 3, 5), QString("none"));
        // Lists of objects that the data have lost once lay beyond the end.
        model.vectorData(id).ClearSpatialWeightSets();
        QVERIFY(model.vectorData(id).GetVectorDataSource()->Resize(1));
        QCOMPARE(listAt(set, 0, 5), QString("1*1"));
        QCOMPARE(listAt(set, 1, 5), QString("none"));
        // A calculation that is asked for outright takes up changes, of cells too.
        const int cells = addGrid(1, 2);
        MGeoData &grid = *model.controller.GetGeoData().value(cells);
        grid.AddSpatialWeightSet(MGeoData::CreateDefaultAdjacencySet(&grid, false));
        AdjacencySet &rook = *grid.GetSpatialWeightSet(grid.GetSpatialWeightsIds().first());
        QCOMPARE(listAt(rook.GetId(), 0, 5), QString("1*1"));
        rook.SetIncludeEgo(true);
        QVERIFY(rook.PrecalcSpatialWeights(5, false));
        QCOMPARE(listAt(rook.GetId(), 0, 5), QString("0*0.5 1*0.5"));
    }

    void bytesOfASet()
    {
        TestModel model;
        const int id = addPoints(2);
        auto &geography = model.vectorData(id);
        AdjacencySet set("näme", &geography, 7.5, DistanceRankWeight, true, 3.0, 2.0);
        set.AddInformation("infor");
        set.AddInformation("mation");
        QVERIFY(set.AddToSpatialWeights(1, {entry(7, 0.25F)}, stamp("[5, 9]"), false));
        QVERIFY(set.AddToSpatialWeights(0, {}, stamp("[0, 5)"), false));
        QByteArray bytes;
        BytesWriter out(&bytes);
        out << &set;
        QByteArray expected;
        BytesWriter form(&expected);
        form << qint32(set.GetId()) << qint32((set.GetId() & 0xffff) + 1) << QStringLiteral("näme")
             << qint32(0) << qint32(2) << qint32(2) << qint32(0) << qint32(0) << qint32(0) << 7.5
             << 3.0 << 2.0 << qint8(1) << QStringLiteral("information");
        form << qint32(2) << stamp("[5, 9]") << qint32(2) << qint32(-1) << qint32(0);
        form << stamp("[0, 5)") << qint32(2) << qint32(1) << qint32(-1) << qint8(0);
        QCOMPARE(bytes.toHex(), expected.toHex());
        QByteArray block;
        QVERIFY(ReadDataBlock(0, block));
        QByteArray list;
        BytesWriter image(&list);
        image << QVector<neighborDatum>{entry(7, 0.25F)};
        QCOMPARE(block.toHex(), list.toHex());
        for (int length = 0; length < bytes.size(); ++length) {
            BytesReader shorter(bytes.left(length));
            AdjacencySet cut;
            QVERIFY2(!cut.RestoreFromStream(shorter), qPrintable(QString::number(length)));
        }
    }

    void loadedSetsGoOn()
    {
        TestModel model;
        const int points = addPoints(40);
        const int set = VORN_CreateNearestNeighborWeightSet(points, "a", "b", 3,
                                                            InverseDistanceWeight, true, 2, 2);
        const QString before = listAt(set, 20, 4);
        QVERIFY(VORN_SaveProject(model.path("p")));
        VORN_UnloadProject();
        QVERIFY(VORN_LoadProject(model.path("p")));
        AdjacencySet &loaded = *model.vectorData(points).GetSpatialWeightSet(set);
        QVERIFY(loaded.HasPrecalculatedSpatialWeights(4));
        QCOMPARE(listAt(set, 20, 4), before);
        QCOMPARE(VORN_CreateClusterSet(points, "d", ""), set + 1);
        WeightListener listener;
        model.vectorData(points).AddSpatialWeightSetListener(&listener);
        loaded.SetName("e", true);
        QCOMPARE(listener.calls.size(), 1);
    }

    void retiredWeights()
    {
        TestModel model;
        for (const auto &[version, written, expected] : {std::make_tuple(104999, 3, ConstantWeight),
                                                         {104999, 2, InverseDistanceWeight},
                                                         {104999, 1, RowStandardizedWeight},
                                                         {105000, 3, InverseDistanceWeight},
                                                         {105000, 2, DistanceRankWeight}}) {
            const LoadingVersion loading(version);
            OldSet old{version};
            old.weights = written;
            AdjacencySet set;
            BytesReader in(old.bytes(0));
            QVERIFY(set.RestoreFromStream(in));
            QCOMPARE(set.WeightType(), expected);
            QCOMPARE(answers({in.atEnd(), set.IsEmpty()}), "yy");
        }
    }

    void oldCustomSetsArePurged()
    {
        TestModel model;
        constexpr int kFirst = 3 * 65536;
        for (int version : {400001, 400002}) {
            const InCase inVersion(version);
            const LoadingVersion loading(version);
            OldSet plain{version};
            OldSet custom{version, 99, 99};
            OldSet cluster{version, 1, 1, true};
            OldSet both{version, 1, 99, true};
            BareGeography geography;
            const QByteArray bytes = geographyBytes({{kFirst + 3, both.bytes(kFirst + 3)},
                                                     {kFirst + 2, cluster.bytes(kFirst + 2)},
                                                     {kFirst + 1, custom.bytes(kFirst + 1)},
                                                     {kFirst, plain.bytes(kFirst)}});
            BytesReader in(bytes);
            QVERIFY(geography.restoreBase(in));
            QCOMPARE(geography.GetSpatialWeightsIds().size(), version < 400002 ? 1 : 4);
            QCOMPARE(geography.GetSpatialWeightSet(kFirst)->IsEmpty(), version < 400002);
        }
        const QString custom = "Note: the custom spatial-weight set, set, was deleted because of "
                               "incompatibility with Meridor 4.  "
                               "You'll need to re-import it.";
        const QString cluster =
            "Note: the cluster set, set, was deleted because of incompatibility with Meridor 4.  "
            "You'll need to recreate it.";
        QCOMPARE(model.controller.log, (QStringList{custom, cluster, custom}));
    }

    void damagedSetsAreRefused()
    {
        TestModel model;
        constexpr int kSet = 3 * 65536;
        const auto loads = [](const QList<QPair<int, QByteArray>> &sets) {
            const QByteArray bytes = geographyBytes(sets);
            BareGeography geography;
            BytesReader in(bytes);
            return geography.restoreBase(in);
        };
        const auto with = [](auto change) {
            OldSet set;
            change(set);
            return set.bytes(kSet);
        };
        const LoadingVersion loading(serializationVersionNumber);
        const QByteArray good = OldSet().bytes(kSet);
        QVERIFY(loads({{kSet, good}}));
        QVERIFY(!loads({{kSet + 1, good}}));           // under another's id
        QVERIFY(!loads({{kSet, good}, {kSet, good}})); // twice
        for (int OldSet::*field : {&OldSet::method, &OldSet::weights, &OldSet::nextId}) {
            for (const int value : {-1, 65537})
                QVERIFY(!loads({{kSet, with([&](OldSet &set) { set.*field = value; })}}));
        }
        // A last number that leaves none: sets are refused before ids could become another
        // geography's.
        QVERIFY(loads({{kSet, with([](OldSet &set) { set.nextId = 65536; })}}));
        const int id = addPoints(2);
        QCOMPARE(raisedText([id] { VORN_CreateClusterSet(id, "", ""); }),
                 QString("Weight set id not defined"));
        QVERIFY(loads({{kSet, good}}));

        // Lists of fewer objects than there are make the project unreadable; blocks that are no
        // lists read as empty ones.
        const int set = VORN_CreateClusterSet(id, "", "");
        VORN_AddToClusterSet(set, 1, {0, 5, true, false}, {entry(0, 0.25F)});
        QByteArray bytes;
        BytesWriter out(&bytes);
        QVERIFY(model.vectorData(id).SaveToStream(out));
        QByteArray lists;
        BytesWriter form(&lists);
        form << stamp("[0, 5)") << qint32(2) << qint32(-1);
        const int at = bytes.indexOf(lists);
        QVERIFY(at > 0);
        bytes.remove(at + lists.size() - 4, 4);
        bytes[at + 24 + 3] = 1;
        MVectorData loaded(QString(), TF_Date, QString());
        BytesReader in(bytes);
        QVERIFY(!loaded.RestoreFromStream(in));
        for (const QByteArray &block :
             {QByteArray(), QByteArray("\0\0\0\1", 4), QByteArray("\177\377\377\377", 4),
              QByteArray(32, '\377'), QByteArray(31, '\0')}) {
            ReplaceDataBlock(0, block);
            QCOMPARE(listAt(set, 1, 1), QString());
        }
        DeleteDataBlock(0);
        QCOMPARE(listAt(set, 1, 1), QString());
    }
};

QTEST_GUILESS_MAIN(TestWeightSets)
#include "tst_WeightSets.moc"
