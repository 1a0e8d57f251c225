#include "lines/TextRectangle.h"

#include "text/LineEnds.h"
#include "text/Separators.h"
#include "text/TextBuilder.h"

#include <QString>

namespace penwick {

namespace {

constexpr qint64 kMostUnits = qint64(1) << 27;

std::u16string_view viewOf(QStringView units)
{
    return {units.utf16(), static_cast<std::size_t>(units.size())};
}

/// Where the edges of a rectangle are in a line.
struct Edges
{
    ColumnStop left;
    ColumnStop right;
};

template <typename StopAt> Edges edgesAt(const TextRectangle &rectangle, const StopAt &stopAt)
{
    const ColumnStop left = stopAt(rectangle.left());
    return {left, rectangle.isEmpty() ? left : stopAt(rectangle.right())};
}

Edges edgesIn(QStringView line, const TextRectangle &rectangle, int tabWidth)
{
    const auto stop = [&](qint64 column) {
        return lastStop(line, {kColumnReach, column}, tabWidth);
    };
    return edgesAt(rectangle, stop);
}

Edges edgesIn(const Text &text, TextRange line, const TextRectangle &rectangle, int tabWidth)
{
    return edgesAt(rectangle, [&](qint64 column) {
        return lastStop(text, line, {kNoColumnLimit, column}, tabWidth);
    });
}

/// Columns from the end of a line to a column past it.
qint64 blanksTo(qint64 column, ColumnStop stop, qint64 lineLength)
{
    return stop.offset == lineLength ? column - stop.column : 0;
}

/// Visits the lines of a rectangle in order: most of them in blocks, because to find each by its
/// number takes longer, and huge ones without a copy.
class RowReader
{
public:
    RowReader(const Text &text, const TextRectangle &rectangle, int tabWidth)
        : m_text(text)
        , m_rectangle(rectangle)
        , m_tabWidth(tabWidth)
    {
    }

    virtual ~RowReader() = default;
    Q_DISABLE_COPY_MOVE(RowReader)

protected:
    void read(LineSpan lines)
    {
        constexpr qint64 kBlock = qint64(1) << 16;
        const TextRange range = rangeOf(m_text, lines);
        if (range.length <= kBlock) {
            const LineBlock block(m_text.slice(range.location, range.length), lines.count);
            for (const BlockLine &line : block.lines())
                readLine(line, edgesIn(line.content, m_rectangle, m_tabWidth));
        } else if (lines.count == 1) {
            const TextRange content = contentOfLine(m_text, lines.first);
            readHugeLine(range, content.length, edgesIn(m_text, content, m_rectangle, m_tabWidth));
        } else {
            const qint64 half = lines.count / 2;
            read({lines.first, half});
            read({lines.first + half, lines.count - half});
        }
    }

    /// The lines read from now on have no width.
    void collapse() { m_rectangle.anchor.column = m_rectangle.caret.column = m_rectangle.left(); }

    virtual void readLine(const BlockLine &line, const Edges &edges) = 0;
    /// \param line with its line break.
    /// \param length without it.
    virtual void readHugeLine(TextRange line, qint64 length, const Edges &edges) = 0;

    [[nodiscard]] const Text &text() const { return m_text; }

    [[nodiscard]] const TextRectangle &rectangle() const { return m_rectangle; }

private:
    const Text &m_text;
    TextRectangle m_rectangle;
    int m_tabWidth;
};

class RowCopy final : public RowReader
{
public:
    using RowReader::RowReader;

    [[nodiscard]] Text copy()
    {
        read(rectangle().lines());
        return m_builder.finish();
    }

private:
    void readLine(const BlockLine &line, const Edges &edges) override
    {
        add(line.content.sliced(edges.left.offset, edges.right.offset - edges.left.offset));
    }

    void readHugeLine(TextRange line, qint64 /*length*/, const Edges &edges) override
    {
        add(text().slice(line.location + edges.left.offset,
                         edges.right.offset - edges.left.offset));
    }

    void add(QStringView units)
    {
        if (!m_isFirst)
            m_builder.appendAscii("\n");
        m_isFirst = false;
        m_builder.appendUtf16(viewOf(units));
    }

    TextBuilder m_builder;
    bool m_isFirst = true;
};

class RowRewrite final : public RowReader
{
public:
    RowRewrite(const Text &text,
               const TextRectangle &rectangle,
               const RowContents &contents,
               int tabWidth)
        : RowReader(text, rectangle, tabWidth)
        , m_contents(contents)
        , m_tabWidth(tabWidth)
    {
    }

