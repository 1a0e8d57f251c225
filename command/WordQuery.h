#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace penwick {

/// Returns the form of a text in which words are looked for: case and width of characters do not
/// matter in it.
[[nodiscard]] QString searchable(const QString &text);

/// Words that a user types to find an entry. Each of them must occur somewhere in it, in any order.
class WordQuery final
{
public:
    /// \param typed words separated by blanks.
    explicit WordQuery(const QString &typed);

    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }

    /// Returns how well an entry matches, 0 for best; no value when it does not.
    /// \param title, others in the form of `searchable`; a word found in the title counts more.
    [[nodiscard]] std::optional<int> rank(const QString &title, const QString &others) const;

private:
    QStringList m_words;
};

} // namespace penwick
