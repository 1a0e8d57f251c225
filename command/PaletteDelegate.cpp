#include "command/PaletteDelegate.h"

#include "command/PaletteModel.h"
#include "command/ReadablePlaceholder.h"
#include "controls/ColorContrast.h"
#include "controls/SidebarDelegate.h"
#include "text/CutText.h"

#include <QPainter>

namespace penwick {

namespace {

constexpr int kRowMargin = 12;
constexpr int kRowGap = 10;
constexpr int kRowPadding = 6;

/// Draws the texts of one row, each into what the ones before have left of it.
class RowPainter final
{
public:
    RowPainter(QPainter *painter, const QStyleOptionViewItem &option)
        : m_painter(painter)
        , m_option(option)
        , m_free(option.rect.adjusted(kRowMargin, 0, -kRowMargin, 0))
    {
    }

    void addAtEnd(const QString &text, const QColor &ink)
    {
        if (text.isEmpty())
            return;
        const int width = qMin(widthOf(text), m_free.width() / 2);
        draw(text, QRect(m_free.right() - width + 1, m_free.top(), width, m_free.height()), ink);
        m_free.setRight(m_free.right() - width - kRowGap);
    }

    /// \param reserved the width that stays free after the text.
    void addAtStart(const QString &text, const QColor &ink, int reserved = 0)
    {
        const int width = qMin(widthOf(text), m_free.width() - reserved);
        if (text.isEmpty() || width <= 0)
            return;
        draw(text, QRect(m_free.left(), m_free.top(), width, m_free.height()), ink);
        m_free.setLeft(m_free.left() + width + kRowGap);
    }

    void addBadge(const QString &text, const QColor &ink)
    {
        const QSize size = badgeSize(m_option.font, text);
        if (text.isEmpty() || size.width() > m_free.width())
            return;
        const QPoint corner(m_free.left(), m_free.center().y() - (size.height() - 1) / 2);
        paintBadge(m_painter, mirrored(QRect(corner, size)), m_option.font, text, ink);
        m_free.setLeft(m_free.left() + size.width() + kRowGap);
    }

private:
    // One pixel more, since a text exactly as wide as its rectangle may be elided.
    [[nodiscard]] int widthOf(const QString &text) const
    {
        return m_option.fontMetrics.horizontalAdvance(text) + 1;
    }

    [[nodiscard]] QRect mirrored(const QRect &rect) const
    {
        return QStyle::visualRect(m_option.direction, m_option.rect, rect);
    }

    void draw(const QString &text, const QRect &rect, const QColor &ink)
    {
        m_painter->setPen(ink);
        const QString shown = m_option.fontMetrics.elidedText(text, Qt::ElideRight, rect.width());
        m_painter->drawText(
            mirrored(rect), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
    }

    QPainter *m_painter;
    const QStyleOptionViewItem &m_option;
    QRect m_free;
};

} // namespace

void PaletteDelegate::paint(QPainter *painter,
                            const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    QPalette palette = option.palette;
    palette.setCurrentColorGroup(QPalette::Active); // The focus is in the field, not here.
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    const QColor ground = isSelected ? readableHighlight(palette) : palette.color(QPalette::Base);
    const QColor ink = palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
    const QColor quiet = quietInk(ink, ground);
    painter->save();
    painter->fillRect(option.rect, ground);
    painter->setFont(option.font);
    const QColor titleInk = isEnabled ? ink : quiet;
    const QString badge = index.data(PaletteModel::BadgeRole).toString();
    RowPainter row(painter, option);
    row.addAtEnd(index.data(PaletteModel::AtEndRole).toString(), quiet);
    row.addAtStart(index.data().toString(),
                   titleInk,
                   badge.isEmpty() ? 0 : badgeSize(option.font, badge).width() + kRowGap);
    row.addBadge(badge, titleInk);
    row.addAtStart(cutText(index.data(PaletteModel::DetailRole).toString(), kLongestName), quiet);
    painter->restore();
}

QSize PaletteDelegate::sizeHint(const QStyleOptionViewItem &option,
                                const QModelIndex & /*index*/) const
{
    return {0, option.fontMetrics.height() + 2 * kRowPadding};
}

} // namespace penwick
