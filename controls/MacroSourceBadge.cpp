#include "controls/MacroSourceBadge.h"

#include "controls/SidebarDelegate.h"
#include "wording/WordingLookup.h"

#include <QPainter>

namespace penwick {

using namespace Qt::StringLiterals;

MacroSourceBadge::MacroSourceBadge(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QString MacroSourceBadge::sourceLabel(const QString &source)
{
    if (source == u"builtin"_s)
        return wording::text(u"macro.sourceBuiltin"_s);
    if (source == u"user"_s)
        return wording::text(u"macro.sourceUser"_s);
    if (source == u"imported"_s)
        return wording::text(u"macro.sourceImported"_s);
    return {};
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
