// SPDX-License-Identifier: MIT
#include "desk/dialogs/propertiesDialog.h"
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include "core/project/catalog.h"
#include "core/project/geographyTimes.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "desk/models/plainText.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

using Facts = QVector<QPair<QString, QString>>;

QString text(const char *source)
{
    return PropertiesDialog::tr(source);
}

QString timeText(const TimeAxis &axis, const TimeStamp &bounds, bool isStatic)
{
    if (isStatic)
        return text("does not change");
    return axis.show(static_cast<Interval>(bounds));
}

/// The name of the coordinate system of a WKT text; any other text unchanged.
QString projectionName(const QString &wkt)
{
    return wkt.contains(QLatin1String("[\"")) ? wkt.section(QLatin1Char('"'), 1, 1) : wkt;
}

Facts factsOfGeography(int id)
{
    const GeoProps props = VORN_GetGeographyProperties(id);
    const QRectF &box = props.bounds;
    Facts facts{{text("Holds"), summaryOf({Thing::Geography, id, -1})},
                {text("Time"), timeText(axisOf(id), timeBoundsOf(id), props.isStatic)},
                {text("Extent"), text("x %1 to %2, y %3 to %4")
                                     .arg(box.left(), 0, 'g', 8)
                                     .arg(box.left() + box.width(), 0, 'g', 8)
                                     .arg(box.top(), 0, 'g', 8)
                                     .arg(box.top() + box.height(), 0, 'g', 8)},
                {text("Coordinates"),
                 projectionName(props.metaData.value(QStringLiteral("Projection")).toString())}};
    if (const int key = keyDataset(id); key >= 0)
        facts.append({text("Key"), datasetName(key)});
    return facts;
}

Facts factsOfDataset(int id)
{
    const DatasetProps props = VORN_GetDatasetProperties(id);
    const int geography = VORN_GetGeographyId(id);
    Facts facts{{text("Geography"), geographyName(geography)},
                {text("Type"), summaryOf({Thing::Dataset, id, -1})},
                {text("Time"), timeText(axisOf(geography), props.timeBounds, props.isStatic)},
                {text("Realizations"), QString::number(props.realizationCount)}};
    double low = 0;
    double high = 0;
    if (VORN_GetMin(id, 0, low) && VORN_GetMax(id, 0, high))
        facts.append({text("Values"), text("%1 to %2").arg(shortNumber(low), shortNumber(high))});
    return facts;
}

Facts factsOf(const Thing &thing)
{
    if (thing.kind == Thing::Geography)
        return factsOfGeography(thing.id);
    if (thing.kind == Thing::Dataset)
        return factsOfDataset(thing.id);
    Facts facts;
    if (const int geography = geographyOfThing(thing); geography >= 0)
        facts.append({text("Geography"), geographyName(geography)});
    if (thing.kind == Thing::Model && thing.owner >= 0)
        facts.append({text("Dataset"), datasetName(thing.owner)});
    facts.append({text("Holds"), summaryOf(thing)});
    return facts;
}

} // namespace

PropertiesDialog::PropertiesDialog(Workspace &workspace, const Thing &thing, QWidget *parent)
    : QDialog(parent),
      mWorkspace(workspace),
      mThing(thing),
      mName(new QLineEdit(nameOf(thing))),
      mSummary(new QLineEdit),
      mHistory(new QPlainTextEdit),
      mTrouble(new QLabel)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("propertiesDialog"));
    setWindowTitle(tr("Properties of %1").arg(plainTitle(nameOf(thing))));
    auto *const form = new QFormLayout;
    mName->setObjectName(QStringLiteral("propertiesName"));
    form->addRow(tr("&Name"), mName);
    Facts facts;
    mWorkspace.look([&] { facts = factsOf(mThing); });
    for (const auto &[label, value] : std::as_const(facts)) {
        auto *const shown = new QLabel(value);
        shown->setTextFormat(Qt::PlainText);
        shown->setWordWrap(true);
        shown->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        form->addRow(label, shown);
    }
    const Description description = descriptionOf(thing);
    mSummary->setObjectName(QStringLiteral("propertiesSummary"));
    mSummary->setText(description.summary);
    mHistory->setObjectName(QStringLiteral("propertiesHistory"));
    mHistory->setAccessibleName(tr("History"));
    mHistory->setPlainText(description.history);
    mHistory->setTabChangesFocus(true);
    mHistory->setReadOnly(thing.kind == Thing::WeightSet);
    if (thing.kind == Thing::Dataset)
        form->addRow(tr("&Description"), mSummary);
    if (thing.kind != Thing::Model)
        form->addRow(tr("&History"), mHistory);
    mTrouble->setObjectName(QStringLiteral("propertiesTrouble"));
    mTrouble->setTextFormat(Qt::PlainText);
    mTrouble->setWordWrap(true);

    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Apply
                                               | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (apply())
            close();
    });
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            &PropertiesDialog::apply);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto *const column = new QVBoxLayout(this);
    column->addLayout(form);
    column->addWidget(mTrouble);
    column->addWidget(buttons);
    resize(34 * fontMetrics().height(), sizeHint().height());

    connect(&workspace, &Workspace::closing, this, &QDialog::close);
    connect(&workspace, &Workspace::geographyDying, this,
            [this](int id) { closeIf(geographyOfThing(mThing) == id); });
    connect(&workspace, &Workspace::datasetsDying, this, [this](const QVector<int> &ids) {
        closeIf((mThing.kind == Thing::Dataset && ids.contains(mThing.id))
                || (mThing.kind == Thing::Model && ids.contains(mThing.owner)));
    });
    connect(&workspace, &Workspace::weightSetDying, this,
            [this](int, int set) { closeIf(mThing.kind == Thing::WeightSet && set == mThing.id); });
    connect(&workspace, &Workspace::modelsChanged, this,
            [this] { closeIf(mThing.kind == Thing::Model && nameOf(mThing).isEmpty()); });
}

void PropertiesDialog::closeIf(bool isGone)
{
    if (isGone)
        close();
}

bool PropertiesDialog::apply()
{
    QString trouble;
    const auto told = connect(&mWorkspace, &Workspace::told, this,
                              [&trouble](const QString &text, bool isTrouble) {
                                  if (isTrouble)
                                      trouble = text;
                              });
    const bool isDone =
        renameThing(mWorkspace, mThing, mName->text().trimmed())
        && (mThing.kind == Thing::Model || mThing.kind == Thing::WeightSet
            || describeThing(mWorkspace, mThing, {mSummary->text(), mHistory->toPlainText()}));
    disconnect(told);
    mTrouble->setText(trouble);
    setWindowTitle(tr("Properties of %1").arg(plainTitle(nameOf(mThing))));
    return isDone;
}

} // namespace meridor
