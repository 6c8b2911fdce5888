// SPDX-License-Identifier: MIT
#include "desk/models/valueTable.h"
#include <QColor>
#include <QGuiApplication>
#include <QPalette>
#include <QScopedValueRollback>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include "core/grids/gridValues.h"
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MDataset.h"
#include "datainterface/TimeAPI.h"
#include "desk/draw/colorTable.h"
#include "desk/models/plainText.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

/// Heights of rows are added up in an int.
constexpr int kMostRows = 20'000'000;
/// Values that are kept of all columns together.
constexpr qint64 kMostKept = 32'000'000;

} // namespace

ValueTable::ValueTable(Workspace &workspace, int geography, QObject *parent)
    : QAbstractTableModel(parent), mWorkspace(workspace), mGeography(geography)
{
    connect(&workspace, &Workspace::idle, this, [this] {
        if (!std::exchange(mMustRead, false))
            return;
        if (mSortColumn >= 0 && mSortColumn < mColumns.size() && !mColumns[mSortColumn].isRead)
            orderRows();
        showRows();
    });
}

/// The objects that have rows.
QVector<int> ValueTable::existing(qint64 time) const
{
    const QVector<int> objects = objectsAt(mGeography, shapeTime(mGeography, time));
    if (objects.size() > kMostRows)
        fail(tr("A table cannot show more than %1 rows; this geography has %2")
                 .arg(kMostRows)
                 .arg(objects.size()));
    return objects;
}

void ValueTable::setTime(qint64 time)
{
    if (mColumns.isEmpty() || existing(time) != mObjects) {
        load(time, mRealizationOf);
        return;
    }
    const QScopedValueRollback<bool> loading(mIsLoading, true);
    mTime = time;
    for (Column &column : mColumns)
        column.isRead = column.isRead && column.span && TimeStamp(*column.span).contains(time);
    if (mSortColumn >= 0 && mColumns[mSortColumn].dataset >= 0 && !mColumns[mSortColumn].isRead)
        orderRows();
    showRows();
}

void ValueTable::load(qint64 time, const std::function<int(int dataset)> &realizationOf)
{
    QVector<int> objects = existing(time);
    beginResetModel();
    mTime = time;
    mRealizationOf = realizationOf;
    mObjects = std::move(objects);
    makeColumns({});
    {
        const QScopedValueRollback<bool> loading(mIsLoading, true);
        orderRows();
    }
    endResetModel();
}

void ValueTable::reloadColumns(const QVector<int> &gone)
{
    beginResetModel();
    const int sorted = mSortColumn >= 0 ? datasetOf(mSortColumn) : -1;
    const bool bySorted = mSortColumn >= 0;
    makeColumns(gone);
    mSortColumn = bySorted ? columnOf(sorted) : -1;
    // The order stays until the values can be read.
    endResetModel();
}

void ValueTable::makeColumns(const QVector<int> &gone)
{
    mColumns.clear();
    const auto add = [&](int dataset) {
        if (gone.contains(dataset) || columnOf(dataset) >= 0)
            return;
        Column column;
        column.dataset = dataset;
        column.name = datasetName(dataset);
        column.isNumeric = meridor::datasetOf(dataset)->IsNumeric();
        mColumns.append(column);
    };
    const int keys = keyDataset(mGeography);
    const int names = nameDataset(mGeography);
    if (keys >= 0 && !gone.contains(keys)) {
        add(keys);
    } else {
        Column numbers;
        numbers.name = tr("number");
        mColumns.append(numbers);
    }
    if (names >= 0)
        add(names);
    for (const int dataset : datasetIds(mGeography))
        add(dataset);
}

int ValueTable::columnOf(int dataset) const
{
    for (int i = 0; i < mColumns.size(); ++i)
        if (mColumns[i].dataset == dataset)
            return i;
    return -1;
}

