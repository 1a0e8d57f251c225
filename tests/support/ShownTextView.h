#pragma once

#include "support/StoppedClock.h"
#include "view/TextView.h"

#include <QInputMethodEvent>
#include <QTest>

namespace penwick::test {

/// The keys that move the caret.
constexpr Qt::Key kCaretKeys[] = {Qt::Key_Left,
                                  Qt::Key_Right,
                                  Qt::Key_Up,
                                  Qt::Key_Down,
                                  Qt::Key_Home,
                                  Qt::Key_End,
                                  Qt::Key_PageUp,
                                  Qt::Key_PageDown};

/// A view in a shown and active window.
struct ShownTextView
{
    explicit ShownTextView(QStringView text = {})
    {
        view.resize(600, 400);
        view.show();
        view.setString(Text(text));
        view.setFocus();
        const bool isActive = QTest::qWaitForWindowActive(&view);
        Q_ASSERT(isActive);
        Q_UNUSED(isActive)
    }

    void caret(qint64 offset) { view.setSelectedRange({offset, 0}); }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&view, key, modifiers);
    }

    [[nodiscard]] QString text() const { return view.string().toString(); }

    /// The center of the caret at `offset`, in viewport coordinates.
    QPoint pointOf(qint64 offset)
    {
        const TextRange before = view.selectedRange();
        view.setSelectedRange({offset, 0});
        const QRectF rect = view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
        view.setSelectedRange(before);
        return rect.center().toPoint();
    }

    /// Sends the event of an input method that commits `commit` in place of `replacedLength` code
    /// units, starting `replacedStart` code units from the caret, and then shows `preedit`.
    void compose(const QString &preedit,
                 const QString &commit = {},
                 int replacedStart = 0,
                 int replacedLength = 0)
    {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit, replacedStart, replacedLength);
        QCoreApplication::sendEvent(&view, &event);
    }

    TextStorage storage{stoppedClock()};
    TextView view{&storage};
};

} // namespace penwick::test
