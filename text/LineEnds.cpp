#include "text/LineEnds.h"

#include "text/TextBuilder.h"
#include "text/TextTree.h"

#include <algorithm>
#include <string>

namespace penwick {

namespace {

/// Returns the kind that comes first, of those that `text` has at least `count` times.
LineEnd earliest(const Text &text, qint64 count)
{
    const TextMetrics metrics = text.metrics();
    LineEnd first = LineEnd::LineFeed;
    qint64 firstOffset = text.size() + 1;
    for (const LineEnd kind : kLineEnds) {
        if (metrics.lineEnds(kind) < count)
            continue;
        const qint64 offset = text.offsetAfterLineEnd(kind, 1);
        if (offset < firstOffset) {
            first = kind;
            firstOffset = offset;
        }
    }
    return first;
}

/// True when `offset` is a place in `text` where `unit` follows.
bool follows(const Text &text, qint64 offset, char16_t unit)
{
    return offset < text.size() && text.at(offset) == unit;
}

bool precedes(const Text &text, qint64 offset, char16_t unit)
{
    return offset > 0 && text.at(offset - 1) == unit;
}

/// Builds a text with other line ends from the nodes of an old one.
class LineEndReplacer final
{
public:
    explicit LineEndReplacer(LineEnd lineEnd)
        : m_lineEnd(lineEnd)
    {
    }

    void append(const TextNodePtr &node)
    {
        if (node->metrics().hasOnly(m_lineEnd)) {
            m_done = TextNode::concat(finish(), node);
        } else if (!node->isLeaf()) {
            append(node->left());
            append(node->right());
        } else if (node->isAscii()) {
            appendReplaced(node->ascii(), m_ascii);
            if (m_ascii.size() >= kBlock)
                flushAscii();
        } else {
            flushAscii();
            m_utf16.clear();
            appendReplaced(node->utf16(), m_utf16);
            m_builder.appendUtf16(m_utf16);
        }
    }

    [[nodiscard]] TextNodePtr finish()
    {
        flushAscii();
        m_done = TextNode::concat(m_done, m_builder.finishNode());
        return m_done;
    }

private:
    // The builder is fastest with ASCII blocks of many chunks.
    static constexpr std::size_t kBlock = 32 * TextNode::kLeafUnits;

    void flushAscii()
    {
        m_builder.appendAscii(m_ascii);
        m_ascii.clear();
    }

    /// Appends `units`, which split no CR LF pair, with the new line ends.
    template <typename Units, typename Result>
    void appendReplaced(Units units, Result &result) const
    {
        const QStringView view = lineEndUnits(m_lineEnd);
        const Result lineEnd(view.utf16(), view.utf16() + view.size());
        const auto isLineEnd = [](auto unit) { return unit == '\n' || unit == '\r'; };
        const auto *unit = units.data();
        const auto *const end = unit + units.size();
        while (true) {
            const auto *const found = std::find_if(unit, end, isLineEnd);
            result.append(unit, found);
            if (found == end)
                return;
            result.append(lineEnd);
            const bool isPair = *found == '\r' && found + 1 != end && found[1] == '\n';
            unit = found + (isPair ? 2 : 1);
        }
    }

    LineEnd m_lineEnd;
    TextNodePtr m_done;
    TextBuilder m_builder;
    std::string m_ascii; // Comes after what the builder has.
    std::u16string m_utf16;
};

} // namespace

TextNodePtr tree::withLineEnds(const TextNodePtr &node, LineEnd lineEnd)
{
    LineEndReplacer replacer(lineEnd);
    replacer.append(node);
    return replacer.finish();
}

QStringView lineEndUnits(LineEnd lineEnd)
{
    switch (lineEnd) {
    case LineEnd::LineFeed:
        return u"\n";
    case LineEnd::CrLf:
        return u"\r\n";
    case LineEnd::CarriageReturn:
        return u"\r";
    }
    return {};
}

LineEnd firstLineEnd(const Text &text)
{
    return earliest(text, 1);
}

LineEnd mostFrequentLineEnd(const Text &text)
{
    qint64 most = 1;
    for (const LineEnd kind : kLineEnds)
        most = std::max(most, text.metrics().lineEnds(kind));
    return earliest(text, most);
}

LineEnd lineEndToInsert(const Text &text, TextRange range)
{
    const LineEnd first = firstLineEnd(text);
    if (first == LineEnd::LineFeed && precedes(text, range.location, u'\r'))
        return LineEnd::CarriageReturn;
    if (first == LineEnd::CarriageReturn && follows(text, range.end(), u'\n'))
        return LineEnd::LineFeed;
    return first;
}

TextRange rangeOfLineEnds(const Text &text, TextRange range, LineEnd lineEnd)
{
    qint64 start = range.location;
    qint64 end = range.end();
    const auto startsWithLineEnd = [&] {
        return follows(text, start, u'\n') ||
               (lineEnd == LineEnd::LineFeed && follows(text, start, u'\r'));
    };
    const auto endsWithLineEnd = [&] {
        return precedes(text, end, u'\r') ||
               (lineEnd == LineEnd::CarriageReturn && precedes(text, end, u'\n'));
    };
    while (precedes(text, start, u'\r') && startsWithLineEnd())
        --start;
    while (follows(text, end, u'\n') && endsWithLineEnd())
        ++end;
    return TextRange::between(start, end);
}

} // namespace penwick
