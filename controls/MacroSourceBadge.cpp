#include "controls/MacroSourceBadge.h"

#include "controls/SidebarDelegate.h"
#include "wording/SourceLabel.h"

#include <QPainter>

namespace penwick {

MacroSourceBadge::MacroSourceBadge(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QString MacroSourceBadge::sourceLabel(const QString &source)
{
    return wording::sourceLabel(source);
}

void MacroSourceBadge::setSource(const QString &source)
{
    m_label = sourceLabel(source);
    setAccessibleName(m_label);
    setVisible(!m_label.isEmpty());
    updateGeometry();
    update();
}

QSize MacroSourceBadge::sizeHint() const
{
    return badgeSize(font(), m_label);
}

void MacroSourceBadge::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintBadge(&painter, rect(), font(), m_label, palette().color(QPalette::WindowText));
}

} // namespace penwick
