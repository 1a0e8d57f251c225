#pragma once

#include "editor/DocumentState.h"

#include <QPointer>
#include <QWidget>

namespace penwick {

class ElidedLabel;
class StatusMessageLabel;

/// The bar under the text: the counters of a `DocumentState`, or the message of the last macro run
/// in their place until it is dismissed. It redraws on every change of the state and when the
/// wording changes.
class StatusBarView final : public QWidget
{
    Q_OBJECT

public:
    /// \param documentState not owned; held weakly.
    explicit StatusBarView(DocumentState *documentState, QWidget *parent = nullptr);

    /// Drops the message, so that the counters come back. Nothing happens without one.
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
