// SPDX-License-Identifier: MIT
// What a builder accepts and refuses, and the pieces of time of what was built.
#include <numeric>
#include "base/timeRules.h"
#include "fennimark/geographies.h"
#include "support/checks.h"

namespace {

/// "[0, 10) [10, 20]" and the like.
QVector<timeRange> ranges(const QString &text)
{
    QVector<timeRange> result;
    const QRegularExpression form(
        QStringLiteral("([\\[(])([-\\d.]+|nan|inf), ([-\\d.]+|nan|inf)([\\])])"));
    for (auto match = form.globalMatch(text); match.hasNext();) {
        const QStringList one = match.next().capturedTexts();
        const int flags =
            (one[1] == QLatin1String("[") ? 0x10 : 0) | (one[4] == QLatin1String("]") ? 0x01 : 0);
        result.append(span(one[2].toDouble(), one[3].toDouble(), uchar(flags)));
    }
    return result;
}

QString text(const timeRange &range)
{
    return (fennimark::startIncluded(range) ? QStringLiteral("[") : QStringLiteral("("))
           + QString::number(range.start) + QStringLiteral(", ") + QString::number(range.end)
           + (fennimark::endIncluded(range) ? QStringLiteral("]") : QStringLiteral(")"));
}

QString text(const FMObjectChain &chain)
{
    QStringList parts;
    for (const auto &observation : chain.GetObservations())
        parts.append(text(observation.first));
    return parts.join(QLatin1Char(' '));
}

QVector<TreeObject *> squares(int count)
{
    QVector<TreeObject *> objects;
    for (int i = 0; i < count; ++i)
        objects.append(square(i, i));
    return objects;
}

int living = 0;
struct CountedPoint : FMPoint {
    CountedPoint() : FMPoint(QPointF(1, 1)) { ++living; }
    ~CountedPoint() override { --living; }
};

} // namespace

