#pragma once

#include "editor/TextDocument.h"

#include <QString>
#include <QStringList>

#include <functional>

class QMessageBox;
class QWidget;

namespace penwick {

/// The questions and messages for opening and saving. All of them are modal; `parent` is the window
/// that they concern and may be null. Their texts come from the wording.
namespace dialogs {

/// Asks whether to overwrite a file that another program has changed. True when the user agrees.
[[nodiscard]] bool askToOverwriteChangedFile(QWidget *parent, const QString &name);

/// Absolute paths of the files to open; empty when the user cancelled.
/// \param folder the start folder.
[[nodiscard]] QStringList askForFilesToOpen(QWidget *parent, const QString &folder);

/// Absolute path of the file to write; empty when the user cancelled. The user has agreed to
/// replace an existing file.
/// \param suggestion absolute path; the file need not exist.
[[nodiscard]] QString askForFileToSave(QWidget *parent, const QString &suggestion);

enum class OutsideAnswer { KeepMine, LoadTheirs, Later };

/// Asks what to do with a text that has edits and whose file another program has changed, and then
/// calls `answered`. Returns at once; blocks only `parent`.
/// \return the dialog, owned by `parent`; it is deleted when it closes.
QMessageBox *askAboutOutsideChange(QWidget *parent,
                                   const QString &name,
                                   const std::function<void(OutsideAnswer)> &answered);

/// Says that permission to save the file is missing, and offers another file. True when the user
/// accepts.
[[nodiscard]] bool
offerToSaveElsewhere(QWidget *parent, const QString &path, const DocumentError &error);

/// Says that an earlier save of the file was interrupted, and where the text from before it is.
/// Returns at once. Does nothing when `copies` is empty.
void showInterruptedSave(QWidget *parent, const QString &path, const QStringList &copies);

void showOpenError(QWidget *parent, const QString &path, const DocumentError &error);

/// Why the file could not be opened, as a sentence.
[[nodiscard]] QString openErrorReason(const QString &path, const DocumentError &error);
void showSaveError(QWidget *parent, const QString &path, const DocumentError &error);
/// Says that the file cannot be used because another tab has it open.
void showFileInUse(QWidget *parent, const QString &path);

/// The reason why an operation failed, as text for the user.
[[nodiscard]] QString errorReasonText(const DocumentError &error);

} // namespace dialogs

} // namespace penwick
