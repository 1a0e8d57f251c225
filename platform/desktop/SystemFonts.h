#pragma once

#include <QString>

#include <thread>

namespace penwick {

/// Loads the system's font configuration on another thread, from construction on, while the program
/// starts and leaves a core idle. Without such an object, measuring the first text loads it.
class FontPreparation final
{
public:
    FontPreparation();
    /// Waits until the configuration is loaded.
    ~FontPreparation();
    Q_DISABLE_COPY_MOVE(FontPreparation)

private:
    std::thread m_thread;
};

/// Returns the family that an alias such as "monospace" stands for; a family that exists stands for
/// itself. Loads no font. Returns an empty string if there are no fonts.
[[nodiscard]] QString resolvedFontFamily(const QString &family);

} // namespace penwick
