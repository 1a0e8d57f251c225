#pragma once

#include <QString>
#include <QtGlobal>

namespace penwick {

/// A stored macro. A plain value, identified by its id.
struct Macro
{
    QString id;            ///< Unique; `default_` and raw value if built in, else usually a UUID.
    QString name;          ///< Shown in the list and in the menu.
    QString description;   ///< One line; may be empty.
    QString code;          ///< JavaScript: the body of a function.
    bool isEnabled = true; ///< True when the menu offers it.
    QString source;        ///< `builtin`, `user` or `imported`; anything else is kept.
    QString version;       ///< Free text.
    QString createdAt;     ///< In the format of `nowTimestamp`.
    QString updatedAt;     ///< In the format of `nowTimestamp`.
    qint64 sortOrder = 0;  ///< The list is sorted by it, ascending.
    QString category;      ///< Free text.
    QString helpURL;       ///< Free text; empty when there is none.

    bool operator==(const Macro &) const = default;
};

} // namespace penwick
