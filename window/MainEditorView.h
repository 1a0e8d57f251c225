#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"

#include <QWidget>

namespace penwick {

class StatusBarView;
class TextView;
class TextViewRepresentable;

/// The content of an editor window: the text, a divider and the status bar, from top to bottom.
class MainEditorView final : public QWidget
{
    Q_OBJECT

public:
    /// \param documentState not owned; held weakly.
    /// \param textDocument not owned, may be null; held weakly.
    MainEditorView(DocumentState *documentState,
                   TextDocument *textDocument,
                   QWidget *parent = nullptr);

    [[nodiscard]] TextView *textView() const;

    [[nodiscard]] TextViewRepresentable *textViewRepresentable() const { return m_representable; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    TextViewRepresentable *m_representable;
    StatusBarView *m_statusBar;
};

} // namespace penwick
