#pragma once

#include "controls/FilePanels.h"
#include "controls/ListDetailView.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/settings/Timestamp.h"
#include "platform/settings/Uuid.h"
#include "wording/UIWordingProfileManager.h"

#include <QWidget>

#include <optional>

class QToolButton;

namespace penwick {

class ElidedLabel;
class ProfileDetailView;

/// Shows a list of all wording profiles and the details of the selected one, which can be applied,
/// duplicated, exported and deleted. A button above the list imports a profile from a file.
class ProfileManagerView final : public QWidget
{
    Q_OBJECT

public:
    /// The services that the view uses. The references must outlive it.
    struct Services
    {
        UIWordingProfileManager &profileManager;
        NotificationCenter &center;
        FilePanels panels;
        Clock clock;
        IdSource ids;
        /// Where the first import starts to look for a file. Empty, or a folder that is missing:
        /// as any other panel.
        QString suppliedFolder = {};
    };

    explicit ProfileManagerView(Services services, QWidget *parent = nullptr);

    /// Id of the selected profile; `nullopt` at first.
    [[nodiscard]] const std::optional<QString> &selectedProfileId() const
    {
        return m_selectedProfileId;
    }

    void select(const std::optional<QString> &id);

    /// Asks the user for a file and imports its profile.
    void importProfile();

private:
    void makeHeader();
    void connectDetail();
    void relabel();
    void showList();
    void showSelection();
    [[nodiscard]] std::optional<UIWordingProfile> selectedProfile() const;
    void apply();
    void duplicate();
    void exportSelected();
    void exportTemplate();
    void exportProfile(const UIWordingProfile &profile);
    void askToDelete();
    void deleteProfile(const QString &id);
    [[nodiscard]] QString importFile(const QString &path);

    Services m_services;
    ProfileDetailView *m_detail;
    ListDetailView *m_split;
    ElidedLabel *m_title;
    QToolButton *m_import;
    std::optional<QString> m_selectedProfileId;
};

} // namespace penwick
