#include "editor/EditorFont.h"

#include "platform/SystemFonts.h"

#include <QFontDatabase>
#include <QStringList>

namespace penwick {

QFont editorFont(qreal pointSize)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // The name may be an alias, as "monospace", which in a list with others is passed over. Asking
    // the font itself would load it, and once more when the list is complete.
    const QString family = fontFamilyBehind(font.family());
    // Without the first, Japanese may come in Chinese shapes; without the second, emoji in black.
    // The family of the menus rather than its monospaced sister: what a fixed font lacks looks the
    // same in both, and it is loaded already.
    font.setFamilies(
        {family, QStringLiteral("Noto Sans CJK JP"), QStringLiteral("Noto Color Emoji")});
    font.setPointSizeF(pointSize);
    font.setWeight(QFont::Normal);
    return font;
}

} // namespace penwick
