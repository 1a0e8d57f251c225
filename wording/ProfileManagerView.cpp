#include "wording/ProfileManagerView.h"

#include "controls/Alerts.h"
#include "controls/DetailPane.h"
#include "controls/ElidedLabel.h"
#include "controls/MacroSourceBadge.h"
#include "controls/SymbolIcon.h"
#include "platform/files/AtomicFile.h"
#include "wording/ProfileCopies.h"
#include "wording/ProfileDetailView.h"
#include "wording/ProfileImport.h"
#include "wording/WordingLookup.h"

#include <QHBoxLayout>
#include <QListView>
#include <QToolButton>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr ListDetailView::ListWidth kListWidth{240, 260, 320};

/// In a green that is readable on a light and on a dark background.
QIcon activeMark()
{
    return symbolIcon(u"checkmark.circle.fill"_s, QColor(0x2b, 0xa2, 0x45));
}

} // namespace

ProfileManagerView::ProfileManagerView(Services services, QWidget *parent)
    : QWidget(parent)
    , m_services(std::move(services))
    , m_detail(new ProfileDetailView)
    , m_split(new ListDetailView(m_detail, kListWidth))
    , m_title(new ElidedLabel)
    , m_import(m_split->addHeaderButton(u"profileImport"_s, u"square.and.arrow.down"_s))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_split);
    makeHeader();
    connectDetail();
    connect(m_split, &ListDetailView::markedByUser, this, [this] { select(m_split->markedId()); });
    connect(m_split, &ListDetailView::deleteRequested, this, &ProfileManagerView::askToDelete);
    UIWordingProfileManager *manager = &m_services.profileManager;
    connect(
        manager, &UIWordingProfileManager::profilesChanged, this, &ProfileManagerView::showList);
    connect(manager,
            &UIWordingProfileManager::activeProfileIdChanged,
            this,
            &ProfileManagerView::showList);
    m_services.center.addObserver(UIWordingProfileDidChange, this, [this] { relabel(); });
    relabel();
    m_split->list()->setFocus();
}

void ProfileManagerView::makeHeader()
{
    QFont headline = m_title->font();
    headline.setBold(true);
    m_title->setFont(headline);
    m_split->header()->insertWidget(0, m_title, 1);
    connect(m_import, &QToolButton::clicked, this, &ProfileManagerView::importProfile);
}

void ProfileManagerView::connectDetail()
{
    connect(m_detail, &ProfileDetailView::onApply, this, &ProfileManagerView::apply);
    connect(m_detail, &ProfileDetailView::onDuplicate, this, &ProfileManagerView::duplicate);
    connect(m_detail, &ProfileDetailView::onExport, this, &ProfileManagerView::exportSelected);
    connect(m_detail, &ProfileDetailView::onExportAll, this, &ProfileManagerView::exportTemplate);
    connect(m_detail, &ProfileDetailView::onDelete, this, &ProfileManagerView::askToDelete);
}

void ProfileManagerView::relabel()
{
    const QString title = wording::text(u"profile.manageWindowTitle"_s);
    setTitle(m_title, title);
    m_split->setListName(title);
    ListDetailView::setHeaderText(m_import, wording::text(u"common.import"_s));
    m_split->setEmptyText(wording::text(u"profile.manage.emptySelection"_s));
    m_detail->relabel();
    showList();
}

void ProfileManagerView::showList()
{
    QList<ListDetailView::Row> rows;
    const std::optional<QString> &activeId = m_services.profileManager.activeProfileId();
    for (const UIWordingProfile &profile : m_services.profileManager.profiles()) {
        ListDetailView::Row row;
        row.id = profile.id;
        row.name = profile.name;
        if (profile.isBuiltIn)
            row.badge = MacroSourceBadge::sourceLabel(u"builtin"_s);
        if (profile.id == activeId) {
            row.symbol = activeMark();
            row.symbolMeaning = wording::text(u"profile.manage.active"_s);
        }
        rows.append(row);
    }
    m_split->setRows(rows);
    showSelection();
}

