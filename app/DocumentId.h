#pragma once

#include "window/EditorWindowController.h"

namespace penwick {

/// Identifies an open document by the number of its controller. An id stays unique when the
/// document is closed; no document is found by it then.
class DocumentId final
{
public:
    /// Implicit, so that a controller can be passed where its document is meant. Null identifies no
    /// document.
    DocumentId(const EditorWindowController *controller)
        : m_number(controller != nullptr ? controller->number() : 0)
    {
    }

    bool operator==(const DocumentId &) const = default;

private:
    quint64 m_number;
};

} // namespace penwick
