// SPDX-License-Identifier: MIT
#include "desk/dialogs/modelDialog.h"
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include "core/geostatistics/covariance.h"
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"
#include "desk/methods/variogramPlan.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

constexpr double kDegree = 3.14159265358979323846 / 180;
constexpr int kDelay = 300; // milliseconds after the last change
constexpr unsigned int kMostObjects = 5000;
constexpr int kMostStructures = 3; // that can be fitted

enum Column { TypeColumn, SillColumn, RangeColumn, MajorColumn, DirectionColumn, kColumns };

const VariogramBasicModel::ModelType kTypes[] = {
    VariogramBasicModel::Spherical, VariogramBasicModel::Exponential, VariogramBasicModel::Gaussian,
    VariogramBasicModel::Cubic, VariogramBasicModel::Power};

/// Types are chosen from a list, numbers are typed.
class StructureDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override
    {
        if (index.column() != TypeColumn) {
            QWidget *const editor = QStyledItemDelegate::createEditor(parent, option, index);
            editor->setAccessibleName(
                index.model()->headerData(index.column(), Qt::Horizontal).toString());
            return editor;
        }
        auto *const types = new QComboBox(parent);
        types->setAccessibleName(ModelDialog::tr("Type of the structure"));
        for (const auto type : kTypes)
            types->addItem(QLatin1String(structureName(type)));
        return types;
    }
    void setEditorData(QWidget *editor, const QModelIndex &index) const override
    {
        if (auto *const types = qobject_cast<QComboBox *>(editor))
            types->setCurrentText(index.data().toString());
        else
            QStyledItemDelegate::setEditorData(editor, index);
    }
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override
    {
        if (const auto *const types = qobject_cast<const QComboBox *>(editor))
            model->setData(index, types->currentText());
        else
            QStyledItemDelegate::setModelData(editor, model, index);
    }
};

/// An empty text is the number that is absent.
double numberOf(const QString &text, const QString &what, double absent)
{
    if (text.trimmed().isEmpty() && !std::isnan(absent))
        return absent;
    bool isNumber = false;
    const double number = QLocale::c().toDouble(text.trimmed(), &isNumber);
    if (!isNumber || !std::isfinite(number))
        fail(text.trimmed().isEmpty() ? ModelDialog::tr("%1 is empty").arg(what)
                                      : ModelDialog::tr("%1: %2 is no number").arg(what, text));
    return number;
}

/// To six digits: what a fit tells is not more exact than that, and what is stored is what is seen.
VariogramModelAtT rounded(VariogramModelAtT model)
{
    const auto round = [](double &value) { value = QString::number(value, 'g', 6).toDouble(); };
    for (VariogramBasicModel &structure : model.structures) {
        round(structure.sill);
        round(structure.minorRange);
        round(structure.majorRange);
        double degrees = structure.angle / kDegree;
        round(degrees);
        structure.angle = degrees * kDegree;
    }
    return model;
}

/// The separation to which a model without pairs is drawn.
double reachOf(const VariogramModelAtT &model)
{
    double reach = 0;
    for (const VariogramBasicModel &structure : model.structures)
        if (structure.type != VariogramBasicModel::Nugget
            && structure.type != VariogramBasicModel::Power)
            reach = std::max(reach, structure.majorRange);
    return reach > 0 ? 1.5 * reach : 1;
}

} // namespace

ModelGraph::ModelGraph(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("modelGraph"));
    setAccessibleName(ModelDialog::tr("Variogram"));
    setMinimumSize(fontMetrics().averageCharWidth() * 40, fontMetrics().height() * 12);
}

QSize ModelGraph::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 70, fontMetrics().height() * 24};
}

void ModelGraph::show(const Graph &graph)
{
    mGraph = graph;
    mText.clear();
    update();
}

void ModelGraph::showText(const QString &text)
{
    mText = text;
    update();
}

void ModelGraph::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!mText.isEmpty() || mGraph.series.isEmpty()) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, mText);
        return;
    }
    painter.fillRect(rect(), Qt::white);
    mGraph.size.pixels = size();
    drawGraph(painter, mGraph);
}

