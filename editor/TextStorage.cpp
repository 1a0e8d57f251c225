#include "editor/TextStorage.h"

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

constexpr auto kPause = std::chrono::seconds(1);

/// What a change costs while it can be undone: what it inserted is in the text, or was removed by a
/// later one.
qint64 bytesOf(const TextChange &change)
{
    constexpr qint64 kOwn = 256; // About what the record itself takes.
    return change.removed.metrics().utf8Bytes + kOwn;
}

/// True when `text` holds a line break. Typing one ends an undo step, so that undo reverts at most
/// one line.
bool holdsLineBreak(const Text &text)
{
    return text.metrics().separators > 0;
}

bool isInRows(TextStorage::EditKind kind)
{
    return kind == TextStorage::EditKind::TypingInRows ||
           kind == TextStorage::EditKind::DeletingInRows;
}

/// Adds what is typed right behind. False when the change is another one.
bool extendByTyping(TextChange &last, const TextChange &change)
{
    if (!change.removed.isEmpty() || change.offset != last.offset + last.inserted.size())
        return false;
    last.inserted = last.inserted.appended(change.inserted);
    return true;
}

/// Adds what is deleted right before or behind. False when the change is another one.
bool extendByDeleting(TextChange &last, const TextChange &change, TextStorage::EditKind kind)
{
    if (!change.inserted.isEmpty() || !last.inserted.isEmpty())
        return false;
    const bool isBackward = kind == TextStorage::EditKind::DeletingBackward;
    if (isBackward ? change.offset + change.removed.size() != last.offset
                   : change.offset != last.offset)
        return false;
    last.removed =
        isBackward ? change.removed.appended(last.removed) : last.removed.appended(change.removed);
    last.offset = change.offset;
    return true;
}

} // namespace

TextStorage::TextStorage(EditClock clock, QObject *parent)
    : QObject(parent)
    , m_clock(std::move(clock))
{
}

void TextStorage::setText(const Text &text)
{
    m_savePosition = isModified() ? -1 : 0;
    m_steps.clear();
    m_position = 0;
    m_bytes = 0;
    m_savingPosition = -1;
    m_groupHasStep = false;
    m_awaitsSelection = false;
    m_selection = {};
    apply(0, m_text.size(), text);
    publishStates();
}

void TextStorage::extend(const Text &text)
{
    const qint64 before = std::exchange(m_text, text).size();
    Q_EMIT changed(before, 0, text.size() - before);
}

void TextStorage::apply(qint64 offset, qint64 length, const Text &replacement)
{
    m_text = offset == 0 && length == m_text.size() ? replacement
                                                    : m_text.replaced(offset, length, replacement);
    Q_EMIT changed(offset, length, replacement.size());
}

void TextStorage::replaceCharacters(TextRange range, const Text &replacement, EditKind kind)
{
    // Widened to whole surrogate pairs, so that the recorded change is the one that is applied.
    const Text removed = m_text.mid(range.location, std::max<qint64>(0, range.length));
    const qint64 offset = m_text.pairStart(std::clamp<qint64>(range.location, 0, m_text.size()));
    if (removed.isEmpty() && replacement.isEmpty())
        return;
    record({offset, removed, replacement}, kind);
    dropOldSteps();
    apply(offset, removed.size(), replacement);
    publishStates();
}

bool TextStorage::coalesce(const TextChange &change, EditKind kind)
{
    if (m_position == 0 || m_position != m_steps.size())
        return false;
    Step &step = m_steps.back();
    if (!step.open || step.kind != kind || kind == EditKind::Other)
        return false;
    TextChange &last = step.changes.back();
    if (isInRows(kind)) {
        if (change.offset != last.offset || change.removed.size() != last.inserted.size())
            return false;
        last.inserted = change.inserted;
        return true;
    }
    if (kind == EditKind::Typing ? !extendByTyping(last, change)
                                 : !extendByDeleting(last, change, kind))
        return false;
    step.open = !holdsLineBreak(change.inserted);
    addBytes(change.removed.metrics().utf8Bytes);
    return true;
}

