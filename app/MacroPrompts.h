#pragma once

#include "platform/settings/Timestamp.h"

#include <QString>
#include <QStringList>

#include <optional>

class QWidget;

namespace penwick {

/// Asks for one line of text in a modal dialog. The field has the focus and its text is selected;
/// Return is OK, Escape is Cancel. The text is not trimmed.
/// \param parent the dialog's parent; may be null.
/// \return no value when the user cancelled.
[[nodiscard]] std::optional<QString>
askForText(QWidget *parent, const QString &message, const QString &initialValue);

/// The date patterns of the prompt, in order.
[[nodiscard]] QStringList datePatterns();

/// Formats `instant`, in its own time zone, by a Unicode date pattern in Japanese.
[[nodiscard]] QString formatDate(const QDateTime &instant, const QString &pattern);

/// Asks for a date pattern in a modal dialog and formats the clock's time in the system's time
/// zone. The clock is read after the answer.
/// \param pattern selected at first if it is one of the patterns; receives the answer. May be null.
/// \return no value when the user cancelled.
[[nodiscard]] std::optional<QString>
askForDate(QWidget *parent, const QString &message, const Clock &clock, QString *pattern = nullptr);

} // namespace penwick
