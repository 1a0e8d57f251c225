#include "editor/DocumentState.h"

#include <utility>

namespace penwick {

DocumentState::DocumentState(QObject *parent)
    : QObject(parent)
{
}

// `value` is passed by value: a listener may invalidate the caller's reference.
template <typename Value> void DocumentState::assign(Field field, Value &member, Value value)
{
    Q_EMIT willChange(field);
    member = std::move(value);
    Q_EMIT didChange(field);
}

void DocumentState::setText(const Text &text)
{
    assign(Field::Text, m_text, text);
}

void DocumentState::setLineCount(qint64 count)
{
    assign(Field::LineCount, m_lineCount, count);
}

void DocumentState::setCharacterCount(qint64 count)
{
    assign(Field::CharacterCount, m_characterCount, count);
}

void DocumentState::setCursorLine(qint64 line)
{
    assign(Field::CursorLine, m_cursorLine, line);
}

void DocumentState::setCursorColumn(qint64 column)
{
    assign(Field::CursorColumn, m_cursorColumn, column);
}

QString DocumentState::encodingDisplay() const
{
    return QStringLiteral("UTF-8");
}

QString DocumentState::newlineDisplay() const
{
    return QStringLiteral("LF");
}

void DocumentState::setMacroNotificationMessage(const std::optional<QString> &message)
{
    assign(Field::MacroNotificationMessage, m_macroNotificationMessage, message);
}

} // namespace penwick
