#include "view/EditorFont.h"

#include "platform/desktop/SystemFonts.h"

#include <QFontDatabase>
#include <QStringList>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// Returns the Japanese one of the families that have the same design, but differ in the glyph
/// shapes of ideographs; another family as it is.
QString japaneseVariety(const QString &family)
{
    for (const QStringView region : {u" CJK SC", u" CJK TC", u" CJK HK", u" CJK KR"}) {
        if (!family.endsWith(region))
            continue;
        QString japanese = family.chopped(region.size()) + u" CJK JP"_s;
        if (resolvedFontFamily(japanese) == japanese)
            return japanese;
    }
    return family;
}

} // namespace

QFont editorFont(int pixels, const QString &family)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // The name may be an alias such as "monospace", which is ignored in a list of several families.
    // Asking the font for its family would load it, and load it again once the list is complete.
    const QString fixed = japaneseVariety(resolvedFontFamily(font.family()));
    // Noto Sans CJK JP keeps Japanese from being drawn in Chinese glyph shapes, Noto Color Emoji
    // keeps emoji from being drawn in black. The proportional CJK family is used instead of the
    // monospaced one: the characters that a fixed font lacks look the same in both, and the menus
    // have loaded it already.
    QStringList families{fixed, u"Noto Sans CJK JP"_s, u"Noto Color Emoji"_s};
    if (!family.isEmpty())
        families.prepend(family);
    font.setFamilies(families);
    setFontPixels(font, pixels);
    font.setWeight(QFont::Normal);
    return font;
}

} // namespace penwick
