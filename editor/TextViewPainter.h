#pragma once

#include "editor/TextStorage.h"
#include "editor/TextViewport.h"

#include <QPainter>
#include <QPalette>

namespace penwick {

/// What a `TextView` shows at one moment.
struct TextViewPicture
{
    TextRange selection;
    TextCaret caret;
    bool caretIsShown = false;
    bool isActive = false; ///< Has the keyboard focus: the selection is not dimmed.
    qreal caretWidth = 1;  ///< Logical pixels.
};

/// Draws the visible rows of `viewport` with selection and caret.
void paintTextView(QPainter &painter,
                   const QRectF &exposed,
                   const QSizeF &size,
                   const QPalette &palette,
                   TextViewport &viewport,
                   const TextViewPicture &picture);

} // namespace penwick
