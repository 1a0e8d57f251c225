#include "view/EditorFont.h"

#include "platform/desktop/SystemFonts.h"

#include <QFontDatabase>
#include <QStringList>

namespace penwick {

QFont editorFont(int pixels)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // The name may be an alias such as "monospace", which is ignored in a list of several families.
    // Asking the font for its family would load it, and load it again once the list is complete.
    const QString family = resolvedFontFamily(font.family());
    // Noto Sans CJK JP keeps Japanese from being drawn in Chinese glyph shapes, Noto Color Emoji
    // keeps emoji from being drawn in black. The proportional CJK family is used instead of the
    // monospaced one: the characters that a fixed font lacks look the same in both, and the menus
    // have loaded it already.
    font.setFamilies(
        {family, QStringLiteral("Noto Sans CJK JP"), QStringLiteral("Noto Color Emoji")});
    setFontPixels(font, pixels);
    font.setWeight(QFont::Normal);
    return font;
}

} // namespace penwick
