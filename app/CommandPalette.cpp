#include "app/CommandPalette.h"

#include "app/AppDelegate.h"
#include "command/CommandShortcut.h"
#include "command/MacroKeys.h"
#include "command/Palette.h"
#include "controls/MacroSourceBadge.h"
#include "controls/VerbatimText.h"
#include "macro/library/MacroKeyRow.h"
#include "macro/library/MacroManager.h"
#include "view/TextView.h"
#include "window/EditorTabBar.h"
#include "wording/WordingLookup.h"

#include <QFile>
#include <QHash>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMostRecent = 50;
constexpr qsizetype kFirstFiles = 5; // That many of the recent files come before the commands.
constexpr qsizetype kLast = kMostRecent + kFirstFiles;
const QString kTabMark = u"tab/"_s;
constexpr QChar kMacroMark = u'/'; // Before a macro's id; no command's name contains it.

QList<PaletteRow> commandRows(const AppCommands &target)
{
    QList<PaletteRow> rows;
    for (const Command &each : commands()) {
        if (each.id == CommandId::ShowPalette)
            continue;
        const CommandState state = target.commandState(each.id);
        PaletteRow row;
        row.kind = PaletteRow::Kind::Command;
        row.id = each.name.toString();
        row.title = visibleLine(commandTitle(each.id));
        row.atEnd = shownKey(each.id).toString(QKeySequence::NativeText);
        row.words = row.id;
        row.isEnabled = state.isAvailable;
        if (state.isOn)
            row.badge =
                *state.isOn ? wording::text(u"palette.on"_s) : wording::text(u"palette.off"_s);
        rows.append(row);
    }
    return rows;
}

QString tabId(const EditorWindowController &controller)
{
    return kTabMark + QString::number(controller.number());
}

QList<PaletteRow> tabRows(const DocumentController &documents)
{
    QList<PaletteRow> rows;
    for (const auto &window : documents.windows()) {
        const QStringList names = window->tabBar()->names();
        for (int i = 0; i < window->count(); ++i) {
            const EditorWindowController *controller = window->controllers().at(i);
            const TextDocument *document = controller->document();
            PaletteRow row;
            row.kind = PaletteRow::Kind::Tab;
            row.id = tabId(*controller);
            row.title = names.value(i);
            row.badge = wording::text(u"palette.tab"_s);
            row.detail = document != nullptr ? visibleLine(document->filePath()) : QString();
            row.atEnd = window->tabBar()->isEdited(i) ? u"●"_s : QString();
            rows.append(row);
        }
    }
    return rows;
}

QString fileId(const QByteArray &path)
{
    return u"file/"_s + QString::fromLatin1(path.toPercentEncoding());
}

/// Returns why the macro cannot have the key; empty when it has it now.
QString setMacroKey(const PaletteRow &row, const QKeySequence &key)
{
    const QString id = row.id.mid(1);
    MacroKeys &keys = MacroKeys::shared();
    QString reason = key.isEmpty()
                         ? QString()
                         : macroKeyObstacle(id, key[0], keys, MacroManager::shared().macros());
    if (reason.isEmpty())
        keys.setKey(id, key);
    return reason;
}

QByteArray pathOf(const QString &fileId)
{
    return QByteArray::fromPercentEncoding(fileId.section(u'/', 1).toLatin1());
}

} // namespace

QString macroRowId(const QString &macroId)
{
    return kMacroMark + macroId;
}

QList<PaletteRow> macroRows(const QList<Macro> &macros, const MacroKeys &keys)
{
    QList<PaletteRow> rows;
    for (const Macro &macro : macros) {
        if (!macro.isEnabled)
            continue;
        PaletteRow row;
        row.kind = PaletteRow::Kind::Macro;
        row.id = macroRowId(macro.id);
        row.title = visibleLine(macro.name);
        row.detail = visibleLine(macro.description);
        row.badge = MacroSourceBadge::sourceLabel(macro.source);
        row.atEnd = keys.keyOf(macro.id).toString(QKeySequence::NativeText);
        row.words = macro.id;
        rows.append(row);
    }
    return rows;
}