ModelDialog::ModelDialog(Workspace &workspace, const MethodRegister &methods, QWidget *parent)
    : QDialog(parent),
      mWorkspace(workspace),
      mMethods(methods),
      mScores(new QCheckBox(tr("Of n&ormal scores, for simulation"))),
      mReplace(new QCheckBox(tr("Re&place a model of this name"))),
      mGraph(new ModelGraph),
      mCommandLine(new QLineEdit),
      mTrouble(new QLabel)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("modelDialog"));
    setWindowTitle(tr("Variogram model"));
    auto *const form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    mDataset = addChoice(form, "modelDataset", tr("&Dataset"));
    mTime = addChoice(form, "modelTime", tr("&Time"));
    mEstimator = addChoice(form, "modelEstimator", tr("&Estimator"));
    for (const char *const name : {"classical", "robust"})
        mEstimator->addItem(QLatin1String(name), QLatin1String(name));
    mCutoff =
        addText(form, "modelCutoff", tr("&Largest separation"), tr("A third of the diagonal"));
    mWidth = addText(form, "modelWidth", tr("&Width of a class"),
                     tr("A fifteenth of the largest separation"));
    form->addRow(mScores);
    mNugget = addText(form, "modelNugget", tr("&Nugget"), QStringLiteral("0"));
    makeTable();
    form->addRow(mTable);
    auto *const add = new QPushButton(tr("&Add a structure"));
    auto *const remove = new QPushButton(tr("&Remove the structure"));
    auto *const fitting = new QPushButton(tr("&Fit"));
    add->setObjectName(QStringLiteral("addStructure"));
    remove->setObjectName(QStringLiteral("removeStructure"));
    fitting->setObjectName(QStringLiteral("fit"));
    fitting->setToolTip(tr("Fits the nugget and structures of these types to the pairs; without "
                           "structures the type that fits best"));
    auto *const row = new QHBoxLayout;
    for (QPushButton *const button : {add, remove, fitting}) {
        button->setAutoDefault(false);
        row->addWidget(button);
    }
    form->addRow(row);
    mName = addText(form, "modelName", tr("Na&me"), tr("Under which the model is stored"));
    form->addRow(mReplace);
    mScores->setObjectName(QStringLiteral("modelScores"));
    mReplace->setObjectName(QStringLiteral("modelReplace"));
    mCommandLine->setReadOnly(true);
    mCommandLine->setObjectName(QStringLiteral("command line"));
    mCommandLine->setAccessibleName(tr("The same as a command line"));
    mTrouble->setObjectName(QStringLiteral("report"));
    mTrouble->setAccessibleName(tr("Result"));
    mTrouble->setWordWrap(true);
    mTrouble->setTextFormat(Qt::PlainText);
    mTrouble->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    QPushButton *const saving = buttons->addButton(tr("&Save"), QDialogButtonBox::ApplyRole);
    saving->setObjectName(QStringLiteral("saveModel"));
    mNugget->setFocus();
    auto *const both = new QHBoxLayout;
    both->addLayout(form, 1);
    both->addWidget(mGraph, 1);
    auto *const column = new QVBoxLayout(this);
    column->addLayout(both, 1);
    column->addWidget(new QLabel(tr("The same as a command line:")));
    column->addWidget(mCommandLine);
    column->addWidget(mTrouble);
    column->addWidget(buttons);
    saving->setDefault(true); // of this dialog, to which it belongs now

    connect(add, &QPushButton::clicked, this, [this] {
        addRow({VariogramBasicModel::Spherical, 1, 0, 1, 1});
        mTable->setFocus(); // first, since it would close the editor of the type
        mTable->setCurrentCell(mTable->rowCount() - 1, TypeColumn);
        refresh();
    });
    connect(remove, &QPushButton::clicked, this, [this] {
        mTable->removeRow(mTable->currentRow());
        refresh();
    });
    connect(fitting, &QPushButton::clicked, this, &ModelDialog::fit);
    connect(saving, &QPushButton::clicked, this, &ModelDialog::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    connect(buttons, &QDialogButtonBox::helpRequested, this,
            [this] { Q_EMIT helpWanted(QStringLiteral("geostatistics.md#models")); });
    connect(mDataset, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        if (mIsFilling)
            return;
        fillTimes();
        changePairs();
    });
    for (QComboBox *const choice : {mTime, mEstimator})
        connect(choice, qOverload<int>(&QComboBox::currentIndexChanged), this,
                &ModelDialog::changePairs);
    for (QLineEdit *const text : {mCutoff, mWidth})
        connect(text, &QLineEdit::textChanged, this, &ModelDialog::changePairs);
    connect(mScores, &QCheckBox::toggled, this, &ModelDialog::changePairs);
    connect(mNugget, &QLineEdit::textChanged, this, &ModelDialog::refresh);
    connect(mName, &QLineEdit::textChanged, this, &ModelDialog::refresh);
    connect(mReplace, &QCheckBox::toggled, this, &ModelDialog::refresh);
    connect(mTable, &QTableWidget::itemChanged, this, &ModelDialog::refresh);

    mDelay.setSingleShot(true);
    mDelay.setInterval(kDelay);
    connect(&mDelay, &QTimer::timeout, this, [this] { count(false); });
    for (const auto signal :
         {&Workspace::geographyAdded, &Workspace::geographyRenamed, &Workspace::datasetRenamed})
        connect(&workspace, signal, this, &ModelDialog::fillDatasets);
    connect(&workspace, &Workspace::datasetsAdded, this, &ModelDialog::fillDatasets);
    connect(&workspace, &Workspace::datasetsChanged, this, &ModelDialog::changePairs);
    connect(&workspace, &Workspace::closing, this, &QDialog::close);
    connect(&workspace, &Workspace::geographyDying, this, [this](int geography) {
        closeIf(dataset() >= 0 && VORN_GetGeographyId(dataset()) == geography);
    });
    connect(&workspace, &Workspace::datasetsDying, this,
            [this](const QVector<int> &ids) { closeIf(ids.contains(dataset())); });
    fillDatasets();
}

