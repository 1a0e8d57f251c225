#include "app/DocumentDialogs.h"

#include "controls/FileDialog.h"
#include "controls/MessageBox.h"
#include "controls/VerbatimText.h"
#include "platform/files/SafeCopy.h"
#include "wording/FileReasons.h"
#include "wording/WordingLookup.h"

#include <QDir>
#include <QFileInfo>
#include <QPushButton>

namespace penwick::dialogs {

using namespace Qt::StringLiterals;

namespace {

/// Shows the box with a button that agrees and one that cancels. The one that destroys nothing is
/// the default.
bool isAgreed(MessageBox &box, const QString &label, QMessageBox::ButtonRole role)
{
    QPushButton *agree = box.addTextButton(label, role);
    QPushButton *cancel =
        box.addTextButton(wording::text(u"common.cancel"_s), QMessageBox::RejectRole);
    box.setDefaultButton(role == QMessageBox::DestructiveRole ? cancel : agree);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == agree;
}

void showFileError(QWidget *parent, const QString &text, const QString &path, const QString &reason)
{
    MessageBox box(QMessageBox::Warning, text, parent);
    box.setInformation(visibleLine(QDir::toNativeSeparators(path)) + u"\n"_s + reason);
    box.addTextButton(wording::text(u"common.ok"_s), QMessageBox::AcceptRole);
    box.exec();
}

/// Says where the text from before an unfinished save is.
QString placeOf(const QStringList &copies)
{
    return wording::text(u"dialog.interruptedSaveInformation"_s) + u"\n"_s +
           QDir::toNativeSeparators(copies.join(u'\n'));
}

/// Sets up what both file dialogs share. The other texts of Qt's own dialog, used where the
/// platform has none, come from the translator.
void setUpFileDialog(QFileDialog &dialog, const QString &acceptLabel)
{
    dialog.setLabelText(QFileDialog::Accept, acceptLabel);
    dialog.setLabelText(QFileDialog::Reject, wording::text(u"common.cancel"_s));
    dialog.setOption(QFileDialog::DontResolveSymlinks); // The name shown is the name opened.
    dialog.setNameFilter(wording::text(u"dialog.allFiles"_s) + u" (*)"_s);
}

} // namespace

bool askToOverwriteChangedFile(QWidget *parent, const QString &name)
{
    MessageBox box(QMessageBox::Warning,
                   wording::text(u"dialog.changedOnDiskMessage"_s, {visibleLine(name)}),
                   parent);
    box.setInformation(wording::text(u"dialog.changedOnDiskInformation"_s));
    return isAgreed(box, wording::text(u"dialog.overwrite"_s), QMessageBox::DestructiveRole);
}

QMessageBox *askAboutOutsideChange(QWidget *parent,
                                   const QString &name,
                                   const std::function<void(OutsideAnswer)> &answered)
{
    auto *box = new MessageBox(QMessageBox::Question,
                               wording::text(u"dialog.changedOnDiskMessage"_s, {visibleLine(name)}),
                               parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setInformation(
        wording::text(u"dialog.outsideChangeInformation"_s, {wording::text(u"menu.edit.undo"_s)}));
    const QPushButton *keep =
        box->addTextButton(wording::text(u"dialog.keepMine"_s), QMessageBox::AcceptRole);
    const QPushButton *load =
        box->addTextButton(wording::text(u"dialog.loadTheirs"_s), QMessageBox::DestructiveRole);
    QPushButton *later =
        box->addTextButton(wording::text(u"dialog.decideLater"_s), QMessageBox::RejectRole);
    box->setDefaultButton(later);
    box->setEscapeButton(later);
    QObject::connect(box, &QDialog::finished, box, [box, keep, load, answered] {
        if (box->clickedButton() == keep)
            answered(OutsideAnswer::KeepMine);
        else if (box->clickedButton() == load)
            answered(OutsideAnswer::LoadTheirs);
        else
            answered(OutsideAnswer::Later);
    });
    box->open();
    return box;
}

bool offerToSaveElsewhere(QWidget *parent, const QString &path, const DocumentError &error)
{
    MessageBox box(QMessageBox::Warning, wording::text(u"error.fileReadOnly"_s), parent);
    box.setInformation(visibleLine(QDir::toNativeSeparators(path)) + u"\n"_s +
                       errorReasonText(error));
    return isAgreed(box, wording::text(u"dialog.saveElsewhere"_s), QMessageBox::AcceptRole);
}

void showInterruptedSave(QWidget *parent, const QString &path, const QStringList &copies)
{
    if (copies.isEmpty())
        return;
    auto *box = new MessageBox(QMessageBox::Warning,
                               wording::text(u"dialog.interruptedSaveMessage"_s,
                                             {visibleLine(QFileInfo(path).fileName())}),
                               parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setInformation(placeOf(copies));
    box->addTextButton(wording::text(u"common.ok"_s), QMessageBox::AcceptRole);
    box->open();
}

QStringList askForFilesToOpen(QWidget *parent, const QString &folder)
{
    FileDialog dialog(parent, wording::text(u"dialog.openTitle"_s), folder);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    setUpFileDialog(dialog, wording::text(u"dialog.open"_s));
    return dialog.exec() == QDialog::Accepted ? dialog.chosenPaths() : QStringList();
}

QString askForFileToSave(QWidget *parent, const QString &suggestion)
{
    const QFileInfo info(suggestion);
    FileDialog dialog(parent, wording::text(u"dialog.saveTitle"_s), info.absolutePath());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    setUpFileDialog(dialog, wording::text(u"common.save"_s));
    dialog.selectFile(info.fileName());
    return dialog.exec() == QDialog::Accepted ? dialog.chosenPaths().value(0) : QString();
}

void showOpenError(QWidget *parent, const QString &path, const DocumentError &error)
{
    showFileError(
        parent, wording::text(u"error.fileOpenFailed"_s), path, openErrorReason(path, error));
}

QString openErrorReason(const QString &path, const DocumentError &error)
{
    if (error.fileErrorKind == FileError::Kind::NotFound && !QFileInfo(path).dir().exists())
        return wording::text(u"error.reason.folderNotFound"_s);
    return errorReasonText(error);
}

void showSaveError(QWidget *parent, const QString &path, const DocumentError &error)
{
    showFileError(parent,
                  wording::text(u"error.fileSaveFailed"_s),
                  path,
                  error.fileErrorKind == FileError::Kind::Damaged
                      ? errorReasonText(error) + u"\n"_s + placeOf(SafeCopy::left(path))
                      : errorReasonText(error));
}

void showFileInUse(QWidget *parent, const QString &path)
{
    showFileError(parent,
                  wording::text(u"error.fileSaveFailed"_s),
                  path,
                  wording::text(u"error.reason.openElsewhere"_s));
}

QString errorReasonText(const DocumentError &error)
{
    if (error.domain == DocumentError::Domain::NSPOSIXErrorDomain)
        return wording::reasonText(error.fileErrorKind);
    return wording::text(u"error.reason.notUtf8"_s);
}

} // namespace penwick::dialogs
