#pragma once

#include "code/CodeEditor.h"
#include "find/FindBar.h"
#include "support/TemporaryHome.h"
#include "view/LineNumberGutter.h"
#include "view/TextView.h"

#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

namespace penwick::test {

/// The code editor as a field of a form in a shown window.
struct CodeForm
{
    explicit CodeForm(const QString &code = {})
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(&before);
        layout->addWidget(&label);
        layout->addWidget(&editor, 1);
        layout->addWidget(&after);
        label.setBuddy(&editor);
        window.resize(520, 420);
        editor.setText(code);
        window.show();
        editor.setFocus();
        const bool isActive = QTest::qWaitForWindowActive(&window);
        Q_ASSERT(isActive);
        Q_UNUSED(isActive)
    }

    TextView *view() { return editor.textView(); }

    LineNumberGutter *gutter() { return editor.findChild<LineNumberGutter *>(); }

    void caret(qint64 offset) { view()->setSelectedRange({offset, 0}); }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(view(), key, modifiers);
    }

    void type(const QString &string)
    {
        for (const QChar unit : string)
            if (unit == u'\n')
                key(Qt::Key_Return);
            else
                QTest::keyClick(view(), unit.toLatin1());
    }

    /// The text, with `|` at the caret.
    QString state() { return editor.text().insert(view()->caretOffset(), u'|'); }

    QImage gutterPicture() { return gutter()->grab().toImage(); }

    /// The settings of all forms of the process.
    static const TemporaryHome &settings()
    {
        static const TemporaryHome home;
        return home;
    }

    const TemporaryHome &home = settings(); // First: the editor reads the settings.
    QWidget window;
    QLineEdit before{&window};
    QLabel label{QStringLiteral("&Code"), &window};
    CodeEditor editor{&window};
    QLineEdit after{&window};
};

} // namespace penwick::test
