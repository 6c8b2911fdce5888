// SPDX-License-Identifier: MIT
/// Paints the cells of a table whose texts are mostly the same from one picture to the next.
#pragma once
#include <QCache>
#include <QStaticText>
#include <QStyledItemDelegate>

namespace meridor {

/// The same picture as that of QStyledItemDelegate, in less time: it keeps how the glyphs of a text
/// are placed. The model has texts, colours and alignments alone, no fonts or icons. The current cell
/// and texts that are cut or have several lines are painted by the base class.
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
