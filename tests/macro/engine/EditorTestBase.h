#pragma once

#include "support/TemporaryHome.h"
#include "view/TextView.h"
#include "window/EditorWindowController.h"
#include "wording/WordingLookup.h"

#include <QDateTime>

#include <memory>

namespace penwick::test {

/// Base of the tests of an editor's controller: a controller with defaults of its own, and a
/// document. A test object derives from it, and calls begin() in init() and end() in cleanup().
class EditorTestBase
{
protected:
    void begin()
    {
        m_defaults =
            std::make_unique<UserDefaults>(m_home.file(QStringLiteral("%1.ini").arg(++m_count)));
        m_document = std::make_unique<TextDocument>();
        m_controller = makeController();
    }

    void end()
    {
        m_controller.reset();
        m_document.reset();
        wording::setActiveValues(std::nullopt);
    }

    [[nodiscard]] static QDateTime now()
    {
        return QDateTime::fromString(QStringLiteral("2024-02-29T03:04:05Z"), Qt::ISODate);
    }

    /// A controller whose window uses the frame saved last.
    [[nodiscard]] std::unique_ptr<EditorWindowController> makeController()
    {
        return std::make_unique<EditorWindowController>(*m_defaults, &EditorTestBase::now);
    }

    void open(const QString &text, TextRange selection = {})
    {
        m_document->setContentString(Text(text));
        m_controller->setDocument(m_document.get());
        view()->setSelectedRange(selection);
    }

    [[nodiscard]] TextView *view() const { return m_controller->textView(); }

    [[nodiscard]] QString text() const { return view()->string().toString(); }

    TemporaryHome m_home;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<TextDocument> m_document;
    std::unique_ptr<EditorWindowController> m_controller;

private:
    int m_count = 0;
};

} // namespace penwick::test
