#include "controls/VerbatimText.h"

#include <QTextDocument>

#include <algorithm>

namespace penwick {

QString verbatimText(const QString &title)
{
    QString text = title;
    text.replace(u'&', QStringLiteral("&&"));
    text.replace(u'\t', u' ');
    return text;
}

QString verbatimToolTip(const QString &text)
{
    return Qt::mightBeRichText(text)
               ? QStringLiteral("<p>") + text.toHtmlEscaped() + QStringLiteral("</p>")
               : text;
}

QString visibleLine(const QString &text)
{
    const auto isInvisible = [](QChar character) {
        const char16_t unit = character.unicode();
        const bool isDirection = unit == 0x061C || unit == 0x200E || unit == 0x200F ||
                                 (unit >= 0x202A && unit <= 0x202E) ||
                                 (unit >= 0x2066 && unit <= 0x2069);
        return isDirection || character.category() == QChar::Other_Control ||
               character.category() == QChar::Separator_Line ||
               character.category() == QChar::Separator_Paragraph;
    };
    QString line = text;
    std::replace_if(line.begin(), line.end(), isInvisible, QChar(QChar::ReplacementCharacter));
    return line;
}

} // namespace penwick
