#pragma once

#include "text/Text.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace penwick {

/// A place in a text as other programs name it: lines end with line feeds, and columns count what a
/// reader takes for characters (grapheme clusters). Both 1-based; a place beyond the end of its
/// line, or of the text, is that end.
struct TextPlace
{
    qint64 line = 1;
    qint64 column = 1;

    bool operator==(const TextPlace &) const = default;
};

/// The offset of the place in UTF-16 code units.
[[nodiscard]] qint64 offsetOf(const TextPlace &place, const Text &text);

/// What somebody who started penwick wants to have opened, by this process or by the one that runs
/// already.
struct OpenRequest
{
    /// A file, or the text of a document that has none yet.
    struct Item
    {
        QByteArray path; ///< Absolute, the bytes by which the system knows it; empty for a text.
        std::optional<Text> text;
        std::optional<TextPlace> place; ///< Where the caret goes.

        bool operator==(const Item &) const = default;
    };

    QList<Item> items;      ///< None asks for the editor itself.
    bool newWindow = false; ///< In a window of its own, not among the others.
    bool wait = false;      ///< Whoever asks waits until all of it is closed.
    /// What the window system gave the asking process, so that the window may come forward.
    QByteArray activationToken;
    QByteArray startupId;

    bool operator==(const OpenRequest &) const = default;
};

} // namespace penwick
