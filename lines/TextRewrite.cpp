#include "lines/TextRewrite.h"

#include "lines/CharacterForms.h"
#include "lines/LineBlock.h"
#include "text/LineEnds.h"

#include <QList>

#include <algorithm>
#include <functional>
#include <unicode/uchar.h>
#include <utility>

namespace penwick {

namespace {

using Kind = TextChangeKind;

constexpr qint64 kLongest = qint64(1) << 28;

/// The lines that a command rewrites: the selected ones, and the neighbour that takes part.
LineSpan linesFor(Kind kind, const SelectedText &text)
{
    LineSpan lines = selectedLines(text.text, text.selection());
    if (kind == Kind::MoveUp)
        return {lines.first - 1, lines.count + 1};
    if (kind == Kind::MoveDown || (kind == Kind::Join && lines.count == 1))
        return {lines.first, lines.count + 1};
    return lines;
}

/// The lines of a text that a command rewrites, and the new lines.
class LineChange final
{
public:
    LineChange(const SelectedText &text, LineSpan lines)
        : m_text(text)
        , m_range(rangeOf(text.text, lines))
        , m_old(text.text.slice(m_range.location, m_range.length), lines.count)
        , m_writer(m_range.location > 0 && text.text.at(m_range.location - 1) == u'\r')
    {
    }

    [[nodiscard]] const LineBlock &old() const { return m_old; }

    /// The new line `index` has this content. The ends of the lines stay where they are.
    void add(QStringView content)
    {
        add(content, m_old.lines().at(static_cast<std::size_t>(m_count)).end);
    }

    void add(QStringView content, QStringView end)
    {
        m_writer.add(content, end);
        ++m_count;
    }

    /// Tells where a place of the selection has moved to.
    using Moved = std::function<BlockPlace(BlockPlace, const LineBlock &)>;

    [[nodiscard]] std::optional<TextRewrite> finish(const Moved &moved) const
    {
        if (m_writer.units() == m_old.units())
            return std::nullopt;
        return rewriteWith(moved);
    }

    /// The same, but equal lines only move the selection.
    [[nodiscard]] TextRewrite finishMove(const Moved &moved) const
    {
        TextRewrite result = rewriteWith(moved);
        if (m_writer.units() == m_old.units()) {
            result.range.length = 0;
            result.replacement = Text();
        }
        return result;
    }

    /// As `finish`; the result is selected, or the caret is at its start.
    [[nodiscard]] std::optional<TextRewrite> finishSelected() const
    {
        const qint64 start = m_text.selection().location - m_range.location;
        const BlockPlace first = m_old.placeAt(start);
        return finish([&](BlockPlace place, const LineBlock &result) -> BlockPlace {
            const bool isFirst = place.line == first.line && place.column == first.column;
            if (isFirst)
                return {0, 0};
            return place.line == m_old.count() ? BlockPlace{result.count(), 0}
                                               : BlockPlace{result.count() - 1, m_range.length};
        });
    }

private:
    [[nodiscard]] TextRewrite rewriteWith(const Moved &moved) const
    {
        const LineBlock result(m_writer.units(), m_count);
        const auto offset = [&](qint64 former) {
            const BlockPlace place = m_old.placeAt(former - m_range.location);
            return m_range.location + result.offsetOf(moved(place, result));
        };
        return {m_range, Text(result.units()), offset(m_text.anchor), offset(m_text.caret)};
    }

