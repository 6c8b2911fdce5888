// SPDX-License-Identifier: MIT
#include <QtTest>
#include <cmath>
#include "datainterface/VariogramModel.h"
#include "support/checks.h"
#include "support/streamed.h"
#include "support/support.h"

using Basic = VariogramBasicModel;

namespace {

constexpr double kHalfPi = 1.5707963267948966;

VariogramModelAtT sumOf(std::initializer_list<Basic> structures)
{
    VariogramModelAtT model;
    model.structures = structures;
    return model;
}

VariogramModel fullModel()
{
    VariogramModel model(QStringLiteral("fitted"), DataId(0x10002), DataId(0x10003), 7,
                         DataId(0x10004), 12, 21, 22, DataId(0x10005), 23, 24);
    model.id = 5;
    model.modelVersion = 3;
    model.parameterSet = 4;
    model.centroidModels[stamp("[1, 5)")] =
        sumOf({{Basic::Nugget, 1, 0, 2, 2}, {Basic::Cubic, 3, 0.5, 9, 4}});
    model.centroidModels[stamp("[5, 8]")] = sumOf({{Basic::Power, 2, 0, 0.5, 0.5}});
    model.deconvolutionModels[stamp("[1, 8]")] = sumOf({{Basic::Gaussian, 1, 0, 2, 2}});
    model.empiricalResults[stamp("[1, 8]")] = {{1.5, 0.25, 3.5, 40}, {2.5, 0.25, 4.5, 20}};
    for (size_t i = 0; i < model.fit.doubles.size(); ++i)
        model.fit.doubles[i] = 100.0 + static_cast<double>(i);
    for (size_t i = 0; i < model.fit.flags.size(); ++i)
        model.fit.flags[i] = static_cast<quint8>(200 + i);
    for (size_t i = 0; i < 6; ++i)
        model.fit.ints[i] = static_cast<qint32>(50 + i);
    return model;
}

} // namespace

