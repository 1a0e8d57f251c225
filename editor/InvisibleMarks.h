#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QRectF>
#include <QStringView>

namespace penwick {

/// How characters that no font draws are shown. None of it is part of the text: a mark takes the
/// place of one UTF-16 code unit, so positions keep their meaning.
namespace invisible {

/// Columns that a labelled mark is wide.
constexpr int kLabelColumns = 2;

/// A short name for a control character, a lone line separator or a noncharacter, as "NUL" or "CR";
/// empty where the character needs none: a tab, a line feed, anything that a font shows.
[[nodiscard]] QStringView label(char16_t unit);

/// True for blanks that are not what a plain blank is, as a no-break space, and for characters
/// without width of their own, as a direction mark or a zero-width space. They keep their effect on
/// the layout and get a mark drawn over them. Joiners are not among them: they are spelling.
[[nodiscard]] bool isMarked(char16_t unit);

/// Draws `label` in a frame that fills `cell`. `font` is the text's.
void paintLabel(QPainter &painter,
                QStringView label,
                const QRectF &cell,
                const QFont &font,
                const QColor &color);

/// Draws the mark of a character that covers `cell`, which may have no width: a bracket under a
/// blank, a thin pin where nothing else is.
void paintMark(QPainter &painter, const QRectF &cell, const QColor &color);

} // namespace invisible

} // namespace penwick
