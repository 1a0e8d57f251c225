#pragma once

#include "app/DocumentController.h"
#include "support/TemporaryHome.h"
#include "support/WholeText.h"
#include "view/TextView.h"
#include "window/EditorWindow.h"
#include "window/EditorWindowController.h"

#include <QCoreApplication>
#include <QTest>

#include <memory>

namespace penwick::test {

/// Base of the tests of open documents: a home folder, the documents, and helpers that act as the
/// user. A test object derives from it, and calls begin() in init() and end() in cleanup(). An
/// `index` counts the tabs of all windows from 0, oldest first.
class DocumentsTestBase
{
protected:
    void begin()
    {
        m_home = std::make_unique<TemporaryHome>();
        m_documents = std::make_unique<DocumentController>();
    }

    void end()
    {
        QCoreApplication::processEvents();
        m_documents.reset();
        m_home.reset();
    }

    [[nodiscard]] EditorWindowController *controller(int index = 0) const
    {
        return m_documents->windowControllers().at(index).get();
    }

    [[nodiscard]] EditorWindow *window(int index = 0) const { return controller(index)->window(); }

    [[nodiscard]] TextDocument *document(int index = 0) const
    {
        return m_documents->documentOf(controller(index));
    }

    /// Null while the text is being read.
    [[nodiscard]] TextView *view(int index = 0) const { return controller(index)->textView(); }

    [[nodiscard]] QString text(int index = 0) const { return view(index)->string().toString(); }

    void type(const QString &text, int index = 0) const { QTest::keyClicks(view(index), text); }

    /// Replaces the whole text as one edit.
    void replaceText(const Text &text) const { replaceWholeText(view(), text); }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<DocumentController> m_documents;
};

} // namespace penwick::test
