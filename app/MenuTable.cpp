#include "app/MenuTable.h"

#include "wording/WordingLookup.h"

#include <QChar>

namespace penwick {

namespace {

constexpr MenuRow kMenus[] = {
    {MenuId::Application, u"app.name"},
    {MenuId::File, u"menu.file"},
    {MenuId::Edit, u"menu.edit"},
    {MenuId::Macro, u"menu.macro"},
    {MenuId::Profile, u"menu.profile"},
    {MenuId::Help, u"menu.help"},
};

constexpr MenuItemRow kItems[] = {
    {MenuId::Application, MenuCommand::About, u"app.name", u" について"},
    {MenuId::Application, MenuCommand::Separator},
    {MenuId::Application, MenuCommand::Quit, u"app.name", u" を終了", u'q'},
    {MenuId::File, MenuCommand::NewDocument, u"menu.file.new", u"", u'n'},
    {MenuId::File, MenuCommand::OpenDocument, u"menu.file.open", u"", u'o'},
    {MenuId::File, MenuCommand::Separator},
    {MenuId::File, MenuCommand::PerformClose, u"menu.file.close", u"", u'w'},
    {MenuId::File, MenuCommand::SaveDocument, u"menu.file.save", u"", u's'},
    {MenuId::File, MenuCommand::SaveDocumentAs, u"menu.file.saveAs", u"", u'S'},
    {MenuId::Edit, MenuCommand::Undo, u"menu.edit.undo", u"", u'z'},
    {MenuId::Edit, MenuCommand::Redo, u"menu.edit.redo", u"", u'Z'},
    {MenuId::Edit, MenuCommand::Separator},
    {MenuId::Edit, MenuCommand::Cut, u"menu.edit.cut", u"", u'x'},
    {MenuId::Edit, MenuCommand::Copy, u"menu.edit.copy", u"", u'c'},
    {MenuId::Edit, MenuCommand::Paste, u"menu.edit.paste", u"", u'v'},
    {MenuId::Profile, MenuCommand::ShowProfileManager, u"profile.manage"},
    {MenuId::Help, MenuCommand::CheckForUpdates, u"menu.help.checkForUpdates"},
};

} // namespace

std::span<const MenuRow> menuRows()
{
    return kMenus;
}

std::span<const MenuItemRow> menuItemRows()
{
    return kItems;
}

QString menuTitle(const MenuRow &row)
{
    return wording::text(row.titleKey.toString());
}

QString menuTitle(const MenuItemRow &row)
{
    return wording::text(row.titleKey.toString()) + row.titleSuffix.toString();
}

QKeySequence keyEquivalent(const MenuItemRow &row)
{
    if (row.key == 0)
        return {};
    const QChar key(row.key);
    // Qt names letter keys by their capital letters.
    const int code = Qt::Key_A + (key.toUpper().unicode() - u'A');
    const Qt::KeyboardModifiers modifiers =
        key.isUpper() ? Qt::ControlModifier | Qt::ShiftModifier : Qt::ControlModifier;
    return QKeyCombination(modifiers, static_cast<Qt::Key>(code));
}

} // namespace penwick
