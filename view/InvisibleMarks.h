#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QRectF>
#include <QStringView>

namespace penwick {

/// The display of characters that no font draws. The marks are not part of the text: each takes the
/// place of one UTF-16 code unit, so positions stay the same.
namespace invisible {

/// Width of a labelled mark, in columns. In the editor, four letters of a legible size fit.
constexpr int kLabelColumns = 3;

/// Returns a short name for a control character, a line or paragraph separator, U+FFFC or a
/// noncharacter, such as "NUL" or "CR". Empty for all others, also for a tab and a line feed.
[[nodiscard]] QStringView label(char16_t unit);

/// True for spaces other than U+0020, such as a no-break space, and for invisible characters such
/// as a direction mark or a zero-width space. They keep their effect on the layout and get a mark
/// drawn over them. False for joiners: they are part of the spelling of words.
[[nodiscard]] bool isMarked(char16_t unit);

/// True for a tab and the ideographic space U+3000, which are marked when the user shows blanks.
[[nodiscard]] bool isBlank(char16_t unit);

/// The length of `line` without the blanks at its end: spaces, tabs and other blanks.
[[nodiscard]] qsizetype lengthWithoutTrailingBlanks(QStringView line);

/// Draws `label` in a frame that fills `cell`. `font` is the text's.
void paintLabel(QPainter &painter,
                QStringView label,
                const QRectF &cell,
                const QFont &font,
                const QColor &color);

/// Draws the mark of a character that covers `cell`, which may be of zero width: a bracket under a
/// space, a thin pin for a character that is narrower than a bracket.
void paintMark(QPainter &painter, const QRectF &cell, const QColor &color);

/// Draws the mark of a line feed, an arrow down, or of CR LF, an arrow down and back, into `cell`.
/// The other line ends have labels.
void paintLineEnd(QPainter &painter, bool isCrLf, const QRectF &cell, const QColor &color);

/// Draws the mark of a blank that covers `cell`: a dot for a space, an arrow for a tab, a square
/// for U+3000. `unit` is one of these.
void paintBlank(QPainter &painter, char16_t unit, const QRectF &cell, const QColor &color);

} // namespace invisible

} // namespace penwick
