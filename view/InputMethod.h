#pragma once

#include "view/TextEditing.h"

#include <QInputMethodEvent>
#include <QVariant>

namespace penwick {

/// The input method's part in a text view: its composition, which is shown at the caret, and its
/// commits, which replace the selection.
class InputMethod final
{
public:
    /// \param viewport, editing not owned; must outlive this object.
    InputMethod(TextViewport *viewport, TextEditing *editing);

    /// True while a composition is shown.
    [[nodiscard]] bool isComposing() const { return m_viewport->composition().isActive(); }

    /// Inserts what `event` commits and shows its composition.
    void handle(const QInputMethodEvent &event);
    /// Ends a composition without inserting it.
    void discard();
    /// Ends a composition; inserts what the input method commits.
    void commit();

    /// Returns the answer to a query about the text around the caret; invalid for any other query.
    /// The text is a bounded stretch, never the whole document, and all positions are relative to
    /// its start.
    [[nodiscard]] QVariant answer(Qt::InputMethodQuery query) const;

private:
    void show(const TextComposition &composition);

    TextViewport *m_viewport;
    TextEditing *m_editing;
    bool m_ignoresCommits = false;
};

} // namespace penwick
