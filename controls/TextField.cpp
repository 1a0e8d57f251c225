#include "controls/TextField.h"

#include "text/CutText.h"

#include <limits>
#include <utility>

namespace penwick {

TextField::TextField(QWidget *parent)
    : QLineEdit(parent)
{
    setMaxLength(std::numeric_limits<int>::max()); // By default it cuts off longer texts.
}

void TextField::setWholeText(const QString &text)
{
    constexpr qsizetype kHuge = 50'000; // UTF-16 code units, of which the layout takes some 20 ms.
    const bool isCut = text.size() > kHuge && !hasFocus();
    m_whole = isCut ? text : QString();
    setReadOnly(isCut); // A text dropped on the field would be added to the cut one.
    setText(isCut ? cutText(text, kLongestShown) : text);
    setCursorPosition(0);
}

void TextField::focusInEvent(QFocusEvent *event)
{
    if (!m_whole.isNull()) {
        setReadOnly(false);
        setText(std::exchange(m_whole, {}));
    }
    QLineEdit::focusInEvent(event);
}

} // namespace penwick
