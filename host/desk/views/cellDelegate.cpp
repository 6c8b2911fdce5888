// SPDX-License-Identifier: MIT
#include "desk/views/cellDelegate.h"
#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <cmath>

namespace meridor {

void CellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    const QWidget *const widget = option.widget;
    const QStyle &style = *(widget ? widget->style() : QApplication::style());
    const QString text = index.data(Qt::DisplayRole).toString();
    const bool isPlain = !(option.state & (QStyle::State_HasFocus | QStyle::State_Selected))
                         && !text.contains(QLatin1Char('\n'));
    if (!isPlain) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    if (mFont != option.font) {
        mFont = option.font;
        mTexts.clear();
    }
    QStaticText *shown = mTexts.object(text);
    if (!shown) {
        shown = new QStaticText(text);
        shown->setTextFormat(Qt::PlainText);
        shown->prepare(QTransform(), option.font);
        mTexts.insert(text, shown);
    }
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, widget) + 1;
    const QRect room = option.rect.adjusted(margin, 0, -margin, 0);
    if (shown->size().width() > room.width()) { // is elided
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QVariant background = index.data(Qt::BackgroundRole);
    if (background.canConvert<QBrush>())
        painter->fillRect(option.rect, qvariant_cast<QBrush>(background));
    const QVariant ink = index.data(Qt::ForegroundRole);
    const QPalette::ColorGroup group = !(option.state & QStyle::State_Enabled) ? QPalette::Disabled
                                       : option.state & QStyle::State_Active   ? QPalette::Normal
                                                                               : QPalette::Inactive;
    painter->setFont(option.font);
    painter->setPen(ink.canConvert<QBrush>() ? qvariant_cast<QBrush>(ink).color()
                                             : option.palette.color(group, QPalette::Text));
    const auto alignment = static_cast<Qt::Alignment>(index.data(Qt::TextAlignmentRole).toInt());
    // As the style does: rows are whole pixels, the end of a text at the right is not.
    const QRect place =
        QStyle::alignedRect(option.direction, alignment, shown->size().toSize(), room);
    const double left = QStyle::visualAlignment(option.direction, alignment) & Qt::AlignRight
                            ? room.x() + room.width() - shown->size().width()
                            : place.left();
    painter->drawStaticText(QPointF(left, place.top()), *shown);
}

} // namespace meridor
