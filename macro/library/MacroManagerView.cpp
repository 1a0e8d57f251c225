#include "macro/library/MacroManagerView.h"

#include "code/CodeEditor.h"
#include "controls/Alerts.h"
#include "controls/MacroSourceBadge.h"
#include "macro/library/MacroDetailView.h"
#include "macro/library/MacroKeyRow.h"
#include "platform/files/FileSystem.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QInputMethod>
#include <QListView>
#include <QToolButton>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr ListDetailView::ListWidth kListWidth{200, 250, 340};

} // namespace

MacroManagerView::MacroManagerView(Services services, QWidget *parent)
    : QWidget(parent)
    , m_services(std::move(services))
    , m_detail(new MacroDetailView(m_services.panels,
                                   new MacroKeyRow(m_services.keys, m_services.macroManager)))
    , m_split(new ListDetailView(m_detail, kListWidth))
    , m_add(m_split->addHeaderButton(u"macroAdd"_s, u"plus"_s))
    , m_import(m_split->addHeaderButton(u"macroImport"_s, u"square.and.arrow.down"_s))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_split);
    m_split->header()->addStretch();
    connectDetail();
    connect(m_add, &QToolButton::clicked, this, &MacroManagerView::addMacro);
    connect(m_import, &QToolButton::clicked, this, &MacroManagerView::importMacro);
    // Queued, so that the question about unsaved edits does not appear during a click.
    connect(m_split,
            &ListDetailView::markedByUser,
            this,
            &MacroManagerView::selectMarked,
            Qt::QueuedConnection);
    connect(m_split, &ListDetailView::switchToggled, this, &MacroManagerView::setMacroEnabled);
    connect(m_split, &ListDetailView::deleteRequested, this, &MacroManagerView::askToDelete);
    connect(m_split, &ListDetailView::moveRequested, this, [this](const QString &id, int row) {
        m_services.macroManager.moveMacro(id, row);
    });
    connect(
        &m_services.macroManager, &MacroManager::macrosChanged, this, &MacroManagerView::showList);
    m_services.center.addObserver(UIWordingProfileDidChange, this, [this] { relabel(); });
    relabel();
    select(std::nullopt);
    m_split->list()->setFocus();
}

void MacroManagerView::connectDetail()
{
    MacroManager *manager = &m_services.macroManager;
    connect(m_detail, &MacroDetailView::onSave, manager, [manager](const Macro &draft) {
        manager->updateMacro(draft);
    });
    connect(m_detail, &MacroDetailView::onDuplicate, this, [this, manager] {
        manager->reloadIfChanged();
        if (const auto macro = manager->macroWithId(m_selectedMacroId.value_or(QString())))
            manager->duplicateMacro(*macro);
    });
    connect(m_detail, &MacroDetailView::onDelete, this, &MacroManagerView::askToDelete);
    connect(m_detail, &MacroDetailView::onTestRun, this, [this](const Macro &draft) {
        m_detail->clearRunError();
        m_services.testRun(draft);
    });
}

void MacroManagerView::relabel()
{
    ListDetailView::setHeaderText(m_add, wording::text(u"macro.manageAdd"_s));
    ListDetailView::setHeaderText(m_import, wording::text(u"macro.import"_s));
    m_split->setEmptyText(wording::text(u"macro.manage.emptySelection"_s));
    m_split->setListName(wording::text(u"macro.manageWindowTitle"_s));
    m_split->setMovable(wording::text(u"macro.manage.reorderKeys"_s));
    m_detail->relabel();
    showList();
}

void MacroManagerView::showList()
{
    QList<ListDetailView::Row> rows;
    for (const Macro &macro : m_services.macroManager.macros()) {
        ListDetailView::Row row;
        row.id = macro.id;
        row.name = macro.name;
        row.badge = MacroSourceBadge::sourceLabel(macro.source);
        row.isOn = macro.isEnabled;
        rows.append(row);
    }
    m_split->setRows(rows);
    const auto selected =
        m_services.macroManager.macroWithId(m_selectedMacroId.value_or(QString()));
    if (m_selectedMacroId && selected)
        m_detail->setStoredMacro(*selected);
    m_split->setDetailShown(m_selectedMacroId && selected);
}

