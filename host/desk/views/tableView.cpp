// SPDX-License-Identifier: MIT
#include "desk/views/tableView.h"
#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <algorithm>
#include <cmath>
#include <utility>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "desk/models/valueTable.h"
#include "desk/views/cellDelegate.h"
#include "desk/views/graphCanvas.h"

namespace meridor {

/// Turns mouse and keys into objects.
class TableView::Table : public QTableView {
    using Mode = meridor::SelectionMode; // QTableView has a type of this name

public:
    explicit Table(TableView &view) : mView(view)
    {
        setObjectName(QStringLiteral("objects"));
        setSelectionMode(QAbstractItemView::NoSelection);
        setEditTriggers(QAbstractItemView::NoEditTriggers);
        setItemDelegate(new CellDelegate(this));
        setMouseTracking(true);
        setWordWrap(false);
        setTabKeyNavigation(false);
        setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
        verticalHeader()->hide();
        verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        fitRows();
        horizontalHeader()->setSectionsClickable(true);
        horizontalHeader()->setHighlightSections(false);
        horizontalHeader()->setSortIndicatorShown(true);
    }

protected:
    bool event(QEvent *event) override
    {
        // The key that clears the selection gives a drag up first.
        if (event->type() == QEvent::ShortcutOverride && mPressed >= 0
            && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
            event->accept();
            return true;
        }
        return QTableView::event(event);
    }

    void changeEvent(QEvent *event) override
    {
        QTableView::changeEvent(event);
        if (event->type() == QEvent::FontChange)
            fitRows();
    }

    void mousePressEvent(QMouseEvent *event) override
    {
        const int row = rowAt(event->y());
        if (event->button() != Qt::LeftButton)
            return;
        mPressed = row;
        if (row >= 0)
            setCurrentIndex(model()->index(row, std::max(0, columnAt(event->x()))));
        if (!(event->modifiers() & Qt::ShiftModifier) || mAnchor < 0)
            mAnchor = row;
    }

    void mouseMoveEvent(QMouseEvent *event) override
    {
        const int row = rowAt(event->y());
        mView.pointAt(viewport()->rect().contains(event->pos()) ? row : -1);
        if (event->buttons() & Qt::LeftButton && mPressed >= 0 && row >= 0)
            mView.model().setPending(std::min(mPressed, row), std::max(mPressed, row));
    }

    void mouseReleaseEvent(QMouseEvent *event) override
    {
        const int pressed = std::exchange(mPressed, -1);
        mView.model().setPending(0, -1);
        if (event->button() != Qt::LeftButton || pressed == kGivenUp)
            return;
        int row = rowAt(event->y());
        if (pressed < 0) { // below the last row
            if (row < 0 && selectionModeOf(event->modifiers()) == Mode::Replace)
                mView.chooseNothing();
            return;
        }
        if (row < 0)
            row = event->y() < 0 ? 0 : model()->rowCount() - 1;
        const bool isClick = row == pressed;
        const bool extends = event->modifiers() & Qt::ShiftModifier;
        const int from = isClick && extends && mAnchor >= 0 ? mAnchor : pressed;
        const Mode mode = event->modifiers() & Qt::ControlModifier
                              ? (extends ? Mode::Add : Mode::Toggle)
                              : (extends && !isClick ? Mode::Add : Mode::Replace);
        mView.chooseRows(std::min(from, row), std::max(from, row), mode);
    }

    void mouseDoubleClickEvent(QMouseEvent *event) override { mousePressEvent(event); }

    void leaveEvent(QEvent *event) override
    {
        QTableView::leaveEvent(event);
        mView.pointAt(-1);
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        const int row = currentIndex().row();
        if (event->key() == Qt::Key_Escape && mPressed >= 0) {
            mPressed = kGivenUp;
            mView.model().setPending(0, -1);
            return;
        }
        if (event->key() == Qt::Key_Space && row >= 0) {
            mAnchor = row;
            mView.chooseRows(row, row, selectionModeOf(event->modifiers()));
            return;
        }
        if (event->matches(QKeySequence::SelectAll)) {
            mView.chooseRows(0, model()->rowCount() - 1, Mode::Replace);
            return;
        }
        QTableView::keyPressEvent(event);
        const int now = currentIndex().row();
        if (now == row || now < 0)
            return;
        mView.pointAt(now);
        if (!(event->modifiers() & Qt::ShiftModifier)) {
            mAnchor = now;
            return;
        }
        if (mAnchor < 0)
            mAnchor = row;
        mView.chooseRows(std::min(mAnchor, now), std::max(mAnchor, now), Mode::Replace);
    }

