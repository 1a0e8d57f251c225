#include "controls/Alerts.h"

#include "controls/MessageBox.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QPushButton>

namespace penwick {

using namespace Qt::StringLiterals;

void showAlert(QWidget *parent, const QString &message)
{
    auto *box = new MessageBox(QMessageBox::Information, message, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->addTextButton(wording::text(u"common.ok"_s), QMessageBox::AcceptRole);
    box->open();
}

void confirmDelete(QWidget *parent,
                   const QString &title,
                   const QString &message,
                   const std::function<void()> &onDelete)
{
    confirm(parent, title, message, wording::text(u"common.delete"_s), onDelete);
}

void confirm(QWidget *parent,
             const QString &title,
             const QString &message,
             const QString &action,
             const std::function<void()> &onConfirm)
{
    auto *box = new MessageBox(QMessageBox::Warning, title, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setInformation(message);
    QPushButton *confirmed = box->addTextButton(action, QMessageBox::DestructiveRole);
    QPushButton *cancel =
        box->addTextButton(wording::text(u"common.cancel"_s), QMessageBox::RejectRole);
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    QObject::connect(confirmed, &QPushButton::clicked, box, onConfirm);
    box->open();
}

UnsavedAnswer askAboutUnsavedChanges(QWidget *parent, const QString &name, bool *isForAll)
{
    MessageBox box(QMessageBox::Warning,
                   wording::text(u"dialog.unsavedMessage"_s, {visibleLine(name)}),
                   parent);
    box.setInformation(wording::text(u"dialog.unsavedInformation"_s));
    QPushButton *save = box.addTextButton(wording::text(u"common.save"_s), QMessageBox::AcceptRole);
    box.addTextButton(wording::text(u"dialog.discard"_s), QMessageBox::DestructiveRole);
    QPushButton *cancel =
        box.addTextButton(wording::text(u"common.cancel"_s), QMessageBox::RejectRole);
    box.setDefaultButton(save);
    box.setEscapeButton(cancel);
    QPushButton *saveAll = nullptr;
    QPushButton *discardAll = nullptr;
    if (isForAll != nullptr) {
        saveAll = box.addTextButton(wording::text(u"dialog.saveAll"_s), QMessageBox::AcceptRole);
        discardAll =
            box.addTextButton(wording::text(u"dialog.discardAll"_s), QMessageBox::DestructiveRole);
    }
    box.exec();
    const QAbstractButton *clicked = box.clickedButton();
    if (clicked == nullptr || clicked == cancel)
        return UnsavedAnswer::Cancel;
    if (isForAll != nullptr)
        *isForAll = clicked == saveAll || clicked == discardAll;
    return clicked == save || clicked == saveAll ? UnsavedAnswer::Save : UnsavedAnswer::Discard;
}

} // namespace penwick
