// SPDX-License-Identifier: MIT
#include "desk/dialogs/methodForm.h"
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "desk/methods/fields.h"

namespace meridor {
namespace {

bool isChosenThing(MethodField::Kind kind)
{
    return kind <= MethodField::Model || kind == MethodField::Time;
}

struct Thing {
    QString text;
    QVariant value;
};

QVector<Thing> geographies(bool onlyPolygons)
{
    QVector<Thing> things;
    for (const int id : geographyIds())
        if (!onlyPolygons || VORN_GetGeographyProperties(id).type == GeoProps::Polygons)
            things.append({geographyName(id), id});
    return things;
}

/// @param geography  -1: of all.
QVector<Thing> datasets(MethodField::Kind kind, int geography)
{
    QVector<Thing> things;
    for (const int owner : geographyIds()) {
        const bool isGrid = VORN_GetGeographyProperties(owner).type == GeoProps::Raster;
        if ((geography >= 0 && owner != geography) || (kind == MethodField::Grids && !isGrid))
            continue;
        // Numbers that are keys are hardly ever what is meant.
        QVector<int> ids = datasetIds(owner);
        if (kind != MethodField::Dataset && ids.removeOne(keyDataset(owner)))
            ids.append(keyDataset(owner));
        for (const int id : std::as_const(ids))
            if (kind == MethodField::Dataset
                || VORN_GetDatasetProperties(id).dataType != StringType)
                things.append({datasetWord(id), id});
    }
    return things;
}

QVector<Thing> weightSets(int geography)
{
    QVector<Thing> things;
    for (const int owner : geographyIds()) {
        if (geography >= 0 && owner != geography)
            continue;
        for (const int id : geographyOf(owner)->GetSpatialWeightsIds())
            things.append({weightSetWord(id), id});
    }
    return things;
}

QVector<Thing> models(int dataset)
{
    QVector<Thing> things;
    const auto props = VORN_GetDatasetProperties(dataset).variogramProps;
    for (const VariogramModelProps &model : props)
        things.append({model.name, model.name});
    for (const QString &name : controller().GetNonConVariogramModelNames())
        things.append({name, name});
    return things;
}

} // namespace

MethodForm::MethodForm(Workspace &workspace, const Method &method, QWidget *parent)
    : QWidget(parent), mWorkspace(workspace), mMethod(method)
{
    auto *const layout = new QFormLayout(this);
    layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    for (const MethodField &field : method.fields) {
        QWidget *const control = makeControl(field);
        control->setObjectName(field.name);
        control->setAccessibleName(field.label);
        control->setToolTip(field.help);
        mControls.insert(field.name, control);
        if (field.kind == MethodField::Flag)
            layout->addRow(control);
        else
            layout->addRow(field.label, control);
    }
    if (!method.fields.isEmpty())
        setFocusProxy(mControls.value(method.fields.first().name));
    refill();
    for (const auto signal :
         {&Workspace::geographyAdded, &Workspace::geographyRenamed, &Workspace::weightSetsChanged,
          &Workspace::modelsChanged, &Workspace::datasetRenamed})
        connect(&workspace, signal, this, &MethodForm::refill);
    connect(&workspace, &Workspace::datasetsAdded, this, &MethodForm::refill);
    connect(&workspace, &Workspace::idle, this, &MethodForm::refill);
}

QWidget *MethodForm::makeControl(const MethodField &field)
{
    const auto tell = [this] {
        if (mIsFilling)
            return;
        enableFields();
        Q_EMIT changed();
    };
    if (isChosenThing(field.kind) || field.kind == MethodField::Choice) {
        auto *const box = new QComboBox;
        for (const QString &choice : field.choices)
            box->addItem(choice, choice);
        if (field.kind == MethodField::Choice)
            box->setCurrentIndex(box->findData(field.value));
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, [this, tell] {
            if (!mIsFilling)
                refill();
            tell();
        });
        return box;
    }
    if (field.kind == MethodField::Flag) {
        auto *const box = new QCheckBox(field.label);
        box->setChecked(field.value.toBool());
        connect(box, &QCheckBox::toggled, this, tell);
        return box;
    }
    if (field.kind == MethodField::Whole) {
        auto *const box = new QSpinBox;
        box->setRange(static_cast<int>(field.least), static_cast<int>(field.most));
        box->setValue(field.value.toInt());
        connect(box, qOverload<int>(&QSpinBox::valueChanged), this, tell);
        return box;
    }
    auto *const line = new QLineEdit(field.value.toString());
    if (field.kind == MethodField::Number) {
        auto *const valid = new QDoubleValidator(field.least, field.most, 15, line);
        valid->setLocale(QLocale::c()); // as in the command line
        line->setValidator(valid);
    } else {
        line->setPlaceholderText(field.help);
    }
    connect(line, &QLineEdit::textChanged, this, tell);
    return line;
}

