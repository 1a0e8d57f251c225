#pragma once

#include "find/FindBar.h"
#include "find/FindController.h"
#include "support/Waits.h"
#include "view/TextView.h"
#include "window/MainEditorView.h"
#include "window/TextViewRepresentable.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

#include <memory>

namespace penwick::test {

/// Base of the search tests: an editor in a shown window, with access to the parts of its bar by
/// object name. A test object derives from it, and calls begin() in init() and end() in cleanup().
class FindTestBase
{
protected:
    void begin()
    {
        m_state = std::make_unique<DocumentState>();
        m_document = std::make_unique<TextDocument>();
        m_view = std::make_unique<MainEditorView>(m_state.get(), m_document.get());
        m_view->resize(600, 400);
        m_view->show();
        m_view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
        QTRY_VERIFY(view()->hasFocus());
    }

    void end()
    {
        m_view.reset();
        m_document.reset();
        m_state.reset();
    }

    void setText(const QString &text) { setText(Text(text)); }

    void setText(const Text &text)
    {
        m_document->setContentString(text);
        m_state->setText(text);
        QTRY_VERIFY(view()->string() == text);
    }

    /// Sends a key to the focused widget.
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(m_view->window()->windowHandle(), key, modifiers);
    }

    /// Opens the bar with Ctrl and `opening`, and replaces the pattern in it.
    void open(const QString &pattern, Qt::Key opening = Qt::Key_F)
    {
        key(opening, Qt::ControlModifier);
        QTRY_VERIFY(field()->hasFocus());
        field()->clear();
        QTest::keyClicks(field(), pattern);
    }

    [[nodiscard]] TextView *view() const { return m_view->textView(); }

    [[nodiscard]] FindBar *bar() const { return m_view->textViewRepresentable()->findBar(); }

    [[nodiscard]] FindController *controller() const
    {
        return m_view->textViewRepresentable()->findController();
    }

    [[nodiscard]] QString text() const { return view()->string().toString(); }

    [[nodiscard]] QString selected() const
    {
        const TextRange range = view()->selectedRange();
        return view()->string().slice(range.location, range.length);
    }

    [[nodiscard]] qint64 selectionStart() const { return view()->selectedRange().location; }

    [[nodiscard]] QLineEdit *field(const char *name = "findField") const
    {
        return bar()->findChild<QLineEdit *>(QString::fromLatin1(name));
    }

    [[nodiscard]] QLabel *label(const char *name) const
    {
        return bar()->findChild<QLabel *>(QString::fromLatin1(name));
    }

    [[nodiscard]] QToolButton *button(const char *name) const
    {
        return bar()->findChild<QToolButton *>(QString::fromLatin1(name));
    }

    void click(const char *name) { QTest::mouseClick(button(name), Qt::LeftButton); }

    /// The number of matches as the bar shows it.
    [[nodiscard]] QString count() const { return label("findCount")->text(); }

    std::unique_ptr<DocumentState> m_state;
    std::unique_ptr<TextDocument> m_document;
    std::unique_ptr<MainEditorView> m_view;
};

} // namespace penwick::test