void TextStorage::record(TextChange change, EditKind kind)
{
    const auto now = m_clock();
    if (now - std::exchange(m_lastEdit, now) >= kPause)
        breakUndoCoalescing();
    if (m_groupingLevel == 0 && coalesce(change, kind)) {
        m_awaitsSelection = true;
        return;
    }
    for (qint64 *position : {&m_savePosition, &m_savingPosition})
        if (*position > static_cast<qint64>(m_position))
            *position = -1;
    m_steps.resize(m_position);
    m_awaitsSelection = true;
    if (m_groupingLevel > 0 && m_groupHasStep) {
        // A save point in the middle of a group cannot be reached: undo and redo skip that state.
        for (qint64 *position : {&m_savePosition, &m_savingPosition})
            if (*position == static_cast<qint64>(m_position))
                *position = -1;
        addBytes(bytesOf(change));
        m_steps.back().changes.push_back(std::move(change));
        return;
    }
    Step step;
    step.kind = kind;
    step.open = m_groupingLevel == 0 && kind != EditKind::Other &&
                (isInRows(kind) || !holdsLineBreak(change.inserted));
    step.selectionBefore = m_selection;
    step.selectionAfter = m_selection;
    const qint64 bytes = bytesOf(change);
    step.changes.push_back(std::move(change));
    m_steps.push_back(std::move(step));
    ++m_position;
    addBytes(bytes);
    m_groupHasStep = m_groupingLevel > 0;
}

/// Adds to the last step.
void TextStorage::addBytes(qint64 bytes)
{
    m_steps.back().bytes += bytes;
    m_bytes += bytes;
}

void TextStorage::dropOldSteps()
{
    while (m_bytes > m_undoLimit && m_position > 1) {
        m_bytes -= m_steps.front().bytes;
        m_steps.pop_front();
        --m_position;
        for (qint64 *position : {&m_savePosition, &m_savingPosition})
            *position = std::max<qint64>(*position - 1, -1); // Before the first step: unreachable.
    }
}

void TextStorage::beginUndoGrouping()
{
    if (m_groupingLevel++ == 0) {
        breakUndoCoalescing();
        m_groupHasStep = false;
    }
}

void TextStorage::endUndoGrouping()
{
    Q_ASSERT(m_groupingLevel > 0);
    if (--m_groupingLevel == 0) {
        m_groupHasStep = false;
        m_awaitsSelection = false;
        publishStates();
    }
}

void TextStorage::breakUndoCoalescing()
{
    if (!m_steps.empty())
        m_steps.back().open = false;
}

bool TextStorage::canUndo() const
{
    return m_position > 0 && m_groupingLevel == 0;
}

bool TextStorage::canRedo() const
{
    return m_position < m_steps.size() && m_groupingLevel == 0;
}

TextRange TextStorage::undo()
{
    if (!canUndo())
        return m_selection;
    breakUndoCoalescing();
    m_awaitsSelection = false;
    --m_position;
    const Step &step = m_steps[m_position];
    m_bytes -= step.bytes;
    const TextRange selection = step.selectionBefore;
    for (auto change = step.changes.rbegin(); change != step.changes.rend(); ++change)
        apply(change->offset, change->inserted.size(), change->removed);
    m_selection = selection;
    publishStates();
    return selection;
}

TextRange TextStorage::redo()
{
    if (!canRedo())
        return m_selection;
    m_awaitsSelection = false;
    const Step &step = m_steps[m_position];
    ++m_position;
    m_bytes += step.bytes;
    const TextRange selection = step.selectionAfter;
    for (const TextChange &change : step.changes)
        apply(change.offset, change.removed.size(), change.inserted);
    m_selection = selection;
    publishStates();
    return selection;
}

void TextStorage::setSelectionForUndo(TextRange selection)
{
    m_selection = selection;
    if (!m_awaitsSelection || m_position == 0)
        return;
    m_steps[m_position - 1].selectionAfter = selection;
    m_awaitsSelection = m_groupingLevel > 0;
}

void TextStorage::setSavePoint()
{
    beginSaving();
    endSaving(true);
}

void TextStorage::beginSaving()
{
    breakUndoCoalescing();
    m_savingPosition = static_cast<qint64>(m_position);
}

void TextStorage::endSaving(bool succeeded)
{
    if (succeeded)
        m_savePosition = m_savingPosition;
    m_savingPosition = -1;
    publishStates();
}

void TextStorage::forgetSavePoint()
{
    breakUndoCoalescing();
    m_savePosition = -1;
    publishStates();
}

bool TextStorage::isModified() const
{
    return m_savePosition != static_cast<qint64>(m_position);
}

void TextStorage::publishStates()
{
    Q_EMIT undoStateChanged();
    if (const bool modified = isModified(); modified != m_publishedModified) {
        m_publishedModified = modified;
        Q_EMIT modifiedChanged(modified);
    }
}

} // namespace penwick
