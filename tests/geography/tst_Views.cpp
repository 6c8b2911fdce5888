// SPDX-License-Identifier: MIT
// Shared attributes against naive sets, groups of views that live and die, selection by values.
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <utility>
#include "datainterface/DataAPI.h"
#include "datainterface/MDatum.h"
#include "datainterface/MLinker.h"
#include "datainterface/MRasterAttributes.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

using IdSet = QSet<unsigned int>;

// A view that notes what reaches it.
class View : public MLinker {
public:
    View() = default;
    explicit View(MAttributes *attributes) : MLinker(attributes) {}
    bool UpdateView() override
    {
        ++updates;
        delete victim;
        victim = nullptr;
        return answer;
    }
    void ClearSelection() override { ++clearings; }

    int updates = 0;
    int clearings = 0;
    bool answer = true;
    View *victim = nullptr; ///< dies in the next update
    QList<changedAttributes> changes;
    QList<bool> primary;

protected:
    void PrimarySelectorStatusChanged(bool isPrimary) override { primary.append(isPrimary); }
    void AttributeChanged(const changedAttributes &change) override { changes.append(change); }
};

std::unique_ptr<MAttributes> makeAttributes(bool isRaster, int columns, int rows)
{
    if (isRaster)
        return std::make_unique<MRasterAttributes>(columns, rows);
    return std::make_unique<MAttributes>(columns * rows);
}

QVector<unsigned int> sorted(const IdSet &ids)
{
    QVector<unsigned int> result(ids.cbegin(), ids.cend());
    std::sort(result.begin(), result.end());
    return result;
}

// The set of the ids for which the two differ.
IdSet difference(const IdSet &a, const IdSet &b)
{
    return (a - b) + (b - a);
}

QString text(const IdSet &ids)
{
    QStringList parts;
    for (const unsigned int id : sorted(ids))
        parts.append(QString::number(id));
    return parts.join(QLatin1Char(' '));
}

// Flags beside naive sets of ids. Every operation on random ids, beyond the last one too, must
// leave the same flags and counts and tell one change that holds exactly what became different.
class FlagWalk {
public:
    FlagWalk(bool isRaster, int columns, int rows, unsigned seed)
        : mEngine(seed),
          mColumns(columns),
          mCount(static_cast<unsigned int>(columns * rows)),
          mAttributes(makeAttributes(isRaster, columns, rows)),
          mView(mAttributes.get())
    {
        for (unsigned int id = 0; id < mCount; ++id)
            mAll.insert(id);
        while (mAttributes->AddAttribute() < 2) {
        }
        mView.SetAttributes(mAttributes.get()); // the same ones again: still one change each
    }

    /// What differs after one operation; empty when nothing does.
    QString step(bool isObserved)
    {
        const int attribute = static_cast<int>(random() % 3);
        const IdSet before = mModel[attribute];
        mView.SetAttributes(isObserved ? mAttributes.get() : nullptr);
        const bool isAnswered = operate(attribute, random() % 2 == 0);
        mView.SetAttributes(mAttributes.get());
        const QString wrong =
            isAnswered ? wrongFlags(attribute) : QStringLiteral("not the flag that was there");
        return wrong.isEmpty() ? wrongChange(attribute, before, isObserved) : wrong;
    }

private:
    unsigned int random() { return static_cast<unsigned int>(mEngine()); }

    IdSet someIds()
    {
        IdSet ids;
        for (unsigned int i = random() % mCount; i > 0; --i)
            ids.insert(random() % (mCount + 3));
        return ids;
    }