    void paintEvent(QPaintEvent *event) override
    {
        QTableView::paintEvent(event);
        if (mView.trouble().isEmpty())
            return;
        QPainter painter(viewport());
        const int margin = fontMetrics().height() * 2;
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(viewport()->rect().adjusted(margin, 0, -margin, 0),
                         Qt::AlignCenter | Qt::TextWordWrap, mView.trouble());
    }

private:
    /// All rows have the same height: the heights of a million rows are never asked for.
    void fitRows()
    {
        verticalHeader()->setMinimumSectionSize(1);
        verticalHeader()->setDefaultSectionSize(
            static_cast<int>(std::lround(1.4 * fontMetrics().height())));
    }

    static constexpr int kGivenUp = -2; ///< the drag that the button still holds

    TableView &mView;
    int mPressed = -1; ///< the row under the press; -1: none
    int mAnchor = -1;  ///< the row from which shift extends
};

TableView::TableView(Workspace &workspace, int geography)
    : View(workspace, geography),
      mModel(new ValueTable(workspace, geography, this)),
      mTable(new Table(*this)),
      mTableWidget(mTable),
      mNames(geography)
{
    mTable->setModel(mModel);
    connect(mTable->horizontalHeader(), &QHeaderView::sectionClicked, this,
            [this](int column) { sortBy(column); });
    const auto isMine = [this](const QVector<int> &datasets) {
        return std::any_of(datasets.begin(), datasets.end(),
                           [this](int id) { return VORN_GetGeographyId(id) == this->geography(); });
    };
    connect(&workspace, &Workspace::datasetsAdded, this, [this, isMine](const QVector<int> &ids) {
        if (isMine(ids))
            rereadColumns({});
    });
    connect(&workspace, &Workspace::datasetsChanged, this, [this, isMine](const QVector<int> &ids) {
        forgetWidths(ids);
        if (isMine(ids))
            rereadColumns({});
    });
    connect(&workspace, &Workspace::datasetsDying, this, [this, isMine](const QVector<int> &ids) {
        for (const int id : ids) // another dataset may get the number
            mWidths.remove(id);
        if (isMine(ids))
            rereadColumns(ids);
    });
    connect(&workspace, &Workspace::datasetRenamed, this, [this, isMine](int dataset) {
        forgetWidths({dataset});
        if (isMine({dataset}))
            rereadColumns({});
    });
    connect(&workspace, &Workspace::objectsRemoved, this, [this](int changed) {
        mMustReload = mMustReload || changed == this->geography();
        reload();
    });
    connect(&workspace, &Workspace::idle, this, [this] {
        reload();
        sizeColumns(); // by values that can be read now
    });
    connect(mTable->horizontalHeader(), &QHeaderView::sectionResized, this,
            [this](int column, int, int pixels) {
                if (!mIsSizing)
                    mWidths[mModel->datasetOf(column)] = {pixels, true, false};
            });
    join();
    showOrder();
    sizeColumns();
}

TableView::~TableView()
{
    delete mTableWidget.data();
}

QString TableView::title() const
{
    return tr("Table of %1").arg(geographyName(geography()));
}

QVector<int> TableView::valueDatasets() const
{
    return datasetIds(geography());
}

void TableView::timeChanged()
{
    showTable([this] { mModel->setTime(time()); });
}

void TableView::valuesChanged()
{
    showTable(
        [this] { mModel->load(time(), [this](int dataset) { return realizationOf(dataset); }); });
}

void TableView::showTable(const std::function<void()> &load)
{
    mTrouble.clear();
    try {
        load();
        if (mModel->rowCount() == 0)
            mTrouble = tr("%1 has no objects at %2.")
                           .arg(geographyName(geography()), axisOf(geography()).show(time()));
    } catch (const Failure &failure) {
        mTrouble = failure.text() + QLatin1Char('.');
    }
    mTable->setAccessibleName(title());
    mTable->setAccessibleDescription(mTrouble);
}

void TableView::reload()
{
    if (!mMustReload || workspace().isBusy())
        return;
    mMustReload = false;
    workspace().look([this] { valuesChanged(); });
}

void TableView::rereadColumns(const QVector<int> &gone)
{
    mNames.forget();
    mModel->reloadColumns(gone);
    showOrder();
    sizeColumns();
}

/// Without a sorted column the rows are in the order of the objects, and no column has a sign.
void TableView::showOrder()
{
    mTable->horizontalHeader()->setSortIndicator(mModel->sortColumn(), mModel->sortOrder());
}

void TableView::sizeColumns()
{
    const QScopedValueRollback<bool> sizing(mIsSizing, true);
    for (int column = 0; column < mModel->columnCount(); ++column) {
        Width &width = mWidths[mModel->datasetOf(column)];
        if (!width.isOwn && !width.isOfValues)
            width = guessedWidth(column);
        mTable->setColumnWidth(column, width.pixels);
    }
}

TableView::Width TableView::guessedWidth(int column) const
{
    constexpr int kSampled = 40; // rows
    constexpr qint64 kMostRead = 2000000;
    const QFontMetrics metrics = mTable->fontMetrics();
    // The values of a large table are not read before they are shown.
    const qint64 cells = static_cast<qint64>(mModel->rowCount()) * mModel->columnCount();
    const bool mayRead = !workspace().isBusy() && (cells <= kMostRead || mModel->isRead(column));
    Width width;
    int widest = 0;
    for (int row = 0; mayRead && row < std::min(kSampled, mModel->rowCount()); ++row)
        widest = std::max(widest,
                          metrics.horizontalAdvance(mModel->index(row, column).data().toString()));
    width.isOfValues = widest > 0;
    widest = std::max(
        {widest, metrics.averageCharWidth() * (width.isOfValues ? 4 : 14),
         metrics.horizontalAdvance(mModel->headerData(column, Qt::Horizontal).toString())});
    width.pixels = std::min(widest, 40 * metrics.averageCharWidth()) + 2 * metrics.height();
    return width;
}

/// Values and names of these datasets are others; what the user set stays.
void TableView::forgetWidths(const QVector<int> &datasets)
{
    for (const int dataset : datasets)
        if (!mWidths.value(dataset).isOwn)
            mWidths.remove(dataset);
}

QJsonObject TableView::ownWidths() const
{
    QJsonObject widths;
    for (int column = 0; column < mModel->columnCount(); ++column)
        if (const Width width = mWidths.value(mModel->datasetOf(column)); width.isOwn)
            widths.insert(mModel->headerData(column, Qt::Horizontal).toString(),
                          static_cast<double>(width.pixels) / mTable->fontMetrics().height());
    return widths;
}

void TableView::setOwnWidths(const QJsonObject &widths)
{
    const int most = mTable->horizontalHeader()->maximumSectionSize();
    for (int column = 0; column < mModel->columnCount(); ++column) {
        const double width =
            widths.value(mModel->headerData(column, Qt::Horizontal).toString()).toDouble()
            * mTable->fontMetrics().height();
        if (width > 0)
            mWidths[mModel->datasetOf(column)] = {qRound(std::min<double>(width, most)), true,
                                                  false};
    }
    sizeColumns();
}

void TableView::selectionChanged()
{
    mModel->updateSelected();
}

void TableView::hoverChanged()
{
    mTable->viewport()->update();
    const int object = workspace().selection().hovered(geography());
    QString name;
    if (object >= 0 && !workspace().isBusy())
        workspace().look([&] { name = mNames.of(object, time()); });
    mTold = object;
    Q_EMIT pointedAt(name);
}

void TableView::pointAt(int row)
{
    hover(mModel->objectOf(row));
    if (mTold != workspace().selection().hovered(geography()))
        hoverChanged(); // a view that is not linked with this one marked it
}

void TableView::chooseRows(int first, int last, SelectionMode mode)
{
    QVector<unsigned int> objects;
    for (int row = std::max(0, first); row <= last; ++row)
        if (mModel->objectOf(row) >= 0)
            objects.append(static_cast<unsigned int>(mModel->objectOf(row)));
    choose(objects, mode);
}

QVector<unsigned int> TableView::objectsIn(const QPainterPath &region)
{
    QVector<unsigned int> objects;
    const QRectF area = region.elementCount() > 0 && region.boundingRect().isEmpty()
                            ? QRectF(QPointF(region.elementAt(0)), QSizeF(1, 1))
                            : region.boundingRect();
    const int first = mTable->rowAt(std::max(0, static_cast<int>(area.top())));
    int last = mTable->rowAt(static_cast<int>(std::ceil(area.bottom())) - 1);
    if (last < 0)
        last = mModel->rowCount() - 1;
    for (int row = first; row >= 0 && row <= last; ++row)
        objects.append(static_cast<unsigned int>(mModel->objectOf(row)));
    return objects;
}

void TableView::sortBy(int column)
{
    const bool again = mModel->sortColumn() == column;
    sortBy(column, again && mModel->sortOrder() == Qt::AscendingOrder ? Qt::DescendingOrder
                                                                      : Qt::AscendingOrder);
}

void TableView::sortBy(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= mModel->columnCount())
        return;
    mModel->sort(column, order);
    showOrder();
}

void TableView::setSelectedFirst(bool first)
{
    mModel->setSelectedFirst(first);
    if (first)
        mTable->scrollToTop();
}

QVector<int> TableView::objectsToCopy() const
{
    QVector<int> objects;
    Selection &selection = workspace().selection();
    const bool all = selection.count(geography()) == 0;
    for (const int object : mModel->rows())
        if (all || selection.isSelected(geography(), static_cast<unsigned int>(object)))
            objects.append(object);
    return objects;
}

void TableView::draw(QPainter &painter, const QSize &size)
{
    const QSizeF own = mTable->size();
    painter.save();
    const double scale = std::min(size.width() / own.width(), size.height() / own.height());
    painter.scale(scale, scale);
    mTable->render(&painter, QPoint(), QRegion(),
                   QWidget::RenderFlags(QWidget::DrawWindowBackground | QWidget::DrawChildren));
    painter.restore();
}

} // namespace meridor