class TestVORNBuilder : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void rangesOfAChainAreToldApart_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QString>("expected");
        const char *const rows[][3] = {
            // the third is empty where the second is refused
            {"[20, 30]", "[0, 10]", "[0, 10] [20, 30]"},
            {"[0, 10]", "[10, 30]", "[0, 10) [10, 30]"},
            {"[10, 30]", "[0, 10]", "[0, 10) [10, 30]"},
            {"[0, 10]", "(10, 30]", "[0, 10] (10, 30]"},
            {"[0, 10)", "(10, 30]", "[0, 10) (10, 30]"},
            {"[0, 10)", "(10, 10)", "[0, 10) [10, 10]"},
            {"[10, 10]", "[10, 30]", "[10, 10] (10, 30]"},
            {"[0, 10]", "[10, 10]", "[0, 10) [10, 10]"},
            {"[0, 10] [10, 30]", "[10, 10]", "[0, 10) [10, 10] (10, 30]"},
            {"[0, 10] [10, 20] [20, 30]", "[40, 50] [30, 40]",
             "[0, 10) [10, 20) [20, 30) [30, 40) [40, 50]"},
            {"[10, 10]", "[10, 10]", ""},
            {"[0, 10]", "[5, 5]", ""},
            {"[0, 10]", "[9, 20]", ""},
            {"(0, 10)", "(0, 10)", ""},
            {"[0, 10]", "[20, 30] [25, 40]", ""},
            {"[0, 10]", "[20, 15]", ""},
            {"[0, 10]", "[20, inf]", ""},
            {"[0, 10]", "[nan, 20]", ""},
        };
        for (const auto &[first, second, expected] : rows)
            QTest::addRow("%s and %s", first, second)
                << QString(first) << QString(second) << QString(expected);
    }
    void rangesOfAChainAreToldApart()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QString, expected);
        VORNBuilder builder(extent(10), nullptr, nullptr);
        FMObjectChain *chain =
            builder.CreateChain(squares(ranges(first).size()), ranges(first), -1);
        QVERIFY(chain);
        const QString before = text(*chain);
        const auto *changed =
            builder.AddObjectsToChain(0, squares(ranges(second).size()), ranges(second), true);
        QCOMPARE(changed, expected.isEmpty() ? nullptr : chain);
        const QString after = expected.isEmpty() ? before : expected;
        QCOMPARE(text(*chain), after);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        QVERIFY(fennims);
        QCOMPARE(text(*fennims->GetChainById(0)), after);
        // There is one observation at every instant.
        for (qint64 time = -1; time < 60; ++time) {
            int holding = 0;
            for (const auto &observation : chain->GetObservations())
                holding += fennimark::contains(observation.first, double(time));
            const auto found = fennims->GetChainById(0)->GetObservation(time);
            QCOMPARE(holding, found.second > 0 ? 1 : 0);
            QCOMPARE(found.first.end >= found.first.start, holding == 1);
            QVERIFY(holding == 0 || fennimark::contains(found.first, double(time)));
        }
    }

    // Many enough for several blocks, in calls of one and of several, and with one range that
    // cannot go in between.
    void observationsComeInAnyOrder_data()
    {
        QTest::addColumn<int>("order");
        QTest::addColumn<int>("each");
        for (const int each : {1, 7}) {
            QTest::addRow("newest first, %d at a time", each) << -1 << each;
            QTest::addRow("shuffled, %d at a time", each) << 0 << each;
            QTest::addRow("oldest first, %d at a time", each) << 1 << each;
        }
    }
    void observationsComeInAnyOrder()
    {
        QFETCH(int, order);
        QFETCH(int, each);
        constexpr int kCount = 2100;
        QVector<int> times(kCount);
        std::iota(times.begin(), times.end(), 0);
        if (order < 0)
            std::reverse(times.begin(), times.end());
        if (order == 0)
            std::shuffle(times.begin(), times.end(), std::mt19937(8));
        VORNBuilder builder(extent(kCount, 0, 10 * kCount), nullptr, nullptr);
        FMObjectChain *chain = builder.CreateChain({}, {}, 5);
        for (int i = 0; i < kCount; i += each) {
            QVector<TreeObject *> objects;
            QVector<timeRange> ranges;
            for (const int t : times.mid(i, each)) {
                objects.append(new FMPoint(QPointF(t, 0)));
                ranges.append(span(10 * t, 10 * t + 10)); // both ends: the next one shares one
            }
            QCOMPARE(builder.AddObjectsToChain(5, objects, ranges, true), chain);
            QVERIFY(!builder.AddObjectsToChain(5, {new FMPoint(QPointF())},
                                               {span(10 * times[i] + 4, 10 * times[i] + 5)}, true));
        }
        const std::unique_ptr<Fennims> fennims = opened(builder);
        for (const FMObjectChain *one : {chain, fennims->GetChainById(5)}) {
            const auto observations = one->GetObservations();
            QCOMPARE(observations.size(), kCount);
            for (int t = 0; t < kCount; ++t) {
                const timeRange &range = observations[t].first;
                QCOMPARE(range.start, 10.0 * t);
                QCOMPARE(int(range.flags), t + 1 < kCount ? 0xF0 : 0xFF);
                QCOMPARE(one->GetObservation(10 * t + 3).second, observations[t].second);
            }
        }
        const auto boxOf = [&fennims](int record) {
            return fennims->mTree->CheckOutRecord(record, false)
                ->GetTreeObject(fennims->mTree)
                ->GetObjectBounds();
        };
        const auto observations = fennims->GetChainById(5)->GetObservations();
        for (int t = 0; t < kCount; ++t)
            QCOMPARE(boxOf(observations[t].second).xMin, double(t));
    }

    void objectsThatCannotBeAreRefused()
    {
        const auto row = [](const char *name, TreeObject *object, bool taken) {
            const InCase inCase(name);
            VORNBuilder builder(extent(10), nullptr, nullptr);
            QCOMPARE(builder.CreateChain({object}, {span(0, 1)}, 5) != nullptr, taken);
            QCOMPARE(builder.IsValid(), taken);
            // A refused chain leaves its id free and the geography's kind open.
            QVERIFY(taken || builder.CreateChain({square(0, 0)}, {span(0, 1)}, 5));
        };
        using Ring = QVector<QPointF>;
        row("none", nullptr, false);
        row("point", new FMPoint(QPointF(1, 2)), true);
        row("point not a number", new FMPoint(QPointF(1, qQNaN())), false);
        row("line", new FMLine({{{0, 0}, {1, 1}}}), true);
        row("line at one place", new FMLine({{{1, 1}, {1, 1}}}), true);
        row("line of one vertex", new FMLine({{{0, 0}, {1, 1}}, {{0, 0}}}), false);
        row("line without parts", new FMLine(QList<QVector<QPointF>>()), false);
        row("line to infinity", new FMLine({{{0, 0}, {1, HUGE_VAL}}}), false);
        row("triangle", new FMPolygon(Ring{{0, 0}, {1, 0}, {0, 1}}), true);
        row("closed triangle", new FMPolygon(Ring{{0, 0}, {1, 0}, {0, 1}, {0, 0}}), true);
        row("there and back", new FMPolygon(Ring{{0, 0}, {1, 0}, {0, 0}, {1, 0}}), false);
        row("three of them alike",
            new FMPolygon(Ring{{0, 0}, {0, 0}, {0, 0}, {1, 0}, {1, 0}, {1, 1}}), true);
        row("no rings", new FMPolygon(QList<QPolygonF>()), false);
        row("one ring too short",
            new FMPolygon(QList<QPolygonF>{QPolygonF(QRectF(0, 0, 1, 1)), QPolygonF()}), false);
    }

    void objectsAreTheBuilders()
    {
        const auto point = [] { return new CountedPoint; };
        {
            VORNBuilder builder(extent(10), nullptr, nullptr);
            QVERIFY(builder.CreateChain({point()}, {span(0, 1)}, -1));
            QCOMPARE(living, 0);
            QVERIFY(!builder.AddObjectsToChain(0, {point(), point()}, {span(2, 3)}, true));
            QVERIFY(!builder.AddObjectsToChain(9, {point()}, {span(2, 3)}, true));
            QVERIFY(
                !builder.AddObjectsToChain(0, {square(0, 0)}, {span(2, 3)}, true)); // a second kind
            QVERIFY(!builder.CreateChain({point()}, {span(2, 3)}, 0));
            QCOMPARE(living, 0);
            CountedPoint mine;
            QVERIFY(builder.AddObjectsToChain(0, {&mine}, {span(2, 3)}, false));
            CountedPoint *twice = point();
            QVERIFY(builder.AddObjectsToChain(0, {twice, twice}, {span(4, 5), span(6, 7)}, true));
        }
        QCOMPARE(living, 0);
    }

    void chainIdsAreGivenAndTaken()
    {
        VORNBuilder builder(extent(10), nullptr, nullptr);
        QCOMPARE(builder.CreateChain({}, {}, -1)->id, 0);
        QCOMPARE(builder.CreateChain({}, {}, 7)->id, 7);
        QCOMPARE(builder.CreateChain({}, {}, 3)->id, 3);
        QCOMPARE(builder.CreateChain({}, {}, -1)->id, 8);
        for (const int refused : {7, -2})
            QCOMPARE(builder.CreateChain({}, {}, refused), nullptr);
        QVERIFY(builder.CreateChain({}, {}, INT_MAX));
        QCOMPARE(builder.CreateChain({}, {}, -1), nullptr);
        QCOMPARE(answers({builder.IsValid(), opened(builder) != nullptr}), "nn");
        QVERIFY(builder.AddObjectsToChain(8, {square(0, 0)}, {span(0, 1)}, true));
        const std::unique_ptr<Fennims> fennims = opened(builder);
        QCOMPARE(fennims->mChains.keys(), (QList<int>{0, 3, 7, 8, INT_MAX}));
        QCOMPARE(fennims->GetChainById(3)->GetObservation(0).second, -1);
        QVERIFY(!fennims->GetChainById(1));
        QCOMPARE(fennims->GetChainById(8)->GetObservation(0).second, 1); // record ids begin above 0
    }

    void timeIsCutWhereAnythingChanges()
    {
        const struct {
            const char *chains; // each observation a chain of its own
            qint64 time;
            const char *piece; // empty: nothing exists
        } rows[] = {{"[0, 50] [50, 100]", 50, "[50, 50]"},
                    {"[0, 50] [50, 100]", 75, "(50, 100]"},
                    {"[0, 50) [50, 100]", 50, "[50, 100]"},
                    {"[0, 50] (50, 100]", 50, "[0, 50]"},
                    {"[0, 50) (50, 100]", 50, ""},
                    {"[0, 100] [20, 30]", 10, "[0, 20)"},
                    {"[0, 100] (20, 30)", 20, "[0, 20]"},
                    {"[0, 100] (20, 30)", 30, "[30, 100]"},
                    {"[0, 100] [40, 40]", 40, "[40, 40]"},
                    {"[0, 100] [40, 40]", 41, "(40, 100]"},
                    {"[0, 10] [20, 30]", 31, ""},
                    {"(0, 10)", 0, ""},
                    {"(0, 10)", 5, "(0, 10)"}};
        for (const auto &[chains, time, told] : rows) {
            const InCase inCase(QString("%1 at %2").arg(chains).arg(time));
            const QString piece(told);
            VORNBuilder builder(extent(10), nullptr, nullptr);
            for (const timeRange &range : ranges(chains))
                builder.CreateChain({square(0, 0)}, {range}, -1);
            const std::unique_ptr<Fennims> fennims = opened(builder);
            timeRange found{HUGE_VAL, -HUGE_VAL, 0};
            QCOMPARE(fennims->GetCommonStaticTimeStamp(time, found), !piece.isEmpty());
            QCOMPARE(fennims->GetObservationsAtTime(time).isEmpty(), piece.isEmpty());
            QCOMPARE(text(found), piece.isEmpty() ? QString("(inf, -inf)") : piece);
            if (!piece.isEmpty()) // one vector serves the whole piece
                QCOMPARE(fennims->GetObservationsAtTime(time).constData(),
                         fennims->GetObservationsAtTime(time).constData());
        }
    }

    void timesMayBeAnyNumbers()
    {
        VORNBuilder builder(extent(10), nullptr, nullptr);
        builder.CreateChain({square(0, 0)}, {span(-1e300, -2.5)}, -1);
        builder.CreateChain({square(0, 0), square(1, 1)}, {span(-2.25, 0.5), span(0.75, 1e300)},
                            -1);
        const std::unique_ptr<Fennims> fennims = opened(builder);
        QCOMPARE(fennims->GetAllObjectTimes(),
                 (QList<qint64>{std::numeric_limits<qint64>::min(), -2, 0,
                                std::numeric_limits<qint64>::max()}));
        QCOMPARE(fennims->GetObservationsAtTime(-3).size(), 1);
        QCOMPARE(fennims->GetTimeBounds().end, 1e300);
    }
};

QTEST_GUILESS_MAIN(TestVORNBuilder)
#include "tst_VORNBuilder.moc"
