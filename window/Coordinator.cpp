#include "window/Coordinator.h"

#include "view/TextView.h"

#include <utility>

namespace penwick {

Coordinator::Coordinator(TextView *textView,
                         DocumentState *documentState,
                         TextDocument *document,
                         QObject *parent)
    : QObject(parent)
    , m_textView(textView)
    , m_documentState(documentState)
    , m_document(document)
{
    connect(textView, &TextView::textDidChange, this, &Coordinator::textDidChange);
    connect(
        textView, &TextView::selectionDidChange, this, &Coordinator::textViewDidChangeSelection);
    connect(documentState, &DocumentState::didChange, this, &Coordinator::scheduleUpdate);
    updateMetrics(); // The caret of a new view is its first report.
}

void Coordinator::updateView()
{
    if (m_textView.isNull() || m_documentState.isNull() || m_textView->hasMarkedText())
        return;
    const Text text = m_documentState->text();
    // Comparing the characters is expensive; two copies of one value need no comparison.
    if (m_textView->string().isSameValue(text) || m_textView->string() == text)
        return;
    m_textView->setString(text);
}

void Coordinator::textDidChange()
{
    enqueue([this, text = m_textView->string()] {
        if (!m_documentState.isNull())
            m_documentState->setText(text);
        if (!m_document.isNull())
            m_document->publishContentString(text);
    });
    updateMetrics();
}

void Coordinator::textViewDidChangeSelection()
{
    updateMetrics();
}

void Coordinator::updateMetrics()
{
    const Text &text = m_textView->string();
    const TextMetrics metrics = text.metrics();
    const qint64 location = m_textView->selectedRange().location;
    std::pair<qint64, qint64> cursor{1, 0};
    if (location <= text.size())
        cursor = text.separatorLineAndColumn(location);
    enqueue([this, metrics, cursor] {
        if (m_documentState.isNull())
            return;
        m_documentState->setCharacterCount(metrics.clusters);
        m_documentState->setLineCount(metrics.separators + 1);
        m_documentState->setCursorLine(cursor.first);
        m_documentState->setCursorColumn(cursor.second);
    });
}

void Coordinator::enqueue(std::function<void()> write)
{
    ++m_pendingWrites;
    // The queued call is dropped with this object, so a closed window writes nothing.
    QMetaObject::invokeMethod(
        this,
        [this, write = std::move(write)] {
            --m_pendingWrites;
            write();
        },
        Qt::QueuedConnection);
}

void Coordinator::scheduleUpdate()
{
    if (m_updateScheduled)
        return;
    m_updateScheduled = true;
    QMetaObject::invokeMethod(this, &Coordinator::performScheduledUpdate, Qt::QueuedConnection);
}

void Coordinator::performScheduledUpdate()
{
    m_updateScheduled = false;
    // Each pending write changes the state and so schedules this call again. By then the state
    // holds what the user typed.
    if (!hasPendingWrites())
        updateView();
}

} // namespace penwick