    /// False when the operation answers with something else than the flag that it replaced.
    bool operate(int attribute, bool state)
    {
        auto *grid = qobject_cast<MRasterAttributes *>(mAttributes.get());
        IdSet &expected = mModel[attribute];
        const auto put = [&](const IdSet &ids) {
            expected = state ? expected + ids : expected - ids;
        };
        const auto flip = [&](const IdSet &ids) { expected = difference(expected, ids); };
        const IdSet ids = someIds();
        const QRect rect(static_cast<int>(random() % 9) - 2, static_cast<int>(random() % 9) - 2, 4,
                         3);
        IdSet inRect;
        for (const unsigned int id : qAsConst(mAll))
            if (rect.contains(static_cast<int>(id) % mColumns, static_cast<int>(id) / mColumns))
                inRect.insert(id);
        const QVector<unsigned int> order = sorted(ids);
        const QVector<unsigned int> once = order.mid(0, ids.size() / 2);
        const unsigned int one = mCount / 2;
        bool isAnswered = true;
        const std::function<void()> operations[] = {
            [&] {
                const bool was = expected.contains(one);
                isAnswered = mAttributes->SetAttribute(attribute, one, state) == was;
                put({one});
            },
            [&] { mAttributes->SetAttributeIds(attribute, order, state), put(ids & mAll); },
            [&] { mAttributes->SetAttributeIds(attribute, ids, state), put(ids & mAll); },
            [&] { mAttributes->SetAllAttribute(attribute, state), put(mAll); },
            [&] { mAttributes->ToggleAttribute(attribute, mCount - 1), flip({mCount - 1}); },
            [&] { mAttributes->ToggleAttributeIds(attribute, ids), flip(ids & mAll); },
            [&] { mAttributes->ToggleAllAttributeIds(attribute), flip(mAll); },
            [&] { grid->SetAttributeRect(attribute, rect, state), put(inRect); },
            [&] { grid->ToggleAttributeRect(attribute, rect), flip(inRect); },
            [&] { // ids that stand there twice are left alone
                grid->ToggleAttributeIds(attribute, (order + order.mid(once.size())).toList());
                flip(IdSet(once.cbegin(), once.cend()) & mAll);
            }};
        operations[random() % (grid ? 10 : 7)]();
        return isAnswered;
    }

    QString wrongFlags(int attribute)
    {
        const IdSet &set = mModel[attribute];
        const IdSet clear = mAll - set;
        if (mAttributes->GetIdsByState(attribute, true) != sorted(set)
            || mAttributes->GetIdsByState(attribute, false) != sorted(clear))
            return QStringLiteral("not the flags ") + text(set);
        const int found = mAttributes->GetStateCount(attribute, true);
        if (found != set.size() || mAttributes->GetStateCount(attribute, false) != clear.size())
            return QStringLiteral("%1 flags, not %2").arg(found).arg(set.size());
        const unsigned int any = random() % mCount;
        for (int i = 0; i < mModel.size(); ++i)
            if (mAttributes->GetObjectAttributes(any).value(i) != mModel[i].contains(any))
                return QStringLiteral("flag %1 of object %2").arg(i).arg(any);
        return QString();
    }

    QString wrongChange(int attribute, const IdSet &before, bool isObserved)
    {
        const IdSet changed = difference(before, mModel[attribute]);
        const QList<changedAttributes> told = std::exchange(mView.changes, {});
        if (told.size() != (changed.isEmpty() || !isObserved ? 0 : 1))
            return QStringLiteral("%1 changes told").arg(told.size());
        if (told.isEmpty())
            return QString();
        if (told[0].attribute != attribute || told[0].ids != changed)
            return QStringLiteral("told %1, not %2").arg(text(told[0].ids), text(changed));
        const bool state = changed.intersects(mModel[attribute]);
        return told[0].state == state ? QString() : QStringLiteral("state %1 told").arg(!state);
    }

    std::mt19937 mEngine;
    const int mColumns;
    const unsigned int mCount;
    std::unique_ptr<MAttributes> mAttributes;
    View mView;
    IdSet mAll;
    QVector<IdSet> mModel = QVector<IdSet>(3);
};

} // namespace

