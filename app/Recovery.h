#pragma once

#include "app/DocumentController.h"
#include "app/RecoveryOffer.h"
#include "editor/BackgroundTask.h"
#include "recovery/RecoveryKeeper.h"

#include <QObject>

#include <memory>

namespace penwick {

/// Connects the open documents with the copies of their unsaved texts, and offers the copies that a
/// dead process left.
class Recovery final : public QObject
{
    Q_OBJECT

public:
    /// \param documents not owned; must outlive this. Those that are opened from now on have
    ///        copies.
    /// \param root of all copies, see `RecoveryKeeper`.
    /// \param keepsCopies as for `setKeepsCopies`.
    Recovery(DocumentController &documents,
             const QString &root,
             bool keepsCopies,
             RecoveryTimes times = {});
    /// The copies of documents with edits stay. Call it while the documents are open.
    ~Recovery() override;

    /// \param keepsCopies false if the user wants none: those of the open documents are removed.
    ///        What an earlier process left is still offered.
    void setKeepsCopies(bool keepsCopies);

    /// Looks for what dead processes left, on another thread, and shows it in a window over one of
    /// the editor windows.
    void offerAbandoned();

    /// Null until something is offered.
    [[nodiscard]] RecoveryOffer *offer() const { return m_offer.get(); }

Q_SIGNALS:
    /// A copy could not be written. Emitted once.
    void failed(const penwick::FileError &error);

private:
    void watch(TextDocument *document, EditorWindowController *controller);
    void showOffer(RecoveryOffer::Abandoned abandoned);

    DocumentController &m_documents;
    const QString m_root;
    bool m_keepsCopies;
    RecoveryKeeper m_keeper;
    std::unique_ptr<RecoveryOffer> m_offer;
    BackgroundTask m_search;
};

} // namespace penwick
