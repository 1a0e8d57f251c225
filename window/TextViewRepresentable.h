#pragma once

#include "command/Command.h"
#include "window/Coordinator.h"

#include <QWidget>

#include <memory>

namespace penwick {

class BlankSwitch;
class FindBar;
class FindController;
class LineEndCommands;
class TextCommands;
class TextLook;
class WrappingSwitch;
class Zoom;

/// Hosts the text view of an editor window and the find bar below it. Creates the view over the
/// document's storage, sets its font and text, and keeps it in sync with the state and the document
/// through a `Coordinator`. A long save shows its progress below the text.
class TextViewRepresentable final : public QWidget, public CommandTarget
{
    Q_OBJECT

public:
    /// \param documentState not owned; its text is the initial text of the view.
    /// \param document may be null: the view then edits a storage of its own. The view shares
    ///        ownership of the document's storage and may outlive the document.
    TextViewRepresentable(DocumentState *documentState,
                          TextDocument *document,
                          QWidget *parent = nullptr);
    ~TextViewRepresentable() override;

    /// Turns this into the view of a text that is still being read: nothing edits or searches it,
    /// and it performs no command. `findController` and `lineEndCommands` are null from now on.
    void makeReadOnly();

    [[nodiscard]] TextView *textView() const { return m_textView; }

    [[nodiscard]] FindBar *findBar() const { return m_findBar; }

    [[nodiscard]] FindController *findController() const { return m_findController; }

    [[nodiscard]] LineEndCommands *lineEndCommands() const { return m_lineEndCommands; }

    [[nodiscard]] CommandState commandState(CommandId id) const override;
    /// Carries out the commands of `CommandPlace::Document`.
    void performCommand(CommandId id) override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void limitUndo();
    void makeTextView();
    void focusTextView();

    std::shared_ptr<TextStorage> m_storage;
    TextView *m_textView = nullptr;
    FindBar *m_findBar = nullptr;
    FindController *m_findController = nullptr;
    BlankSwitch *m_blankSwitch = nullptr;
    LineEndCommands *m_lineEndCommands = nullptr;
    TextCommands *m_textCommands = nullptr;
    TextLook *m_textLook = nullptr;
    Zoom *m_zoom = nullptr;
    WrappingSwitch *m_wrappingSwitch = nullptr;
    Coordinator *m_coordinator = nullptr;
};

} // namespace penwick
