#include "window/TabMimeData.h"

#include "window/EditorWindow.h"
#include "window/EditorWindowController.h"

namespace penwick {

using namespace Qt::StringLiterals;

TabMimeData::TabMimeData(EditorWindowController *tab)
    : m_tab(tab)
{
    // Windows are not offered a drag that has no format.
    setData(u"application/x-penwick-tab"_s, QByteArray());
}

TabMimeData::~TabMimeData() = default;

const TabMimeData *TabMimeData::of(const QMimeData *mime)
{
    return qobject_cast<const TabMimeData *>(mime);
}

EditorWindowController *TabMimeData::tab() const
{
    return m_tab;
}

void TabMimeData::dropOn(EditorWindow *window, int index) const
{
    m_target = window;
    m_index = index;
}

EditorWindow *TabMimeData::target() const
{
    return m_target;
}

} // namespace penwick
