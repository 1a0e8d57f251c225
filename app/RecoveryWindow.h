#pragma once

#include "recovery/RecoveryCopy.h"

#include <QDialog>
#include <QList>
#include <QPointer>

class QPushButton;
class QTreeWidget;

namespace penwick {

/// Lists the texts that were unsaved when an earlier penwick ended suddenly, and offers what can be
/// done with them. It does nothing itself: closing it changes nothing.
class RecoveryWindow final : public QDialog
{
    Q_OBJECT

public:
    /// Shows no text yet. Not modal.
    explicit RecoveryWindow(QWidget *parent);

    /// \param id identifies the text in the signals; no other row has it.
    void add(int id, const RecoverySummary &summary);

    /// Closes the window with the last text.
    void remove(int id);

    [[nodiscard]] bool isEmpty() const;

    /// While busy, nothing can be chosen.
    void setBusy(bool isBusy);

Q_SIGNALS:
    void openRequested(const QList<int> &ids);
    void compareRequested(int id);
    void saveRequested(int id);
    void discardRequested(const QList<int> &ids);

private:
    [[nodiscard]] QList<int> chosen() const;
    void updateButtons();

    QTreeWidget *m_list;
    QPushButton *m_open;
    QPushButton *m_compare;
    QPushButton *m_save;
    QPushButton *m_discard;
    bool m_isBusy = false;
    QPointer<QWidget> m_focus; // Before the window became busy.
};

} // namespace penwick
