#include "window/TextCommands.h"

#include "command/CommandShortcut.h"
#include "lines/LineBlock.h"
#include "view/TextView.h"

#include <QKeyEvent>
#include <QShortcut>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Kind = TextChangeKind;

struct Binding
{
    CommandId id;
    Kind kind;
};

constexpr Binding kBindings[] = {
    {CommandId::Indent, Kind::Indent},
    {CommandId::Outdent, Kind::Outdent},
    {CommandId::DuplicateLines, Kind::Duplicate},
    {CommandId::MoveLinesUp, Kind::MoveUp},
    {CommandId::MoveLinesDown, Kind::MoveDown},
    {CommandId::JoinLines, Kind::Join},
    {CommandId::SortLines, Kind::Sort},
    {CommandId::TrimLineEnds, Kind::TrimEnds},
    {CommandId::BlanksToTabs, Kind::BlanksToTabs},
    {CommandId::TabsToBlanks, Kind::TabsToBlanks},
    {CommandId::UpperCase, Kind::UpperCase},
    {CommandId::LowerCase, Kind::LowerCase},
    {CommandId::FullWidth, Kind::FullWidth},
    {CommandId::HalfWidth, Kind::HalfWidth},
};

/// What Tab or Shift+Tab does to several lines; none for other keys.
std::optional<Kind> kindOfTab(const QKeyEvent &event)
{
    const bool isShifted = event.modifiers() == Qt::ShiftModifier;
    if (event.key() == Qt::Key_Tab && event.modifiers() == Qt::NoModifier)
        return Kind::Indent;
    // Keyboards report Shift+Tab in different ways.
    const bool isBack =
        event.key() == Qt::Key_Backtab && (isShifted || event.modifiers() == Qt::NoModifier);
    if (isBack || (event.key() == Qt::Key_Tab && isShifted))
        return Kind::Outdent;
    return std::nullopt;
}

} // namespace

TextCommands::TextCommands(TextView *view, QObject *scope, Preferences &preferences, int wait)
    : QObject(scope)
    , m_view(view)
    , m_wait(wait)
{
    const auto indent = [view, &preferences] { view->setIndentation(indentationIn(preferences)); };
    indent();
    for (const auto id :
         {PreferenceId::TabWidth, PreferenceId::TabKeyInserts, PreferenceId::KeepsIndentation})
        Preferences::observe(id, this, indent);
    view->installEventFilter(this);
    for (const Binding &binding : kBindings) {
        if (!command(binding.id).hasKey())
            continue;
        QShortcut *shortcut = makeShortcut(binding.id, view);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(
            shortcut, &QShortcut::activated, this, [this, kind = binding.kind] { perform(kind); });
    }
}

std::optional<Kind> TextCommands::kindOf(CommandId id)
{
    for (const Binding &binding : kBindings)
        if (binding.id == id)
            return binding.kind;
    return std::nullopt;
}

SelectedText TextCommands::selectedText() const
{
    const Text &text = m_view->string();
    if (const ColumnSelection *columns = m_view->columns()) {
        const TextRange lines = rangeOf(text, columns->lines());
        const TextRectangle rectangle = columns->rectangle(text);
        if (rectangle.caret.line < rectangle.anchor.line)
            return {text, lines.end(), lines.location};
        return {text, lines.location, lines.end()};
    }
    return {text, m_view->anchorOffset(), m_view->caretOffset()};
}

bool TextCommands::canPerform(Kind kind) const
{
    const ColumnSelection *columns = m_view->columns();
    return canRewrite(kind, selectedText()) &&
           (columns == nullptr || !columns->isEmpty() || !changesCharacters(kind));
}

void TextCommands::perform(Kind kind)
{
    m_view->commitMarkedText();
    if (!canPerform(kind))
        return;
    if (const ColumnSelection *columns = m_view->columns(); columns && changesCharacters(kind))
        return performInRows(kind, *columns);
    const auto work =
        [this, kind, text = selectedText(), style = m_view->indentation()](const auto & /*stop*/) {
            return [this, text, change = rewrite(kind, text, style)] { apply(text, change); };
        };
    m_task.start(work, m_wait);
}

void TextCommands::performInRows(Kind kind, const ColumnSelection &columns)
{
    const auto work = [this, kind, text = m_view->string(), columns](const auto & /*stop*/) {
        return [this,
                text,
                before = columns.rectangle(text),
                change = rewriteRows(kind, text, columns)] {
            if (change && m_view->string().isSameValue(text))
                applyInRows(before, *change);
        };
    };
    m_task.start(work, m_wait);
}

void TextCommands::applyInRows(const TextRectangle &before, const RowsRewrite &change)
{
    const auto select = [this, &change] { m_view->selectRectangle(change.rectangle); };
    const ColumnSelection *columns = m_view->columns();
    const bool isSelected = columns != nullptr && columns->rectangle(m_view->string()) == before;
    m_view->replaceText(change.change.range,
                        change.change.replacement,
                        isSelected ? select : std::function<void()>());
}

void TextCommands::apply(const SelectedText &before, const std::optional<TextRewrite> &change)
{
    const SelectedText now = selectedText();
    if (!change || !now.text.isSameValue(before.text))
        return;
    if (now.anchor != before.anchor || now.caret != before.caret)
        return m_view->replaceText(change->range, change->replacement);
    const auto select = [this, &change] {
        m_view->setSelectionInPlace(change->anchor, change->caret);
    };
    if (change->range.isEmpty() && change->replacement.isEmpty())
        select();
    else
        m_view->replaceText(change->range, change->replacement, select);
    m_view->scrollTo(change->caret);
}

bool TextCommands::eventFilter(QObject *object, QEvent *event)
{
    if (object != m_view || event->type() != QEvent::KeyPress)
        return false;
    const auto kind = kindOfTab(*static_cast<QKeyEvent *>(event));
    if (!kind || selectedLines(m_view->string(), m_view->selectedRange()).count < 2)
        return false;
    perform(*kind);
    return true;
}

Indentation indentationIn(const Preferences &preferences)
{
    return {.tabWidth = preferences.number(PreferenceId::TabWidth),
            .insertsBlanks = preferences.text(PreferenceId::TabKeyInserts) == u"spaces",
            .isKept = preferences.isOn(PreferenceId::KeepsIndentation)};
}

} // namespace penwick
