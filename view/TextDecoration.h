#pragma once

#include "text/Text.h"
#include "view/TextSegments.h"

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

/// Supplies the colours of the text that a `TextView` shows, for example from a syntax highlighter.
/// It can set colours only: the layout follows from the text and the font. (One exception: Qt
/// measures tabs in wrapped rows from the last change of format.)
///
/// A view queries the segments that it lays out. It reports each edit before it queries the text
/// that the edit led to.
class TextDecoration
{
public:
    TextDecoration() = default;
    virtual ~TextDecoration() = default;
    Q_DISABLE_COPY_MOVE(TextDecoration)

    /// Called after each edit: `newLength` units of `text` at `offset` replaced `oldLength` units
    /// of the text reported last (UTF-16 code units, 0-based). The first text is reported as an
    /// edit of the empty text.
    virtual void
    textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength) = 0;

    /// Called when the decoration is set and whenever the widget's palette may have changed.
    virtual void paletteChanged(const QPalette &palette) = 0;

    /// Returns a key for everything that `colors` depends on besides the palette and the segment's
    /// own characters: while the key is the same, so are the colours. Called often, also for
    /// segments that are already laid out.
    [[nodiscard]] virtual quint64 colorKey(const TextSegment &segment) = 0;

    /// Returns ranges in ascending order, without overlap. Text outside them has the default
    /// colour.
    [[nodiscard]] virtual QList<TextColorRange> colors(const TextSegment &segment) = 0;

    /// Returns the colour that fills the rows of a segment over their whole width; an invalid
    /// colour fills nothing. Called at each paint.
    [[nodiscard]] virtual QColor background(const TextSegment &segment) const = 0;
};

} // namespace penwick
