#include "window/TextViewRepresentable.h"

#include "find/FindBar.h"
#include "find/FindController.h"
#include "preferences/Preferences.h"
#include "view/TextView.h"
#include "window/BlankSwitch.h"
#include "window/LineEndCommands.h"
#include "window/TextCommands.h"
#include "window/TextLook.h"
#include "window/TransferBar.h"
#include "window/WrappingSwitch.h"
#include "window/Zoom.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include <utility>

namespace penwick {

TextViewRepresentable::TextViewRepresentable(DocumentState *documentState,
                                             TextDocument *document,
                                             QWidget *parent)
    : QWidget(parent)
    , m_storage(document != nullptr ? document->sharedTextStorage()
                                    : std::make_shared<TextStorage>())
{
    limitUndo();
    makeTextView();
    layout()->addWidget(new TransferBar(document, this));
    m_coordinator = new Coordinator(m_textView, documentState, document, this);
    m_coordinator->updateView(); // Without a document, the text comes from the state.
    // Queued, because the window that will contain the view does not exist yet.
    QMetaObject::invokeMethod(this, &TextViewRepresentable::focusTextView, Qt::QueuedConnection);
}

TextViewRepresentable::~TextViewRepresentable()
{
    delete m_findController;
    delete m_blankSwitch;
    delete m_lineEndCommands;
    delete m_textCommands;
    delete m_textLook;
    delete m_zoom;
    delete m_wrappingSwitch;
    // The view must be destroyed before its storage; as a child widget it would be destroyed after
    // it.
    delete m_textView;
}

void TextViewRepresentable::limitUndo()
{
    const auto limit = [this] {
        constexpr qint64 kMegabyte = 1'000'000;
        m_storage->setUndoLimit(Preferences::standard().number(PreferenceId::UndoLimit) *
                                kMegabyte);
    };
    limit();
    Preferences::observe(PreferenceId::UndoLimit, this, limit);
}

void TextViewRepresentable::makeTextView()
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    Preferences &preferences = Preferences::standard();
    m_textView = new TextView(m_storage.get(), TextLook::fontIn(preferences), this);
    m_textView->setFrameShape(QFrame::NoFrame);
    m_textView->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_textView->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    auto *row = new QHBoxLayout;
    row->addWidget(m_textView, 1);
    layout->addLayout(row, 1);
    // Below the text, so that no line moves when the bar opens.
    m_findBar = new FindBar(this);
    m_findBar->hide();
    layout->addWidget(m_findBar);
    m_findController = new FindController(m_textView, m_findBar, this);
    m_blankSwitch = new BlankSwitch(m_textView, this, Preferences::standard());
    m_lineEndCommands = new LineEndCommands(m_textView, this, Preferences::standard());
    m_textCommands = new TextCommands(m_textView, this, Preferences::standard());
    m_zoom = new Zoom(m_textView, this, preferences.number(PreferenceId::FontSize), preferences);
    m_textLook = new TextLook(m_textView, row, m_zoom, this, preferences);
    m_wrappingSwitch = new WrappingSwitch(m_textView, this, preferences);
    setFocusProxy(m_textView);
}

void TextViewRepresentable::makeReadOnly()
{
    m_textView->makeReadOnly();
    delete std::exchange(m_findController, nullptr);
    delete std::exchange(m_lineEndCommands, nullptr);
    delete std::exchange(m_textCommands, nullptr);
}

CommandState TextViewRepresentable::commandState(CommandId id) const
{
    if (const auto kind = TextCommands::kindOf(id))
        return {m_textCommands->canPerform(*kind)};
    if (const auto state = m_textLook->commandState(id))
        return *state;
    switch (id) {
    case CommandId::ShowBlanks:
        return {true, m_blankSwitch->isOn()};
    case CommandId::ShowAllMarks:
        return {true, m_blankSwitch->showsAll()};
    case CommandId::WrapLines:
        return {true, m_wrappingSwitch->isOn()};
    case CommandId::ZoomIn:
        return {m_zoom->canStep(1)};
    case CommandId::ZoomOut:
        return {m_zoom->canStep(-1)};
    case CommandId::ConvertToLf:
        return {m_lineEndCommands->canConvert(LineEnd::LineFeed)};
    case CommandId::ConvertToCrLf:
        return {m_lineEndCommands->canConvert(LineEnd::CrLf)};
    case CommandId::ConvertToCr:
        return {m_lineEndCommands->canConvert(LineEnd::CarriageReturn)};
    default:
        return {command(id).place == CommandPlace::Document};
    }
}

void TextViewRepresentable::performCommand(CommandId id)
{
    if (const auto kind = TextCommands::kindOf(id))
        return m_textCommands->perform(*kind);
    if (m_textLook->performCommand(id))
        return;
    switch (id) {
    case CommandId::Find:
        return m_findController->showFind();
    case CommandId::Replace:
        return m_findController->showReplace();
    case CommandId::FindNext:
        return m_findController->findNext();
    case CommandId::FindPrevious:
        return m_findController->findPrevious();
    case CommandId::StartColumns:
        return m_textView->startColumns();
    case CommandId::ShowBlanks:
        return m_blankSwitch->toggle();
    case CommandId::ShowAllMarks:
        return m_blankSwitch->toggleAll();
    case CommandId::WrapLines:
        return m_wrappingSwitch->toggle();
    case CommandId::ZoomIn:
        return m_zoom->step(1);
    case CommandId::ZoomOut:
        return m_zoom->step(-1);
    case CommandId::ZoomReset:
        return m_zoom->reset();
    case CommandId::ConvertToLf:
        return m_lineEndCommands->convert(LineEnd::LineFeed);
    case CommandId::ConvertToCrLf:
        return m_lineEndCommands->convert(LineEnd::CrLf);
    case CommandId::ConvertToCr:
        return m_lineEndCommands->convert(LineEnd::CarriageReturn);
    default:
        break;
    }
}

void TextViewRepresentable::keyPressEvent(QKeyEvent *event)
{
    // The text view ignores Escape, so the event arrives here.
    const bool isEscape = event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier;
    if (!isEscape || m_findController == nullptr || !m_findController->close())
        QWidget::keyPressEvent(event);
}

void TextViewRepresentable::focusTextView()
{
    // A page in a background tab must not take the focus from the visible one.
    if (!isWindow() && isVisibleTo(window()))
        m_textView->setFocus();
}

} // namespace penwick
