#include "window/MainEditorView.h"

#include "view/TextView.h"
#include "window/LineEndCommands.h"
#include "window/StatusBarView.h"
#include "window/TextViewRepresentable.h"

#include <QFrame>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace penwick {

MainEditorView::MainEditorView(DocumentState *documentState,
                               TextDocument *textDocument,
                               QWidget *parent)
    : QWidget(parent)
    , m_representable(new TextViewRepresentable(documentState, textDocument, this))
    , m_statusBar(new StatusBarView(documentState, this))
{
    auto *divider = new QFrame(this);
    divider->setFrameStyle(static_cast<int>(QFrame::HLine) | static_cast<int>(QFrame::Sunken));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_representable, 1);
    layout->addWidget(divider);
    layout->addWidget(m_statusBar);
    setFocusProxy(m_representable);
    m_statusBar->setSelection([view = textView()] {
        const TextRange range = view->selectedRange();
        return view->string().mid(range.location, range.length);
    });
    connect(m_statusBar, &StatusBarView::uniformLineEndsRequested, this, [this](LineEnd lineEnd) {
        m_representable->lineEndCommands()->convertWhole(lineEnd);
        textView()->setFocus();
    });
}

TextView *MainEditorView::textView() const
{
    return m_representable->textView();
}

void MainEditorView::keyPressEvent(QKeyEvent *event)
{
    // Escape arrives here when neither the text nor the find bar has handled it. A shortcut would
    // take precedence over both.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        m_statusBar->dismissMessage();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace penwick