void ProfileManagerView::select(const std::optional<QString> &id)
{
    m_selectedProfileId = id;
    showSelection();
}

void ProfileManagerView::showSelection()
{
    const auto profile = selectedProfile();
    m_split->mark(m_selectedProfileId);
    m_split->setDetailShown(profile.has_value());
    if (profile)
        m_detail->setProfile(*profile);
}

std::optional<UIWordingProfile> ProfileManagerView::selectedProfile() const
{
    return m_selectedProfileId ? m_services.profileManager.profileWithId(*m_selectedProfileId)
                               : std::nullopt;
}

void ProfileManagerView::apply()
{
    const auto profile = selectedProfile();
    if (!profile)
        return;
    m_services.profileManager.applyProfile(*profile);
    showAlert(this, wording::text(u"profile.manage.applySuccessMessage"_s));
}

void ProfileManagerView::duplicate()
{
    const auto profile = selectedProfile();
    if (!profile)
        return;
    const UIWordingProfile copy = duplicateOf(*profile, m_services.clock, m_services.ids);
    // A copy that cannot be saved does not appear in the list, so no error message is needed.
    if (m_services.profileManager.saveProfile(copy))
        select(copy.id);
}

void ProfileManagerView::importProfile()
{
    // Only the first time: the user may be looking for a file of their own after that.
    const QString folder = std::exchange(m_services.suppliedFolder, QString());
    const auto path = m_services.panels.openIn(window(), wording::text(u"common.import"_s), folder);
    if (path)
        showAlert(this, importFile(*path));
}

/// Imports a profile from a file. Returns the message to show to the user.
QString ProfileManagerView::importFile(const QString &path)
{
    const auto failure = [] { return wording::text(u"error.fileOpenFailed"_s); };
    const auto content = readFile(path);
    if (!content)
        return failure();
    auto profile = UIWordingProfile::fromJson(*content);
    if (!profile)
        return wording::text(u"error.invalidProfileJson"_s);
    const auto imported = ::penwick::importProfile(
        *std::move(profile), m_services.profileManager, m_services.clock, m_services.ids);
    if (!imported)
        return failure();
    select(imported->id);
    return wording::text(u"profile.manage.importSuccess"_s);
}

void ProfileManagerView::exportSelected()
{
    if (const auto profile = selectedProfile())
        exportProfile(*profile);
}

void ProfileManagerView::exportTemplate()
{
    if (const auto profile = selectedProfile())
        exportProfile(templateOf(*profile, m_services.clock, m_services.ids));
}

void ProfileManagerView::exportProfile(const UIWordingProfile &profile)
{
    const QString name = profile.name.isEmpty()
                             ? wording::text(u"profile.manage.exportDefaultFilename"_s)
                             : profile.name;
    const auto path = m_services.panels.save(window(), wording::text(u"common.export"_s), name);
    if (!path)
        return;
    const bool isWritten = replaceFile(*path, profile.toJson()).has_value();
    showAlert(this,
              isWritten ? wording::text(u"profile.manage.exportSuccess"_s)
                        : wording::text(u"profile.manage.exportFailed"_s));
}

void ProfileManagerView::askToDelete()
{
    const auto profile = selectedProfile();
    if (!profile || profile->isBuiltIn)
        return;
    confirmDelete(this,
                  wording::text(u"profile.manage.deleteConfirmTitle"_s),
                  wording::text(u"profile.manage.deleteConfirmMessage"_s),
                  [this, id = profile->id] { deleteProfile(id); });
}

void ProfileManagerView::deleteProfile(const QString &id)
{
    UIWordingProfileManager &manager = m_services.profileManager;
    // A profile whose file cannot be removed stays in the list, so no error message is needed.
    const bool isDeleted = manager.deleteProfile(id).has_value();
    if (isDeleted && m_selectedProfileId == id)
        select(manager.activeProfileId().value_or(kBuiltInProfileId));
}

} // namespace penwick
