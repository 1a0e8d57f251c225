#include "macro/engine/EditorWindowController.h"

#include "editor/MainEditorView.h"
#include "editor/TextView.h"
#include "macro/engine/MacroExecution.h"
#include "macro/engine/MacroRun.h"
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

bool EditorWindowController::isRunningMacro() const
{
    return !m_run.isNull();
}

void EditorWindowController::offerToStopMacro()
{
    if (isRunningMacro())
        m_run->showNotice();
}

void EditorWindowController::runMacro(const QString &code,
                                      const QString &macroId,
                                      const QString &macroName,
                                      const std::optional<QString> &userInput)
{
    TextView *view = textView();
    if (isRunningMacro())
        offerToStopMacro();
    else if (isReady(view))
        execute(view, code, buildMacroContext(macroId, macroName), userInput);
}

bool EditorWindowController::isReady(const TextView *view)
{
    if (view == nullptr) {
        showMacroMessage(
            NotificationType::Error,
            wording::text(u"macro.error.noTextView"_s, u"テキストエリアが見つかりません"_s));
    } else if (view->hasMarkedText()) {
        showMacroMessage(
            NotificationType::Warning,
            wording::text(u"macro.warning.imeActive"_s,
                          u"日本語入力の変換を確定してからマクロを実行してください"_s));
    }
    return view != nullptr && !view->hasMarkedText();
}

void EditorWindowController::execute(TextView *view,
                                     const QString &code,
                                     const MacroContext &context,
                                     const std::optional<QString> &userInput)
{
    m_run = new MacroRun(
        m_window.get(), context.macro.name, m_macroRuntime.prepare(code, context, userInput), this);
    connect(m_run,
            &MacroRun::ended,
            this,
            [this, view = QPointer<TextView>(view), code, context](const ScriptOutcome &outcome) {
                m_run = nullptr;
                finishRun(view, code, context, outcome);
            });
    m_run->waitAWhile();
}

void EditorWindowController::finishRun(TextView *view,
                                       const QString &code,
                                       const MacroContext &context,
                                       const ScriptOutcome &outcome)
{
    const auto result = MacroRuntimeService::resultOf(outcome, context);
    if (!result) {
        showMacroMessage(NotificationType::Error, result.error().errorDescription());
        if (result.error().line > 0)
            Q_EMIT macroFailedInLine(code, result.error().line);
        return;
    }
    if (!isAsBefore(view, context, *result))
        return;
    const auto applied = MacroExecution(view, m_document).applyMacroResult(*result);
    if (!applied)
        showMacroMessage(NotificationType::Error, applied.error().errorDescription());
    else
        showOutcome(*result);
}

// Whoever edits passes by the notice, but assistive programs, input methods and a replacement that
// was under way do not. What they did is the person's wish; the edits are about another text.
bool EditorWindowController::isAsBefore(TextView *view,
                                        const MacroContext &context,
                                        const MacroResult &result)
{
    if (result.textEdits.isEmpty())
        return true;
    if (!isReady(view))
        return false;
    if (view->string() != context.document.text) {
        showMacroMessage(
            NotificationType::Error,
            wording::text(u"macro.error.documentChanged"_s,
                          u"実行中に文書が変更されたため、マクロの結果を適用しませんでした"_s));
        return false;
    }
    const TextRange selection{context.selection.startOffset,
                              context.selection.endOffset - context.selection.startOffset};
    if (view->selectedRange() != selection)
        view->setSelectedRange(selection);
    return true;
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
