#include "window/EditorWindowController.h"

#include "platform/desktop/WindowActivation.h"
#include "platform/settings/SystemTimeZone.h"
#include "view/TextView.h"
#include "window/LoadingView.h"
#include "window/MacroExecution.h"
#include "window/MacroRun.h"
#include "window/MainEditorView.h"
#include "wording/WordingLookup.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

quint64 nextNumber()
{
    static quint64 last = 0; // Controllers are made in the main thread only.
    return ++last;
}

/// Why no macro can read or change the text of the view now; empty when one can.
QString obstacleToMacros(const TextView *view, bool isLoading)
{
    if (isLoading)
        return wording::text(u"macro.error.loading"_s);
    if (view == nullptr)
        return wording::text(u"macro.error.noTextView"_s);
    return view->hasMarkedText() ? wording::text(u"macro.warning.imeActive"_s) : QString();
}

} // namespace

EditorWindowController::EditorWindowController(UserDefaults &defaults,
                                               Clock clock,
                                               MacroRuntimeService macroRuntime,
                                               QObject *parent)
    : EditorWindowController(std::make_shared<EditorWindow>(&defaults),
                             std::move(clock),
                             std::move(macroRuntime),
                             parent)
{
}

EditorWindowController::EditorWindowController(std::shared_ptr<EditorWindow> window,
                                               Clock clock,
                                               MacroRuntimeService macroRuntime,
                                               QObject *parent)
    : QObject(parent)
    , m_number(nextNumber())
    , m_clock(std::move(clock))
    , m_macroRuntime(std::move(macroRuntime))
    , m_documentState(std::make_unique<DocumentState>())
    , m_window(std::move(window))
    , m_page(std::make_unique<QWidget>())
{
    auto *layout = new QVBoxLayout(m_page.get());
    layout->setContentsMargins(0, 0, 0, 0);
    const int index = m_window->indexOf(m_window->currentController()) + 1;
    m_window->insertTab(index, this, m_page.get(), m_label);
}

EditorWindowController::~EditorWindowController()
{
    m_window->removeTab(this);
}

void EditorWindowController::moveTo(const std::shared_ptr<EditorWindow> &window, int index)
{
    if (isRunningMacro())
        return;
    if (window == m_window)
        return m_window->moveTab(this, index);
    QGuiApplication::inputMethod()->commit();
    m_window->removeTab(this);
    const auto former = std::exchange(m_window, window);
    m_window->insertTab(index, this, m_page.get(), m_label);
    if (former->count() == 0)
        former->hide();
    // The call may come from the former window: destroy it in a later turn of the event loop.
    QMetaObject::invokeMethod(
        this, [kept = former]() mutable { kept.reset(); }, Qt::QueuedConnection);
}

void EditorWindowController::bringForward()
{
    m_window->setCurrentController(this);
    penwick::bringForward(m_window.get());
}

void EditorWindowController::setTabLabel(const TabLabel &label)
{
    m_label = label;
    m_window->setTabLabel(this, label);
}

void EditorWindowController::setDocument(TextDocument *document)
{
    m_document = document;
    std::optional<TextView::Place> place;
    if (isLoading() && m_loadingView->textView() != nullptr)
        place = m_loadingView->textView()->place();
    removeContent();
    if (document == nullptr)
        return;
    m_documentState->setText(document->contentString());
    m_content = new MainEditorView(m_documentState.get(), document);
    showContent(m_content);
    if (place) {
        m_content->show(); // Gives the view its size, on which the rows depend.
        textView()->setPlace(*place);
    }
    Q_EMIT textViewMade(textView());
}

void EditorWindowController::showLoading(TextDocument *document)
{
    m_document = nullptr;
    removeContent();
    m_documentState->setText({});
    m_loadingView = new LoadingView(document, m_documentState.get());
    showContent(m_loadingView);
}

