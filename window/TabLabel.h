#pragma once

#include <QString>

namespace penwick {

/// What a tab shows of its document, and the window's title while the tab is current.
struct TabLabel
{
    QString name;     ///< The document's name for the user.
    QString filePath; ///< Absolute; empty for a document without a file.
    bool isEdited = false;

    friend bool operator==(const TabLabel &, const TabLabel &) = default;
};

} // namespace penwick
