#include "view/TextViewMenu.h"

#include "view/TextView.h"
#include "wording/WordingLookup.h"

#include <QMenu>

namespace penwick {

using namespace Qt::StringLiterals;

QString textMenuEntry(const QString &title, const QKeySequence &shortcut)
{
    QString text = title;
    text.replace(u'&', u"&&"_s); // A single & would mark a mnemonic.
    text.replace(u'\t', u' ');
    const QString keys = shortcut.toString(QKeySequence::NativeText);
    return keys.isEmpty() ? text : text + u'\t' + keys;
}

QMenu *makeTextViewMenu(TextView *view)
{
    auto *menu = new QMenu(view);
    const auto add = [&](const QString &title,
                         QKeySequence::StandardKey key,
                         bool isEnabled,
                         void (TextView::*operation)()) {
        menu->addAction(textMenuEntry(title, key), view, operation)->setEnabled(isEnabled);
    };
    const bool hasSelection = view->hasSelection();
    const bool canDelete = hasSelection && !view->isReadOnly();
    const TextStorage &storage = *view->textStorage();
    add(wording::text(u"menu.edit.undo"_s), QKeySequence::Undo, storage.canUndo(), &TextView::undo);
    add(wording::text(u"menu.edit.redo"_s), QKeySequence::Redo, storage.canRedo(), &TextView::redo);
    menu->addSeparator();
    add(wording::text(u"menu.edit.cut"_s), QKeySequence::Cut, canDelete, &TextView::cut);
    add(wording::text(u"menu.edit.copy"_s), QKeySequence::Copy, hasSelection, &TextView::copy);
    add(wording::text(u"menu.edit.paste"_s),
        QKeySequence::Paste,
        view->canPaste(),
        &TextView::paste);
    add(wording::text(u"common.delete"_s),
        QKeySequence::Delete,
        canDelete,
        &TextView::deleteSelection);
    menu->addSeparator();
    const bool isAllSelected = view->selectedRange().length == storage.length();
    add(wording::text(u"dialog.selectAll"_s),
        QKeySequence::SelectAll,
        !isAllSelected,
        &TextView::selectAll);
    return menu;
}

} // namespace penwick