void ValueTable::forgetColumns() const
{
    const auto size = [](const Column &column) {
        return static_cast<qint64>(column.numbers.size()) + column.texts.size();
    };
    for (;;) {
        qint64 kept = 0;
        Column *oldest = nullptr;
        for (Column &column : mColumns) {
            kept += size(column);
            if (size(column) > 0 && column.used != mUses && (!oldest || column.used < oldest->used))
                oldest = &column;
        }
        if (kept <= kMostKept || !oldest)
            return;
        oldest->isRead = false;
        oldest->numbers.clear();
        oldest->texts.clear();
    }
}

const ValueTable::Column &ValueTable::readColumn(int index) const
{
    Column &column = mColumns[index];
    if (column.isRead || column.dataset < 0) {
        column.used = mUses;
        return column;
    }
    if (mWorkspace.isBusy() && !mIsLoading) {
        mMustRead = true;
        return column;
    }
    column.isRead = true; // also without values at this time
    column.used = ++mUses;
    column.span.reset();
    column.numbers.clear();
    column.texts.clear();
    mWorkspace.look([&] {
        // The interval is that of the first realization.
        if (Interval span; mRealizationOf(column.dataset) == 0
                           && VORN_GetNoChangeInterval({column.dataset}, mTime, span))
            column.span = span;
        try {
            ValuesAt values = valuesAt(column.dataset, mTime, mRealizationOf(column.dataset));
            for (const int object : std::as_const(values.missing)) {
                if (object >= 0 && object < values.numbers.size())
                    values.numbers[object] = std::numeric_limits<double>::quiet_NaN();
                if (object >= 0 && object < values.texts.size())
                    values.texts[object].clear();
            }
            column.numbers = std::move(values.numbers);
            column.texts = std::move(values.texts);
        } catch (const Failure &) {
            // No values at this time: the cells are empty.
        }
    });
    forgetColumns();
    return column;
}

// Order

void ValueTable::orderRows()
{
    mSorted = mObjects;
    if (mSortColumn >= mColumns.size())
        mSortColumn = -1;
    const bool down = mSortOrder == Qt::DescendingOrder;
    const int dataset = mSortColumn >= 0 ? mColumns[mSortColumn].dataset : -1;
    if (dataset < 0) {
        if (mSortColumn >= 0 && down)
            std::reverse(mSorted.begin(), mSorted.end());
        partitionRows();
        return;
    }
    const Column &column = readColumn(mSortColumn);
    if (column.isNumeric) {
        // Pairs are sorted faster than numbers of values: they are read in the order of memory.
        std::vector<std::pair<double, int>> pairs;
        QVector<int> missing;
        pairs.reserve(static_cast<std::size_t>(mObjects.size()));
        for (const int object : std::as_const(mObjects)) {
            const double value = object < column.numbers.size()
                                     ? column.numbers[object]
                                     : std::numeric_limits<double>::quiet_NaN();
            if (std::isnan(value))
                missing.append(object);
            else
                pairs.emplace_back(down ? -value : value, object);
        }
        std::sort(pairs.begin(), pairs.end());
        std::transform(pairs.begin(), pairs.end(), mSorted.begin(),
                       [](const auto &pair) { return pair.second; });
        std::copy(missing.begin(), missing.end(), mSorted.begin() + static_cast<int>(pairs.size()));
    } else {
        const auto text = [&](int object) { return column.texts.value(object); };
        const auto present = std::stable_partition(
            mSorted.begin(), mSorted.end(), [&](int object) { return !text(object).isEmpty(); });
        std::stable_sort(mSorted.begin(), present, [&](int a, int b) {
            return down ? text(b) < text(a) : text(a) < text(b);
        });
    }
    partitionRows();
}

void ValueTable::partitionRows()
{
    mRows = mSorted;
    mRowOf.clear();
    if (!mSelectedFirst)
        return;
    const MAttributes *const flags = mWorkspace.selection().attributes(mGeography);
    if (!flags)
        return;
    std::stable_partition(mRows.begin(), mRows.end(), [flags](int object) {
        return flags->GetAttribute(attribute::kSelected, static_cast<unsigned int>(object));
    });
}

void ValueTable::sort(int column, Qt::SortOrder order)
{
    mSortColumn = column;
    mSortOrder = order;
    orderRows();
    showRows();
}

void ValueTable::setSelectedFirst(bool first)
{
    if (mSelectedFirst == first)
        return;
    mSelectedFirst = first;
    partitionRows();
    showRows();
}

