#pragma once

#include "app/RecoveryWindow.h"
#include "editor/BackgroundTask.h"
#include "editor/TextFile.h"
#include "recovery/RecoverySession.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <map>
#include <vector>

namespace penwick {

class DocumentController;
class RecoveryKeeper;
class TextDocument;

/// Offers the texts that an earlier process left unsaved, and carries out what the user chooses.
/// Nothing is written over a file, and a copy is removed only when its text is in a document, in a
/// file, or discarded by the user.
class RecoveryOffer final : public QObject
{
    Q_OBJECT

public:
    /// A text that is offered.
    struct Copy
    {
        QString path;
        RecoverySummary summary;
    };

    /// The sessions of dead processes, and their copies.
    struct Abandoned
    {
        std::vector<RecoverySession> sessions;
        std::vector<Copy> copies;
    };

    /// Takes what dead processes left. It reads all of their copies: call it on another thread.
    [[nodiscard]] static Abandoned takeAbandoned(const QString &root);

    /// \param documents, keeper not owned; must outlive this.
    RecoveryOffer(Abandoned abandoned, DocumentController &documents, RecoveryKeeper &keeper);
    /// Gives the sessions to the keeper, which removes those whose copies are gone.
    ~RecoveryOffer() override;

    /// Shows the window that lists the texts. It goes with `parent`.
    void show(QWidget *parent);

    /// Null unless it is open.
    [[nodiscard]] RecoveryWindow *window() const { return m_window.data(); }

Q_SIGNALS:
    /// The document holds a recovered text. Emitted before its copy is given to the keeper.
    void opened(penwick::TextDocument *document);

private:
    using UseText = std::function<void(const RecoveredText &)>;

    void read(int id, const UseText &use);
    void taskDidFail();
    void open(QList<int> ids);
    void openText(int id, const RecoveredText &recovered);
    void compare(int id);
    void save(int id);
    void saveText(int id, const RecoveredText &recovered, const QString &path);
    void savingDidEnd(int id, const QString &path, bool isDamaged, const TransferOutcome &written);
    void discard(const QList<int> &ids);
    void remove(int id);

    std::vector<RecoverySession> m_sessions;
    std::map<int, Copy> m_copies;
    DocumentController &m_documents;
    RecoveryKeeper &m_keeper;
    QPointer<RecoveryWindow> m_window;
    BackgroundTask m_task;
};

} // namespace penwick
