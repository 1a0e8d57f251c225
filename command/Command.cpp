#include "command/Command.h"

#include "wording/WordingLookup.h"

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Id = CommandId;
using Place = CommandPlace;

constexpr auto kCtrlShift = Qt::CTRL | Qt::SHIFT;

// One row per line, also beyond the column limit. The keys are not those of
// QKeySequence::StandardKey, which differ between desktops.
// clang-format off
constexpr Command kCommands[] = {
    {Id::NewDocument, u"file.new", Place::Application, u"menu.file.new", Qt::CTRL | Qt::Key_N},
    {Id::OpenDocument, u"file.open", Place::Application, u"menu.file.open", Qt::CTRL | Qt::Key_O},
    {Id::PerformClose, u"file.close", Place::Application, u"menu.file.close", Qt::CTRL | Qt::Key_W},
    {Id::SaveDocument, u"file.save", Place::Application, u"menu.file.save", Qt::CTRL | Qt::Key_S},
    {Id::SaveDocumentAs, u"file.saveAs", Place::Application, u"menu.file.saveAs", kCtrlShift | Qt::Key_S},
    {Id::ClearRecentFiles, u"file.clearRecent", Place::Application, u"command.clearRecentFiles"},
    {Id::Undo, u"edit.undo", Place::Focus, u"menu.edit.undo", Qt::CTRL | Qt::Key_Z},
    {Id::Redo, u"edit.redo", Place::Focus, u"menu.edit.redo", kCtrlShift | Qt::Key_Z},
    {Id::Cut, u"edit.cut", Place::Focus, u"menu.edit.cut", Qt::CTRL | Qt::Key_X},
    {Id::Copy, u"edit.copy", Place::Focus, u"menu.edit.copy", Qt::CTRL | Qt::Key_C},
    {Id::Paste, u"edit.paste", Place::Focus, u"menu.edit.paste", Qt::CTRL | Qt::Key_V},
    {Id::SelectAll, u"edit.selectAll", Place::Focus, u"dialog.selectAll", Qt::CTRL | Qt::Key_A},
    {Id::Deselect, u"edit.deselect", Place::Focus, u"command.deselect", kCtrlShift | Qt::Key_A},
    {Id::StartColumns, u"edit.columns", Place::Document, u"command.startColumns"},
    {Id::Find, u"find.find", Place::Document, u"menu.edit.find", Qt::CTRL | Qt::Key_F},
    {Id::Replace, u"find.replace", Place::Document, u"menu.edit.replace", Qt::CTRL | Qt::Key_H},
    {Id::FindNext, u"find.next", Place::Document, u"editor.find.next", Qt::Key_F3, Qt::CTRL | Qt::Key_G},
    {Id::FindPrevious, u"find.previous", Place::Document, u"editor.find.previous", Qt::SHIFT | Qt::Key_F3, kCtrlShift | Qt::Key_G},
    {Id::GoToLine, u"go.line", Place::Application, u"command.goToLine", Qt::CTRL | Qt::Key_L},
    {Id::GoToHeading, u"go.heading", Place::Application, u"command.goToHeading"},
    {Id::ShowBlanks, u"view.blanks", Place::Document, u"editor.showBlanks", kCtrlShift | Qt::Key_B},
    {Id::ShowAllMarks, u"view.allMarks", Place::Document, u"command.allMarks"},
    {Id::ShowLineNumbers, u"view.lineNumbers", Place::Document, u"command.lineNumbers"},
    {Id::MarkCurrentLine, u"view.currentLine", Place::Document, u"command.currentLine"},
    {Id::WrapLines, u"view.wrapLines", Place::Document, u"command.wrapLines"},
    {Id::ZoomIn, u"view.zoomIn", Place::Document, u"command.zoomIn", Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal},
    {Id::ZoomOut, u"view.zoomOut", Place::Document, u"command.zoomOut", Qt::CTRL | Qt::Key_Minus},
    {Id::ZoomReset, u"view.zoomReset", Place::Document, u"command.zoomReset", Qt::CTRL | Qt::Key_0},
    {Id::FullScreen, u"view.fullScreen", Place::Window, u"command.fullScreen", Qt::Key_F11},
    {Id::ConvertToLf, u"lineEnds.lf", Place::Document, u"command.lineEnds.lf"},
    {Id::ConvertToCrLf, u"lineEnds.crlf", Place::Document, u"command.lineEnds.crLf"},
    {Id::ConvertToCr, u"lineEnds.cr", Place::Document, u"command.lineEnds.cr"},
    {Id::Indent, u"lines.indent", Place::Document, u"command.lines.indent"},
    {Id::Outdent, u"lines.outdent", Place::Document, u"command.lines.outdent"},
    {Id::DuplicateLines, u"lines.duplicate", Place::Document, u"command.lines.duplicate", kCtrlShift | Qt::Key_D},
    {Id::MoveLinesUp, u"lines.moveUp", Place::Document, u"command.lines.moveUp", Qt::ALT | Qt::Key_Up},
    {Id::MoveLinesDown, u"lines.moveDown", Place::Document, u"command.lines.moveDown", Qt::ALT | Qt::Key_Down},
    {Id::JoinLines, u"lines.join", Place::Document, u"command.lines.join"},
    {Id::SortLines, u"lines.sort", Place::Document, u"command.lines.sort"},
    {Id::TrimLineEnds, u"lines.trimEnds", Place::Document, u"command.lines.trimEnds"},
    {Id::BlanksToTabs, u"lines.blanksToTabs", Place::Document, u"command.lines.blanksToTabs"},
    {Id::TabsToBlanks, u"lines.tabsToBlanks", Place::Document, u"command.lines.tabsToBlanks"},
    {Id::UpperCase, u"characters.upperCase", Place::Document, u"command.characters.upperCase"},
    {Id::LowerCase, u"characters.lowerCase", Place::Document, u"command.characters.lowerCase"},
    {Id::FullWidth, u"characters.fullWidth", Place::Document, u"command.characters.fullWidth"},
    {Id::HalfWidth, u"characters.halfWidth", Place::Document, u"command.characters.halfWidth"},
    {Id::NextTab, u"tab.next", Place::Window, u"command.nextTab", Qt::CTRL | Qt::Key_Tab, Qt::CTRL | Qt::Key_PageDown},
    {Id::PreviousTab, u"tab.previous", Place::Window, u"command.previousTab", kCtrlShift | Qt::Key_Tab, Qt::CTRL | Qt::Key_PageUp},
    {Id::ShowTabList, u"tab.list", Place::Window, u"editor.tab.list", kCtrlShift | Qt::Key_L},
    {Id::RepeatMacro, u"macro.repeat", Place::Application, u"command.repeatMacro", kCtrlShift | Qt::Key_R},
    {Id::ShowMacroManager, u"macro.manage", Place::Application, u"macro.manage"},
    {Id::RunTestMacro, u"macro.testReplaceAll", Place::Application, u"macro.testRunReplaceAll"},
    {Id::RunTestMacroSelection, u"macro.testReplaceSelection", Place::Application, u"macro.testRunReplaceSelection"},
    {Id::ShowProfileManager, u"profile.manage", Place::Application, u"profile.manage"},
    {Id::UseEnglish, u"profile.useEnglish", Place::Application, u"command.useEnglish"},
    {Id::ShowSettings, u"app.settings", Place::Application, u"command.settings", Qt::CTRL | Qt::Key_Comma},
    {Id::OpenSettingsFile, u"app.settingsFile", Place::Application, u"command.settingsFile"},
    {Id::CheckForUpdates, u"help.checkForUpdates", Place::Application, u"menu.help.checkForUpdates"},
    {Id::About, u"help.about", Place::Application, u"command.about", {}, {}, true},
    {Id::Quit, u"app.quit", Place::Application, u"command.quit", Qt::CTRL | Qt::Key_Q, {}, true},
    {Id::OpenMenuBar, u"window.menuBar", Place::Window, u"command.menuBar", Qt::Key_F10},
    {Id::ShowPalette, u"window.palette", Place::Application, u"command.palette", kCtrlShift | Qt::Key_P, Qt::Key_F1},
};
// clang-format on

} // namespace

std::span<const Command> commands()
{
    return kCommands;
}

const Command &command(CommandId id)
{
    return *std::find_if(std::begin(kCommands), std::end(kCommands), [id](const Command &row) {
        return row.id == id;
    });
}

QString commandTitle(CommandId id)
{
    const Command &row = command(id);
    const QString key = row.titleKey.toString();
    return row.namesProgram ? wording::text(key, {wording::text(u"app.name"_s)})
                            : wording::text(key);
}

} // namespace penwick
