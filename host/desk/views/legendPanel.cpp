// SPDX-License-Identifier: MIT
#include "desk/views/legendPanel.h"
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QPixmap>
#include <algorithm>
#include "core/render/theme.h"
#include "desk/views/mapLayerView.h"

namespace meridor {
namespace {

constexpr int kEntryRole = Qt::UserRole;

/// A class, and in the second column how many objects it has.
class ClassItem : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    QVariant data(int column, int role) const override
    {
        if (column == 0 && role == Qt::AccessibleTextRole && !text(1).isEmpty())
            return LegendPanel::tr("%1, objects: %2").arg(text(0), text(1));
        return QTreeWidgetItem::data(column, role);
    }
};

} // namespace

LegendPanel::LegendPanel(QWidget *parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("legend"));
    setAccessibleName(tr("Layers and legend"));
    setColumnCount(2);
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setIndentation(fontMetrics().height());
    setUniformRowHeights(true);
    setTextElideMode(Qt::ElideRight);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    header()->setSectionResizeMode(1, QHeaderView::Fixed); // of the counts
    header()->setMinimumSectionSize(0);
    const int side = fontMetrics().height();
    setIconSize(QSize(side * 3 / 2, side));
    connect(this, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item) {
        MapLayerView *const layer = layerOf(item);
        if (!mIsFilling && layer && !item->parent())
            layer->setVisible(item->checkState(0) == Qt::Checked);
    });
    connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        MapLayerView *const layer = mIsFilling ? nullptr : layerOf(item);
        if (!layer || mLayers.indexOf(layer) == mActive)
            return;
        mActive = mLayers.indexOf(layer);
        Q_EMIT activeChanged(layer);
    });
    connect(this, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem *item) {
        if (item->parent())
            Q_EMIT classChosen(layerOf(item), item->data(0, kEntryRole).toInt(),
                               QApplication::keyboardModifiers());
    });
}

QSize LegendPanel::sizeHint() const
{
    return fontMetrics().averageCharWidth() * QSize(26, 30);
}

MapLayerView *LegendPanel::layerOf(const QTreeWidgetItem *item) const
{
    if (!item)
        return nullptr;
    const QTreeWidgetItem *const top = item->parent() ? item->parent() : item;
    const int position = indexOfTopLevelItem(const_cast<QTreeWidgetItem *>(top));
    return mLayers.value(mLayers.size() - 1 - position);
}

