#include "text/CutText.h"

#include "text/Text.h"

#include <algorithm>

namespace penwick {

QString cutText(const QString &text, qsizetype longest)
{
    if (text.size() <= longest)
        return text;
    // The character after the cut decides whether a cluster ends there.
    const Text start(QStringView(text).first(std::min(text.size(), longest + 2)));
    const qint64 boundary = start.clusterBoundaryAtOrBefore(longest);
    return text.first(boundary > 0 ? boundary : start.pairStart(longest)) + u'…';
}

} // namespace penwick
