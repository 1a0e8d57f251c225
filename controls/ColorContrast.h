#pragma once

#include <QColor>
#include <QPalette>

namespace penwick {

/// Returns the contrast of two colours, 1 to 21, as the accessibility guidelines for the web define
/// it. They require 4.5 between text and its background, and 3 for symbols.
[[nodiscard]] double contrastRatio(const QColor &a, const QColor &b);

/// Returns `a` with a share of `b`.
/// \param shareOfB 0 to 1.
[[nodiscard]] QColor mixedColor(const QColor &a, const QColor &b, double shareOfB);

/// Returns the first of the mixtures from `wish` to `end` that has the contrast to the background;
/// `end` if none has.
[[nodiscard]] QColor
colorWithContrast(const QColor &wish, const QColor &end, const QColor &background, double contrast);

/// Returns the colour behind a selected row or in a prominent button: the palette's highlight,
/// darkened or lightened as little as needed for the highlighted text and badges to be readable on
/// it. Desktops and toolkits set pairs of colours with less contrast.
[[nodiscard]] QColor readableHighlight(const QPalette &palette,
                                       QPalette::ColorGroup group = QPalette::Active);

} // namespace penwick