/// What has no meaning for the present choices cannot be changed.
void MethodForm::enableFields()
{
    for (const MethodField &field : mMethod.fields)
        if (const MethodField *const other = fieldNamed(field.decidedBy))
            mControls[field.name]->setEnabled(field.deciding.contains(valueOf(*other).toString()));
}

const MethodField *MethodForm::fieldNamed(const QString &name) const
{
    for (const MethodField &field : mMethod.fields)
        if (field.name == name)
            return &field;
    return nullptr;
}

int MethodForm::geographyOfField(const QString &name) const
{
    const MethodField *const field = fieldNamed(name);
    if (!field)
        return -1;
    const int id = valueOf(*field).toInt();
    if (id < 0)
        return -1;
    return field->kind == MethodField::Geography || field->kind == MethodField::Polygons
               ? id
               : VORN_GetGeographyId(id);
}

void MethodForm::refill()
{
    mIsFilling = true;
    bool isOther = false;
    for (const MethodField &field : mMethod.fields) {
        if (!isChosenThing(field.kind))
            continue;
        const int owner = geographyOfField(field.of);
        QVector<Thing> things;
        if (field.kind == MethodField::Geography || field.kind == MethodField::Polygons)
            things = geographies(field.kind == MethodField::Polygons);
        else if (field.kind == MethodField::WeightSet)
            things = weightSets(owner);
        else if (field.kind == MethodField::Model)
            things = models(valueOf(*fieldNamed(field.of)).toInt());
        else if (field.kind == MethodField::Time)
            for (const qint64 step : mWorkspace.stepsOf(owner))
                things.append({axisOf(owner).show(step), axisOf(owner).show(step)});
        else
            things = datasets(field.kind, owner);
        if (field.optional)
            things.prepend(
                {field.kind == MethodField::Time ? methodText("all") : methodText("none"),
                 field.value});
        auto *const box = static_cast<QComboBox *>(mControls[field.name]);
        const QVariant before = box->currentData();
        box->clear();
        for (const Thing &thing : std::as_const(things))
            box->addItem(thing.text, thing.value);
        const int same = box->findData(before);
        box->setCurrentIndex(same >= 0 ? same : things.isEmpty() ? -1 : 0);
        isOther |= box->currentData() != before;
    }
    mIsFilling = false;
    enableFields();
    if (isOther)
        Q_EMIT changed();
}

QVariant MethodForm::valueOf(const MethodField &field) const
{
    QWidget *const control = mControls.value(field.name);
    if (const auto *const box = qobject_cast<const QComboBox *>(control)) {
        const QVariant shown = box->currentData();
        return shown.isValid() ? shown : field.value;
    }
    if (const auto *const box = qobject_cast<const QCheckBox *>(control))
        return box->isChecked();
    if (const auto *const box = qobject_cast<const QSpinBox *>(control))
        return box->value();
    const QString text = static_cast<const QLineEdit *>(control)->text();
    if (field.kind != MethodField::Number)
        return text.trimmed();
    if (text.trimmed().isEmpty())
        return field.value;
    bool isNumber = false;
    const double number = QLocale::c().toDouble(text, &isNumber);
    return isNumber ? QVariant(number) : QVariant(text); // the method tells what it cannot be
}

void MethodForm::show(const MethodField &field, const QVariant &value)
{
    QWidget *const control = mControls.value(field.name);
    if (auto *const box = qobject_cast<QComboBox *>(control)) {
        int index = box->findData(value);
        if (index < 0) // a thing by its name
            index = box->findText(value.toString());
        if (index >= 0)
            box->setCurrentIndex(index);
    } else if (auto *const check = qobject_cast<QCheckBox *>(control)) {
        check->setChecked(value.toBool());
    } else if (auto *const spin = qobject_cast<QSpinBox *>(control)) {
        spin->setValue(value.toInt());
    } else {
        static_cast<QLineEdit *>(control)->setText(value.toString());
    }
}

void MethodForm::setParameters(const QVector<MethodParameter> &parameters)
{
    // What others depend on comes first among the fields.
    for (const MethodField &field : mMethod.fields)
        for (const MethodParameter &parameter : parameters)
            if (parameter.name == field.name)
                show(field, parameter.value);
}

QVector<MethodParameter> MethodForm::parameters() const
{
    QVector<MethodParameter> all;
    for (const MethodField &field : mMethod.fields)
        all.append({field.name, valueOf(field)});
    return all;
}

} // namespace meridor
