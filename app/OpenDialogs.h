#pragma once

#include <QObject>

class QWidget;

namespace penwick {

/// What lies over the windows of this process: modal dialogs, notices of macros, menus. A caller
/// that has to wait for their end creates an object and calls `watch`.
class OpenDialogs final : public QObject
{
    Q_OBJECT

public:
    /// The modal dialog, or notice, that was opened last. Null when there is none.
    [[nodiscard]] static QWidget *front();

    /// A modal dialog behind which no document is to be opened; null when there is none. The notice
    /// of a macro does not count: it blocks its own window only and may stay for long.
    [[nodiscard]] static QWidget *question();

    /// True while a modal dialog, a notice or a menu is open: a dialog shown over it would be
    /// answered by mistake.
    [[nodiscard]] static bool areOpen();

    /// True when a modal dialog or a notice blocks input to the window.
    [[nodiscard]] static bool block(const QWidget *window);

    /// Emits `closed` once, when the next dialog or menu has closed. Others may still be open then:
    /// ask again, and watch again.
    void watch();

Q_SIGNALS:
    /// Emitted in a later turn of the event loop. A dialog with an event loop of its own has
    /// returned by then, so its caller acts on the answer first.
    void closed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace penwick
