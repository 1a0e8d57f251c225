#pragma once

#include <QStyledItemDelegate>

namespace penwick {

/// The share of the text's colour in the colour of a badge.
constexpr float kBadgeInkShare = 0.13F;

/// A badge is a capsule around a short text, about as high as a line of `font`.
[[nodiscard]] QSize badgeSize(const QFont &font, const QString &text);
void paintBadge(QPainter *painter,
                const QRect &rect,
                const QFont &font,
                const QString &text,
                const QColor &ink);

/// Draws the rows of a list beside details: a switch if the item is checkable, the name in bold, a
/// badge after it and a symbol at the far end. Space and clicks on the switch toggle it.
class SidebarDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    enum Role {
        BadgeRole = Qt::UserRole + 1, ///< Text of the badge; empty for none.
        SymbolRole,                   ///< QIcon at the far end; null for none.
        IdRole,                       ///< Id of the row, for the code that fills the list.
    };

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter,
               const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const override;
    bool editorEvent(QEvent *event,
                     QAbstractItemModel *model,
                     const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
};

} // namespace penwick
