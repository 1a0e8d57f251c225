#pragma once

#include "editor/TextDocument.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QToolButton;

namespace penwick {

/// A strip that shows the progress of the document's transfer, with a button that cancels it. It
/// appears only when a transfer takes longer than a moment, so that quick ones do not flash.
class TransferBar final : public QWidget
{
    Q_OBJECT

public:
    /// \param document not owned, held weakly; may be null.
    explicit TransferBar(TextDocument *document, QWidget *parent = nullptr);

    /// Shows a running transfer without the usual delay. Does nothing without one.
    void showAtOnce();

private:
    void makeContent();
    void transferDidStart();
    void appear();
    void disappear();
    void refresh();

    QPointer<TextDocument> m_document;
    QLabel *m_label = nullptr;
    QProgressBar *m_progress = nullptr;
    QToolButton *m_cancel = nullptr;
    QTimer m_appearance;
    QTimer m_refresh;
};

} // namespace penwick