void MacroManagerView::selectMarked()
{
    const std::optional<QString> marked = m_split->markedId();
    if (marked == m_selectedMacroId)
        return;
    if (resolveUnsavedEdits())
        select(marked);
    else
        m_split->mark(m_selectedMacroId);
}

bool MacroManagerView::resolveUnsavedEdits()
{
    QGuiApplication::inputMethod()->commit(); // The composition is part of the edit.
    const std::optional<QString> id = m_selectedMacroId;
    const auto stored = m_services.macroManager.macroWithId(id.value_or(QString()));
    if (!id || !stored || !m_detail->hasUnsavedEdits())
        return true;
    switch (askAboutUnsavedChanges(window(), m_detail->draftMacro().name)) {
    case UnsavedAnswer::Save:
        m_services.macroManager.updateMacro(m_detail->draftMacro());
        return true;
    case UnsavedAnswer::Discard:
        m_detail->setMacro(*stored);
        return true;
    case UnsavedAnswer::Cancel:
        break;
    }
    return false;
}

void MacroManagerView::select(const std::optional<QString> &id)
{
    m_selectedMacroId = id;
    m_split->mark(id);
    const auto macro = m_services.macroManager.macroWithId(id.value_or(QString()));
    const bool isShown = id && macro;
    if (isShown)
        m_detail->setMacro(*macro);
    m_split->setDetailShown(isShown);
}

void MacroManagerView::setMacroEnabled(const QString &id, bool isOn)
{
    // Change only the switch: take the macro's other fields from the file.
    m_services.macroManager.reloadIfChanged();
    auto macro = m_services.macroManager.macroWithId(id);
    if (!macro)
        return;
    macro->isEnabled = isOn;
    m_services.macroManager.updateMacro(*std::move(macro));
}

void MacroManagerView::addMacro()
{
    if (!resolveUnsavedEdits())
        return;
    Macro macro;
    macro.id = m_services.ids();
    macro.name = wording::text(u"macro.manage.newMacro"_s);
    macro.code = u"return {\n    textEdits: []\n};"_s;
    macro.isEnabled = true;
    macro.source = u"user"_s;
    macro.version = u"1.0.0"_s;
    macro.category = u"general"_s;
    m_services.macroManager.addMacro(macro);
    select(macro.id);
    m_detail->editName();
}

void MacroManagerView::importMacro()
{
    if (!resolveUnsavedEdits())
        return;
    const auto path = m_services.panels.open(window(), wording::text(u"macro.import"_s));
    if (path)
        showAlert(this, importFile(*path));
}

/// Returns the message for the user.
QString MacroManagerView::importFile(const QString &path)
{
    const auto content = readFile(path);
    if (!content)
        return wording::text(u"error.fileOpenFailed"_s);
    const auto id = m_services.macroManager.importMacro(*content);
    if (!id)
        return wording::text(u"error.invalidProfileJson"_s);
    select(*id);
    return wording::text(u"macro.manageImportSuccess"_s);
}

void MacroManagerView::showRunError(const QString &code, const QString &message, int line)
{
    if (m_detail->codeEditor()->text() == code)
        m_detail->showRunError(message, line);
}

void MacroManagerView::setCanTestRun(bool canTestRun)
{
    m_detail->setCanTestRun(canTestRun);
}

void MacroManagerView::askToDelete()
{
    if (!m_selectedMacroId || !m_services.macroManager.macroWithId(*m_selectedMacroId))
        return;
    confirmDelete(this,
                  wording::text(u"macro.manageDeleteConfirmTitle"_s),
                  wording::text(u"macro.manageDeleteConfirmMessage"_s),
                  [this, id = *m_selectedMacroId] { deleteMacro(id); });
}

void MacroManagerView::deleteMacro(const QString &id)
{
    m_services.macroManager.deleteMacro(id);
    m_services.keys.setKey(id, {});
    if (m_selectedMacroId == id)
        select(std::nullopt);
}

} // namespace penwick
