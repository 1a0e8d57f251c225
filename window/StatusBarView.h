#pragma once

#include "editor/DocumentState.h"

#include <QPointer>
#include <QWidget>

namespace penwick {

class ElidedLabel;
class StatusMessageLabel;

/// The bar under the text. It shows the counters of a `DocumentState` or, until it is dismissed,
/// the message of the last macro run. It is updated when the state or the wording changes.
class StatusBarView final : public QWidget
{
    Q_OBJECT

public:
    /// \param documentState not owned; held weakly.
    explicit StatusBarView(DocumentState *documentState, QWidget *parent = nullptr);

    /// Removes the message, so that the counters are shown again. Does nothing without a message.
    void dismissMessage();

private:
    [[nodiscard]] QWidget *makeCountersRow();
    void stateDidChange(DocumentState::Field field);
    void redraw();
    void redrawCounters();

    QPointer<DocumentState> m_documentState;
    QWidget *m_countersRow = nullptr;
    ElidedLabel *m_cursorLabel = nullptr;
    ElidedLabel *m_lineCountLabel = nullptr;
    ElidedLabel *m_characterCountLabel = nullptr;
    ElidedLabel *m_encodingLabel = nullptr;
    ElidedLabel *m_newlineLabel = nullptr;
    StatusMessageLabel *m_messageLabel = nullptr;
};

} // namespace penwick