class TestViews : public QObject {
    Q_OBJECT
    // Six objects hold 2, 11, nothing, 7.5 (7 as an integer or a text), -4 and NaN (0; missing in a
    // vector dataset): what is asked for joins what is selected, object 4, in one change. Keys of
    // another type do not count.
    void select(int kind, const QVector<unsigned int> &byValue,
                const QVector<unsigned int> &byRange)
    {
        const InCase inKind(kind);
        const QSet<MDatum> keys{MDatum(2), MDatum(11), MDatum(7.5), MDatum(std::nan("")),
                                MDatum("7")};
        const QVector<double> decimals{2, 11, -99, 7.5, -4, std::nan("")};
        const QVector<int> integers{2, 11, -99, 7, -4, 0};
        const Interval when = interval("[0, 9]");
        TestModel model;
        const bool isGrid = kind >= 3;
        const int id = isGrid ? addGrid(2, 3) : addPoints(6);
        const DataType types[] = {DecimalType, IntegerType, StringType, RasterDecimalType,
                                  RasterIntegerType};
        const int dataset =
            isGrid ? VORN_NewRasterDataset(id, "data", types[kind], 1, kind == 3 ? 64 : 32, "")
                   : VORN_NewVectorDataset(id, "data", TimeSlice, types[kind], 1, "");
        const QVector<QString> texts{"2", "11", "7", "7", "", "x"};
        QVERIFY(kind == 0   ? VORN_AddDataValues(dataset, 0, when, decimals, {2}, true, true)
                : kind == 1 ? VORN_AddDataValues(dataset, 0, when, integers, {2}, true, true)
                : kind == 2 ? VORN_AddDataValues(dataset, 0, when, texts, {2}, true, true)
                : kind == 3 ? VORN_AddRasterValues(dataset, 0, when, decimals, -99.0, true, true)
                            : VORN_AddRasterValues(dataset, 0, when, integers, -99, true, true));
        MGeoData &geography = *model.controller.GetGeoData().value(id);
        geography.SelectObjectsByValue(dataset, 0, 5, keys,
                                       1); // without attributes nothing happens
        geography.AddAttributes(makeAttributes(isGrid, 3, 2).release());
        MAttributes &attributes = *geography.GetAttributes(0);
        attributes.AddAttribute();
        attributes.AddAttribute();
        View view(&attributes);
        const auto selects = [&](const QVector<unsigned int> &expected) {
            IdSet all(expected.cbegin(), expected.cend());
            const bool isOne = expected.isEmpty()
                                   ? view.changes.isEmpty()
                                   : view.changes.size() == 1 && view.changes[0].ids == all;
            all.insert(4);
            return isOne && attributes.GetIdsByState(1, true) == sorted(all);
        };
        const auto startAnew = [&] {
            attributes.SetAllAttribute(1, false);
            attributes.SetAttribute(1, 4, true);
            view.changes.clear();
        };
        startAnew();
        geography.SelectObjectsByValue(dataset, 0, 5, keys, 1);
        QVERIFY(selects(byValue));
        startAnew();
        geography.SelectObjectsByRange(dataset, 0, 5, 2, 7.5, 1);
        QVERIFY(selects(byRange));
        startAnew();
        geography.SelectObjectsByRange(dataset, 0, 50, -1e300, 1e300, 1); // no data then
        QVERIFY(selects({}));
        QCOMPARE(raisedText([&] { geography.SelectObjectsByRange(dataset + 1, 0, 5, 0, 1, 1); }),
                 QStringLiteral("Invalid dataset type"));
    }

private Q_SLOTS:
    void flagsFollowNaiveSets()
    {
        // Objects, cells in rows with unused bits, cells in whole bytes.
        for (const auto &[isRaster, columns, rows] :
             {std::make_tuple(false, 37, 1), {true, 11, 7}, {true, 16, 3}}) {
            FlagWalk walk(isRaster, columns, rows, walkSeed());
            for (int step = 0; step < 400; ++step) {
                const QString wrong = walk.step(step % 4 != 0);
                QVERIFY2(wrong.isEmpty(),
                         qPrintable(QStringLiteral("step %1: %2").arg(step).arg(wrong)));
            }
        }
    }

