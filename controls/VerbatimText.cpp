#include "controls/VerbatimText.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTextDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace penwick {

QString verbatimText(const QString &title)
{
    QString text = cutText(title, kLongestShown);
    text.replace(u'&', QStringLiteral("&&"));
    text.replace(u'\t', u' ');
    return text;
}

void setVerbatimText(QLabel *label, const QString &text)
{
    label->setTextFormat(Qt::PlainText);
    label->setText(label->buddy() != nullptr ? verbatimText(text) : cutText(text, kLongestShown));
}

void setVerbatimText(QAbstractButton *button, const QString &text)
{
    button->setText(verbatimText(text));
}

QString verbatimToolTip(const QString &text, const QString &hint)
{
    constexpr qsizetype kLongestLine = 80; // A longer plain text would not wrap.
    QString shown = cutText(text, kLongestToolTip);
    if (!hint.isEmpty())
        shown += (shown.isEmpty() ? QString() : QStringLiteral("\n")) + hint;
    if (shown.size() <= kLongestLine && !Qt::mightBeRichText(shown))
        return shown;
    return QStringLiteral("<p>%1</p>")
        .arg(shown.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")));
}

QString longToolTip(const QString &text)
{
    constexpr qsizetype kLines = 30;
    QString shown = cutText(text, kLongestToolTip);
    shown.replace(u"\r\n"_s, u"\n"_s);
    const QStringList lines = shown.split(u'\n');
    if (lines.size() > kLines)
        shown = lines.first(kLines).join(u'\n') + u'…';
    constexpr qsizetype kUnwrapped = 40;
    if (shown.size() <= kUnwrapped && !Qt::mightBeRichText(shown))
        return shown;
    // The toolkit wraps only text with markup.
    return u"<p style=\"white-space: pre-wrap\">"_s + shown.toHtmlEscaped() + u"</p>"_s;
}

QString visibleLine(const QString &text, qsizetype longest)
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
    QString line = cutText(text, longest);
    std::replace_if(line.begin(), line.end(), isInvisible, QChar(QChar::ReplacementCharacter));
    return line;
}

} // namespace penwick
