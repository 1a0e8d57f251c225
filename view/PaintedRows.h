#pragma once

#include "view/TextViewPainter.h"

#include <QColor>
#include <QRegion>

#include <optional>
#include <vector>

namespace penwick {

/// What a view shows, to find the rows that a change affects. A key then paints a few rows, however
/// large the window is.
class PaintedRows final
{
public:
    /// Returns the area, in the viewport's pixels, in which `picture` differs from the picture of
    /// the last call. Returns the whole viewport on the first call, after `forget`, and while there
    /// are marks or a rectangle. The caret is always in the area.
    [[nodiscard]] QRegion changesTo(const TextViewPicture &picture, TextViewport &viewport);

    /// Call this when something changes that `TextViewPicture` and `TextViewport` do not tell.
    void forget() { m_last.reset(); }

private:
    /// A row on the screen, with all that its look depends on.
    struct Row
    {
        quint64 look = 0;   ///< `SegmentLayout::lookOf`.
        QPointF place;      ///< Of its top left, in logical pixels.
        qreal overhang = 0; ///< `SegmentLayout::overhang`.
        /// In UTF-16 code units from the row's start; with one more unit for its end.
        TextRange selection;
        bool isOnCurrentLine = false;
        QColor background;

        friend bool operator==(const Row &a, const Row &b) = default;
    };

    struct Picture
    {
        std::vector<Row> rows; ///< From top to bottom, then from left to right.
        QRect caret;
        bool isActive = false;
        QSizeF size;
    };

    static Picture pictureOf(const TextViewPicture &picture, TextViewport &viewport);
    static QRegion differences(const Picture &a, const Picture &b, qreal rowHeight);

    std::optional<Picture> m_last;
};

} // namespace penwick