    const SelectedText &m_text;
    TextRange m_range;
    LineBlock m_old;
    LineWriter m_writer;
    qint64 m_count = 0;
};

/// Where a column of a line is in the changed line: it keeps its distance from the end where the
/// ends are alike, otherwise from the start. The start of a line stays.
qint64 movedColumn(qint64 column, QStringView before, QStringView after)
{
    const auto suffix = std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend());
    const qint64 alike = suffix.first - before.rbegin();
    if (column > 0 && column >= before.size() - alike)
        return column + after.size() - before.size();
    return std::min<qint64>(column, after.size() - alike);
}

using ChangedLine = std::function<QString(QStringView)>;

std::optional<TextRewrite>
changeEach(const SelectedText &text, LineSpan lines, const ChangedLine &changed)
{
    LineChange change(text, lines);
    for (const BlockLine &line : change.old().lines())
        change.add(changed(line.content));
    return change.finish([&](BlockPlace place, const LineBlock &result) {
        if (place.line < result.count()) {
            const auto index = static_cast<std::size_t>(place.line);
            const QStringView before = change.old().lines().at(index).content;
            const QStringView after = result.lines().at(index).content;
            place.column =
                movedColumn(std::min<qint64>(place.column, before.size()), before, after);
        }
        return place;
    });
}

std::optional<TextRewrite> duplicate(const SelectedText &text, LineSpan lines)
{
    LineChange change(text, lines);
    const auto &old = change.old().lines();
    const bool endsText = old.back().end.isEmpty();
    const QStringView end =
        endsText ? lineEndUnits(lineEndToInsert(text.text, {text.text.size(), 0})) : old.back().end;
    for (const BlockLine &line : old)
        change.add(line.content, &line == &old.back() ? end : line.end);
    for (const BlockLine &line : old)
        change.add(line.content, line.end);
    return change.finish([&](BlockPlace place, const LineBlock & /*result*/) {
        return BlockPlace{place.line + lines.count, place.column};
    });
}

/// \param step of the selected lines: -1 up, 1 down.
std::optional<TextRewrite> move(const SelectedText &text, LineSpan lines, int step)
{
    LineChange change(text, lines);
    const auto &old = change.old().lines();
    std::vector<QStringView> contents;
    contents.reserve(old.size());
    for (const BlockLine &line : old)
        contents.push_back(line.content);
    std::rotate(
        contents.begin(), step < 0 ? contents.begin() + 1 : contents.end() - 1, contents.end());
    for (const QStringView content : contents)
        change.add(content);
    return change.finishMove([step](BlockPlace place, const LineBlock & /*result*/) {
        return BlockPlace{place.line + step, place.column};
    });
}

bool precedesByCodePoint(QStringView a, QStringView b)
{
    const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (left == a.end() || right == b.end())
        return right != b.end();
    // Pairs of surrogates come after the other characters.
    const auto rank = [](QChar unit) {
        return unit.unicode() + (unit.isSurrogate() ? 0x10000 : 0);
    };
    return rank(*left) < rank(*right);
}

std::optional<TextRewrite> sort(const SelectedText &text, LineSpan lines)
{
    LineChange change(text, lines);
    std::vector<QStringView> contents;
    for (const BlockLine &line : change.old().lines())
        contents.push_back(line.content);
    std::stable_sort(contents.begin(), contents.end(), precedesByCodePoint);
    for (const QStringView content : contents)
        change.add(content);
    return change.finishSelected();
}

/// Japanese has no blank between words, so none replaces a line break there.
bool isSetWithoutBlanks(char32_t character)
{
    switch (u_getIntPropertyValue(static_cast<UChar32>(character), UCHAR_EAST_ASIAN_WIDTH)) {
    case U_EA_WIDE:
    case U_EA_FULLWIDTH:
    case U_EA_HALFWIDTH:
        return true;
    default:
        return false;
    }
}

bool needsBlank(QStringView before, QStringView after)
{
    if (before.isEmpty() || after.isEmpty() || isLineBlank(before.back()))
        return false;
    const char32_t last = before.back().isLowSurrogate() ? before.last(2).toUcs4().constFirst()
                                                         : before.back().unicode();
    const char32_t next = after.front().isHighSurrogate() ? after.first(2).toUcs4().constFirst()
                                                          : after.front().unicode();
    return !isSetWithoutBlanks(last) && !isSetWithoutBlanks(next);
}

std::optional<TextRewrite> join(const SelectedText &text, LineSpan lines)
{
    LineChange change(text, lines);
    QString joined;
    qint64 column = 0;
    for (const BlockLine &line : change.old().lines()) {
        if (&line == &change.old().lines().front()) {
            joined += line.content;
            continue;
        }
        column = joined.size();
        const auto start = std::find_if_not(line.content.begin(), line.content.end(), isLineBlank);
        const QStringView content = line.content.sliced(start - line.content.begin());
        if (needsBlank(joined, content))
            joined += u' ';
        joined += content;
    }
    change.add(joined, change.old().lines().back().end);
    if (!text.selection().isEmpty())
        return change.finishSelected();
    return change.finish([column](BlockPlace, const LineBlock &) { return BlockPlace{0, column}; });
}

QString withoutBlanksAtEnd(QStringView line)
{
    while (!line.isEmpty() && isLineBlank(line.back()))
        line.chop(1);
    return line.toString();
}

CharacterForm formOf(Kind kind)
{
    switch (kind) {
    case Kind::LowerCase:
        return CharacterForm::LowerCase;
    case Kind::FullWidth:
        return CharacterForm::FullWidth;
    case Kind::HalfWidth:
        return CharacterForm::HalfWidth;
    default:
        return CharacterForm::UpperCase;
    }
}

std::optional<TextRewrite> changeCharacters(const SelectedText &text, CharacterForm form)
{
    const TextRange range = text.selection();
    const Text before = text.text.mid(range.location, range.length);
    const Text after(withForm(before, form));
    if (after == before)
        return std::nullopt;
    const qint64 end = range.location + after.size();
    const bool isForward = text.anchor <= text.caret;
    return TextRewrite{
        range, after, isForward ? range.location : end, isForward ? end : range.location};
}

} // namespace

