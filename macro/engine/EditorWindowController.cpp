#include "macro/engine/EditorWindowController.h"

#include "editor/MainEditorView.h"
#include "editor/TextView.h"
#include "macro/engine/MacroExecution.h"
#include "platform/WindowFrame.h"
#include "wording/WordingLookup.h"

#include <QTimeZone>

#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr QSize kContentSize(900, 650);
constexpr QSize kMinimumSize(520, 360);

} // namespace

EditorWindowController::EditorWindowController(UserDefaults &defaults,
                                               Clock clock,
                                               MacroRuntimeService macroRuntime,
                                               QObject *parent)
    : QObject(parent)
    , m_clock(std::move(clock))
    , m_macroRuntime(std::move(macroRuntime))
    , m_documentState(std::make_unique<DocumentState>())
    , m_window(std::make_unique<QMainWindow>())
{
    loadWindow(defaults);
}

EditorWindowController::~EditorWindowController() = default;

void EditorWindowController::loadWindow(UserDefaults &defaults)
{
    m_window->setMinimumSize(kMinimumSize);
    m_window->resize(kContentSize);
    if (!setFrameAutosaveName(m_window.get(), u"penwickEditorWindow"_s, defaults))
        centerWindow(m_window.get());
}

void EditorWindowController::setDocument(TextDocument *document)
{
    m_document = document;
    // Gone before the new content is made, because both would edit one storage.
    delete m_window->takeCentralWidget();
    if (document == nullptr)
        return;
    m_documentState->setText(document->contentString());
    m_content = new MainEditorView(m_documentState.get(), document);
    m_window->setCentralWidget(m_content);
}

MainEditorView *EditorWindowController::content() const
{
    return m_content;
}

TextView *EditorWindowController::textView() const
{
    return findTextView(m_content);
}

MacroContext EditorWindowController::buildMacroContext(const QString &macroId,
                                                       const QString &macroName) const
{
    EditorSnapshot snapshot;
    if (const TextView *view = textView()) {
        snapshot.text = view->string();
        snapshot.selectionLocation = view->selectedRange().location;
        snapshot.selectionLength = view->selectedRange().length;
    } else {
        snapshot.text = m_documentState->text();
    }
    if (!m_document.isNull()) {
        snapshot.filePath = m_document->filePath();
        snapshot.isModified = m_document->isEdited();
    }
    snapshot.now = m_clock();
    snapshot.timeZone = QTimeZone::systemTimeZone();
    return penwick::buildMacroContext(snapshot, macroId, macroName);
}

void EditorWindowController::runMacro(const QString &code,
                                      const QString &macroId,
                                      const QString &macroName,
                                      const std::optional<QString> &userInput)
{
    TextView *view = textView();
    if (view == nullptr) {
        showMacroMessage(
            NotificationType::Error,
            wording::text(u"macro.error.noTextView"_s, u"テキストエリアが見つかりません"_s));
    } else if (view->hasMarkedText()) {
        showMacroMessage(
            NotificationType::Warning,
            wording::text(u"macro.warning.imeActive"_s,
                          u"日本語入力の変換を確定してからマクロを実行してください"_s));
    } else {
        execute(view, code, buildMacroContext(macroId, macroName), userInput);
    }
}

void EditorWindowController::execute(TextView *view,
                                     const QString &code,
                                     const MacroContext &context,
                                     const std::optional<QString> &userInput)
{
    const auto result = m_macroRuntime.run(code, context, userInput);
    if (!result) {
        showMacroMessage(NotificationType::Error, result.error().errorDescription());
        return;
    }
    const auto applied = MacroExecution(view, m_document).applyMacroResult(*result);
    if (!applied)
        showMacroMessage(NotificationType::Error, applied.error().errorDescription());
    else
        showOutcome(*result);
}

// What the macro has to say takes the place of our own message.
void EditorWindowController::showOutcome(const MacroResult &result)
{
    for (const MacroNotification &notification : result.notifications)
        showMacroMessage(notification.type, notification.message);
    if (result.notifications.isEmpty() && !result.textEdits.isEmpty())
        showMacroMessage(NotificationType::Success, wording::text(u"status.macroCompleted"_s));
}

void EditorWindowController::showMacroMessage(NotificationType /*type*/, const QString &message)
{
    // The queued call dies with this object.
    QMetaObject::invokeMethod(
        this,
        [this, message] { m_documentState->setMacroNotificationMessage(message); },
        Qt::QueuedConnection);
}

TextView *findTextView(QWidget *view)
{
    if (view == nullptr)
        return nullptr;
    if (auto *found = qobject_cast<TextView *>(view))
        return found;
    for (QObject *child : view->children()) {
        if (TextView *found = findTextView(qobject_cast<QWidget *>(child)))
            return found;
    }
    return nullptr;
}

} // namespace penwick
