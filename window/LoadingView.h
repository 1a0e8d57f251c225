#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"

#include <QFrame>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace penwick {

class StatusBarView;
class TextView;
class TextViewRepresentable;

/// The content of an editor window while its document is read: the start of the text as far as it
/// has been read, below it the progress, and the status bar, as they stand in a `MainEditorView`.
/// The text can be scrolled, selected and copied. Before there is any, the background of an empty
/// text stands there, and below it the state's message, if it has one. Escape cancels the load, as
/// the button does. A reading that pauses goes on when the text has been painted or the view is
/// hidden.
class LoadingView final : public QWidget
{
    Q_OBJECT

public:
    /// \param document, state not owned; held weakly.
    LoadingView(TextDocument *document, DocumentState *state, QWidget *parent = nullptr);

    /// Shows what has been read since it was last shown. Called several times a second.
    void refresh();

    /// The read-only view of what has been read; null before its first text.
    [[nodiscard]] TextView *textView() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showStart(const Text &text);
    void showStatus();
    void resumeReading();

    QPointer<TextDocument> m_document;
    QPointer<DocumentState> m_state;
    QWidget *m_paper;
    TextViewRepresentable *m_start = nullptr; // Takes the place of the paper.
    QFrame *m_divider;
    StatusBarView *m_status;
    QTimer m_timer;
};

} // namespace penwick
