#include "command/WordQuery.h"

#include <algorithm>

namespace penwick {

QString searchable(const QString &text)
{
    return text.normalized(QString::NormalizationForm_KC).toCaseFolded();
}

WordQuery::WordQuery(const QString &typed)
    : m_words(searchable(typed).simplified().split(u' ', Qt::SkipEmptyParts))
{
}

std::optional<int> WordQuery::rank(const QString &title, const QString &others) const
{
    const auto isFound = [&](const QString &word) {
        return title.contains(word) || others.contains(word);
    };
    if (!std::all_of(m_words.cbegin(), m_words.cend(), isFound))
        return std::nullopt;
    if (isEmpty() || title.startsWith(m_words.constFirst()))
        return 0;
    const auto isInTitle = [&](const QString &word) { return title.contains(word); };
    return std::all_of(m_words.cbegin(), m_words.cend(), isInTitle) ? 1 : 2;
}

} // namespace penwick
