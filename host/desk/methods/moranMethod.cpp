// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include "core/analysis/moranOverTime.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/WeightsAPI.h"
#include "desk/methods/method.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("MoranMethod", text);
}

class MoranMethod final : public Method {
public:
    QString name() const override { return QStringLiteral("moran"); }
    QString title() const override { return tr("Moran's I"); }
    QString helpTopic() const override { return QStringLiteral("meridor.md#moran"); }

    QVector<MethodField> fields() const override
    {
        MethodField set{QStringLiteral("weights"), tr("Weight set"), MethodField::WeightSet};
        set.of = QStringLiteral("dataset");
        MethodField permutations{QStringLiteral("permutations"), tr("Permutations"),
                                 MethodField::Whole, 999};
        permutations.most = 1e6;
        MethodField alpha{QStringLiteral("alpha"), tr("Significance level"), MethodField::Number,
                          0.05};
        alpha.most = 1;
        return {{QStringLiteral("dataset"), tr("Dataset"), MethodField::Numbers},
                set,
                permutations,
                {QStringLiteral("seed"), tr("Seed"), MethodField::Whole, 1},
                {QStringLiteral("local"), tr("Of each object, with clusters"), MethodField::Flag,
                 false},
                {QStringLiteral("correction"),
                 tr("Correction of local tests"),
                 MethodField::Choice,
                 QStringLiteral("none"),
                 {QStringLiteral("none"), QStringLiteral("bonferroni"), QStringLiteral("holm"),
                  QStringLiteral("simes"), QStringLiteral("fdr"), QStringLiteral("jef")}},
                alpha,
                {QStringLiteral("save"), tr("Name of the results"), MethodField::Text}};
    }

    void execute(Workspace &, const MethodArguments &arguments, MethodReport &report,
                 const Progress &progress) const override
    {
        MoranPlan plan;
        plan.dataset = arguments.id(QStringLiteral("dataset"));
        plan.weightSet = arguments.id(QStringLiteral("weights"));
        if (!datasetOf(plan.dataset))
            fail(tr("no dataset is chosen"));
        if (plan.weightSet < 0)
            fail(tr("no weight set is chosen"));
        plan.times = shapeTimesAt(plan.dataset, {});
        plan.permutations = arguments.whole(QStringLiteral("permutations"));
        plan.seed = arguments.whole(QStringLiteral("seed"));
        plan.local = arguments.flag(QStringLiteral("local"));
        plan.correction = arguments.text(QStringLiteral("correction"));
        plan.alpha = arguments.number(QStringLiteral("alpha"));
        const QVector<MoranAt> results = moranOverTime(plan, progress);
        if (results.isEmpty())
            fail(tr("there are no values"));
        const QString saved = arguments.text(QStringLiteral("save"));
        if (!saved.isEmpty())
            for (const int id : storeMoran(plan, results, saved))
                report.results.append({QStringLiteral("dataset"), id});
        const MoranAt &last = results.last();
        const TimeAxis axis = axisOf(VORN_GetGeographyId(plan.dataset));
        report.text = tr("Moran's I of %1 at %2: %3, p %4")
                          .arg(datasetName(plan.dataset), axis.show(last.when))
                          .arg(last.whole.value, 0, 'g', 6)
                          .arg(last.whole.p, 0, 'g', 4);
        report.results.append({QStringLiteral("I"), last.whole.value});
        report.results.append({QStringLiteral("p"), last.whole.p});
    }

    QStringList commandLine(const Workspace &workspace,
                            const MethodArguments &arguments) const override
    {
        const auto number = [&](const char *name) {
            return arguments.value(QLatin1String(name)).toString();
        };
        QStringList line{name(),
                         workspace.commandPath(),
                         datasetWord(arguments.id(QStringLiteral("dataset"))),
                         weightSetWord(arguments.id(QStringLiteral("weights"))),
                         QStringLiteral("--permutations"),
                         number("permutations"),
                         QStringLiteral("--seed"),
                         number("seed")};
        if (arguments.flag(QStringLiteral("local")))
            line << QStringLiteral("--local") << QStringLiteral("--correction")
                 << number("correction") << QStringLiteral("--alpha") << number("alpha");
        const QString saved = arguments.text(QStringLiteral("save"));
        if (!saved.isEmpty())
            line << QStringLiteral("--save") << saved;
        return line;
    }
};

} // namespace

std::unique_ptr<Method> makeMoranMethod()
{
    return std::make_unique<MoranMethod>();
}

} // namespace meridor
