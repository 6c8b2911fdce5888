// SPDX-License-Identifier: MIT
/// Paints the cells of a table whose texts are mostly the same from one picture to the next.
#pragma once
#include <QCache>
#include <QStaticText>
#include <QStyledItemDelegate>

namespace meridor {

/// The same picture as that of QStyledItemDelegate, in less time: it keeps how the glyphs of a text
/// are placed. Cells with more than a line of text on a colour are painted by the base class.
class CellDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

private:
    mutable QFont mFont; ///< of mTexts
    mutable QCache<QString, QStaticText> mTexts{2000};
};

} // namespace meridor
