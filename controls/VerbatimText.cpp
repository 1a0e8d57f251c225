#include "controls/VerbatimText.h"

#include <QTextDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

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

QString longToolTip(const QString &text)
{
    constexpr qsizetype kUnits = 2000;
    constexpr qsizetype kLines = 30;
    qsizetype end = std::min(text.size(), kUnits);
    if (end < text.size() && text[end].isLowSurrogate())
        --end;
    QString shown = text.first(end);
    shown.replace(u"\r\n"_s, u"\n"_s);
    const QStringList lines = shown.split(u'\n');
    if (lines.size() > kLines)
        shown = lines.first(kLines).join(u'\n');
    if (end < text.size() || lines.size() > kLines)
        shown += u'…';
    // The toolkit wraps only text with markup.
    return shown.isEmpty()
               ? shown
               : u"<p style=\"white-space: pre-wrap\">"_s + shown.toHtmlEscaped() + u"</p>"_s;
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
