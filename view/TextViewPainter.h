#pragma once

#include "editor/TextStorage.h"
#include "lines/ColumnSelection.h"
#include "view/TextViewport.h"

#include <QPainter>
#include <QPalette>

#include <optional>
#include <vector>

namespace penwick {

/// The state of a `TextView` to paint.
struct TextViewPicture
{
    TextRange selection;
    const ColumnSelection *columns = nullptr; ///< The selected rectangle; null for none.
    TextCaret caret;
    bool caretIsShown = false;
    bool isActive = false; ///< Has the keyboard focus: the selection is not dimmed.
    qreal caretWidth = 1;  ///< Logical pixels.
    QSizeF size;           ///< Of the view's contents, logical pixels.
    QPalette palette;
    std::optional<qint64> currentLine;             ///< Start of the line whose rows are filled.
    const std::vector<TextRange> *marks = nullptr; ///< Ascending; drawn behind the selection.
};

/// The background colour of `TextViewPicture::marks`.
[[nodiscard]] QColor textMarkColor(const QPalette &palette);

/// Draws the visible rows of `viewport` with selection and caret. May omit what lies outside
/// `exposed`.
void paintTextView(QPainter &painter,
                   const QRectF &exposed,
                   TextViewport &viewport,
                   const TextViewPicture &picture);

} // namespace penwick