    void gridsPackBitsByRow()
    {
        MRasterAttributes grid(10, 3);
        grid.AddAttribute();
        QCOMPARE(grid.GetByteCount(), 6);
        grid.SetAllAttribute(0, true);
        grid.SetAttribute(0, 9, 1, false);
        QCOMPARE(answers({grid.GetAttribute(0, 19u), grid.GetAttribute(0, 9, 2),
                          grid.GetAttribute(0, 10, 0)}),
                 "nyn");
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(grid.GetAttributeVector(0)), 6),
                 QByteArray("\xFF\x03\xFF\x01\xFF\x03", 6));
        View view(&grid); // observed flags are set one by one, to the same bytes
        grid.SetAllAttribute(0, false);
        grid.SetAllAttribute(0, true);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(grid.GetAttributeVector(0)), 6),
                 QByteArray("\xFF\x03\xFF\x03\xFF\x03", 6));
        QCOMPARE(MRasterAttributes(1 << 16, 1 << 15).GetByteCount(),
                 0); // cell numbers beyond an int
    }

    void rescaledFlagsAreThoseOfSteppedCells()
    {
        MRasterAttributes grid(20, 8);
        grid.AddAttribute();
        for (unsigned int id = 0; id < 160; id += 3)
            grid.SetAttribute(0, id * id % 160, true);
        for (const QSize &size :
             {QSize(5, 2), QSize(20, 8), QSize(40, 32), QSize(1, 1), QSize(80, 4)}) {
            const std::unique_ptr<unsigned char[]> scaled(
                grid.GetRescaledAttributeVector(0, size.width(), size.height()));
            QVERIFY(scaled);
            for (int y = 0; y < size.height(); ++y)
                for (int x = 0; x < size.width(); ++x) {
                    const auto byte =
                        static_cast<std::size_t>(y * ((size.width() + 7) >> 3) + x / 8);
                    QCOMPARE((scaled[byte] >> x % 8 & 1) != 0,
                             grid.GetAttribute(0, 20 * x / size.width(), 8 * y / size.height()));
                }
        }
        QCOMPARE(answers({grid.GetRescaledAttributeVector(1, 5, 5),
                          grid.GetRescaledAttributeVector(0, 0, 3)}),
                 "nn");
    }

    void resizingKeepsWhatBothHave()
    {
        MAttributes objects(5);
        objects.AddAttribute();
        objects.SetAttributeIds(0, IdSet{1, 3, 4}, true);
        objects.Resize(4);
        objects.Resize(6);
        QCOMPARE(objects.GetIdsByState(0, true), (QVector<unsigned int>{1, 3}));

        MRasterAttributes grid(12, 4);
        grid.AddAttribute();
        grid.SetAllAttribute(0, true);
        grid.Resize(10, 3);
        grid.Resize(14, 5);
        QCOMPARE(grid.GetStateCount(0, true), 30);
        QCOMPARE(answers({grid.GetAttribute(0, 9, 2), grid.GetAttribute(0, 10, 2),
                          grid.GetAttribute(0, 9, 3)}),
                 "ynn");
        static_cast<MAttributes &>(grid).Resize(3);
        grid.RemoveObjects({1, 2});
        QCOMPARE(grid.GetStateCount(0, true), 30);
        QCOMPARE(grid.GetStateCount(0, false), 40);
    }

    void unknownAttributesAndObjectsAreLeftAlone()
    {
        MAttributes attributes(3);
        for (int attribute : {-1, 0, 7}) {
            const InCase inAttribute(attribute);
            QCOMPARE(answers({attributes.SetAttribute(attribute, 0, true),
                              attributes.GetAttribute(attribute, 0)}),
                     "nn");
            attributes.SetAllAttribute(attribute, true);
            attributes.DeleteAttribute(attribute);
            QCOMPARE(attributes.GetStateCount(attribute, false), 0);
            QVERIFY(!attributes.GetAttributeVector(attribute));
        }
        attributes.AddAttribute();
        attributes.AddAttribute();
        attributes.SetAttribute(1, 2, true);
        attributes.DeleteAttribute(0);
        QVERIFY(attributes.GetAttribute(0, 2)); // the id moved down
    }

    void groupsDriveAllTheirViews()
    {
        View a, b, c, d;
        a.answer = false;
        a.Link(&b);
        QCOMPARE(b.UpdateLinkedViews(), true); // b does not drive a
        QCOMPARE(a.updates, 0);
        QCOMPARE(a.UpdateLinkedViews(), false); // its own answer
        QCOMPARE(a.updates + b.updates, 3);
        a.Unlink(&b);
        c.Link(&d);
        MLinker::LinkViews(&a, &b);
        MLinker::LinkViews(&b, &d); // not c: d does not drive it
        MLinker::LinkViews(&b, nullptr);
        for (View *view : {&a, &b, &d}) {
            for (View *each : {&a, &b, &c, &d})
                each->clearings = 0;
            view->ClearSelectionState();
            QCOMPARE(a.clearings + b.clearings + d.clearings, 3);
            QCOMPARE(c.clearings, 0);
        }
        a.MakePrimarySelector();
        a.MakePrimarySelector();
        b.MakePrimarySelector();
        a.MakePrimarySelector();
        QCOMPARE(answers({a.IsPrimarySelector(), b.IsPrimarySelector()}), "yn");
        QCOMPARE(a.primary, (QList<bool>{true, false, true}));
        QCOMPARE(b.primary, (QList<bool>{false, true, false}));
        d.UnlinkDestination(&a);
        a.UnlinkSource(&d);
        d.ClearSelectionState();
        QCOMPARE(a.clearings, 1);
        QCOMPARE(b.clearings, 2);
    }

    // A random walk over links of all kinds and deaths, also in the middle of an update; the
    // sanitizers see what dangles.
    void viewsAndAttributesDieInAnyOrder()
    {
        std::mt19937 random(walkSeed(7));
        for (int round = 0; round < 200; ++round) {
            auto attributes = std::make_unique<MAttributes>(10);
            attributes->AddAttribute();
            std::vector<std::unique_ptr<View>> views;
            for (int i = 0; i < 6; ++i)
                views.push_back(std::make_unique<View>(attributes.get()));
            const auto any = [&] { return views[random() % views.size()].get(); };
            while (views.size() > 1) {
                const std::size_t chosen = random() % views.size();
                View *const a = views[chosen].get();
                View *const b = any();
                const auto action = random() % 9;
                if (action < 7) {
                    const std::function<void()> actions[] = {[&] { a->Link(b); },
                                                             [&] { a->AddLinkingView(b); },
                                                             [&] { a->UnlinkSource(b); },
                                                             [&] { a->UnlinkDestination(b); },
                                                             [&] { MLinker::LinkViews(a, b); },
                                                             [&] { a->UpdateLinkedViews(); },
                                                             [&] { a->MakePrimarySelector(); }};
                    actions[action]();
                } else if (action == 7 || chosen == 0) {
                    views.erase(views.begin() + static_cast<std::ptrdiff_t>(chosen));
                } else { // in the middle of an update
                    views[0]->Link(views[0].get());
                    views[0]->victim = views[chosen].release();
                    views.erase(views.begin() + static_cast<std::ptrdiff_t>(chosen));
                    views[0]->UpdateLinkedViews();
                    QVERIFY(!views[0]->victim);
                }
                if (round % 2 == 0 && views.size() == 3)
                    attributes.reset();
                if (attributes)
                    attributes->ToggleAttribute(0, 3);
            }
            QCOMPARE(views[0]->GetAttributes(), attributes.get());
            QCOMPARE(attributes && views[0]->changes.isEmpty(), false);
        }
        MAttributes first(1);
        MAttributes second(1);
        View view(&first);
        QCOMPARE(raisedText([&] { view.SetAttributes(&second); }),
                 QStringLiteral("Attributes already exist"));
    }

    void theLastViewLeavesTheIdleState()
    {
        TestModel model;
        MVectorData &geography = model.vectorData(addPoints(4));
        QVERIFY(!geography.GetAttributes(0));
        QCOMPARE(raisedText([&] { geography.GetAttributes(1); }),
                 QStringLiteral("Invalid attribute population id"));
        auto *attributes = new MAttributes(4);
        geography.AddAttributes(attributes);
        for (int i = 0; i < 4; ++i)
            attributes->AddAttribute();
        auto a = std::make_unique<View>(geography.GetAttributes(0));
        auto b = std::make_unique<View>(geography.GetAttributes(0));
        geography.AddObjectManager(a.get());
        geography.AddObjectManager(b.get());
        for (int i = 1; i < 4; ++i)
            attributes->SetAttribute(i, 2, true);
        const auto counts = [&] {
            QVector<int> set;
            for (int i = 0; i < 4; ++i)
                set.append(attributes->GetStateCount(i, true));
            return set;
        };
        a.reset();
        QCOMPARE(counts(), (QVector<int>{0, 1, 1, 1}));
        QCOMPARE(geography.GetObjectManager(), b.get());
        b->blockSignals(true); // its death is told all the same
        b.reset();
        QCOMPARE(counts(), (QVector<int>{4, 0, 0, 1}));
        QVERIFY(!geography.GetObjectManager());

        View survivor(attributes);
        geography.AddObjectManager(&survivor);
        model.controller.RemoveGeography(geography.GetId());
        QVERIFY(!survivor.GetAttributes());
    }

    // The geography brought attributes that were gone back to their idle state.
    void theLastViewMayDieWithTheAttributes()
    {
        TestModel model;
        const int id = addPoints(4);
        MVectorData &geography = model.vectorData(id);
        auto *attributes = new MAttributes(4);
        attributes->AddAttribute();
        geography.AddAttributes(attributes);
        auto *view = new View(attributes);
        geography.AddObjectManager(view);
        int left = -1;
        connect(attributes, &QObject::destroyed, [&] {
            left = geography.GetAttributes(0) != nullptr;
            delete view;
        });
        model.controller.RemoveGeography(id);
        QCOMPARE(left, 0);
    }

    void selectionByValues()
    {
        select(0, {3}, {0, 3});
        select(1, {0, 1}, {0, 3}); // integers
        select(2, {3}, {});        // texts
        select(3, {3, 5}, {0, 3}); // a grid of decimals
        select(4, {0, 1}, {0, 3}); // a grid of integers
    }

    void removedObjectsLeaveTheAttributes()
    {
        TestModel model;
        MVectorData &geography = model.vectorData(addPoints(6));
        auto *attributes = new MAttributes(6);
        geography.AddAttributes(attributes);
        for (int i = 0; i < 2; ++i)
            attributes->AddAttribute();
        attributes->SetAttributeIds(0, IdSet{1, 4, 5}, true);
        attributes->SetAttributeIds(1, IdSet{0, 5}, true);
        geography.RemoveObjects({0, 4, 77});
        QCOMPARE(attributes->GetIdsByState(0, true), (QVector<unsigned int>{0, 3}));
        QCOMPARE(attributes->GetIdsByState(0, false), (QVector<unsigned int>{1, 2}));
        QCOMPARE(attributes->GetStateCount(1, true), 0);
        QCOMPARE(attributes->GetStateCount(1, false), 4);
    }
};

QTEST_GUILESS_MAIN(TestViews)
#include "tst_Views.moc"
