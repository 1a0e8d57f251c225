#include "controls/VerbatimText.h"

namespace penwick {

QString verbatimText(const QString &title)
{
    QString text = title;
    text.replace(u'&', QStringLiteral("&&"));
    text.replace(u'\t', u' ');
    return text;
}

} // namespace penwick
