#include "command/PaletteRow.h"

#include "command/WordQuery.h"
#include "text/CutText.h"

#include <algorithm>
#include <iterator>

namespace penwick {

namespace {

constexpr int kNotEnabled = 10; // Added to the rank.

} // namespace

void PaletteSearch::append(const QList<PaletteRow> &rows)
{
    m_entries.reserve(m_entries.size() + rows.size());
    for (const PaletteRow &row : rows)
        m_entries.append({row,
                          searchable(cutText(row.title, kLongestName)),
                          searchable(cutText(row.detail, kLongestName) + u'\n' + row.badge + u'\n' +
                                     row.words)});
}

void PaletteSearch::setAtEnd(const QString &id, const QString &text)
{
    for (Entry &entry : m_entries)
        if (entry.row.id == id)
            entry.row.atEnd = text;
}

void PaletteSearch::setBadge(const QString &id, const QString &badge)
{
    for (Entry &entry : m_entries)
        if (entry.row.id == id)
            entry.row.badge = badge;
}

QList<PaletteRow> PaletteSearch::find(const QString &typed, bool onlyCommands) const
{
    const WordQuery query(typed);
    QList<std::pair<int, const PaletteRow *>> found;
    for (const Entry &entry : m_entries) {
        if (onlyCommands && entry.row.kind != PaletteRow::Kind::Command)
            continue;
        if (const auto rank = query.rank(entry.title, entry.others))
            found.append({*rank + (entry.row.isEnabled ? 0 : kNotEnabled), &entry.row});
    }
    std::stable_sort(
        found.begin(), found.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    QList<PaletteRow> rows;
    rows.reserve(found.size());
    std::transform(found.cbegin(), found.cend(), std::back_inserter(rows), [](const auto &one) {
        return *one.second;
    });
    return rows;
}

} // namespace penwick
