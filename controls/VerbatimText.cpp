#include "controls/VerbatimText.h"

#include <QAbstractButton>
#include <QLabel>
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

void setVerbatimText(QLabel *label, const QString &text)
{
    label->setTextFormat(Qt::PlainText);
    label->setText(label->buddy() != nullptr ? verbatimText(text) : text);
}

void setVerbatimText(QAbstractButton *button, const QString &text)
{
    button->setText(verbatimText(text));
}

QString verbatimToolTip(const QString &text, const QString &hint)
{
    constexpr qsizetype kLongest = 1000;
    constexpr qsizetype kLongestLine = 80; // A longer plain text would not wrap.
    QString shown = text;
    if (shown.size() > kLongest) {
        shown.truncate(shown.at(kLongest - 1).isHighSurrogate() ? kLongest - 1 : kLongest);
        shown += u'…';
    }
    if (!hint.isEmpty())
        shown += (shown.isEmpty() ? QString() : QStringLiteral("\n")) + hint;
    if (shown.size() <= kLongestLine && !Qt::mightBeRichText(shown))
        return shown;
    return QStringLiteral("<p>%1</p>")
        .arg(shown.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")));
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
    constexpr qsizetype kUnwrapped = 40;
    if (shown.size() <= kUnwrapped && !Qt::mightBeRichText(shown))
        return shown;
    // The toolkit wraps only text with markup.
    return u"<p style=\"white-space: pre-wrap\">"_s + shown.toHtmlEscaped() + u"</p>"_s;
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
