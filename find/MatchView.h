#pragma once

#include <QRegularExpression>
#include <QStringView>
#include <QtGlobal>

namespace penwick {

/// Matches in a view without copying it; the units must outlive the match. Qt 6.5 renamed the
/// member function for this and deprecated the old name.
[[nodiscard]] inline QRegularExpressionMatch
matchView(const QRegularExpression &expression,
          QStringView units,
          qsizetype offset = 0,
          QRegularExpression::MatchType type = QRegularExpression::NormalMatch,
          QRegularExpression::MatchOptions options = QRegularExpression::NoMatchOption)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    return expression.matchView(units, offset, type, options);
#else
    return expression.match(units, offset, type, options);
#endif
}

} // namespace penwick