QComboBox *ModelDialog::addChoice(QFormLayout *form, const char *name, const QString &label)
{
    auto *const choice = new QComboBox;
    choice->setObjectName(QLatin1String(name));
    choice->setAccessibleName(QString(label).remove(QLatin1Char('&')));
    choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    form->addRow(label, choice);
    return choice;
}

QLineEdit *ModelDialog::addText(QFormLayout *form, const char *name, const QString &label,
                                const QString &hint)
{
    auto *const text = new QLineEdit;
    text->setObjectName(QLatin1String(name));
    text->setAccessibleName(QString(label).remove(QLatin1Char('&')));
    text->setPlaceholderText(hint);
    form->addRow(label, text);
    return text;
}

void ModelDialog::makeTable()
{
    mTable = new QTableWidget(0, kColumns);
    mTable->setObjectName(QStringLiteral("structures"));
    mTable->setAccessibleName(tr("Structures"));
    mTable->setHorizontalHeaderLabels(
        {tr("Type"), tr("Sill"), tr("Range"), tr("Across"), tr("Degrees")});
    mTable->setToolTip(
        tr("The range of a power structure is its exponent. With a range across, the "
           "first range applies along the direction, degrees counter-clockwise from the x "
           "axis."));
    mTable->setItemDelegate(new StructureDelegate(mTable));
    mTable->setTabKeyNavigation(false); // to the next control; arrows move in the table
    mTable->setEditTriggers(QAbstractItemView::AllEditTriggers);
    mTable->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    mTable->horizontalHeader()->setMinimumSectionSize(fontMetrics().averageCharWidth() * 11);
    mTable->setMinimumSize(fontMetrics().averageCharWidth() * 64, fontMetrics().height() * 7);
}

void ModelDialog::fillDatasets()
{
    const QVariant before = mDataset->currentData();
    mIsFilling = true;
    mDataset->clear();
    mDataset->addItem(tr("none: a model of the project"), -1);
    for (const int geography : geographyIds())
        for (const int id : datasetIds(geography))
            if (datasetOf(id)->IsNumeric())
                mDataset->addItem(datasetWord(id), id);
    mDataset->setCurrentIndex(std::max(0, mDataset->findData(before)));
    mIsFilling = false;
    refresh();
}

