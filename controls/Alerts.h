#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace penwick {

/// Shows a message over a window, with one button that closes it. Returns at once.
void showAlert(QWidget *parent, const QString &message);

/// Asks over a window whether something is to be removed for good, and calls `onDelete` if so.
/// Returns at once.
void confirmDelete(QWidget *parent,
                   const QString &title,
                   const QString &message,
                   const std::function<void()> &onDelete);

enum class UnsavedAnswer { Save, Discard, Cancel };

/// Asks what to do with the changes to what is called `name`. Returns with the answer.
[[nodiscard]] UnsavedAnswer askAboutUnsavedChanges(QWidget *parent, const QString &name);

} // namespace penwick
