#include "window/LoadingView.h"

#include "window/StatusBarView.h"
#include "window/TransferBar.h"

#include <QKeyEvent>
#include <QVBoxLayout>

namespace penwick {

LoadingView::LoadingView(TextDocument *document, DocumentState *state, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
{
    auto *paper = new QWidget(this);
    paper->setBackgroundRole(QPalette::Base);
    paper->setAutoFillBackground(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(paper, 1);
    layout->addWidget(new TransferBar(document, this));
    auto *messages = new StatusBarView(state, this);
    layout->addWidget(messages);
    const auto update = [state, messages] {
        messages->setVisible(state->macroNotificationMessage().has_value());
    };
    connect(state, &DocumentState::didChange, messages, update);
    update();
    setFocusPolicy(Qt::StrongFocus);
    setFocus();
}

void LoadingView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !m_document.isNull()) {
        m_document->cancelTransfer();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace penwick
