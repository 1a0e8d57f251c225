#pragma once

#include <QList>
#include <QString>

namespace penwick {

/// An entry of the palette.
struct PaletteRow
{
    enum class Kind { Command, Macro, Tab, File, Place, Hint };

    Kind kind = Kind::Hint;
    QString id;     ///< Unique among the rows with an id.
    QString title;  ///< One line.
    QString detail; ///< Shown after the title in a quieter colour; may be empty.
    QString badge;  ///< Shown in a capsule; may be empty.
    QString atEnd;  ///< Shown at the far end: a key, or a line's number.
    QString words;  ///< More words that find the row.
    bool isEnabled = true;
    qint64 offset = 0; ///< Of a place in the text, in UTF-16 code units.
    QString message;   ///< What the status bar says after going to the place; may be empty.
};

/// Finds rows by typed words.
class PaletteSearch final
{
public:
    PaletteSearch() = default;

    explicit PaletteSearch(const QList<PaletteRow> &rows) { append(rows); }

    void append(const QList<PaletteRow> &rows);

    /// Gives the row with this id another text at its far end.
    void setAtEnd(const QString &id, const QString &text);
    /// Gives the row with this id another badge. Words do not find the row by it.
    void setBadge(const QString &id, const QString &badge);

    /// Returns the rows that all words of `typed` are found in, the best first, rows of equal rank
    /// in their order; rows that are not enabled come last.
    [[nodiscard]] QList<PaletteRow> find(const QString &typed, bool onlyCommands = false) const;

private:
    struct Entry
    {
        PaletteRow row;
        QString title; // In the form of `searchable`, like the next.
        QString others;
    };

    QList<Entry> m_entries;
};

} // namespace penwick