    [[nodiscard]] std::optional<RowsChange> change()
    {
        const LineSpan selected = rectangle().lines();
        const LineSpan all{selected.first, std::max(selected.count, m_contents.count)};
        const TextRange range = rangeOf(text(), all);
        if (range.length > kMostUnits)
            return std::nullopt;
        m_followsCr = range.location > 0 && text().at(range.location - 1) == u'\r';
        read(selected);
        collapse();
        const qint64 next = selected.first + selected.count;
        const qint64 lineCount = text().metrics().lineBreaks() + 1;
        const qint64 further = std::min(lineCount, all.first + all.count) - next;
        if (further > 0)
            read({next, further});
        while (m_row < m_contents.count && m_length <= kMostUnits) {
            addEnd(lineEndUnits(lineEndToInsert(text(), {text().size(), 0})));
            addContent(rectangle().left(), false);
        }
        if (m_length > kMostUnits)
            return std::nullopt;
        flush();
        return RowsChange{range, m_done, range.location + m_caret};
    }

private:
    void readLine(const BlockLine &line, const Edges &edges) override
    {
        const QStringView kept = line.content.sliced(edges.right.offset);
        add(line.content.first(edges.left.offset));
        addContent(blanksTo(rectangle().left(), edges.left, line.content.size()), !kept.isEmpty());
        add(kept);
        addEnd(line.end);
    }

    void readHugeLine(TextRange line, qint64 length, const Edges &edges) override
    {
        share({line.location, edges.left.offset});
        addContent(blanksTo(rectangle().left(), edges.left, length), edges.right.offset < length);
        share(TextRange::between(line.location + edges.right.offset, line.end()));
    }

    /// \param precedesText whether text follows in the row.
    void addContent(qint64 blanks, bool precedesText)
    {
        if (m_row++ >= m_contents.count)
            return;
        const QStringView content = m_contents.at(m_row - 1);
        if (!content.isEmpty() && !isSeparator(content.front().unicode()))
            add(QString(blanks, u' '));
        add(content);
        const qint64 rest = m_contents.width - columnAfter(content, m_tabWidth);
        if (precedesText && rest > 0)
            add(QString(rest, u' '));
        m_caret = m_length;
    }

    void addEnd(QStringView end)
    {
        if (end == u"\n" && m_followsCr)
            add(u"\n");
        add(end);
    }

    void add(QStringView units)
    {
        if (units.isEmpty())
            return;
        m_length += units.size();
        if (m_length > kMostUnits) // The result will not be used.
            return;
        m_builder.appendUtf16(viewOf(units));
        m_followsCr = units.back() == u'\r';
    }

    void share(TextRange range)
    {
        if (range.isEmpty())
            return;
        flush();
        m_done = m_done.appended(text().mid(range.location, range.length));
        m_length += range.length;
        m_followsCr = text().at(range.end() - 1) == u'\r';
    }

    void flush() { m_done = m_done.appended(m_builder.finish()); }

    const RowContents &m_contents;
    int m_tabWidth;
    TextBuilder m_builder;
    Text m_done;
    qint64 m_length = 0;
    qint64 m_row = 0;
    qint64 m_caret = 0;
    bool m_followsCr = false;
};

} // namespace

RectangleRow rowOf(const Text &text, const TextRectangle &rectangle, qint64 line, int tabWidth)
{
    const TextRange content = contentOfLine(text, line);
    const auto [left, right] = edgesIn(text, content, rectangle, tabWidth);
    return {TextRange::between(content.location + left.offset, content.location + right.offset),
            blanksTo(rectangle.left(), left, content.length),
            blanksTo(rectangle.right(), right, content.length)};
}

std::optional<ColumnPlace> placeOf(const Text &text, qint64 offset, int tabWidth)
{
    const qint64 line = lineNumber(text, offset);
    const TextRange content = contentOfLine(text, line);
    const qint64 inLine = std::min(offset - content.location, content.length);
    if (inLine > kColumnReach)
        return std::nullopt;
    return ColumnPlace{line, lastStop(text, content, {inLine, kNoColumnLimit}, tabWidth).column};
}

std::optional<Text> textOf(const Text &text, const TextRectangle &rectangle, int tabWidth)
{
    if (rangeOf(text, rectangle.lines()).length > kMostUnits)
        return std::nullopt;
    return RowCopy(text, rectangle, tabWidth).copy();
}

std::optional<RowsChange> replaceRows(const Text &text,
                                      const TextRectangle &rectangle,
                                      const RowContents &contents,
                                      int tabWidth)
{
    return RowRewrite(text, rectangle, contents, tabWidth).change();
}

} // namespace penwick