void ModelDialog::fillTimes()
{
    mIsFilling = true;
    mTime->clear();
    const int id = dataset();
    if (hasTimes()) {
        const TimeAxis axis = axisOf(VORN_GetGeographyId(id));
        const qint64 shown = mWorkspace.timeOf(VORN_GetGeographyId(id));
        mTime->addItem(tr("the pairs of all times"), QString());
        mWorkspace.look([&] {
            for (const Interval &when : dataTimes(id)) {
                mTime->addItem(axis.show(when), axis.show(instantOf(when)));
                if (TimeStamp(when).contains(shown))
                    mTime->setCurrentIndex(mTime->count() - 1);
            }
        });
    }
    if (!hasTimes())
        mTime->addItem(id >= 0 ? tr("does not change") : tr("always"), QString());
    mTime->setEnabled(hasTimes());
    for (QWidget *const control :
         {static_cast<QWidget *>(mEstimator), static_cast<QWidget *>(mCutoff),
          static_cast<QWidget *>(mWidth), static_cast<QWidget *>(mScores),
          static_cast<QWidget *>(findChild<QPushButton *>(QStringLiteral("fit")))})
        control->setEnabled(id >= 0);
    mIsFilling = false;
}

void ModelDialog::addRow(const VariogramBasicModel &structure)
{
    const bool wasFilling = mIsFilling;
    mIsFilling = true;
    const int row = mTable->rowCount();
    mTable->insertRow(row);
    const bool isTurned = structure.majorRange != structure.minorRange;
    const QString texts[] = {QLatin1String(structureName(structure.type)),
                             exactNumber(structure.sill), exactNumber(structure.minorRange),
                             isTurned ? exactNumber(structure.majorRange) : QString(),
                             isTurned ? exactNumber(degreesOf(structure.angle)) : QString()};
    for (int column = 0; column < kColumns; ++column)
        mTable->setItem(row, column, new QTableWidgetItem(texts[column]));
    mIsFilling = wasFilling;
}

void ModelDialog::showStructures(const VariogramModelAtT &model)
{
    mIsFilling = true;
    mTable->setRowCount(0);
    double nugget = 0;
    for (const VariogramBasicModel &structure : model.structures) {
        if (structure.type == VariogramBasicModel::Nugget)
            nugget += structure.sill;
        else
            addRow(structure);
    }
    mNugget->setText(exactNumber(nugget));
    mIsFilling = false;
    refresh();
}

void ModelDialog::setDataset(int dataset)
{
    mDataset->setCurrentIndex(std::max(0, mDataset->findData(dataset)));
    fillTimes();
    if (mName->text().isEmpty() && dataset >= 0)
        mName->setText(datasetName(dataset));
    changePairs();
}

void ModelDialog::setModel(const VariogramModel &model)
{
    mName->setText(model.name);
    setDataset(model.dataset);
    const LagPlan lags = lagsOf(model);
    mIsFilling = true;
    mEstimator->setCurrentIndex(lags.estimator == Estimator::Robust ? 1 : 0);
    mCutoff->setText(lags.cutoff > 0 ? exactNumber(lags.cutoff) : QString());
    mWidth->setText(lags.width > 0 ? exactNumber(lags.width) : QString());
    mScores->setChecked(isOfScores(model) && dataset() >= 0);
    mReplace->setChecked(modelNames(dataset()).contains(model.name));
    mIsFilling = false;
    const int geography = dataset() < 0 ? -1 : VORN_GetGeographyId(dataset());
    if (model.centroidModels.size() > 1 && geography >= 0) {
        const qint64 shown = mWorkspace.timeOf(geography);
        for (auto at = model.centroidModels.begin(); at != model.centroidModels.end(); ++at)
            if (at.key().contains(shown))
                showStructures(*at);
    } else if (!model.centroidModels.isEmpty()) {
        if (!datasetOf(dataset()) || !datasetOf(dataset())->IsStatic())
            mTime->setCurrentIndex(0);
        showStructures(model.centroidModels.first());
    }
    if (lags.estimator == Estimator::Cross)
        tell(
            tr("This is the model of a cross variogram. Saved from here, it is one of this dataset "
               "alone."));
}

