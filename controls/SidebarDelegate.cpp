#include "controls/SidebarDelegate.h"

#include "controls/ColorContrast.h"
#include "controls/FocusRing.h"

#include <QApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace penwick {

namespace {

constexpr int kRowMargin = 10;
constexpr int kGap = 8;
constexpr int kSymbolSize = 16;
constexpr int kBadgePadding = 6;
constexpr int kRowPadding = 7;

QFont headlineFont(QFont font)
{
    font.setBold(true);
    return font;
}

QFont badgeFont(QFont font)
{
    constexpr qreal kScale = 0.85;
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * kScale);
    font.setBold(false);
    return font;
}

/// The rectangles of a row's parts, from the leading edge; empty for a part that the row does not
/// have.
struct RowParts
{
    QRect check;
    QRect name;
    QRect badge;
    QRect symbol;
};

QRect centered(const QRect &row, int left, const QSize &size)
{
    return {QPoint(left, row.top() + (row.height() - size.height()) / 2), size};
}

bool isCheckable(const QModelIndex &index)
{
    return index.flags().testFlag(Qt::ItemIsUserCheckable);
}

RowParts partsOf(const QStyleOptionViewItem &option, const QModelIndex &index)
{
    RowParts parts;
    const QRect row = option.rect.adjusted(kRowMargin, 0, -kRowMargin, 0);
    int left = row.left();
    int right = row.right() + 1;
    if (isCheckable(index)) {
        const QStyle *style = option.widget != nullptr ? option.widget->style() : qApp->style();
        const QSize size(style->pixelMetric(QStyle::PM_IndicatorWidth, &option, option.widget),
                         style->pixelMetric(QStyle::PM_IndicatorHeight, &option, option.widget));
        parts.check = centered(row, left, size);
        left += size.width() + kGap;
    }
    if (!index.data(SidebarDelegate::SymbolRole).value<QIcon>().isNull()) {
        right -= kSymbolSize;
        parts.symbol = centered(row, right, QSize(kSymbolSize, kSymbolSize));
        right -= kGap;
    }
    const QString badge = index.data(SidebarDelegate::BadgeRole).toString();
    const QSize badgeExtent = badge.isEmpty() ? QSize() : badgeSize(option.font, badge);
    const int badgeSpace = badge.isEmpty() ? 0 : badgeExtent.width() + kGap;
    const QFontMetrics metrics(headlineFont(option.font));
    // One pixel more, since a text exactly as wide as its rectangle may be elided.
    const int wanted = metrics.horizontalAdvance(index.data().toString()) + 1;
    const int nameWidth = qMax(0, qMin(wanted, right - left - badgeSpace));
    parts.name = QRect(left, row.top(), nameWidth, row.height());
    if (!badge.isEmpty())
        parts.badge = centered(row, left + nameWidth + kGap, badgeExtent);
    return parts;
}

QRect mirrored(const QStyleOptionViewItem &option, const QRect &rect)
{
    return QStyle::visualRect(option.direction, option.rect, rect);
}

void paintCheck(QPainter *painter,
                const QStyleOptionViewItem &option,
                const QRect &rect,
                const QModelIndex &index)
{
    QStyleOptionViewItem check = option;
    check.rect = rect;
    check.state &= ~(QStyle::State_HasFocus | QStyle::State_On | QStyle::State_Off);
    const auto state = static_cast<Qt::CheckState>(index.data(Qt::CheckStateRole).toInt());
    check.state |= state == Qt::Checked ? QStyle::State_On : QStyle::State_Off;
    const QStyle *style = option.widget != nullptr ? option.widget->style() : qApp->style();
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &check, painter, option.widget);
}

} // namespace

QSize badgeSize(const QFont &font, const QString &text)
{
    const QFontMetrics metrics(badgeFont(font));
    return {metrics.horizontalAdvance(text) + 2 * kBadgePadding, metrics.height() + 2};
}

void paintBadge(
    QPainter *painter, const QRect &rect, const QFont &font, const QString &text, const QColor &ink)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QColor fill = ink;
    fill.setAlphaF(kBadgeInkShare);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    const qreal radius = rect.height() / 2.0;
    painter->drawRoundedRect(rect, radius, radius);
    painter->setFont(badgeFont(font));
    painter->setPen(ink);
    painter->drawText(rect, Qt::AlignCenter | Qt::TextSingleLine, text);
    painter->restore();
}

void SidebarDelegate::paint(QPainter *painter,
                            const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const QPalette::ColorGroup group =
        option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    row.palette.setColor(group, QPalette::Highlight, readableHighlight(option.palette, group));
    const QStyle *style = row.widget != nullptr ? row.widget->style() : qApp->style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &row, painter, row.widget);
    const RowParts parts = partsOf(option, index);
    if (!parts.check.isEmpty())
        paintCheck(painter, option, mirrored(option, parts.check), index);

    const QColor ink =
        option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
    painter->save();
    painter->setFont(headlineFont(option.font));
    painter->setPen(ink);
    const QString name = painter->fontMetrics().elidedText(
        index.data().toString(), Qt::ElideRight, parts.name.width());
    painter->drawText(
        mirrored(option, parts.name), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, name);
    painter->restore();
    if (!parts.badge.isEmpty())
        paintBadge(painter,
                   mirrored(option, parts.badge),
                   option.font,
                   index.data(BadgeRole).toString(),
                   ink);
    // Nothing else shows that the list has the keyboard focus.
    if (option.state.testFlag(QStyle::State_HasFocus) &&
        option.state.testFlag(QStyle::State_KeyboardFocusChange))
        paintFocusRing(painter, option.rect, ink);
    index.data(SymbolRole)
        .value<QIcon>()
        .paint(painter,
               mirrored(option, parts.symbol),
               Qt::AlignCenter,
               isSelected ? QIcon::Selected : QIcon::Normal);
}

QSize SidebarDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QFontMetrics metrics(headlineFont(option.font));
    const int height = metrics.height() + 2 * kRowPadding;
    // The name is elided first, so it counts only with a minimum width.
    constexpr int kLeastNameWidth = 60;
    return {kLeastNameWidth + partsOf(option, index).badge.width(), height};
}

bool SidebarDelegate::editorEvent(QEvent *event,
                                  QAbstractItemModel *model,
                                  const QStyleOptionViewItem &option,
                                  const QModelIndex &index)
{
    if (!isCheckable(index))
        return false;
    const auto toggle = [&] {
        const bool isOn = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        return model->setData(index, isOn ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    };
    if (event->type() == QEvent::KeyPress) {
        const auto key = static_cast<const QKeyEvent *>(event)->key(); // NOLINT: type() was checked
        return (key == Qt::Key_Space || key == Qt::Key_Select) && toggle();
    }
    const bool isMouse = event->type() == QEvent::MouseButtonRelease ||
                         event->type() == QEvent::MouseButtonPress ||
                         event->type() == QEvent::MouseButtonDblClick;
    if (!isMouse)
        return false;
    const auto *mouse = static_cast<const QMouseEvent *>(event); // NOLINT: type() was checked
    // Large enough for touch.
    const QRect area = mirrored(option, partsOf(option, index).check).adjusted(-6, -6, 4, 6);
    if (mouse->button() != Qt::LeftButton || !area.contains(mouse->position().toPoint()))
        return false;
    return event->type() != QEvent::MouseButtonRelease || toggle();
}

} // namespace penwick
