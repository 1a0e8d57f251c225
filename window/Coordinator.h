#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"

#include <QObject>
#include <QPointer>

#include <functional>

namespace penwick {

class TextView;

/// Synchronizes a text view with the window's state and its document, in both directions.
///
/// Changes that the view reports are written later, from the event loop and in the order of the
/// reports, so that listeners never see the state change while the view is still editing. Changes
/// of the state by others reach the view after all pending writes, so an older text never
/// overwrites an edit that is still to be written. View, state and document are held weakly.
class Coordinator final : public QObject
{
    Q_OBJECT

public:
    /// \param textView the view to observe; not owned.
    /// \param document may be null: then only the state is written.
    Coordinator(TextView *textView,
                DocumentState *documentState,
                TextDocument *document,
                QObject *parent = nullptr);

    /// True while a change that the view reported has not been written yet.
    [[nodiscard]] bool hasPendingWrites() const { return m_pendingWrites > 0; }

    /// Replaces the view's text with the state's if they differ, unless an input method is
    /// composing. Registers no undo step.
    void updateView();

private:
    void textDidChange();
    void textViewDidChangeSelection();
    void updateMetrics();
    void enqueue(std::function<void()> write);
    void scheduleUpdate();
    void performScheduledUpdate();

    QPointer<TextView> m_textView;
    QPointer<DocumentState> m_documentState;
    QPointer<TextDocument> m_document;
    int m_pendingWrites = 0;
    bool m_updateScheduled = false;
};

} // namespace penwick
