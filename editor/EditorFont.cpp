#include "editor/EditorFont.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QStringList>

namespace penwick {

QFont editorFont(qreal pointSize)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // The name may be an alias, as "monospace", which in a list with others is passed over.
    const QString family = QFontInfo(font).family();
    // Without the first, Japanese may come in Chinese shapes; without the second, emoji in black.
    font.setFamilies(
        {family, QStringLiteral("Noto Sans Mono CJK JP"), QStringLiteral("Noto Color Emoji")});
    font.setPointSizeF(pointSize);
    font.setWeight(QFont::Normal);
    return font;
}

} // namespace penwick
