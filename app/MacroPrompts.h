#pragma once

#include "platform/Timestamp.h"

#include <QString>
#include <QStringList>

#include <optional>

class QWidget;

namespace penwick {

/// Asks for one line of text in a modal dialog. The field has the focus and its text is selected;
/// Return is OK, Escape is Cancel. Nothing is trimmed.
/// \param parent the window to ask over; may be null.
/// \return nothing when the person cancelled.
[[nodiscard]] std::optional<QString>
askForText(QWidget *parent, const QString &message, const QString &initialValue);

/// The date patterns that the prompt offers, in order.
[[nodiscard]] QStringList datePatterns();

/// `instant`, in its own time zone, by a Unicode date pattern in Japanese.
[[nodiscard]] QString formatDate(const QDateTime &instant, const QString &pattern);

/// Asks for a date pattern in a modal dialog and formats the clock's time, in the system's time
/// zone, once it was answered.
/// \return nothing when the person cancelled.
[[nodiscard]] std::optional<QString>
askForDate(QWidget *parent, const QString &message, const Clock &clock);

} // namespace penwick
