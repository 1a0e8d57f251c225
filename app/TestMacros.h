#pragma once

#include <QString>

namespace penwick {

/// A macro that is part of the menu and not of the store.
struct TestMacro
{
    QString id;
    QString name;
    QString code;
};

/// A macro that replaces the whole text by a message with the present time.
[[nodiscard]] TestMacro replaceAllTestMacro();
/// A macro that wraps the selected text in a message; without a selection it shows a notification.
[[nodiscard]] TestMacro replaceSelectionTestMacro();

} // namespace penwick
