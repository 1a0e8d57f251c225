#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

#include <cstddef>

namespace penwick::wording {

/// A row of a built-in table. Both refer to string literals.
struct TextRow
{
    QStringView key;
    QStringView text;
};

/// Returns the texts by key. The strings share the characters of the rows, which must live as long
/// as the program.
template <std::size_t Count> QHash<QString, QString> textsByKey(const TextRow (&rows)[Count])
{
    const auto shared = [](QStringView constant) {
        return QString::fromRawData(constant.data(), constant.size());
    };
    QHash<QString, QString> texts;
    texts.reserve(Count);
    for (const TextRow &row : rows)
        texts.insert(shared(row.key), shared(row.text));
    return texts;
}

} // namespace penwick::wording