class TestVariogramModel : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void structureValues()
    {
        const auto isNear = [](Basic::ModelType type, double range, double h, double expected) {
            const Basic structure(type, 2.0, 0.3, range, range);
            const double value = structure.GetBasicModelValue(h, 1.1);
            const double both = sumOf({structure, structure}).GetModelValue(h, 1.1);
            return std::abs(value - expected) <= 4e-16 * expected && both == 2.0 * value;
        };
        QVERIFY(isNear(Basic::Nugget, 1, 0, 0));
        QVERIFY(isNear(Basic::Nugget, 1, 1e-300, 2));
        QVERIFY(isNear(Basic::Nugget, 0, 0, 2)); // any type with range 0
        QVERIFY(isNear(Basic::Power, 0, 4, 2));
        QVERIFY(isNear(Basic::Spherical, 4, 2, 2 * 0.6875));
        QVERIFY(isNear(Basic::Spherical, 4, 4, 2));
        QVERIFY(isNear(Basic::Spherical, 4, 40, 2));
        QVERIFY(isNear(Basic::Exponential, 3, 1, 2 * (1 - std::exp(-1.0))));
        QVERIFY(isNear(Basic::Gaussian, 2, 1, 2 * (1 - std::exp(-0.75))));
        QVERIFY(isNear(Basic::Power, 0.5, 4, 4));
        QVERIFY(isNear(Basic::Cubic, 2, 1, 2 * (1.75 - 8.75 / 8 + 3.5 / 32 - 0.75 / 128)));
        QVERIFY(isNear(Basic::Cubic, 2, 2, 2));
    }

    void theRangeTurnsWithTheDirection()
    {
        // The value of a power structure with sill 1 at lag 10 tells its range: 10^r.
        const Basic structure(Basic::Power, 1.0, 0.7, 3.0, 1.5);
        const auto range = [&](double theta) {
            return std::log10(structure.GetBasicModelValue(10.0, theta));
        };
        QCOMPARE(range(0.7), 1.5);
        QCOMPARE(range(0.7 + kHalfPi), 3.0);
        QCOMPARE(range(0.7 + kHalfPi / 2), std::sqrt(9.0 * 2.25 / (2.25 + 6.75 * 0.5)));
    }

    void epsilonRanges()
    {
        const auto isNear = [](Basic::ModelType type, double range, double epsilon,
                               double expected) {
            const Basic structure(type, 2.0, 0.3, 77.0, range); // the major range plays no part
            const double found = structure.GetEpsilonRange(epsilon);
            return found == expected || std::abs(found - expected) < 1e-4;
        };
        QVERIFY(isNear(Basic::Nugget, 3, 1e-6, 0));
        QVERIFY(isNear(Basic::Power, 3, 1e-6, HUGE_VAL));
        QVERIFY(isNear(Basic::Exponential, 3, 1e-6, 13.815511));
        QVERIFY(isNear(Basic::Gaussian, 2, 1e-6, std::sqrt(4.0 * 13.815511 / 3.0)));
        // Roots found by bisection.
        QVERIFY(isNear(Basic::Spherical, 10, 0.05, 8.114013519));
        QVERIFY(isNear(Basic::Cubic, 10, 1e-4, 9.406153924));
        QVERIFY(isNear(Basic::Cubic, 10, 0.05, 10)); // the first step leaves the range
        QVERIFY(isNear(Basic::Spherical, 0, 0.05, 0));
    }

    void aPowerStructureLeavesNoSillAndNoRange()
    {
        const Basic nugget(Basic::Nugget, 1.0, 0.0, 1.0, 1.0);
        const Basic exponential(Basic::Exponential, 3.0, 0.0, 3.0, 3.0);
        const Basic power(Basic::Power, 2.0, 0.0, 0.5, 0.5);
        double range = 5.0;
        QVERIFY(sumOf({nugget, exponential}).GetEpsilonRange(2e-6, range));
        QCOMPARE(range, exponential.GetEpsilonRange(1e-6)); // shared out over two structures
        QCOMPARE(sumOf({nugget, exponential}).GetSill(), 4.0);
        for (const auto &model : {sumOf({power, nugget}), sumOf({nugget, exponential, power})}) {
            QVERIFY(!model.GetEpsilonRange(1e-6, range));
            QCOMPARE(range, HUGE_VAL);
            QCOMPARE(model.GetSill(), -1.0);
        }
        QVERIFY(VariogramModelAtT().GetEpsilonRange(1e-6, range));
        QCOMPARE(range, 0.0);
        for (const int type : {-1, 6}) {
            const InCase inType(type);
            const Basic unknown(static_cast<Basic::ModelType>(type), 1.0, 0.0, 1.0, 1.0);
            const QString text("Invalid variogram model type");
            QCOMPARE(raisedText([&] { unknown.GetBasicModelValue(1.0, 0.0); }), text);
            QCOMPARE(raisedText([&] { unknown.GetEpsilonRange(0.1); }), text);
        }
    }

    void valuesHoldOnTheirIntervalsOnly()
    {
        const VariogramModel model = fullModel();
        double value = 99.0;
        QVERIFY(!model.GetCentroidModelValue(0, 4.0, 0.0, value));
        QVERIFY(!model.GetCentroidModelValue(9, 4.0, 0.0, value));
        QCOMPARE(value, 99.0);
        QVERIFY(model.GetCentroidModelValue(5, 4.0, 0.0, value)); // [1, 5) ends before 5
        QCOMPARE(value, 4.0);
        QVERIFY(model.GetDeconvolutionModelValue(5, 2.0, 0.0, value));
        QCOMPARE(value, 1.0 - std::exp(-3.0));

        VariogramModel open;
        open.centroidModels[TimeStamp(1, 3, false, false)] = sumOf({{Basic::Nugget, 1, 0, 2, 2}});
        QVERIFY(open.GetCentroidModelValue(2, 1.0, 0.0, value));
        QVERIFY(!open.GetCentroidModelValue(3, 1.0, 0.0, value));
    }

    void streamsKeepEveryField()
    {
        dataInterfaceVersionLoading = 400021;
        const VariogramModel model = fullModel();
        const QByteArray bytes = streamed(model);
        VariogramModel read;
        QVERIFY(isRead(bytes, read));
        QCOMPARE(streamed(read), bytes);
        QCOMPARE(read.weightsDataset, model.weightsDataset);
        QVERIFY(read.centroidModels == model.centroidModels);
        QVERIFY(read.deconvolutionModels == model.deconvolutionModels);
        QVERIFY(read.empiricalResults == model.empiricalResults);
        QVERIFY(read.fit == model.fit);
        QCOMPARE(readableCut<VariogramModel>(bytes), -1);
    }

    void fieldsLieInTheStreamInOrder()
    {
        VariogramModel model(QStringLiteral("m"), DataId(1), DataId(2), 3, DataId(4), 5, 21, 22,
                             DataId(24), 25, 23);
        model.id = 6;
        const QByteArray unset("bff0000000000000");
        const QByteArray none("ffffffff");
        const QByteArray golden = QByteArray::fromHex(
            "00000002006d 00000006 00000000 00000000" // name, id, the two versions
            "00000000 00000000 00000000"              // no models, no empirical results
            "00000001 00000004 00000005 00000002 00000003"
            + none + none + "00000001" + unset.repeated(5) + "010101" + none + none + unset + "0001"
            + unset.repeated(3) + none + "0101 00000015 00000016 00000017 00000018 00000019 0101");
        QCOMPARE(streamed(model).toHex(), golden.toHex());

        // Of two intervals the later one is written first.
        const QByteArray bytes = streamed(fullModel());
        const QByteArray later = streamed(stamp("[5, 8]"));
        const QByteArray earlier = streamed(stamp("[1, 5)"));
        QVERIFY(bytes.indexOf(later) > 0);
        QVERIFY(bytes.indexOf(later) < bytes.indexOf(earlier));
    }

    void oldStreamsLackTheTwoVersions()
    {
        const VariogramModel model = fullModel();
        const QByteArray bytes = streamed(model);
        const int versions = 4 + 2 * model.name.size() + 4; // after the name and the id
        const QByteArray oldest = bytes.left(versions) + bytes.mid(versions + 8);
        const QByteArray older = bytes.left(versions) + bytes.mid(versions + 4);
        const auto readAt = [](int version, const QByteArray &image, VariogramModel &read) {
            const LoadingVersion loading(version);
            return isRead(image, read);
        };
        VariogramModel read = model;
        QVERIFY(readAt(160001, oldest, read));
        QCOMPARE(read.modelVersion, 0);
        QCOMPARE(read.parameterSet, 0);
        QVERIFY(readAt(160002, older, read));
        QVERIFY(readAt(170004, older, read));
        QCOMPARE(read.modelVersion, 0);
        QCOMPARE(read.parameterSet, model.parameterSet);
        QVERIFY(readAt(170005, bytes, read));
        QCOMPARE(read.modelVersion, model.modelVersion);
        QVERIFY(read.fit == model.fit);
    }
};

QTEST_GUILESS_MAIN(TestVariogramModel)
#include "tst_VariogramModel.moc"
