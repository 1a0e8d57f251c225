#pragma once

#include <QStyledItemDelegate>

namespace penwick {

/// A capsule around a short text, about as high as a line of `font`.
[[nodiscard]] QSize badgeSize(const QFont &font, const QString &text);
void paintBadge(QPainter *painter,
                const QRect &rect,
                const QFont &font,
                const QString &text,
                const QColor &ink);

/// Draws the rows of a list that stands beside the details of what is selected in it: a switch
/// where the item can be checked, the name in bold, a badge behind it and a symbol at the far end.
/// Space and clicks on the switch turn it.
class SidebarDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    enum Role {
        BadgeRole = Qt::UserRole + 1, ///< Text of the badge; none where it is empty.
        SymbolRole,                   ///< QIcon at the far end; none where it is null.
        IdRole,                       ///< What the row stands for, for whoever fills the list.
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
