#include "command/KeyObstacle.h"

#include "command/Command.h"
#include "wording/WordingLookup.h"

#include <QKeySequence>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

// Keys that edit text on desktops only, and keys of input methods and window managers.
constexpr QKeyCombination kReserved[] = {
    Qt::CTRL | Qt::Key_K,
    Qt::CTRL | Qt::Key_U,
    Qt::CTRL | Qt::SHIFT | Qt::Key_U, // Enters a character by its code.
    Qt::ALT | Qt::Key_QuoteLeft,
    Qt::CTRL | Qt::Key_QuoteLeft,
    Qt::SHIFT | Qt::Key_F10,
    Qt::ALT | Qt::Key_F4,
};

bool isFunctionKey(Qt::Key key)
{
    return key >= Qt::Key_F1 && key <= Qt::Key_F35;
}

/// True for keys that have a character but the space bar, which switches input methods.
bool hasCharacter(Qt::Key key)
{
    return key > Qt::Key_Space && key <= Qt::Key_AsciiTilde;
}

bool editsText(QKeyCombination key)
{
    using Standard = QKeySequence::StandardKey;
    const auto isOf = [key](int standard) {
        return QKeySequence::keyBindings(static_cast<Standard>(standard))
            .contains(QKeySequence(key));
    };
    for (int standard = Standard::MoveToNextChar; standard <= Standard::DeleteCompleteLine;
         ++standard)
        if (isOf(standard))
            return true;
    constexpr Standard kOthers[] = {Standard::Cut,
                                    Standard::Copy,
                                    Standard::Paste,
                                    Standard::Undo,
                                    Standard::Redo,
                                    Standard::Delete,
                                    Standard::SelectAll,
                                    Standard::Backspace};
    return std::any_of(std::begin(kOthers), std::end(kOthers), isOf);
}

} // namespace

QString keyObstacle(QKeyCombination key)
{
    for (const Command &row : commands())
        if ((row.hasKey() && row.key == key) || (row.hasSecondKey() && row.second == key))
            return wording::text(u"command.keyTaken"_s, {commandTitle(row.id)});
    const bool isCommand =
        (key.keyboardModifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
    if (!isFunctionKey(key.key()) && !(isCommand && hasCharacter(key.key())))
        return wording::text(u"command.keyUnfit"_s);
    const bool isReserved =
        std::find(std::begin(kReserved), std::end(kReserved), key) != std::end(kReserved);
    return isReserved || editsText(key) ? wording::text(u"command.keyReserved"_s) : QString();
}

} // namespace penwick
