#pragma once

#include "support/TemporaryHome.h"
#include "view/TextView.h"
#include "window/EditorTabBar.h"
#include "window/EditorWindow.h"
#include "window/EditorWindowController.h"

#include <QTest>

#include <memory>
#include <vector>

namespace penwick::test {

/// Base of the tests of a window with tabs: a window with defaults of its own, and documents for
/// its tabs. A test object derives from it, and calls begin() in init() and end() in cleanup().
class EditorWindowTestBase
{
protected:
    struct Editor
    {
        explicit Editor(std::shared_ptr<EditorWindow> window, const QString &text)
            : controller(std::make_unique<EditorWindowController>(std::move(window)))
        {
            document.setContentString(Text(text));
            controller->setDocument(&document);
            controller->setTabLabel({text.left(5), {}, false});
        }

        [[nodiscard]] TextView *view() const { return controller->textView(); }

        TextDocument document;
        std::unique_ptr<EditorWindowController> controller;
    };

    using Controllers = QList<EditorWindowController *>;

    void begin()
    {
        m_defaults = std::make_unique<UserDefaults>(m_home.file(QStringLiteral("settings.ini")));
        m_window = std::make_shared<EditorWindow>(m_defaults.get());
    }

    void end()
    {
        m_editors.clear();
        m_window.reset();
    }

    Editor &add(const QString &text) { return add(m_window, text); }

    Editor &add(const std::shared_ptr<EditorWindow> &window, const QString &text)
    {
        m_editors.push_back(std::make_unique<Editor>(window, text));
        return *m_editors.back();
    }

    [[nodiscard]] QStringList order() const
    {
        QStringList names;
        for (const EditorWindowController *controller : m_window->controllers())
            names << controller->document()->contentString().toString();
        return names;
    }

    void show() const
    {
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    [[nodiscard]] QPoint middleOf(int index) const
    {
        return m_window->tabBar()->tabRect(index).center();
    }

    TemporaryHome m_home;
    std::unique_ptr<UserDefaults> m_defaults;
    std::shared_ptr<EditorWindow> m_window;
    std::vector<std::unique_ptr<Editor>> m_editors;
};

} // namespace penwick::test
