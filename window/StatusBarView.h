#pragma once

#include "editor/DocumentState.h"
#include "text/Text.h"

#include <QPointer>
#include <QWidget>

#include <functional>

namespace penwick {

class ElidedLabel;
class LineEndMark;
class StatusMessageLabel;

/// The bar under the text. It shows the counters of a `DocumentState` or, until it is dismissed,
/// the message of the last macro run. A mark stands beside the counters while the text has
/// different line ends. It is updated when the state or the wording changes.
class StatusBarView final : public QWidget
{
    Q_OBJECT

public:
    /// \param documentState not owned; held weakly.
    explicit StatusBarView(DocumentState *documentState, QWidget *parent = nullptr);

    /// \param selection returns the selected text. Called when the user asks for the tool tip of
    /// the
    ///        counters, which then counts the selected characters too.
    void setSelection(std::function<Text()> selection) { m_selection = std::move(selection); }

    /// Removes the message, so that the counters are shown again. Does nothing without a message.
    void dismissMessage();

Q_SIGNALS:
    /// The user wants the line ends of the text made uniform.
    void uniformLineEndsRequested(penwick::LineEnd lineEnd);

protected:
    bool event(QEvent *event) override;

private:
    [[nodiscard]] QWidget *makeCountersRow();
    void stateDidChange(DocumentState::Field field);
    void redraw();
    void redrawCounters();
    [[nodiscard]] QString countersToolTip() const;
    [[nodiscard]] static QString characters(qint64 count);

    QPointer<DocumentState> m_documentState;
    std::function<Text()> m_selection;
    QWidget *m_countersRow = nullptr;
    ElidedLabel *m_cursorLabel = nullptr;
    ElidedLabel *m_lineCountLabel = nullptr;
    ElidedLabel *m_characterCountLabel = nullptr;
    ElidedLabel *m_encodingLabel = nullptr;
    ElidedLabel *m_newlineLabel = nullptr;
    LineEndMark *m_lineEndMark = nullptr;
    StatusMessageLabel *m_messageLabel = nullptr;
};

} // namespace penwick