int ModelDialog::dataset() const
{
    const QVariant id = mDataset->currentData();
    return id.isValid() && datasetOf(id.toInt()) ? id.toInt() : -1;
}

VariogramModelAtT ModelDialog::structures() const
{
    VariogramModelAtT model;
    const double nugget = numberOf(mNugget->text(), tr("Nugget"), 0);
    if (nugget != 0 || mTable->rowCount() == 0)
        model.structures.append({VariogramBasicModel::Nugget, nugget, 0, 1, 1});
    for (int row = 0; row < mTable->rowCount(); ++row) {
        const auto number = [&](Column column, double absent) {
            const QTableWidgetItem *const item = mTable->item(row, column);
            return numberOf(item ? item->text() : QString(),
                            tr("Structure %1, %2")
                                .arg(row + 1)
                                .arg(mTable->horizontalHeaderItem(column)->text().toLower()),
                            absent);
        };
        const double range = number(RangeColumn, std::nan(""));
        model.structures.append({structureNamed(mTable->item(row, TypeColumn)->text()),
                                 number(SillColumn, std::nan("")),
                                 number(DirectionColumn, 0) * kDegree, number(MajorColumn, range),
                                 range});
        if (VariogramBasicModel &last = model.structures.last(); last.majorRange == range)
            last.angle = 0;
    }
    const Covariance checked(model);
    return model;
}

QVector<MethodParameter> ModelDialog::parameters() const
{
    const double cutoff = numberOf(mCutoff->text(), tr("Largest separation"), 0);
    const double width = numberOf(mWidth->text(), tr("Width of a class"), 0);
    const QString time = mTime->currentData().toString();
    const auto parameter = [](const char *name, const QVariant &value) {
        return MethodParameter{QLatin1String(name), value};
    };
    QVector<MethodParameter> all{
        parameter("dataset", dataset()), parameter("structures", structuresText(structures())),
        parameter("save", mName->text().trimmed()), parameter("replace", mReplace->isChecked())};
    if (dataset() < 0)
        return all;
    all << parameter("estimator", mEstimator->currentData()) << parameter("cutoff", cutoff)
        << parameter("width", width) << parameter("scores", mScores->isChecked());
    if (hasTimes())
        all << (time.isEmpty() ? parameter("pooled", true) : parameter("at", time));
    return all;
}

VariogramPlan ModelDialog::plan() const
{
    VariogramPlan plan;
    plan.dataset = dataset();
    const QString time = mTime->currentData().toString();
    plan.times = shapeTimesAt(plan.dataset, time.isEmpty() ? QStringList() : QStringList{time});
    plan.pooled = hasTimes() && time.isEmpty();
    plan.scores = mScores->isChecked();
    if (mEstimator->currentIndex() == 1)
        plan.lags.estimator = Estimator::Robust;
    plan.lags.cutoff = numberOf(mCutoff->text(), tr("Largest separation"), 0);
    plan.lags.width = numberOf(mWidth->text(), tr("Width of a class"), 0);
    plan.fits = false;
    plan.fit.anisotropic = isAnisotropic();
    completeDirections(plan);
    return plan;
}

bool ModelDialog::hasTimes() const
{
    return dataset() >= 0 && !datasetOf(dataset())->IsStatic();
}

bool ModelDialog::isAnisotropic() const
{
    for (int row = 0; row < mTable->rowCount(); ++row)
        if (const QTableWidgetItem *const major = mTable->item(row, MajorColumn))
            if (!major->text().trimmed().isEmpty())
                return true;
    return false;
}

void ModelDialog::changePairs()
{
    if (mIsFilling)
        return;
    mPairs.reset();
    mPairsTrouble.clear();
    refresh();
    mDelay.start();
}

bool ModelDialog::count(bool isAsked)
{
    if (mWorkspace.isBusy()) {
        mDelay.start();
        return false;
    }
    mDelay.stop();
    mPairs.reset();
    mPairsTrouble.clear();
    if (dataset() >= 0) {
        try {
            const MGeoData *const geography = geographyOf(VORN_GetGeographyId(dataset()));
            const VariogramPlan counted = plan();
            const double objects =
                double(geography->GetObjectCount()) * (counted.pooled ? counted.times.size() : 1);
            if (!isAsked && objects > kMostObjects)
                fail(tr("Fit counts the pairs of so many objects."));
            const QVector<VariogramAt> found = variogramsOf(counted, [](int) {});
            mPairs = found.value(0);
        } catch (const std::exception &error) {
            mPairsTrouble = QString::fromUtf8(error.what());
        }
    }
    refresh();
    return mPairs.has_value();
}

