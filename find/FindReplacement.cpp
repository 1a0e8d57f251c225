#include "find/FindReplacement.h"

#include "text/TextBuilder.h"

#include <algorithm>

namespace penwick {

namespace {

/// Stretches longer than this are shared with the old text instead of copied. UTF-16 code units.
constexpr qint64 kSharedUnits = 16'384;

std::optional<QChar> escapedCharacter(QChar letter)
{
    switch (letter.unicode()) {
    case u'n':
        return u'\n';
    case u'r':
        return u'\r';
    case u't':
        return u'\t';
    case u'\\':
        return u'\\';
    default:
        return std::nullopt;
    }
}

/// Returns the group that the character after a dollar sign stands for, or -1.
int groupNamed(QChar name, int groupCount)
{
    if (name == u'&')
        return 0;
    const int group = name.unicode() - u'0';
    return name >= u'0' && name <= u'9' && group <= groupCount ? group : -1;
}

/// Builds the new text from left to right.
class Replacer final
{
public:
    Replacer(const Text &text, qint64 caret)
        : m_text(text)
        , m_caret(caret)
    {
    }

    void replace(const TextRange &match, const QString &replacement)
    {
        if (m_result.count == 0) {
            m_result.range.location = match.location;
            m_position = match.location;
            m_result.caret = std::min(m_caret, match.location);
        }
        keep(match.location);
        m_builder.appendUtf16(
            {QStringView(replacement).utf16(), static_cast<std::size_t>(replacement.size())});
        m_length += replacement.size();
        // A caret inside the match moves to the end of the replacement; one after it keeps its
        // distance.
        if (m_caret > match.location)
            m_result.caret =
                m_result.range.location + m_length + std::max<qint64>(0, m_caret - match.end());
        m_position = match.end();
        m_result.range = TextRange::between(m_result.range.location, match.end());
        ++m_result.count;
    }

    [[nodiscard]] ReplaceAllResult finish()
    {
        flush();
        m_result.replacement = m_done;
        if (m_result.count == 0)
            m_result.caret = m_caret;
        return std::move(m_result);
    }

private:
    /// Appends the unchanged text between the last match and `end`.
    void keep(qint64 end)
    {
        const qint64 length = end - m_position;
        if (length > kSharedUnits) {
            flush();
            m_done = m_done.appended(m_text.mid(m_position, length));
        } else {
            m_text.forEachChunk(m_position, length, [this](const TextChunkView &chunk) {
                const auto size = static_cast<std::size_t>(chunk.length);
                if (chunk.ascii != nullptr)
                    m_builder.appendAscii({chunk.ascii, size});
                else
                    m_builder.appendUtf16({chunk.utf16, size});
                return true;
            });
        }
        m_length += length;
    }

    void flush() { m_done = m_done.appended(m_builder.finish()); }

    const Text &m_text;
    qint64 m_caret;
    qint64 m_position = 0; // End of the part of the old text that was processed.
    qint64 m_length = 0;   // Length of the new text so far.
    TextBuilder m_builder;
    Text m_done;
    ReplaceAllResult m_result;
};

} // namespace

FindReplacement::FindReplacement(const QString &string, const TextFinder &finder)
{
    const QString sound = Text(string).toString(); // Without lone surrogates.
    if (finder.isRegularExpression())
        parse(sound, finder.groupCount());
    else
        m_pieces.push_back({sound, -1});
}

void FindReplacement::parse(QStringView string, int groupCount)
{
    QString literal;
    for (qsizetype i = 0; i < string.size(); ++i) {
        const QChar unit = string[i];
        const QChar next = i + 1 < string.size() ? string[i + 1] : QChar();
        const int group = unit == u'$' ? groupNamed(next, groupCount) : -1;
        const auto escaped = unit == u'\\' ? escapedCharacter(next) : std::nullopt;
        if (group >= 0) {
            m_pieces.push_back({std::exchange(literal, {}), group});
            ++i;
        } else if (escaped || (unit == u'$' && next == u'$')) {
            literal += escaped.value_or(u'$');
            ++i;
        } else {
            literal += unit;
        }
    }
    m_pieces.push_back({literal, -1});
}

QString FindReplacement::expand(const QRegularExpressionMatch *captures) const
{
    QString result;
    for (const Piece &piece : m_pieces) {
        result += piece.literal;
        if (piece.group >= 0 && captures != nullptr)
            result += captures->capturedView(piece.group);
    }
    return result;
}

ReplaceAllResult replaceAllMatches(const TextFinder &finder,
                                   const FindReplacement &replacement,
                                   const Text &text,
                                   qint64 caret,
                                   const FindIsCancelled &isCancelled)
{
    Replacer replacer(text, caret);
    const auto visit = [&](const TextRange &match, const QRegularExpressionMatch *captures) {
        replacer.replace(match, replacement.expand(captures));
        return true;
    };
    constexpr qint64 kNoEnd = std::numeric_limits<qint64>::max();
    const TextFinder::Step step = finder.search(text, {}, visit, kNoEnd, isCancelled);
    ReplaceAllResult result = replacer.finish();
    result.isTooComplex = step.isTooComplex;
    return result;
}

std::optional<QString> replacementAt(const TextFinder &finder,
                                     const FindReplacement &replacement,
                                     const Text &text,
                                     const TextRange &match,
                                     const FindIsCancelled &isCancelled)
{
    std::optional<QString> result;
    const auto visit = [&](const TextRange &found, const QRegularExpressionMatch *captures) {
        if (found == match)
            result = replacement.expand(captures);
        return !result && found.location <= match.location;
    };
    // With `\K`, the match was tried at an earlier place: start there to get the same captures.
    const qint64 near = finder.movesStart() ? findBlockStart(text, match.location) : match.location;
    finder.search(text, {near, false}, visit, match.location + 1, isCancelled);
    if (!result && finder.movesStart() && near > 0)
        finder.search(text, {}, visit, match.location + 1, isCancelled);
    return result;
}

} // namespace penwick
