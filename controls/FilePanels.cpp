#include "controls/FilePanels.h"

#include "controls/FileDialog.h"
#include "controls/VerbatimText.h"
#include "platform/desktop/WindowActivation.h"
#include "wording/WordingLookup.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

QString &lastFolder()
{
    static QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return folder;
}

QString startFolder()
{
    return QDir(lastFolder()).exists() ? lastFolder() : QDir::homePath();
}

/// Returns a file name for an arbitrary macro name: a slash would name a folder, and a leading dot
/// would hide the file. A name that already has the extension keeps it.
QString fileName(QString name)
{
    const QString extension = u".json"_s;
    if (name.size() > extension.size() && name.endsWith(extension, Qt::CaseInsensitive))
        name.chop(extension.size());
    static const QRegularExpression unfit(u"[/\\x00-\\x1f\\x7f]"_s);
    name.replace(unfit, u"-"_s);
    if (name.startsWith(u'.'))
        name[0] = u'-';
    constexpr qsizetype kLongest = 60; // In UTF-16 units of at most 3 bytes; a file name has 255.
    name.truncate(kLongest);
    if (!name.isEmpty() && name.back().isHighSurrogate())
        name.chop(1);
    return name + extension;
}

/// The panel that is open over the window; null when there is none.
QWidget *panelOver(const QWidget *window)
{
    if (window == nullptr)
        return nullptr;
    for (auto *panel : window->findChildren<FileDialog *>(Qt::FindDirectChildrenOnly))
        if (panel->isVisible())
            return panel;
    return nullptr;
}

/// \param suppliedFolder is not remembered as the last one: the user may not be able to write
/// there.
std::optional<QString>
ask(FileDialog &dialog, const QString &acceptLabel, const QString &suppliedFolder = {})
{
    // A modal panel blocks the keyboard and the mouse, but not assistive technology.
    if (QWidget *open = panelOver(dialog.parentWidget())) {
        bringForward(open);
        return std::nullopt;
    }
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setOption(QFileDialog::DontUseNativeDialog, false);
    dialog.setLabelText(QFileDialog::Accept, verbatimText(acceptLabel));
    dialog.setLabelText(QFileDialog::Reject, verbatimText(wording::text(u"common.cancel"_s)));
    dialog.setNameFilter(wording::text(u"dialog.jsonFiles"_s) + u" (*.json)"_s);
    if (dialog.exec() != QDialog::Accepted || dialog.chosenPaths().isEmpty())
        return std::nullopt;
    if (suppliedFolder.isEmpty() || dialog.directory() != QDir(suppliedFolder))
        lastFolder() = dialog.directory().absolutePath();
    return dialog.chosenPaths().constFirst();
}

std::optional<QString> askToOpenIn(QWidget *parent, const QString &title, const QString &folder)
{
    const bool isThere = !folder.isEmpty() && QDir(folder).exists();
    FileDialog dialog(parent, title, isThere ? folder : startFolder());
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    return ask(dialog, wording::text(u"dialog.open"_s), folder);
}

std::optional<QString> askToOpen(QWidget *parent, const QString &title)
{
    return askToOpenIn(parent, title, {});
}

std::optional<QString> askToSave(QWidget *parent, const QString &title, const QString &name)
{
    FileDialog dialog(parent, title, startFolder());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDefaultSuffix(u"json"_s);
    dialog.selectFile(fileName(name));
    return ask(dialog, wording::text(u"common.save"_s));
}

} // namespace

FilePanels FilePanels::onScreen()
{
    return {askToOpen, askToSave, askToOpenIn};
}

} // namespace penwick