QIcon LegendPanel::iconOf(const LegendEntry &entry) const
{
    const double ratio = devicePixelRatioF();
    QPixmap picture((QSizeF(iconSize()) * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(QPointF(), QSizeF(iconSize())).adjusted(1, 1, -1, -1);
    painter.setPen(palette().color(QPalette::Mid));
    if (entry.symbol == LegendEntry::Dot) {
        painter.setBrush(entry.color);
        painter.drawEllipse(box.center(), box.height() / 2.5, box.height() / 2.5);
    } else if (entry.symbol == LegendEntry::Line) {
        painter.setPen(QPen(entry.color, box.height() / 5));
        painter.drawLine(QPointF(box.left(), box.center().y()),
                         QPointF(box.right(), box.center().y()));
    } else if (entry.symbol == LegendEntry::Hatch) {
        const MapColors colors(palette());
        painter.fillRect(box, QColor::fromRgb(colors.missing));
        painter.setClipRect(box);
        painter.setPen(QColor::fromRgb(colors.hatch));
        for (double x = box.left() - box.height(); x < box.right(); x += 4)
            painter.drawLine(QPointF(x, box.bottom()), QPointF(x + box.height(), box.top()));
    } else {
        painter.setBrush(entry.color);
        painter.drawRect(box);
    }
    return QIcon(picture);
}

void LegendPanel::setLayers(const QVector<MapLayerView *> &layers, const MapLayerView *active)
{
    mLayers = layers;
    mActive = layers.indexOf(const_cast<MapLayerView *>(active));
    fill();
}

bool LegendPanel::Shown::looksLike(const Shown &other) const
{
    const auto isSame = [](const LegendEntry &a, const LegendEntry &b) {
        return a.text == b.text && a.color == b.color && a.symbol == b.symbol;
    };
    return layer == other.layer && isVisible == other.isVisible && isActive == other.isActive
           && block.title == other.block.title
           && std::equal(block.entries.begin(), block.entries.end(), other.block.entries.begin(),
                         other.block.entries.end(), isSame);
}

/// A step of time changes counts alone: the items remain, and what is expanded or current.
void LegendPanel::fill()
{
    QVector<Shown> shown;
    for (int i = mLayers.size() - 1; i >= 0; --i)
        shown.append({mLayers[i], mLayers[i]->legend(), mLayers[i]->isVisible(), i == mActive});
    const bool isSame = std::equal(shown.begin(), shown.end(), mShown.begin(), mShown.end(),
                                   [](const Shown &a, const Shown &b) { return a.looksLike(b); });
    mShown = shown;
    mIsFilling = true;
    if (!isSame)
        makeItems();
    showCounts();
    mIsFilling = false;
}

void LegendPanel::makeItems()
{
    clear();
    for (const Shown &shown : std::as_const(mShown)) {
        auto *const top = new QTreeWidgetItem(this, {shown.block.title});
        top->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        top->setCheckState(0, shown.isVisible ? Qt::Checked : Qt::Unchecked);
        QFont bold = font();
        bold.setBold(true);
        top->setFont(0, bold);
        for (int entry = 0; entry < shown.block.entries.size(); ++entry) {
            auto *const item = new ClassItem(top, {shown.block.entries[entry].text});
            item->setIcon(0, iconOf(shown.block.entries[entry]));
            item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
            item->setToolTip(0, tr("Double click selects the objects of this class."));
            item->setData(0, kEntryRole, shown.layer->classOfEntry(entry));
        }
        top->setExpanded(true);
        if (shown.isActive)
            setCurrentItem(top);
    }
}

void LegendPanel::showCounts()
{
    int texts = 0; // pixels
    int counts = 0;
    for (int i = 0; i < mShown.size(); ++i) {
        const QVector<LegendEntry> &entries = mShown[i].block.entries;
        for (int entry = 0; entry < entries.size(); ++entry) {
            const LegendEntry &shown = entries[entry];
            QTreeWidgetItem *const item = topLevelItem(i)->child(entry);
            const QString count =
                shown.count < 0 ? QString() : grouped(static_cast<double>(shown.count), 0);
            item->setText(1, count);
            texts = std::max(texts, fontMetrics().horizontalAdvance(shown.text));
            counts = std::max(counts, fontMetrics().horizontalAdvance(count));
        }
    }
    const int column = counts > 0 ? counts + fontMetrics().height() / 2 : 0;
    if (column != columnWidth(1))
        setColumnWidth(1, column);
    // The limits of classes are read in full, as far as that leaves room for the map.
    setMinimumWidth(
        std::min(indentation() + iconSize().width() + texts + counts + 2 * fontMetrics().height(),
                 40 * fontMetrics().averageCharWidth()));
}

void LegendPanel::keyPressEvent(QKeyEvent *event)
{
    MapLayerView *const layer = layerOf(currentItem());
    const bool isControl = event->modifiers() & Qt::ControlModifier;
    if (layer && event->key() == Qt::Key_Delete)
        Q_EMIT removeWanted(layer);
    else if (layer && isControl && event->key() == Qt::Key_Up)
        Q_EMIT moveWanted(layer, 1);
    else if (layer && isControl && event->key() == Qt::Key_Down)
        Q_EMIT moveWanted(layer, -1);
    else
        QTreeWidget::keyPressEvent(event);
}

void LegendPanel::changeEvent(QEvent *event)
{
    QTreeWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        mShown.clear(); // the symbols have other colours
        fill();
    }
}

} // namespace meridor
