// SPDX-License-Identifier: MIT
// A foreign host: derives from every class that may be derived from, builds a project through the
// flat functions and catches a failure.
#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <cstdio>
#include "hostClasses.h"

namespace {

int failures = 0;

void check(bool holds, const char *what)
{
    if (!holds) {
        std::printf("%s\n", what);
        ++failures;
    }
}

int makeWells()
{
    check(VORN_StartNewVectorGeography(QRectF(0, 0, 10, 10), 0, 10, -1), "start a geography");
    for (int i = 0; i < 3; ++i) {
        const int chain = VORN_CreateNewObjectChain();
        check(VORN_AddPointToChain(static_cast<unsigned>(chain), QPointF(i, i),
                                   Interval{0, 10, true, true}),
              "add a point");
    }
    return VORN_FinishVectorGeography("wells", "", TF_Integer);
}

void values(int wells)
{
    const int level = VORN_NewVectorDataset(wells, "level", TimeSlice, DecimalType, 1, "");
    const QVector<double> given{1.5, 2.5, 3.5};
    double mean = 0;
    check(VORN_AddDataValues(level, 0, Interval{1, 2, true, true}, given, QSet<int>{1}, true, true)
              && VORN_NewDatasetCreated(level) && VORN_GetMean(level, 0, 1, mean) && mean == 2.5,
          "the mean of a slice");
    const int visited = datainterface::visitElement(DecimalType, [level](auto element) {
        QVector<datainterface::ElementOf<decltype(element)>> found;
        QSet<int> missing;
        VORN_GetDataValues(level, 0, 1, found, missing);
        return found.size() - missing.size();
    });
    check(visited == 2, "values by the visitor of types");
    const VORN_ConstDataContainer container(level, 1, 0, false);
    VORN_MissingValueChecker holes = container;
    check(holes.checkId(1) && !holes.checkId(0), "the holes of a container");
    const VORN_MissingData none = VORN_GetGeographyProperties(wells);
    check(none.isValid() && none.noneMissing(), "the form of missing data of a geography");

    auto *points = static_cast<MVectorData *>(static_cast<MGeoData *>(VORN_GetGeography(wells)));
    const MGeoData &constant = *points;
    check(constant.GetBoundingRect().xMax == 2, "the box of a constant geography");
    const QMap<double, int> *counts = points->GetVectorDataSource()->GetDecimalFrequencies(level);
    check(*counts == QMap<double, int>{{1.5, 1}, {3.5, 1}}, "the counts of decimals");
    MVectorDataset &dataset = *points->GetVectorDataSource()->GetVectorDataset(level);
    check(dataset.GetTimeSliceDecimalData(0)->size() == 1, "the slices of a realization");

    points->AddAttributes(new Flags(3));
    View view;
    view.SetAttributes(points->GetAttributes(0));
    points->GetAttributes(0)->AddAttribute();
    points->GetAttributes(0)->AddOwner(&view); // counted once
    points->GetAttributes(0)->SetAttribute(0, 1, true);
    check(view.changes == QSet<unsigned int>{1}, "a view hears of a change");

    const int set =
        VORN_CreateNearestNeighborWeightSet(wells, "near", "", 1, ConstantWeight, false, 1, 1);
    QVector<neighborDatum> list;
    check(points->GetSpatialWeightSet(set)->GetSpatialWeights(0u, 1, list, none, false)
              && list.size() == 1,
          "the list of a weight set");
    const VariogramModelProps props = VORN_GenerateVariogramModel(
        "model", level, Interval{1, 2, true, true}, 3, level, 5, false, 0, false, false);
    check(props.estimator == 3, "the estimator of a model");
}

void grids()
{
    const int land = VORN_CreateNewRasterGeography("land", 2, 3, QRectF(0, 0, 3, 2),
                                                   Interval{0, 10, true, true}, TF_Integer, "", "");
    const int height = VORN_NewRasterDataset(land, "height", RasterDecimalType, 1, 64, "");
    check(VORN_AddRasterValues(height, 0, Interval{0, 10, true, true},
                               QVector<double>{0, 1, 2, 3, 4, 5}, -1.0, true, true),
          "add a grid");
    const Observation own(Band(3, 2, RasterDecimalType, 64));
    {
        const HeldGrid hold(own);
        check(own.cells<double>() && own.checkOuts == 1, "a grid held for a scope");
    }
    RasterDataset free(static_cast<MGeoData *>(VORN_GetGeography(land))->GetDataSource(), 1,
                       RasterDecimalType, "free", "", 0, 64);
    check(free.GetDoubleFrequencies()->isEmpty(), "a raster dataset of the host's");
    GridFlags flags(3, 2);
    flags.AddAttribute();
    flags.SetAttributeRect(0, QRect(0, 0, 2, 1), true);
    check(flags.GetStateCount(0, true) == 2, "flags of cells");
}

void ownClasses()
{
    Source source;
    const MDataSource &constantSource = source;
    check(constantSource.GetDatasetIds() == QList<DataId>{DataId(7 << 16)},
          "a constant source asks the host's override");
    Geography geography;
    const MGeoData &constant = geography;
    check(constant.GetBoundingRect().xMax == 4, "a constant geography asks the host's override");
    Source owner;
    Dataset dataset(&owner);
    check(dataset.GetValue(0, 0, 0).toDouble() == 1.5, "a dataset of the host's");
    VectorDataset vector(&owner, MVectorDataset::TimeSlice, 1, DecimalType, "v", "", 1, 2);
    check(vector.Resize(3) && vector.GetObjectCount() == 3, "a vector dataset of the host's");
    MVectorDataRealization realization;
    realization.integerSlices.insert(TimeStamp(1), new TimeSliceData<int>({1, 2}, {}));
    realization.decimalSeries.insert(0, new TimeSeriesData<double>(QMap<TimeStamp, double>{}));
    check(realization.integerSlices.first()->GetCount() == 2, "a slice of the host's");
    qDeleteAll(realization.integerSlices);
    qDeleteAll(realization.decimalSeries);
    Weights weights(QStringLiteral("own"), &geography, true, false);
    check(weights.IsCustom() && Identity(3).nIndices() == 3 && Metadata().getTags().isEmpty()
              && Models().GetNonConVariogramModelIds().isEmpty(),
          "the other classes");
    QVector<ptTreeQueryResult> hits;
    check(Tree().GetPointsInRect(QRectF(0, 0, 1, 1), {}, hits) == !hits.isEmpty(), "an empty tree");
}

void plainValues()
{
    const Interval interval{1, 5, true, false};
    const TimeStamp stamp(interval);
    check(stamp == interval && interval == stamp && !(stamp < interval) && TimeStamp(0) < interval
              && interval < TimeStamp(5),
          "stamps and intervals compare");
    check(DataId() == -1 && DataId() == -1L && DataId(3) != 4 && DataId(3) < 4L && DataId(3) == 3u,
          "ids and numbers compare");
    const long many = 3000000000L;
    check(MDatum(many).integerValue() == many && MDatum(7UL) == MDatum(7), "long values");
    const QMap<MDatum, int> keys{{MDatum(2.5), 1}, {MDatum("a"), 2}};
    check(keys.size() == 2 && datum(2).type == 1, "variant values");
    enum { Histogram, BoxPlot, ScatterPlot, TimePlot }; // names that stay the host's
    check(TimePlot == 3, "names of the host's");
    vorn_matrix inverse;
    const vorn_matrix twice = vorn_matrix(2, 2, 0.0) + vorn_matrix(2, 2, 0.0);
    check(!VORN_InvertMatrix(twice, inverse), "a singular matrix");
}

void hostCalls(const QString &directory, Host &host)
{
    check(VORN_ShowMethod(1, "", {}) == 5 && VORN_DisplayHistogram(0, 0, "") == GT_Histogram,
          "the host is asked");
    VORN_AddToLog("%d notes", 2);
    check(host.log == "2 notes", "the host's log");
    check(!VORN_Progress::UsingProgressBar(), "no bar without a window");
    bool caught = false;
    try {
        VORN_Progress::PopProgressBarSection();
    } catch (const vorn_error &error) {
        const std::string &stack = error.stack;
        caught = !stack.empty() && error.what()[0] == '"';
    }
    check(caught, "a failure is caught with its stack");
    QByteArray bytes;
    const int block = SaveDataBlock("block");
    check(ReadDataBlock(block, bytes) && bytes == "block" && DeleteDataBlock(block), "a block");
    const QString file = QDir(directory).filePath(QStringLiteral("consumer.vorn"));
    check(VORN_SaveProject(file) && VORN_LoadProject(file) && VORN_GetGeographyIds().size() == 2,
          "a project goes out and comes back");
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QTemporaryDir scratch;
    Host host;
    InitializeCInterface(&host);
    InitializeDataManager(scratch.path(), 1 << 20);
    values(makeWells());
    grids();
    ownClasses();
    plainValues();
    hostCalls(scratch.path(), host);
    VORN_UnloadProject();
    ClearDataManager();
    std::puts(failures == 0 ? "good" : "bad");
    return failures == 0 ? 0 : 1;
}
