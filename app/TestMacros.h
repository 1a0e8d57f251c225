#pragma once

#include <QString>

namespace penwick {

/// A macro of the menu that is not stored anywhere.
struct TestMacro
{
    QString id;
    QString name;
    QString code;
};

/// Replaces the whole text by a notice with the present time.
[[nodiscard]] TestMacro replaceAllTestMacro();
/// Puts the selected text into a notice; without a selection it says so.
[[nodiscard]] TestMacro replaceSelectionTestMacro();

} // namespace penwick
