// SPDX-License-Identifier: MIT
#include "cli/commands/gridChoice.h"
#include <QRectF>
#include "core/analysis/distanceSets.h"
#include "core/geostatistics/storedValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {

void GridChoice::declare(const Command &command)
{
    command.text("--to", to, "The geography of the results");
    command.text("--grid", name, "Name of a new grid for the results");
    command.number("--cell", cell, "Side of a cell of the new grid, map units").positive();
    command
        .numbers("--bounds", bounds,
                 "LEFT,BOTTOM,RIGHT,TOP of the new grid (default: those of the dataset)")
        .partedBy(',');
}

int GridChoice::find(int dataset) const
{
    if (to.isEmpty() == name.isEmpty())
        failUsage(QStringLiteral("the results need either --to or --grid"));
    if (!to.isEmpty())
        return findGeography(to);
    for (const int other : geographyIds())
        if (geographyName(other) == name)
            failUsage(QStringLiteral("the project has a geography %1 already").arg(name), "to");
    QRectF extent = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).bounds;
    if (!bounds.isEmpty()) {
        if (bounds.size() != 4 || !(bounds[0] < bounds[2]) || !(bounds[1] < bounds[3]))
            failUsage(QStringLiteral("not LEFT,BOTTOM,RIGHT,TOP"), "bounds");
        extent = QRectF(QPointF(bounds[0], bounds[1]), QPointF(bounds[2], bounds[3]));
    }
    return makeGrid(name, cell, extent, dataset);
}

void noteDegrees(int geography, const Console &console)
{
    if (isInDegrees(geography))
        console.note(QStringLiteral("distances are in degrees"));
}

} // namespace meridor
