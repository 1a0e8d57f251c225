#pragma once

#include "app/AppCommands.h"
#include "command/PaletteRow.h"
#include "macro/library/Macro.h"
#include "platform/files/GoneFiles.h"
#include "platform/settings/RecentList.h"

#include <QStringList>

namespace penwick {

class MacroKeys;
class Palette;

/// Returns the id of the row of a macro.
[[nodiscard]] QString macroRowId(const QString &macroId);

/// Returns the rows of the enabled macros.
[[nodiscard]] QList<PaletteRow> macroRows(const QList<Macro> &macros, const MacroKeys &keys);

/// Opens the palette with everything that the application offers: the commands, the enabled macros,
/// the open tabs and the recent files that are not open. What was used last comes first, also in
/// an earlier process, then the last files.
class CommandPalette final
{
public:
    /// \param app not owned; must outlive this.
    CommandPalette(AppDelegate *app, AppCommands *commands);

    /// Opens the palette over the window of the target editor. If it is open there with the same
    /// mode, closes it instead. Does nothing without an editor.
    /// \param mode what is typed in it already: `:`, `@`, `>` or nothing.
    void open(const QString &mode = {});

    /// Returns the rows that the palette shows when nothing is typed.
    [[nodiscard]] QList<PaletteRow> rows() const;

    /// Puts the row with this id first.
    void noteUse(const QString &rowId);

private:
    void run(const PaletteRow &row);
    [[nodiscard]] QList<PaletteRow> fileRows() const;
    void markGoneFiles(Palette *palette);
    void goTo(const PaletteRow &row) const;

    AppDelegate *m_app;
    AppCommands *m_commands;
    QStringList m_recent;    // Ids of rows, the last used first.
    RecentList m_usedBefore; // Those of them that mean the same in another process.
    GoneFiles m_gone;
};

} // namespace penwick
