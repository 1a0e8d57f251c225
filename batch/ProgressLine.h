#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

namespace penwick {

/// One line on standard error that says how far a long run is. It appears only on a terminal, and
/// only if the run takes longer than a second.
class ProgressLine final
{
public:
    /// \param isEnabled false to show nothing.
    /// \param total the number of inputs.
    ProgressLine(bool isEnabled, qsizetype total);

    /// Shows the line, or a newer state of it. Cheap if it was just shown.
    void show(qsizetype done, const QByteArray &currentName);

    /// Removes the line, so that other output can be written. The next `show` brings it back.
    void hide();

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] QString text(qsizetype done, const QByteArray &currentName) const;

    bool m_isEnabled;
    qsizetype m_total;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_lastShown = m_start;
    bool m_isVisible = false;
};

} // namespace penwick
