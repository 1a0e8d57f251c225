#pragma once

#include "controls/FilePanels.h"
#include "controls/ListDetailView.h"
#include "platform/NotificationCenter.h"
#include "platform/Timestamp.h"
#include "platform/Uuid.h"
#include "wording/UIWordingProfileManager.h"

#include <QWidget>

#include <optional>

class QToolButton;

namespace penwick {

class ElidedLabel;
class ProfileDetailView;

/// All wording profiles in a list, and the one selected in it: to apply, duplicate, export or
/// delete. Files are taken in from the list's side.
class ProfileManagerView final : public QWidget
{
    Q_OBJECT

public:
    /// What the view works with. The references must outlive it.
    struct Services
    {
        UIWordingProfileManager &profileManager;
        NotificationCenter &center;
        FilePanels panels;
        Clock clock;
        IdSource ids;
    };

    explicit ProfileManagerView(Services services, QWidget *parent = nullptr);

    /// Nothing at first.
    [[nodiscard]] const std::optional<QString> &selectedProfileId() const
    {
        return m_selectedProfileId;
    }

    void select(const std::optional<QString> &id);

    /// Asks for a file and takes its profile in.
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
