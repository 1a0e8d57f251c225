#include "window/LoadingView.h"

#include "text/CutText.h"
#include "view/TextView.h"
#include "window/LineEndMark.h"
#include "window/StatusBarView.h"
#include "window/TextViewRepresentable.h"
#include "window/TransferBar.h"
#include "wording/WordingLookup.h"

#include <QFileInfo>
#include <QFrame>
#include <QKeyEvent>
#include <QScrollBar>
#include <QVBoxLayout>

#include <chrono>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds kProgressInterval{200};

} // namespace

LoadingView::LoadingView(TextDocument *document, DocumentState *state, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_state(state)
    , m_paper(new QWidget(this))
    , m_divider(new QFrame(this))
    , m_status(new StatusBarView(state, this))
{
    m_paper->setBackgroundRole(QPalette::Base);
    m_paper->setAutoFillBackground(true);
    m_divider->setFrameStyle(static_cast<int>(QFrame::HLine) | static_cast<int>(QFrame::Sunken));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_paper, 1);
    layout->addWidget(new TransferBar(document, this));
    layout->addWidget(m_divider);
    layout->addWidget(m_status);
    connect(state, &DocumentState::didChange, this, &LoadingView::showStatus);
    showStatus();
    setFocusPolicy(Qt::StrongFocus);
    setFocus();
    connect(&m_timer, &QTimer::timeout, this, &LoadingView::refresh);
    m_timer.start(kProgressInterval);
    refresh();
    if (m_start == nullptr)
        resumeReading(); // The first text may come long before the timer shows it.
}

TextView *LoadingView::textView() const
{
    return m_start != nullptr ? m_start->textView() : nullptr;
}

void LoadingView::refresh()
{
    const Text text = m_document.isNull() ? Text() : m_document->readSoFar();
    TextView *view = textView();
    if (view == nullptr && !text.isEmpty())
        showStart(text);
    // While the user drags the scroll bar, a longer text would move under the mouse.
    else if (view != nullptr && text.size() > view->string().size() &&
             !view->verticalScrollBar()->isSliderDown())
        view->extend(text);
}

void LoadingView::showStart(const Text &text)
{
    if (m_state.isNull())
        return;
    m_state->setText(text);
    m_start = new TextViewRepresentable(m_state, nullptr, this);
    m_start->makeReadOnly();
    textView()->setAccessibleName(
        cutText(QFileInfo(m_document->filePath()).fileName(), kLongestName));
    textView()->setAccessibleDescription(wording::text(u"status.loading"_s));
    delete layout()->replaceWidget(m_paper, m_start);
    delete m_paper;
    m_paper = nullptr;
    textView()->viewport()->installEventFilter(this);
    // It asks for an edit.
    m_status->findChild<LineEndMark *>()->setEnabled(false);
    setFocusProxy(m_start);
    showStatus();
}

void LoadingView::showStatus()
{
    const bool hasMessage = !m_state.isNull() && m_state->macroNotificationMessage().has_value();
    m_status->setVisible(hasMessage || m_start != nullptr);
    m_divider->setVisible(m_start != nullptr);
}

bool LoadingView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint) {
        watched->removeEventFilter(this);
        // In a later turn of the event loop, when the painted text is on the screen.
        QMetaObject::invokeMethod(this, &LoadingView::resumeReading, Qt::QueuedConnection);
    }
    return QWidget::eventFilter(watched, event);
}

void LoadingView::hideEvent(QHideEvent *event)
{
    resumeReading();
    QWidget::hideEvent(event);
}

void LoadingView::resumeReading()
{
    if (!m_document.isNull())
        m_document->resumeReading();
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