bool changesCharacters(Kind kind)
{
    return kind >= Kind::UpperCase;
}

bool canRewrite(Kind kind, const SelectedText &text)
{
    const TextRange selection = text.selection();
    if (changesCharacters(kind))
        return !selection.isEmpty() && selection.length <= kLongest;
    const LineSpan lines = linesFor(kind, text);
    const qint64 lineCount = text.text.metrics().lineBreaks() + 1;
    const bool exists = lines.first >= 0 && lines.first + lines.count <= lineCount;
    const bool suffices = kind != Kind::Sort || lines.count > 1;
    return exists && suffices && rangeOf(text.text, lines).length <= kLongest;
}

std::optional<TextRewrite> rewrite(Kind kind, const SelectedText &text, const Indentation &style)
{
    if (!canRewrite(kind, text))
        return std::nullopt;
    const LineSpan lines = linesFor(kind, text);
    const auto each = [&](QString (*changed)(QStringView, const Indentation &)) {
        return changeEach(text, lines, [&](QStringView line) { return changed(line, style); });
    };
    switch (kind) {
    case Kind::Indent:
        return each(indentedLine);
    case Kind::Outdent:
        return each(outdentedLine);
    case Kind::BlanksToTabs:
        return each(lineWithTabs);
    case Kind::TabsToBlanks:
        return each(lineWithSpaces);
    case Kind::TrimEnds:
        return changeEach(text, lines, withoutBlanksAtEnd);
    case Kind::Duplicate:
        return duplicate(text, lines);
    case Kind::MoveUp:
        return move(text, lines, -1);
    case Kind::MoveDown:
        return move(text, lines, 1);
    case Kind::Join:
        return join(text, lines);
    case Kind::Sort:
        return sort(text, lines);
    case Kind::UpperCase:
    case Kind::LowerCase:
    case Kind::FullWidth:
    case Kind::HalfWidth:
        return changeCharacters(text, formOf(kind));
    }
    return std::nullopt;
}

std::optional<RowsRewrite> rewriteRows(Kind kind, const Text &text, const ColumnSelection &columns)
{
    TextRectangle rectangle = columns.rectangle(text);
    const auto before = textOf(text, rectangle, columns.tabWidth());
    if (!before)
        return std::nullopt;
    QString after = withForm(*before, formOf(kind));
    if (Text(after) == *before)
        return std::nullopt;
    const qint64 count = columns.lines().count;
    const LineBlock rows(std::move(after), count);
    const auto contentAt = [&rows](qint64 row) {
        return rows.lines().at(static_cast<std::size_t>(row)).content;
    };
    const auto change = columns.insertRows(text, {count, contentAt});
    if (!change)
        return std::nullopt;
    qint64 right = rectangle.left(); // Characters may have become wider or narrower.
    for (qint64 row = 0; row < count; ++row) {
        const qint64 line = columns.lines().first + row;
        const qint64 start = columns.rowAt(text, line).range.location;
        const qint64 lineStart = contentOfLine(text, line).location;
        const QString upToEnd =
            text.slice(lineStart, start - lineStart) + contentAt(row).toString();
        if (!contentAt(row).isEmpty())
            right = std::max(right, columnAfter(upToEnd, columns.tabWidth()));
    }
    const bool isForward = rectangle.anchor.column <= rectangle.caret.column;
    (isForward ? rectangle.caret : rectangle.anchor).column = right;
    return RowsRewrite{*change, rectangle};
}

} // namespace penwick
