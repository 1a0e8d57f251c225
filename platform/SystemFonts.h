#pragma once

#include <QString>

#include <thread>

namespace penwick {

/// Reads what the system says of its fonts on another thread, from construction on: nothing else
/// needs that core while a program starts. Without one, the first text that is measured has it
/// read.
class FontPreparation final
{
public:
    FontPreparation();
    /// Waits until everything is read.
    ~FontPreparation();
    Q_DISABLE_COPY_MOVE(FontPreparation)

private:
    std::thread m_thread;
};

/// The family that `family` stands for, where it is an alias such as "monospace"; a family that
/// exists is its own. Loads no font. Empty when there are no fonts at all.
[[nodiscard]] QString fontFamilyBehind(const QString &family);

} // namespace penwick
