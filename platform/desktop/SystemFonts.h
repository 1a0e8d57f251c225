#pragma once

#include <QFont>
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

/// Sets a fixed size in logical pixels. Where the user has set another font resolution than 96 dots
/// per inch, the size is scaled like those of the desktop's own fonts.
void setFontPixels(QFont &font, int pixels);

} // namespace penwick
