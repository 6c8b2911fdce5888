// SPDX-License-Identifier: MIT
#include "geography/projectionTags.h"
#include <QVariant>
#include "datainterface/MMetaData.h"
#include "fennimark/FMProjectionInfo.h"

namespace datainterface {
namespace {

struct Tags {
    QVariant projection;
    QVariant distanceUnit;
};

Tags tagsOf(const FMProjectionInfo &projection, AngularUnit unit)
{
    if (!projection.GetProjectionName().isEmpty())
        return {projection.GetProjectionName(), projection.GetLinUnitName()};
    if (projection.GetGeographicCSName().isEmpty())
        return {QStringLiteral("Unknown"), QStringLiteral("Unknown")};
    const QVariant angularUnit = unit == AngularUnit::Name ? QVariant(projection.GetAngUnitName())
                                                           : QVariant(projection.mAngUnitCode);
    return {QStringLiteral("Unprojected"), angularUnit};
}

} // namespace

void setProjectionTags(MMetaData &metaData, const FMProjectionInfo &projection, AngularUnit unit)
{
    const Tags tags = tagsOf(projection, unit);
    metaData.setTag(QStringLiteral("Projection"), tags.projection);
    metaData.setTag(QStringLiteral("Distance unit"), tags.distanceUnit);
}

} // namespace datainterface
