#pragma once

#include "text/Text.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace penwick {

/// A place in a text that another program asks for, counted as in `LinePlace`. A place past the end
/// of its line means that end, and a line past the last one the last one.
struct TextPlace
{
    qint64 line = 1;
    qint64 column = 1;

    bool operator==(const TextPlace &) const = default;
};

/// Returns the offset of the place in UTF-16 code units.
[[nodiscard]] qint64 offsetOf(const TextPlace &place, const Text &text);

/// What the user who started a process of penwick wants to open, in that process or in the one that
/// is already running.
struct OpenRequest
{
    /// A file, or the text of an untitled document.
    struct Item
    {
        QByteArray path; ///< Absolute, as the bytes that the system uses; empty for a text.
        std::optional<Text> text;
        std::optional<TextPlace> place; ///< The caret position.

        bool operator==(const Item &) const = default;
    };

    QList<Item> items;      ///< If empty, show the editor itself.
    bool newWindow = false; ///< Open in a new window instead of in tabs.
    bool wait = false;      ///< The requesting process waits until all documents are closed.
    /// What the window system gave the requesting process, so that the window may come to the
    /// front.
    QByteArray activationToken;
    QByteArray startupId;

    bool operator==(const OpenRequest &) const = default;
};

} // namespace penwick