// Called before new content is made, because both would edit the same storage.
void EditorWindowController::removeContent()
{
    while (QLayoutItem *item = m_page->layout()->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

void EditorWindowController::showContent(QWidget *content)
{
    m_page->layout()->addWidget(content);
    m_page->setFocusProxy(content);
    m_window->contentDidChange(this);
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
    snapshot.timeZone = systemTimeZone();
    return penwick::buildMacroContext(snapshot, macroId, macroName);
}

bool EditorWindowController::isRunningMacro() const
{
    return !m_run.isNull();
}

void EditorWindowController::offerToStopMacro()
{
    if (!isRunningMacro())
        return;
    m_window->setCurrentController(this);
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
    else if (const QString obstacle = obstacleToMacros(view, isLoading()); !obstacle.isEmpty())
        fail(code, MacroFailure{obstacle});
    else
        execute(view, code, buildMacroContext(macroId, macroName), userInput);
}

void EditorWindowController::execute(TextView *view,
                                     const QString &code,
                                     const MacroContext &context,
                                     const std::optional<QString> &userInput)
{
    view->endColumns(); // The macro sees and changes the first row's part.
    m_run = new MacroRun(
        m_window.get(), context.macro.name, m_macroRuntime.prepare(code, context, userInput), this);
    connect(m_run,
            &MacroRun::ended,
            this,
            [this, view = QPointer<TextView>(view), code, context](const ScriptOutcome &outcome) {
                m_run = nullptr;
                finishRun(view, code, context, outcome);
            });
    m_run->waitUntilNotice();
}

void EditorWindowController::finishRun(TextView *view,
                                       const QString &code,
                                       const MacroContext &context,
                                       const ScriptOutcome &outcome)
{
    const auto result = MacroRuntimeService::resultOf(outcome, context);
    if (!result)
        return fail(code, result.error());
    if (const QString obstacle = prepareToApply(view, context, *result); !obstacle.isEmpty())
        return fail(code, MacroFailure{obstacle});
    const auto applied = applyMacroResult(*result, view, m_document);
    if (!applied)
        fail(code, applied.error());
    else
        showOutcome(*result);
}

void EditorWindowController::fail(const QString &code, const MacroResultError &error)
{
    using Code = MacroResultError::Code;
    const bool hasRun = error.code != Code::ExecutionException && error.code != Code::Timeout;
    fail(code, MacroFailure{error.errorDescription(), error.line, hasRun});
}

void EditorWindowController::fail(const QString &code, const MacroFailure &failure)
{
    showMacroMessage(NotificationType::Error, failure.message);
    Q_EMIT macroFailed(code, failure);
}

// Returns why the edits of `result` cannot be applied. If they can, returns an empty text and
// restores the selection of the snapshot. Accessibility tools, input methods and Replace All can
// edit behind the notice; keep their edits and drop the macro's, which refer to another text.
QString EditorWindowController::prepareToApply(TextView *view,
                                               const MacroContext &context,
                                               const MacroResult &result)
{
    if (result.textEdits.isEmpty())
        return {};
    if (QString obstacle = obstacleToMacros(view, isLoading()); !obstacle.isEmpty())
        return obstacle;
    if (view->string() != context.document.text)
        return wording::text(u"macro.error.documentChanged"_s);
    const TextRange selection{context.selection.startOffset,
                              context.selection.endOffset - context.selection.startOffset};
    if (view->selectedRange() != selection)
        view->setSelectedRange(selection);
    return {};
}

// Messages of the macro replace the default message.
void EditorWindowController::showOutcome(const MacroResult &result)
{
    for (const MacroNotification &notification : result.notifications)
        showMacroMessage(notification.type, notification.message);
    if (result.notifications.isEmpty() && !result.textEdits.isEmpty())
        showMacroMessage(NotificationType::Success, wording::text(u"status.macroCompleted"_s));
}

void EditorWindowController::showMacroMessage(NotificationType /*type*/, const QString &message)
{
    // Qt drops the queued call when this object is destroyed.
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
    for (QObject *child : view->children())
        if (TextView *found = findTextView(qobject_cast<QWidget *>(child)))
            return found;
    return nullptr;
}

} // namespace penwick
