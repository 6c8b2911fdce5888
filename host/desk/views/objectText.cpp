// SPDX-License-Identifier: MIT
#include "desk/views/objectText.h"
#include <QCoreApplication>
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterAttributes.h"

namespace meridor {
namespace {

QString textIn(int dataset, int object, qint64 time)
{
    datum value;
    if (dataset < 0 || !VORN_GetDataValue(dataset, 0, static_cast<unsigned>(object), time, value))
        return QString();
    return textOf(value);
}

} // namespace

void ObjectText::find()
{
    mIsKnown = true;
    const GeoProps props = VORN_GetGeographyProperties(mGeography);
    mColumns = props.type == GeoProps::Raster ? static_cast<int>(props.columns) : 0;
    mNames = mColumns > 0 ? -1 : nameDataset(mGeography);
    mKeys = mColumns > 0 ? -1 : keyDataset(mGeography);
}

QString ObjectText::of(int object, qint64 time)
{
    if (!mIsKnown)
        find();
    if (mColumns > 0)
        return QCoreApplication::translate("ObjectText", "column %1, row %2")
            .arg(object % mColumns)
            .arg(object / mColumns);
    const QString name = textIn(mNames, object, time);
    if (!name.isEmpty())
        return name;
    const QString key = textIn(mKeys, object, time);
    return key.isEmpty() ? QString::number(object + 1) : key;
}

const unsigned char *flagBytes(MAttributes *attributes, int attribute,
                               std::vector<unsigned char> &scratch)
{
    if (!attributes)
        return nullptr;
    const unsigned char *const flags = attributes->GetAttributeVector(attribute);
    const auto *const grid = qobject_cast<const MRasterAttributes *>(attributes);
    if (!grid || !flags)
        return flags;
    const int columns = grid->GetColumns();
    const std::size_t stride = (static_cast<std::size_t>(columns) + 7) / 8;
    scratch.resize(static_cast<std::size_t>(columns) * static_cast<std::size_t>(grid->GetRows()));
    unsigned char *out = scratch.data();
    for (int row = 0; row < grid->GetRows(); ++row) {
        const unsigned char *const bits = flags + static_cast<std::size_t>(row) * stride;
        for (int column = 0; column < columns; ++column)
            *out++ = bits[column / 8] >> (column % 8) & 1;
    }
    return scratch.data();
}

} // namespace meridor
