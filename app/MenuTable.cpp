#include "app/MenuTable.h"

#include "wording/WordingLookup.h"

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
    {MenuId::Application, CommandId::About},
    {MenuId::Application},
    {MenuId::Application, CommandId::Quit},
    {MenuId::File, CommandId::NewDocument},
    {MenuId::File, CommandId::OpenDocument},
    {MenuId::File},
    {MenuId::File, CommandId::PerformClose},
    {MenuId::File, CommandId::SaveDocument},
    {MenuId::File, CommandId::SaveDocumentAs},
    {MenuId::Edit, CommandId::Undo},
    {MenuId::Edit, CommandId::Redo},
    {MenuId::Edit},
    {MenuId::Edit, CommandId::Cut},
    {MenuId::Edit, CommandId::Copy},
    {MenuId::Edit, CommandId::Paste},
    {MenuId::Profile, CommandId::ShowProfileManager},
    {MenuId::Help, CommandId::CheckForUpdates},
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

} // namespace penwick
