// SPDX-License-Identifier: MIT
#include <QtTest>
#include <cmath>
#include "datainterface/DataAPI.h"
#include "datainterface/VariogramAPI.h"
#include "frame/frameState.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

const Interval kAlways{0, 1000, true, true};

// A host that fits what it is told to.
class FittingHost : public RecordingController {
public:
    VariogramModelAtT fit;
    bool answer = true;
    bool isDirty() const { return mProjectDirty; }
    VariogramModel shown;

    bool GenerateVariogramModel(VariogramModel &model, const DataId &dataset,
                                const Interval &interval, VariogramModel::EstimatorTypes estimator,
                                const DataId &locations, int lagCount, bool, double, bool) override
    {
        model.locations = locations;
        model.estimator = estimator;
        model.lagCount = lagCount;
        model.centroidModels[interval] = fit;
        return answer && model.dataset == dataset;
    }
    void ShowVariogramModelDialog(VariogramModel &model, bool, int, bool) override
    {
        shown = model;
    }
};

} // namespace

class TestVariogramAPI : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        mModel = std::make_unique<TestModel>();
        mHost = std::make_unique<FittingHost>();
        datainterface::setController(mHost.get());
        mDataset = VORN_NewVectorDataset(addPoints(4), "values", TimeSlice, DecimalType, 1, "/a");
        QVERIFY(mDataset >= 0);
        mHost->fit.structures = {{VariogramBasicModel::Nugget, 1.0, 0.0, 2.0, 2.0},
                                 {VariogramBasicModel::Power, 2.0, 0.0, 0.5, 0.5}};
        mHost->MarkProjectClean();
    }

    void cleanup()
    {
        mHost.reset();
        datainterface::setController(&mModel->controller);
        mModel.reset();
    }

    void aFittedModelEntersItsDataset()
    {
        mHost->answer = false;
        QCOMPARE(generate("cancelled").id, -1);
        mHost->answer = true;
        const VariogramModelAtT fit = std::exchange(mHost->fit, VariogramModelAtT());
        QCOMPARE(generate("empty").id, -1);
        mHost->fit = fit;
        QVERIFY(!mHost->isDirty());
        const VariogramModelProps first = generate("fit");
        const VariogramModelProps second = generate("fit 2");
        QCOMPARE(VORN_GetVariogramModelIds(mDataset), (QList<int>{first.id, second.id}));
        QVERIFY(mHost->isDirty());
        const VariogramModelProps props = VORN_GetVariogramModelProperties(mDataset, first.id);
        QCOMPARE(props.name, QString("fit"));
        QCOMPARE(props.dataset, DataId(mDataset));
        QCOMPARE(props.locations, DataId(77));
        QCOMPARE(props.estimator, 3);
        QCOMPARE(props.lagCount, 12);
        QVERIFY(props.hasPowerModel);
        // The points lie on a diagonal from (0, 0) to (3, 3).
        const VariogramModelAtTProps atT = props.models.first();
        QCOMPARE(atT.powerValue, 2.0 * std::sqrt(std::sqrt(18.0)));
        QCOMPARE(atT.structures[1].sill, atT.powerValue);

        QCOMPARE(VORN_SuggestUniqueVariogramModelName(mDataset, "other"), QString("other"));
        QCOMPARE(VORN_SuggestUniqueVariogramModelName(mDataset, "fit"), QString("fit 3"));
    }

    void unknownIdsGiveEmptyResults()
    {
        for (const int id : {mDataset + 1, 0x7fff0000, -1}) {
            const InCase inId(id);
            QVERIFY(VORN_GetVariogramModelIds(id).isEmpty());
            QCOMPARE(VORN_GetVariogramModelProperties(id, 0).id, -1);
            QCOMPARE(VORN_SuggestUniqueVariogramModelName(id, "fit"), QString("fit"));
            QCOMPARE(raisedText([id] {
                         VORN_GenerateVariogramModel("fit", id, kAlways, 0, 0, 1, false, 0.0, false,
                                                     false);
                     }),
                     QString("Invalid dataset id"));
        }
        QCOMPARE(VORN_GetVariogramModelProperties(mDataset, 5).id, -1);
        QCOMPARE(VORN_GetNonConVariogramModelProperties(0).id, -1);
        VariogramModel model;
        model.name = "of the project";
        QCOMPARE(VORN_GetNonConVariogramModelProperties(mHost->AddNonConVariogramModel(model)).name,
                 model.name);
    }

    void theDialogGetsAModelOfTheNumbers()
    {
        VORN_ShowVariogramModelDialog("new", mDataset, 2, 3, 4, 5, 6, 7, 8, 9, 10, true, false);
        QCOMPARE(mHost->shown.name, QString("new"));
        QCOMPARE(mHost->shown.dataset, DataId(mDataset));
        QCOMPARE(mHost->shown.locations, DataId(2));
        QCOMPARE(mHost->shown.estimator, 3);
        QCOMPARE(mHost->shown.weightsDataset, DataId(4));
        QCOMPARE(mHost->shown.lagCount, 5);
        QCOMPARE(mHost->shown.id, -1);
    }

private:
    VariogramModelProps generate(const QString &name) const
    {
        return VORN_GenerateVariogramModel(name, mDataset, kAlways, 3, 77, 12, false, 0.5, true,
                                           false);
    }

    std::unique_ptr<TestModel> mModel;
    std::unique_ptr<FittingHost> mHost;
    int mDataset = -1;
};

QTEST_GUILESS_MAIN(TestVariogramAPI)
#include "tst_VariogramAPI.moc"
