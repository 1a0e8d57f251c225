#pragma once

#include "editor/TextSegments.h"
#include "text/Text.h"

#include <QColor>
#include <QList>
#include <QPalette>

namespace penwick {

/// The colour of a stretch of one segment.
struct TextColorRange
{
    int start = 0; ///< From the segment's start, UTF-16 code units, 0-based.
    int length = 0;
    QColor color;
};

/// What a `TextView` asks about the colours of what it shows, as a highlighter of a language knows
/// them. Colours are all that it can give: where a character stands follows from text and font.
/// (But for tabs in wrapped rows, which Qt measures from where the last change of looks was.)
///
/// A view asks about the segments that it lays out, and tells each edit before it asks about the
/// text that the edit led to.
class TextDecoration
{
public:
    TextDecoration() = default;
    virtual ~TextDecoration() = default;
    Q_DISABLE_COPY_MOVE(TextDecoration)

    /// `newLength` units of `text` stand at `offset` in place of `oldLength` units of the text told
    /// last (UTF-16 code units, 0-based). The first text comes as an edit of the empty one.
    virtual void
    textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength) = 0;

    /// Told at first, and whenever the colours of the widget have become others.
    virtual void paletteChanged(const QPalette &palette) = 0;

    /// Names what `colors` depends on besides palette and the segment's own characters: while
    /// it stays the same, so do the colours. Asked often, also for segments that are known.
    [[nodiscard]] virtual quint64 colorKey(const TextSegment &segment) = 0;

    /// Ascending, without overlap. What no range covers has the colour of plain text.
    [[nodiscard]] virtual QList<TextColorRange> colors(const TextSegment &segment) = 0;

    /// Fills the rows of a segment over their whole width; an invalid colour fills nothing. Asked
    /// at each paint.
    [[nodiscard]] virtual QColor background(const TextSegment &segment) const = 0;
};

} // namespace penwick