void ValueTable::updateSelected()
{
    if (mSelectedFirst)
        partitionRows();
    showRows();
}

void ValueTable::setPending(int first, int last)
{
    if (mPendingFirst == first && mPendingLast == last)
        return;
    mPendingFirst = first;
    mPendingLast = last;
    showRows();
}

void ValueTable::showRows()
{
    if (!mRows.isEmpty() && !mColumns.isEmpty())
        Q_EMIT dataChanged(index(0, 0), index(mRows.size() - 1, mColumns.size() - 1));
}

int ValueTable::rowOf(int object) const
{
    if (mRowOf.empty() && !mRows.isEmpty()) {
        const int most = *std::max_element(mRows.begin(), mRows.end());
        mRowOf.assign(static_cast<std::size_t>(most) + 1, -1);
        for (int row = 0; row < mRows.size(); ++row)
            mRowOf[static_cast<std::size_t>(mRows[row])] = row;
    }
    return object >= 0 && static_cast<std::size_t>(object) < mRowOf.size()
               ? mRowOf[static_cast<std::size_t>(object)]
               : -1;
}

// The model

int ValueTable::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : mRows.size();
}

int ValueTable::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : mColumns.size();
}

QVariant ValueTable::data(const QModelIndex &index, int role) const
{
    const int object = objectOf(index.row());
    if (!index.isValid() || object < 0 || index.column() >= mColumns.size())
        return {};
    if (role == Qt::DisplayRole) {
        const Column &column = readColumn(index.column());
        if (column.dataset < 0)
            return QString::number(object + 1);
        if (!column.isNumeric)
            return column.texts.value(object);
        const double value = object < column.numbers.size()
                                 ? column.numbers[object]
                                 : std::numeric_limits<double>::quiet_NaN();
        return std::isnan(value) ? QString() : cellText(column.dataset, value);
    }
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(
            (mColumns[index.column()].isNumeric ? Qt::AlignRight : Qt::AlignLeft)
            | Qt::AlignVCenter);
    if (role == kObjectRole)
        return object;
    if (role != Qt::BackgroundRole && role != Qt::ForegroundRole)
        return {};
    const bool isSelected =
        mWorkspace.selection().isSelected(mGeography, static_cast<unsigned int>(object));
    const bool isHovered = mWorkspace.selection().hovered(mGeography) == object;
    const bool isPending = index.row() >= mPendingFirst && index.row() <= mPendingLast;
    if (!isSelected && !isHovered && !isPending)
        return {};
    const QRgb selected = ColorRule().selected;
    if (role == Qt::ForegroundRole)
        return isSelected ? QVariant(QColor(Qt::black)) : QVariant();
    const QRgb base = QGuiApplication::palette().color(QPalette::Base).rgb();
    if (isSelected)
        return QColor(isHovered ? mixed(selected, qRgb(255, 255, 255), 0.45)
                                : mixed(selected, qRgb(255, 255, 255), 0.25));
    return QColor(mixed(base, selected, isPending ? 0.35 : 0.2));
}

QVariant ValueTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= mColumns.size())
        return {};
    if (role == Qt::DisplayRole)
        return mColumns[section].name;
    if (role == Qt::ToolTipRole)
        return plainTip(mColumns[section].name);
    return {};
}

QString ValueTable::textOf(const QVector<int> &objects)
{
    const auto joined = [](QStringList cells) {
        for (QString &cell : cells)
            cell.replace(QLatin1Char('\t'), QLatin1Char(' '))
                .replace(QLatin1Char('\n'), QLatin1Char(' '));
        return cells.join(QLatin1Char('\t'));
    };
    QStringList cells;
    for (const Column &column : std::as_const(mColumns))
        cells.append(column.name);
    QStringList lines{joined(cells)};
    for (const int object : objects) {
        const int row = rowOf(object);
        if (row < 0)
            continue;
        cells.clear();
        for (int column = 0; column < mColumns.size(); ++column)
            cells.append(data(index(row, column)).toString());
        lines.append(joined(cells));
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace meridor
