#pragma once

#include "code/CodeEditor.h"
#include "support/Macros.h"
#include "support/ShownMacroManager.h"
#include "wording/WordingLookup.h"

#include <QLineEdit>
#include <QTest>

namespace penwick::test {

/// An enabled macro of this name.
inline Macro namedMacro(const QString &id, const QString &name, qint64 sortOrder = 1)
{
    Macro macro = sampleMacro(id, sortOrder);
    macro.name = name;
    macro.isEnabled = true;
    return macro;
}

/// The macro manager in its window, with helpers that act as the user.
struct MacroManagerScene : ShownMacroManager
{
    /// Has the macros "Alpha" with the id "A" and "Beta" with the id "B".
    MacroManagerScene()
        : MacroManagerScene({namedMacro(QStringLiteral("A"), QStringLiteral("Alpha"), 1),
                             namedMacro(QStringLiteral("B"), QStringLiteral("Beta"), 2)})
    {
    }

    explicit MacroManagerScene(const QList<Macro> &macros)
        : ShownMacroManager(macros)
    {
    }

    ~MacroManagerScene() { wording::setActiveValues(std::nullopt); }

    Q_DISABLE_COPY_MOVE(MacroManagerScene)

    [[nodiscard]] QLineEdit *field(const QString &name) const
    {
        return window()->findChild<QLineEdit *>(name);
    }

    [[nodiscard]] CodeEditor *code() const { return window()->findChild<CodeEditor *>(); }

    /// Replaces the text of a field by typing.
    void fill(const QString &name, const QString &text) const
    {
        field(name)->selectAll();
        QTest::keyClicks(field(name), text);
    }

    [[nodiscard]] QByteArray file() const { return home.read(QStringLiteral("data/macros.json")); }

    /// Changes a macro's code in the file as another program does.
    void writeElsewhere(const QString &id, const QString &code) const
    {
        QList<Macro> macros = MacroJson::read(file()).value();
        for (Macro &macro : macros)
            if (macro.id == id)
                macro.code = code;
        home.write(QStringLiteral("data/macros.json"), MacroJson::write(macros));
    }

    [[nodiscard]] Macro stored(const QString &id) const
    {
        return manager->macroWithId(id).value_or(Macro());
    }

    void clickTool(const QString &name) const
    {
        QTest::mouseClick(page().tool(name), Qt::LeftButton);
    }

    void import(const std::optional<QString> &path) const
    {
        panels.state->answer = path;
        clickTool(QStringLiteral("macroImport"));
    }

    [[nodiscard]] bool showsDetail() const { return code()->isVisible(); }
};

} // namespace penwick::test
