#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"

#include <QPointer>
#include <QWidget>

namespace penwick {

/// The content of an editor window while its document is read: the background of an empty text, and
/// below it the progress and the state's message, if it has one. Escape cancels the load, as the
/// button does.
class LoadingView final : public QWidget
{
    Q_OBJECT

public:
    /// \param document, state not owned; held weakly.
    LoadingView(TextDocument *document, DocumentState *state, QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QPointer<TextDocument> m_document;
};

} // namespace penwick
