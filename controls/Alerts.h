#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace penwick {

/// Shows a message in a window-modal box with one button that closes it. Returns at once.
void showAlert(QWidget *parent, const QString &message);

/// Asks in a window-modal box whether something is to be deleted permanently, and calls `onDelete`
/// if the user confirms. Returns at once.
void confirmDelete(QWidget *parent,
                   const QString &title,
                   const QString &message,
                   const std::function<void()> &onDelete);

/// The same for another action that cannot be undone.
/// \param action text of the button that confirms.
void confirm(QWidget *parent,
             const QString &title,
             const QString &message,
             const QString &action,
             const std::function<void()> &onConfirm);

enum class UnsavedAnswer { Save, Discard, Cancel };

/// Asks what to do with the unsaved changes to the document called `name`. Returns the answer,
/// after the modal box is closed.
/// \param isForAll if not null, the user may also answer for all documents at once, and it is set
/// to
///        whether the user did.
[[nodiscard]] UnsavedAnswer
askAboutUnsavedChanges(QWidget *parent, const QString &name, bool *isForAll = nullptr);

} // namespace penwick
