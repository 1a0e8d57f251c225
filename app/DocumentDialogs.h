#pragma once

#include "editor/TextDocument.h"

#include <QString>
#include <QStringList>

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

void showOpenError(QWidget *parent, const QString &path, const DocumentError &error);
void showSaveError(QWidget *parent, const QString &path, const DocumentError &error);
/// The file cannot be taken as the document's, for another tab has it.
void showFileInUse(QWidget *parent, const QString &path);

/// Why an operation failed, in words for the person.
[[nodiscard]] QString reasonOf(const DocumentError &error);

} // namespace dialogs

} // namespace penwick
