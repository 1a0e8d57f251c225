#pragma once

#include "text/Text.h"
#include "text/TextRange.h"

#include <vector>

namespace penwick {

/// Some lines of a text by their numbers, 0-based. A visual line break ends a line: each separator,
/// CR LF as one.
struct LineSpan
{
    qint64 first = 0;
    qint64 count = 1;
};

/// The number of the line of `offset`. Between CR and LF, it is the line that they end. O(log n),
/// as are the next four functions.
[[nodiscard]] qint64 lineNumber(const Text &text, qint64 offset);

/// The offset of the first unit of the line of `offset`.
[[nodiscard]] qint64 lineStart(const Text &text, qint64 offset);

/// The lines of which `selection` contains a part. A selection that ends at the start of a line
/// does not contain that line; a caret selects its line.
[[nodiscard]] LineSpan selectedLines(const Text &text, TextRange selection);

/// The range of the lines, line breaks included.
[[nodiscard]] TextRange rangeOf(const Text &text, LineSpan lines);

/// The range of a line without its line break; past the last line, the end of the text.
[[nodiscard]] TextRange contentOfLine(const Text &text, qint64 line);

/// True for tabs and every character of Unicode's space separators, such as U+3000.
[[nodiscard]] bool isLineBlank(QChar unit);

/// A line of a `LineBlock`, without a copy of its characters.
struct BlockLine
{
    QStringView content;
    QStringView end; ///< The line break; empty for the last line of a text.
};

/// A place by line and column of a block: UTF-16 code units, both 0-based.
struct BlockPlace
{
    qint64 line = 0; ///< The number of lines: after the block.
    qint64 column = 0;
};

/// A copy of some lines of a text, divided into them.
class LineBlock final
{
public:
    /// \param count the number of lines in `units`; more, where empty ones follow the last break.
    LineBlock(QString units, qint64 count);
    Q_DISABLE_COPY_MOVE(LineBlock) // The lines point into the block.
    ~LineBlock() = default;

    [[nodiscard]] const QString &units() const { return m_units; }

    [[nodiscard]] const std::vector<BlockLine> &lines() const { return m_lines; }

    [[nodiscard]] qint64 count() const { return static_cast<qint64>(m_lines.size()); }

    /// \param offset within the block, UTF-16 code units, 0-based.
    [[nodiscard]] BlockPlace placeAt(qint64 offset) const;
    /// The nearest offset: a column past the line's end is at its end.
    [[nodiscard]] qint64 offsetOf(BlockPlace place) const;

private:
    [[nodiscard]] qint64 startOf(const BlockLine &line) const
    {
        return line.content.data() - m_units.constData();
    }

    QString m_units;
    std::vector<BlockLine> m_lines;
};

/// Joins lines to a text. An empty line after a CR gets a CR in place of an LF, because both would
/// be one line break.
class LineWriter final
{
public:
    /// \param followsCr whether the text has a CR before the first line.
    explicit LineWriter(bool followsCr)
        : m_followsCr(followsCr)
    {
    }

    void add(QStringView content, QStringView end);

    [[nodiscard]] const QString &units() const { return m_units; }

private:
    QString m_units;
    bool m_followsCr;
};

} // namespace penwick
