// SPDX-License-Identifier: MIT
/// The objects of a geography as rows of a table.
#pragma once
#include <QHash>
#include <QJsonObject>
#include <QPointer>
#include <QTableView>
#include "desk/views/objectText.h"
#include "desk/views/view.h"

namespace meridor {

class ValueTable;

/// A click selects the object of a row, a drag those of several; with shift the rows from the last
/// one that was clicked, with control the rows are toggled. Selected rows are those of the geography's
/// flags: the table has no selection of its own.
///
/// Keys: space selects the object of the current row, shift with an arrow those from the last one,
/// control A all.
class TableView final : public View {
    Q_OBJECT
public:
    TableView(Workspace &workspace, int geography);
    ~TableView() override;

    QTableView *table() const { return mTable; }
    ValueTable &model() const { return *mModel; }
    QString title() const override;
    /// The viewport of the table.
    QWidget *widget() const override { return mTable->viewport(); }
    void draw(QPainter &painter, const QSize &size) override;
    QVector<unsigned int> objectsIn(const QPainterPath &region) override;
    /// None: a table remains when a dataset is removed.
    QVector<int> datasets() const override { return {}; }
    QVector<int> valueDatasets() const override;
    /// A sentence that tells why there are no rows; empty if there are some.
    const QString &trouble() const { return mTrouble; }
    /// Sorts by a column; by the same one again in the other order.
    void sortBy(int column);
    void sortBy(int column, Qt::SortOrder order);
    void setSelectedFirst(bool first);
    /// The widths that the user set, in heights of the font, by the names of columns.
    QJsonObject ownWidths() const;
    void setOwnWidths(const QJsonObject &widths);
    /// The selected objects in the order of the rows; all if none is selected.
    QVector<int> objectsToCopy() const;

Q_SIGNALS:
    void pointedAt(const QString &text);

protected:
    void timeChanged() override;
    void valuesChanged() override;
    /// Each column is kept for a time of its own.
    bool holdsAt(qint64) const override { return false; }
    void selectionChanged() override;
    void hoverChanged() override;

private:
    class Table;
    void chooseRows(int first, int last, SelectionMode mode);
    struct Width {
        int pixels = 0;
        bool isOwn = false;      ///< set by the user
        bool isOfValues = false; ///< guessed by some of them
    };
    /// Gives columns the widths that the user set, else those of the first values that could be read.
    void sizeColumns();
    Width guessedWidth(int column) const;
    void forgetWidths(const QVector<int> &datasets);
    void showOrder();
    void reload();
    void showTable(const std::function<void()> &load);
    void rereadColumns(const QVector<int> &gone);
    void pointAt(int row);

    ValueTable *mModel;
    QTableView *mTable;
    QPointer<QWidget> mTableWidget; ///< null once the table was deleted
    QString mTrouble;
    bool mMustReload = false;  ///< other objects exist now
    int mTold = -1;            ///< the object that was named last
    QHash<int, Width> mWidths; ///< by dataset, -1: the numbers of objects
    bool mIsSizing = false;    ///< sizeColumns() changes the widths
    ObjectText mNames;
};

} // namespace meridor
