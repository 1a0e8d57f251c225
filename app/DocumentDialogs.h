#pragma once

#include "editor/TextDocument.h"

#include <QString>
#include <QStringList>

#include <functional>

class QMessageBox;
class QWidget;

namespace penwick {

/// The questions and messages around opening and saving. All of them are modal; `parent` is the
/// window they are about and may be null. Their texts come from the wording.
namespace dialogs {

/// True when the file, which another program changed meanwhile, is to be overwritten.
[[nodiscard]] bool askToOverwriteChangedFile(QWidget *parent, const QString &name);

/// Absolute paths of the files to open; empty when the person cancelled.
/// \param folder where to start.
[[nodiscard]] QStringList askForFilesToOpen(QWidget *parent, const QString &folder);

/// Absolute path of the file to write; empty when the person cancelled. Replacing an existing file
/// was agreed to.
/// \param suggestion absolute path, its file need not exist.
[[nodiscard]] QString askForFileToSave(QWidget *parent, const QString &suggestion);

enum class OutsideAnswer { KeepMine, LoadTheirs, Later };

/// Asks what is to become of a text with edits whose file another program changed, and calls
/// `answered` then. Returns at once; only `parent` is held up.
/// \return the question, owned by `parent`; it goes when it was answered.
QMessageBox *askAboutOutsideChange(QWidget *parent,
                                   const QString &name,
                                   const std::function<void(OutsideAnswer)> &answered);

/// Says that the file could not be saved for want of rights. True when it is to be saved elsewhere.
[[nodiscard]] bool
offerToSaveElsewhere(QWidget *parent, const QString &path, const DocumentError &error);

/// Says that an earlier save of the file was cut short, and where its text before that is. Returns
/// at once; does nothing without copies.
void showInterruptedSave(QWidget *parent, const QString &path, const QStringList &copies);

void showOpenError(QWidget *parent, const QString &path, const DocumentError &error);
void showSaveError(QWidget *parent, const QString &path, const DocumentError &error);
/// The file cannot be taken as the document's, for another tab has it.
void showFileInUse(QWidget *parent, const QString &path);

/// Why an operation failed, in words for the person.
[[nodiscard]] QString reasonOf(const DocumentError &error);

} // namespace dialogs

} // namespace penwick
