#pragma once

#include "editor/TextDocument.h"

#include <QPointer>
#include <QWidget>

namespace penwick {

/// The content of an editor window while its document is read: the background of an empty text, and
/// the progress below it. Escape cancels the load, as the button does.
class LoadingView final : public QWidget
{
    Q_OBJECT

public:
    /// \param document not owned; held weakly.
    explicit LoadingView(TextDocument *document, QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QPointer<TextDocument> m_document;
};

} // namespace penwick
