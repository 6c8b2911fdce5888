// SPDX-License-Identifier: MIT
#include "desk/views/graphWindow.h"
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <iterator>
#include <qwt_plot.h>
#include <qwt_plot_marker.h>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/geographyTimes.h"
#include "core/project/text.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "desk/views/boxPlotView.h"
#include "desk/views/histogramView.h"
#include "desk/views/moranScatterView.h"
#include "desk/views/scatterView.h"
#include "desk/views/timePlotView.h"

namespace meridor {
namespace {

constexpr int kLeastWithChoices = 16; ///< height, in those of the font
constexpr int kLeastChoice = 9;       ///< width, in heights of the font
constexpr int kLeastWithLabels = 22;  ///< width, the same

constexpr struct {
    GraphKind kind;
    const char *name;
} kKinds[] = {{GraphKind::Scatter, "scatter"},
              {GraphKind::BoxPlot, "boxes"},
              {GraphKind::Histogram, "histogram"},
              {GraphKind::TimePlot, "time"},
              {GraphKind::Moran, "moran"}};

QVector<int> weightSetsOf(int geography)
{
    const MGeoData *const data = geographyOf(geography);
    return data ? data->GetSpatialWeightsIds().toVector() : QVector<int>();
}

/// Whether datasets can be shown together; else `why` tells why not.
bool canShow(GraphKind kind, const QVector<int> &datasets, QString &why)
{
    const int wanted = kind == GraphKind::Scatter ? 2 : 1;
    if (datasets.size() != wanted)
        why = counted(wanted, GraphWindow::tr("This graph is of %1 dataset"),
                      GraphWindow::tr("This graph is of %1 datasets"));
    for (const int dataset : datasets) {
        if (!datasetOf(dataset))
            why = GraphWindow::tr("A dataset of this graph does not exist");
        else if (VORN_GetGeographyId(dataset) != VORN_GetGeographyId(datasets.first()))
            why = GraphWindow::tr("%1 and %2 belong to different geographies")
                      .arg(datasetName(datasets.first()), datasetName(dataset));
    }
    return why.isEmpty();
}

QRectF rangeOf(const QJsonArray &numbers)
{
    return QRectF(QPointF(numbers.at(0).toDouble(), numbers.at(1).toDouble()),
                  QPointF(numbers.at(2).toDouble(), numbers.at(3).toDouble()));
}

} // namespace

QString graphKindName(GraphKind kind)
{
    for (const auto &entry : kKinds)
        if (entry.kind == kind)
            return QLatin1String(entry.name);
    return QString();
}

bool graphKindOf(const QString &name, GraphKind &kind)
{
    for (const auto &entry : kKinds) {
        if (name == QLatin1String(entry.name)) {
            kind = entry.kind;
            return true;
        }
    }
    return false;
}

GraphWindow::GraphWindow(Workspace &workspace, GraphKind kind, const QVector<int> &datasets,
                         int weights, QWidget *parent)
    : ViewWindow(workspace, {Tool::Rectangle, Tool::Lasso, Tool::Move}, parent),
      mKind(kind),
      mHolder(new QWidget(this))
{
    setObjectName(QStringLiteral("graphWindow"));
    resize(fontMetrics().height() * 36, fontMetrics().height() * 26);
    auto *const layout = new QVBoxLayout(mHolder);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    setContent(mHolder);
    makeChoices();
    connect(this, &ViewWindow::toolChanged, this, [this] {
        if (graph())
            graph()->setTool(tool());
    });
    // Datasets and sets are gone, and may be asked for, when the work on them has ended.
    const auto refill = [this] {
        mMustFill = true;
        fillChoices();
    };
    connect(&workspace, &Workspace::datasetsAdded, this, refill);
    connect(&workspace, &Workspace::datasetsDying, this, [this] { mMustFill = true; });
    connect(&workspace, &Workspace::weightSetsChanged, this, refill);
    connect(&workspace, &Workspace::datasetRenamed, this, [this, refill] {
        refill();
        Q_EMIT titleChanged(title());
    });
    connect(&workspace, &Workspace::idle, this, [this] { fillChoices(); });
    show(datasets, weights);
}

GraphView *GraphWindow::graph() const
{
    return static_cast<GraphView *>(views().value(0));
}

QString GraphWindow::title() const
{
    return !mTitle.isEmpty() ? mTitle : graph() ? withRealization(graph()->title()) : QString();
}

void GraphWindow::setTitle(const QString &title)
{
    mTitle = title;
    Q_EMIT titleChanged(this->title());
}

GraphView *GraphWindow::newView() const
{
    switch (mKind) {
    case GraphKind::Scatter:
        return new ScatterView(workspace(), mDatasets[0], mDatasets[1]);
    case GraphKind::BoxPlot:
        return new BoxPlotView(workspace(), mDatasets[0]);
    case GraphKind::Histogram:
        return new HistogramView(workspace(), mDatasets[0]);
    case GraphKind::TimePlot:
        return new TimePlotView(workspace(), mDatasets[0]);
    case GraphKind::Moran:
        return new MoranScatterView(workspace(), mDatasets[0], mWeights);
    }
    return nullptr;
}

bool GraphWindow::show(const QVector<int> &datasets, int weights)
{
    QString why;
    if (!canShow(mKind, datasets, why)) {
        workspace().tell(why + QLatin1Char('.'), true);
        return false;
    }
    const int geography = VORN_GetGeographyId(datasets.first());
    mDatasets = datasets;
    const QVector<int> sets = weightSetsOf(geography);
    mWeights = sets.contains(weights)    ? weights
               : sets.contains(mWeights) ? mWeights
               : sets.contains(workspace().shownWeights(geography))
                   ? workspace().shownWeights(geography)
                   : sets.value(0, -1);
    GraphView *const before = graph();
    GraphView *const view = newView();
    view->setTool(tool());
    static_cast<QVBoxLayout *>(mHolder->layout())->addWidget(view->plot(), 1);
    mHolder->setFocusProxy(view->widget());
    connect(view, &GraphView::pointedAt, this, [this](const QString &text) { setReadout(text); });
    addView(view);
    if (before)
        removeView(before);
    if (!mColors.isEmpty())
        setClasses(mLimits, mColors);
    if (mMapClasses && mMapClasses->isChecked())
        static_cast<HistogramView *>(view)->setFollowsMap(true);
    mMustFill = true;
    fillChoices();
    Q_EMIT titleChanged(title());
    return true;
}

void GraphWindow::setClasses(const QVector<double> &limits, const QVector<QColor> &colors)
{
    mLimits = limits;
    mColors = colors;
    if (auto *const bars = qobject_cast<HistogramView *>(graph()))
        bars->setClasses(limits, colors);
    else if (auto *const points = qobject_cast<ScatterView *>(graph()))
        points->setClasses(limits, colors);
}

void GraphWindow::viewLeaves(View *)
{
    setReadout(QString());
}

void GraphWindow::fitParts()
{
    ViewWindow::fitParts();
    const int em = fontMetrics().height();
    const int choices = mChoices.size() + (mWeightChoice ? 1 : 0);
    mChoiceRow->parentWidget()->setVisible(height() >= kLeastWithChoices * em
                                           && width() >= choices * kLeastChoice * em);
    for (QLabel *const label : mChoiceRow->parentWidget()->findChildren<QLabel *>())
        label->setVisible(width() >= kLeastWithLabels * em);
}

// Choices

QComboBox *GraphWindow::addChoice(const char *name, const QString &label)
{
    auto *const text = new QLabel(label, this);
    auto *const choice = new QComboBox(this);
    text->setBuddy(choice);
    choice->setObjectName(QLatin1String(name));
    choice->setAccessibleName(label);
    choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    choice->setMinimumContentsLength(10);
    mChoiceRow->addWidget(text);
    mChoiceRow->addWidget(choice, 1);
    connect(choice, QOverload<int>::of(&QComboBox::activated), this, [this] { choose(); });
    return choice;
}

void GraphWindow::makeChoices()
{
    auto *const row = new QWidget(mHolder);
    mChoiceRow = new QHBoxLayout(row);
    const int margin = fontMetrics().height() / 4;
    mChoiceRow->setContentsMargins(2 * margin, margin, 2 * margin, margin);
    mHolder->layout()->addWidget(row);
    if (mKind == GraphKind::Scatter)
        mChoices = {addChoice("xDataset", tr("Across")), addChoice("yDataset", tr("Up"))};
    else
        mChoices = {addChoice("dataset", tr("Dataset"))};
    if (mKind == GraphKind::Moran)
        mWeightChoice = addChoice("weights", tr("Weight set"));
    if (mKind == GraphKind::Histogram) {
        mMapClasses = new QCheckBox(tr("Map classes"), this);
        mMapClasses->setObjectName(QStringLiteral("mapClasses"));
        mMapClasses->setToolTip(tr("Limits are dragged here and in the map's form of classes"));
        mChoiceRow->addWidget(mMapClasses);
        connect(mMapClasses, &QCheckBox::toggled, this, [this](bool follows) {
            if (auto *const bars = qobject_cast<HistogramView *>(graph()))
                bars->setFollowsMap(follows);
        });
    }
    mChoiceRow->addStretch(1);
}

void GraphWindow::fillChoices()
{
    if (!mMustFill || !graph() || workspace().isBusy())
        return;
    mMustFill = false;
    const int geography = graph()->geography();
    for (int i = 0; i < mChoices.size(); ++i) {
        const QSignalBlocker quiet(mChoices[i]);
        mChoices[i]->clear();
        for (const int dataset : datasetIds(geography))
            if (datasetOf(dataset)->IsNumeric() || dataset == mDatasets[i])
                mChoices[i]->addItem(datasetName(dataset), dataset);
        mChoices[i]->setCurrentIndex(mChoices[i]->findData(mDatasets[i]));
    }
    if (!mWeightChoice)
        return;
    const QSignalBlocker quiet(mWeightChoice);
    mWeightChoice->clear();
    for (const int set : weightSetsOf(geography))
        mWeightChoice->addItem(weightSetOf(set).GetName(), set);
    mWeightChoice->setCurrentIndex(mWeightChoice->findData(mWeights));
}

void GraphWindow::choose()
{
    QVector<int> datasets;
    for (const QComboBox *const choice : std::as_const(mChoices))
        datasets.append(choice->currentData().toInt());
    show(datasets, mWeightChoice ? mWeightChoice->currentData().toInt() : -1);
}

QString GraphWindow::refusal(int dataset) const
{
    if (!datasetOf(dataset))
        return tr("There is no such dataset.");
    if (!datasetOf(dataset)->IsNumeric())
        return tr("%1 holds texts, and this graph shows numbers.").arg(datasetName(dataset));
    QString why;
    if (mKind == GraphKind::Scatter && !canShow(mKind, {mDatasets.first(), dataset}, why))
        return why + QLatin1Char('.');
    return QString();
}

void GraphWindow::addDataset(int dataset)
{
    show(mKind == GraphKind::Scatter ? QVector<int>{mDatasets.first(), dataset}
                                     : QVector<int>{dataset});
}

// State

QJsonObject GraphWindow::state() const
{
    if (!graph())
        return {};
    QJsonArray names;
    for (const int dataset : mDatasets)
        names.append(datasetName(dataset));
    QJsonObject state = ViewWindow::state();
    state.insert(QStringLiteral("graph"), graphKindName(mKind));
    state.insert(QStringLiteral("geography"), geographyName(graph()->geography()));
    state.insert(QStringLiteral("datasets"), names);
    if (mKind == GraphKind::Moran && mWeights >= 0)
        state.insert(QStringLiteral("weights"), weightSetOf(mWeights).GetName());
    if (!mTitle.isEmpty())
        state.insert(QStringLiteral("title"), mTitle);
    if (mMapClasses)
        state.insert(QStringLiteral("mapClasses"), mMapClasses->isChecked());
    if (graph()->isZoomed()) {
        const QRectF range = graph()->shownRange();
        state.insert(QStringLiteral("range"),
                     QJsonArray{range.left(), range.top(), range.right(), range.bottom()});
    }
    return state;
}

void GraphWindow::restore(const QJsonObject &state)
{
    const bool done = workspace().look([&] {
        const int geography = findGeography(state.value(QStringLiteral("geography")).toString());
        QVector<int> datasets;
        for (const QJsonValue &name : state.value(QStringLiteral("datasets")).toArray())
            datasets.append(findDataset(geography, name.toString()));
        int weights = -1;
        for (const int set : weightSetsOf(geography))
            if (weightSetOf(set).GetName() == state.value(QStringLiteral("weights")).toString())
                weights = set;
        if (datasets != mDatasets || weights != mWeights)
            show(datasets, weights);
    });
    if (!done)
        return;
    ViewWindow::restore(state);
    setTitle(state.value(QStringLiteral("title")).toString());
    if (mMapClasses)
        mMapClasses->setChecked(state.value(QStringLiteral("mapClasses")).toBool());
    const QJsonArray range = state.value(QStringLiteral("range")).toArray();
    if (graph() && range.size() == 4)
        graph()->setShownRange(rangeOf(range));
}

QStringList GraphWindow::commandLine(const QString &picture) const
{
    QStringList line;
    if (graph() && graph()->trouble().isEmpty())
        workspace().look([&] {
            line = graph()->commandLine(picture);
            if (!line.isEmpty())
                line += sizeOptions(picture) + realizationOption();
        });
    return line;
}

// Factories

GraphWindow *openGraph(Workspace &workspace, GraphKind kind, const QVector<int> &datasets,
                       int weights)
{
    QString why;
    if (!canShow(kind, datasets, why)) {
        workspace.tell(why + QLatin1Char('.'), true);
        return nullptr;
    }
    return new GraphWindow(workspace, kind, datasets, weights);
}

GraphWindow *openGraph(Workspace &workspace, GraphTypes type, const QVector<int> &datasets,
                       qint64 t, const QString &title, const ColorSchemeInfo &colors,
                       const QPointF *points, const QRectF *bounds)
{
    const GraphKind kind = type == GT_BoxPlot     ? GraphKind::BoxPlot
                           : type == GT_Histogram ? GraphKind::Histogram
                           : type == GT_TimePlot  ? GraphKind::TimePlot
                                                  : GraphKind::Scatter;
    GraphWindow *const window = openGraph(workspace, kind, datasets);
    if (!window)
        return nullptr;
    window->setTitle(title);
    if (!colors.classLimits.isEmpty()) {
        QVector<QColor> classColors;
        std::transform(colors.classColors.begin(), colors.classColors.end(),
                       std::back_inserter(classColors),
                       [](quint32 color) { return QColor::fromRgb(color | 0xff000000U); });
        window->setClasses(colors.classLimits, classColors);
    }
    GraphView &graph = *window->graph();
    if (points && kind == GraphKind::Scatter) {
        auto *const marker = new QwtPlotMarker();
        marker->setLineStyle(QwtPlotMarker::Cross);
        marker->setLinePen(graph.plot()->palette().color(QPalette::Text), 0, Qt::DashLine);
        marker->setValue(*points);
        marker->setZ(26);
        marker->attach(graph.plot());
    }
    if (kind != GraphKind::TimePlot && workspace.timeOf(graph.geography()) != t) {
        const TimeStamp span = timeBoundsOf(graph.geography());
        if (t >= span.startTime && t <= span.endTime)
            graph.goTo(t);
    }
    if (bounds)
        graph.setShownRange(bounds->normalized());
    return window;
}

} // namespace meridor
