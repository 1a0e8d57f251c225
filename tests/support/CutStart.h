#pragma once

#include <QString>

namespace penwick::test {

/// A text as long as a macro, a file or a profile may contain.
inline QString hugeText(const QString &line = QStringLiteral("名"))
{
    return line.repeated(1'000'000 / line.size());
}

/// True when `shown` is a start of `whole` with an ellipsis, of at least half of `longest` and at
/// most `longest` code units.
inline bool isCutStart(const QString &shown, const QString &whole, qsizetype longest)
{
    return shown.size() > longest / 2 && shown.size() <= longest + 1 && shown.endsWith(u'…') &&
           whole.startsWith(shown.chopped(1));
}

} // namespace penwick::test
