// SPDX-License-Identifier: MIT
#include "desk/dialogs/modelPreview.h"
#include <QPainter>
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MGeoData.h"
#include "desk/dialogs/methodForm.h"
#include "desk/methods/variogramPlan.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

constexpr unsigned int kMostObjects = 5000;
constexpr int kDelay = 300; // ms

} // namespace

ModelPreview::ModelPreview(Workspace &workspace, MethodForm &form, QWidget *parent)
    : QWidget(parent), mWorkspace(workspace), mForm(form)
{
    setAccessibleName(tr("Variogram"));
    setMinimumHeight(fontMetrics().height() * 12);
    mDelay.setSingleShot(true);
    mDelay.setInterval(kDelay);
    connect(&mDelay, &QTimer::timeout, this, &ModelPreview::calculate);
    connect(&form, &MethodForm::changed, &mDelay, qOverload<>(&QTimer::start));
    mDelay.start();
}

QSize ModelPreview::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 60, fontMetrics().height() * 18};
}

void ModelPreview::calculate()
{
    if (mWorkspace.isBusy()) {
        mDelay.start();
        return;
    }
    mTrouble.clear();
    try {
        VariogramPlan plan = variogramPlanOf(MethodArguments(mForm.parameters()));
        const double objects = geographyOf(VORN_GetGeographyId(plan.dataset))->GetObjectCount();
        if (objects > kMostObjects)
            fail(tr("Run shows the model of so many objects."));
        // Of all times together if they have not too many objects, else of the last one.
        if (!plan.pooled || objects * plan.times.size() > kMostObjects) {
            plan.times = plan.times.mid(plan.times.size() - 1);
            plan.pooled = false;
        }
        const QVector<VariogramAt> found = variogramsOf(plan, [](int) {});
        mGraph = variogramGraph(found.first(), datasetName(plan.dataset),
                                axisOf(VORN_GetGeographyId(plan.dataset)).show(found.first().when));
    } catch (const std::exception &error) {
        mTrouble = QString::fromUtf8(error.what());
    }
    update();
}

void ModelPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (mTrouble.isEmpty() && mGraph.series.isEmpty())
        return;
    if (!mTrouble.isEmpty()) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, mTrouble);
        return;
    }
    painter.fillRect(rect(), Qt::white);
    mGraph.size.pixels = size();
    drawGraph(painter, mGraph);
}

} // namespace meridor