void ModelDialog::refresh()
{
    if (mIsFilling)
        return;
    tell(QString());
    if (mPairs && mPairs->lags.directions.empty() == isAnisotropic())
        mDelay.start(); // pairs are counted by direction now, or no longer
    VariogramAt shown;
    shown.lags.cutoff = 0;
    if (mPairs)
        shown = *mPairs;
    const bool isNew = mTable->rowCount() == 0 && mNugget->text().trimmed().isEmpty();
    mCommandLine->clear();
    try {
        if (isNew)
            fail(tr("Type a nugget and add structures, or fit them."));
        const VariogramModelAtT model = structures();
        if (!mPairs)
            shown.lags.cutoff = reachOf(model);
        shown.fitted = FittedModel{model, 0, true, QString()};
        mCommandLine->setText(mMethods.invocation(
            mWorkspace, *mMethods.find(QStringLiteral("variogram")), parameters()));
        mCommandLine->setCursorPosition(0);
    } catch (const std::exception &error) {
        tell(QString::fromUtf8(error.what()));
    }
    if (!mPairsTrouble.isEmpty())
        tell(mPairsTrouble);
    if (shown.lags.cutoff > 0)
        mGraph->show(variogramGraph(shown, dataset() < 0 ? mName->text() : datasetName(dataset()),
                                    hasTimes() ? mTime->currentText() : QString()));
    else
        mGraph->showText(mTrouble->text());
}

void ModelDialog::tell(const QString &trouble)
{
    mTrouble->setText(trouble);
}

bool ModelDialog::fit()
{
    FitPlan wanted;
    wanted.structures.clear();
    std::optional<FittedModel> fitted;
    QString trouble;
    const auto listening = connect(&mWorkspace, &Workspace::told, this,
                                   [&trouble](const QString &text) { trouble = text; });
    const bool isDone = mWorkspace.run(tr("Fit"), [&](const Progress &progress) {
        if (mTable->rowCount() > kMostStructures)
            fail(tr("at most %1 structures are fitted").arg(kMostStructures));
        for (int row = 0; row < mTable->rowCount(); ++row)
            wanted.structures.append(structureNamed(mTable->item(row, TypeColumn)->text()));
        wanted.anisotropic = isAnisotropic();
        VariogramPlan fitting = plan();
        fitting.fits = true;
        fitting.fit = wanted;
        mPairs = variogramsOf(fitting, progress.part(0, 100)).first();
        fitted = mPairs->fitted;
        mPairs->fitted.reset();
    });
    disconnect(listening);
    mDelay.stop();
    if (isDone && fitted) {
        mPairsTrouble.clear();
        showStructures(rounded(fitted->model));
        trouble = fitted->remark;
    }
    tell(trouble);
    return isDone;
}

bool ModelDialog::save()
{
    QString trouble;
    const auto listening = connect(&mWorkspace, &Workspace::told, this,
                                   [&trouble](const QString &text) { trouble = text; });
    bool isDone = false;
    try {
        if (mName->text().trimmed().isEmpty())
            fail(tr("a variogram model needs a name"));
        const QVector<MethodParameter> given = parameters();
        MethodReport report;
        isDone = mMethods.execute(mWorkspace, *mMethods.find(QStringLiteral("variogram")), given,
                                  report);
    } catch (const std::exception &error) {
        trouble = QString::fromUtf8(error.what());
    }
    disconnect(listening);
    if (isDone) {
        trouble = tr("%1 is stored.").arg(mName->text().trimmed());
        mReplace->setChecked(true); // what is edited further is this model
    }
    tell(trouble);
    return isDone;
}

void ModelDialog::closeIf(bool isGone)
{
    if (isGone)
        close();
}

} // namespace meridor
