#pragma once

#include "controls/ElidedLabel.h"

namespace penwick {

/// The message of the status bar. A click dismisses it. Return, Enter, Space and Escape do so while
/// it has the keyboard focus, as does its press action for assistive technology. The tool tip shows
/// more of a long message; the context menu copies it.
class StatusMessageLabel final : public ElidedLabel
{
    Q_OBJECT

public:
    explicit StatusMessageLabel(QWidget *parent = nullptr);

    /// Shows `message` on one line.
    void setMessage(const QString &message);

    void dismiss() { Q_EMIT dismissed(); }

public Q_SLOTS:
    /// Copies the whole message to the clipboard.
    void copy();

Q_SIGNALS:
    void dismissed();

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    [[nodiscard]] QColor textColor() const override;

private:
    QString m_message; // With its line breaks.
};

} // namespace penwick
