#pragma once

#include <QHash>
#include <QString>

#include <initializer_list>
#include <optional>

/// The texts that penwick shows, by wording key. Use it from the main thread. Look a text up each
/// time it is shown: the active values change when the user applies a profile.
namespace penwick::wording {

/// Returns the active values' text for the key, else the built-in Japanese one, else the one of
/// `ownTexts` for the active locale, else the key itself. Keys are compared exactly. An empty text
/// among the active values is not replaced. A text is cut as by `cutText` at `kLongestShown`.
[[nodiscard]] QString text(const QString &forKey);

/// Returns the active values' text for the key, else the built-in Japanese one, else `defaultText`.
[[nodiscard]] QString text(const QString &forKey, const QString &defaultText);

/// Looks up as `text(forKey)` and replaces each place `%1` to `%9` of the text by the argument of
/// that number. A text may lack a place or repeat it, and a place without an argument stays.
/// Arguments are inserted as they are, also where they contain `%` and a digit.
[[nodiscard]] QString text(const QString &forKey, std::initializer_list<QString> arguments);

/// Returns every key of a text that penwick shows, with the text that holds under a profile with
/// this locale that lacks the key.
[[nodiscard]] QHash<QString, QString> defaultTexts(const QString &locale);

/// Replaces all active values, and the locale of the profile that they are from; `nullopt` leaves
/// only the built-in texts. Only the profile manager, `useRememberedProfile` and tests call this.
void setActiveValues(std::optional<QHash<QString, QString>> values, const QString &locale = {});

} // namespace penwick::wording
