#pragma once

#include <QStyledItemDelegate>

namespace penwick {

/// Draws the rows of a palette: the title, a badge and the quieter detail from the leading edge,
/// the key at the far end. The detail is cut off first, then the title.
class PaletteDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter,
               const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const override;
};

} // namespace penwick
