// SPDX-License-Identifier: MIT
/// The objects of a geography as rows, and its datasets at one time as columns.
#pragma once
#include <QAbstractTableModel>
#include <QStringList>
#include <QVector>
#include <functional>
#include <optional>
#include <vector>
#include "datainterface/TimeStamp.h"

namespace meridor {

class Workspace;

/// The first column identifies the objects: by the dataset of keys, or by their numbers from 1. That
/// of the names follows, if there is one, then the others. The values of a column are read when one of
/// them is first shown, and kept while there is room for them. Rows are those of the objects that
/// exist at the time; a missing value is an empty text.
class ValueTable : public QAbstractTableModel {
    Q_OBJECT
public:
    /// What identifies the object of a row, as an int.
    static constexpr int kObjectRole = Qt::UserRole;

    ValueTable(Workspace &workspace, int geography, QObject *parent = nullptr);

    /// Reads which objects exist then, and forgets all values. To be called within Workspace::look().
    /// Raises a Failure for more cells than rows can be numbered.
    /// @param realizationOf  of a dataset, from 0; called when its values are read.
    void load(qint64 time, const std::function<int(int dataset)> &realizationOf);
    /// The same for the values and realizations that load() was called for: what does not change
    /// until then is kept.
    void setTime(qint64 time);
    /// Datasets came, went or have other values.
    /// @param gone  datasets that are being removed.
    void reloadColumns(const QVector<int> &gone = {});

    int objectOf(int row) const { return mRows.value(row, -1); }
    /// -1 for an object that does not exist at the time.
    int rowOf(int object) const;
    const QVector<int> &rows() const { return mRows; }
    /// -1 for the numbers of objects.
    int datasetOf(int column) const { return mColumns.value(column).dataset; }
    int columnOf(int dataset) const;
    /// Whether the values of a column are there, so that data() does not read the library.
    bool isRead(int column) const
    {
        return mColumns[column].isRead || mColumns[column].dataset < 0;
    }

    /// Orders the rows by a column, equal values by the objects' numbers. Missing values are last in
    /// both orders.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    int sortColumn() const { return mSortColumn; }
    Qt::SortOrder sortOrder() const { return mSortOrder; }
    /// Whether the rows of selected objects stand above the others.
    void setSelectedFirst(bool first);
    bool isSelectedFirst() const { return mSelectedFirst; }
    /// The selection changed.
    void updateSelected();
    /// Rows that a drag would select; first > last: none.
    void setPending(int first, int last);

    /// The rows of these objects in their order as text, with a line of names, tabs between columns.
    QString textOf(const QVector<int> &objects);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    struct Column {
        int dataset = -1;
        QString name = {};
        bool isRead = false;
        std::optional<Interval> span = {}; ///< in which the values that were read hold; if known
        bool isNumeric = true;
        quint64 used = 0;             ///< for the choice of the column to forget
        QVector<double> numbers = {}; ///< by object; NaN where missing
        QStringList texts = {};       ///< by object; empty where missing
    };
    QVector<int> existing(qint64 time) const;
    const Column &readColumn(int column) const;
    void forgetColumns() const;
    void makeColumns(const QVector<int> &gone);
    void orderRows();
    void partitionRows();
    void showRows();

    Workspace &mWorkspace;
    int mGeography;
    qint64 mTime = 0;
    std::function<int(int)> mRealizationOf;
    mutable QVector<Column> mColumns;
    mutable quint64 mUses = 0;
    mutable bool mMustRead = false;  ///< a column was asked for while the library was at work
    bool mIsLoading = false;         ///< reads within the look of the caller
    QVector<int> mObjects;           ///< that exist, ascending
    QVector<int> mSorted;            ///< in the order of the sorted column
    QVector<int> mRows;              ///< as shown
    mutable std::vector<int> mRowOf; ///< by object; empty: to be made
    int mSortColumn = -1;
    Qt::SortOrder mSortOrder = Qt::AscendingOrder;
    bool mSelectedFirst = false;
    int mPendingFirst = 0;
    int mPendingLast = -1;
};

} // namespace meridor
