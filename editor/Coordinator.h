#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"

#include <QObject>
#include <QPointer>

#include <deque>
#include <functional>

namespace penwick {

class TextView;

/// Keeps a text view, the window's state and its document in step, in both directions.
///
/// What the view reports is written in a later turn of the event loop, in the order it was
/// reported, so that nobody sees the state change while the view is still amid an edit. What
/// changes the state from outside reaches the view later still: an edit that waits to be written is
/// never overwritten by an older text. All three parties are held weakly.
class Coordinator final : public QObject
{
    Q_OBJECT

public:
    /// \param textView the view to listen to; not owned.
    /// \param document may be null: then only the state is written.
    Coordinator(TextView *textView,
                DocumentState *documentState,
                TextDocument *document,
                QObject *parent = nullptr);

    /// True while something that the view reported has not been written yet.
    [[nodiscard]] bool hasPendingWrites() const { return !m_pendingWrites.empty(); }

    /// Writes at once what waits to be written. Called before the document is saved.
    void flushPendingWrites();

    /// Brings the state's text into the view if they differ, unless an input method is composing.
    /// Registers nothing for undo.
    void updateView();

private:
    void textDidChange();
    void textViewDidChangeSelection();
    void updateMetrics();
    void enqueue(std::function<void()> write);
    void performNextWrite();
    void scheduleUpdate();
    void performScheduledUpdate();

    QPointer<TextView> m_textView;
    QPointer<DocumentState> m_documentState;
    QPointer<TextDocument> m_document;
    std::deque<std::function<void()>> m_pendingWrites;
    bool m_updateScheduled = false;
};

} // namespace penwick
