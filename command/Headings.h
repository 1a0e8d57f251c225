#pragma once

#include "text/Text.h"

#include <QList>
#include <QString>

namespace penwick {

/// A line that looks like a heading.
struct Heading
{
    qint64 offset = 0; ///< Of the line, in UTF-16 code units.
    qint64 line = 0;   ///< 1-based, as in `LinePlace`.
    QString text;      ///< The start of the line, without blanks around.
};

/// True for a line that starts with ■, □, ◆ or ◇, with one to six # and then a blank or a character
/// that is not ASCII, or with a number such as 第三章 or 第2節. Blanks before it do not count.
[[nodiscard]] bool isHeading(QStringView line);

/// Looks for headings step by step, because a text may be too long for one.
class HeadingScan final
{
public:
    explicit HeadingScan(Text text)
        : m_text(std::move(text))
    {
    }

    [[nodiscard]] bool isDone() const { return m_offset >= m_text.size(); }

    /// Looks through the next part of the text, whose size is bounded, and returns the headings
    /// whose lines start there.
    [[nodiscard]] QList<Heading> step();

private:
    Text m_text;
    qint64 m_offset = 0;
    qint64 m_line = 1;
    bool m_isAtLineStart = true;
    bool m_isAfterCr = false;
};

} // namespace penwick
