#pragma once

#include <QString>

namespace penwick {

/// What a tab, and the title of the window that it is in front of, say of a document.
struct TabLabel
{
    QString name;     ///< How the person knows the document.
    QString filePath; ///< Absolute; empty for a document without a file.
    bool isEdited = false;

    friend bool operator==(const TabLabel &, const TabLabel &) = default;
};

} // namespace penwick
