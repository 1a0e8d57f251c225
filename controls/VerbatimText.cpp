#include "controls/VerbatimText.h"

#include <QTextDocument>

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

} // namespace penwick
