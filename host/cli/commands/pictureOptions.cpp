// SPDX-License-Identifier: MIT
#include "cli/commands/pictureOptions.h"
#include "core/project/failure.h"

namespace meridor {

void ClassOptions::addTo(const Command &command, int mostClasses)
{
    command
        .text("--method", mRule.method,
              "Method of classification (default: jenks; unique for texts)")
        .oneOf(classMethods());
    mCount =
        command.number("--count", mRule.count, "Number of classes").shown().range(1, mostClasses);
    command.text("--breaks", mBreaks, "Own limits of classes, separated by commas");
    command.text("--palette", mRule.palette,
                 "Colours: a palette of ColorBrewer, viridis, magma, inferno, plasma, cividis, "
                 "lagoon, ember, heather or slate");
    command.flag("--reverse", mRule.reversed, "Use the palette from its last colour to its first");
}

ClassRule ClassOptions::rule() const
{
    return checkedRule(mRule, mBreaks, mCount && mCount->isGiven());
}

ClassRule checkedRule(ClassRule rule, const QString &breaks, bool isCountGiven,
                      const QString &prefix)
{
    for (const QString &part : breaks.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool isNumber = false;
        rule.limits.append(part.toDouble(&isNumber));
        if (!isNumber)
            failUsage(QStringLiteral("%1breaks: %2 is no number").arg(prefix, part));
    }
    const bool isFixed = !rule.limits.isEmpty() || rule.method == QLatin1String("stddev")
                         || rule.method == QLatin1String("box")
                         || rule.method == QLatin1String("unique");
    if (isFixed && isCountGiven)
        failUsage(QStringLiteral("%1count: the number of classes follows from %1%2")
                      .arg(prefix, rule.limits.isEmpty() ? QStringLiteral("method ") + rule.method
                                                         : QStringLiteral("breaks")));
    requireRule(rule);
    return rule;
}

void SizeOptions::addTo(const Command &command)
{
    command.number("--width", mWidth, "Pixels").shown().range(320, 8000);
    command.number("--height", mHeight, "Pixels").shown().range(200, 8000);
    command.number("--scale", mScale, "Size of texts, lines and points").shown().range(0.5, 4.0);
}

} // namespace meridor