CommandPalette::CommandPalette(AppDelegate *app, AppCommands *commands)
    : m_app(app)
    , m_commands(commands)
    , m_usedBefore(UserDefaults::usage(), u"recentCommands/inPalette"_s, kMostRecent)
{
    m_recent = m_usedBefore.items();
}

QList<PaletteRow> CommandPalette::fileRows() const
{
    QList<PaletteRow> rows;
    for (const QByteArray &path : m_app->recentFiles().closedPaths()) {
        const QString name = QFile::decodeName(path);
        const auto folderEnd = name.lastIndexOf(u'/');
        PaletteRow row;
        row.kind = PaletteRow::Kind::File;
        row.id = fileId(path);
        row.title = visibleLine(name.mid(folderEnd + 1));
        row.detail = visibleLine(name.left(std::max<qsizetype>(folderEnd, 1)));
        row.badge = wording::text(u"palette.recentFile"_s);
        rows.append(row);
    }
    return rows;
}

void CommandPalette::markGoneFiles(Palette *palette)
{
    QObject::connect(&m_gone, &GoneFiles::found, palette, [palette](const QByteArray &path) {
        palette->setBadge(fileId(path), wording::text(u"palette.goneFile"_s));
    });
    m_gone.look(m_app->recentFiles().closedPaths());
}

QList<PaletteRow> CommandPalette::rows() const
{
    const QList<PaletteRow> files = fileRows();
    QList<PaletteRow> rows = commandRows(*m_commands) +
                             macroRows(MacroManager::shared().macros(), MacroKeys::shared()) +
                             tabRows(m_app->documentController()) + files;
    QHash<QString, qsizetype> places;
    for (qsizetype i = 0; i < m_recent.size(); ++i)
        places.insert(m_recent.at(i), i);
    for (qsizetype i = 0; i < std::min(files.size(), kFirstFiles); ++i)
        places.insert(files.at(i).id, kMostRecent + i);
    std::stable_sort(rows.begin(), rows.end(), [&](const PaletteRow &a, const PaletteRow &b) {
        return places.value(a.id, kLast) < places.value(b.id, kLast);
    });
    return rows;
}

void CommandPalette::open(const QString &mode)
{
    const auto editor = m_app->targetEditor();
    if (editor == nullptr)
        return;
    EditorWindow *window = editor->window();
    if (Palette *open = Palette::openIn(window)) {
        if (open->typed().left(1) == mode.left(1) || mode.isEmpty())
            open->dismiss();
        else
            open->setTyped(mode);
        return;
    }
    PaletteSource source;
    source.rows = rows();
    if (const TextView *view = editor->textView())
        source.text = view->string();
    source.setKey = setMacroKey;
    source.run = [this](const PaletteRow &row) { run(row); };
    markGoneFiles(new Palette(window, std::move(source), mode)); // Deletes itself.
}

void CommandPalette::noteUse(const QString &rowId)
{
    m_recent.removeAll(rowId);
    m_recent.prepend(rowId);
    m_recent.resize(std::min(m_recent.size(), kMostRecent));
    if (!rowId.startsWith(kTabMark))
        m_usedBefore.add(rowId);
}

void CommandPalette::run(const PaletteRow &row)
{
    if (row.kind == PaletteRow::Kind::Place)
        return goTo(row);
    if (row.kind == PaletteRow::Kind::File) {
        m_app->documentController().openFile(QFile::decodeName(pathOf(row.id)));
        return;
    }
    if (row.kind == PaletteRow::Kind::Macro)
        return m_app->runDynamicMacro(row.id.mid(1)); // Notes the use.
    noteUse(row.id);
    for (const Command &each : commands())
        if (row.kind == PaletteRow::Kind::Command && each.name == row.id)
            return m_commands->performCommand(each.id);
    for (const auto &controller : m_app->documentController().windowControllers())
        if (tabId(*controller) == row.id)
            return controller->bringForward();
}

void CommandPalette::goTo(const PaletteRow &row) const
{
    const auto editor = m_app->targetEditor();
    TextView *view = editor != nullptr ? editor->textView() : nullptr;
    if (view == nullptr)
        return;
    view->setSelectedRange({row.offset, 0});
    view->setFocus();
    if (!row.message.isEmpty())
        editor->showMacroMessage(NotificationType::Info, row.message);
}

} // namespace penwick
