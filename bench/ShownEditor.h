#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"
#include "view/TextView.h"
#include "window/MainEditorView.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QWidget>

#include <functional>
#include <optional>

namespace penwick::bench {

constexpr QSize kWindowSize(900, 650);

inline double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

inline void pumpUntil(const std::function<bool()> &condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// Notices when a widget has been painted.
class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        const bool isPaint = event->type() == QEvent::Paint;
        if (isPaint && !m_isBusy) {
            m_isBusy = true;
            // The widget paints only after the filter has passed the event on. Send the event from
            // here instead, so that the paint is complete when it is recorded.
            QCoreApplication::sendEvent(object, event);
            m_isBusy = false;
            m_hasPainted = true;
            return true;
        }
        return false;
    }

    [[nodiscard]] bool hasPainted() const { return m_hasPainted; }

    void reset() { m_hasPainted = false; }

    /// Milliseconds from `change` to the end of the paint that it causes.
    double timeToPaint(const std::function<void()> &change)
    {
        reset();
        QElapsedTimer timer;
        timer.start();
        change();
        pumpUntil([this] { return hasPainted(); });
        return milliseconds(timer);
    }

private:
    bool m_isBusy = false;
    bool m_hasPainted = false;
};

/// A document in a visible window, built from the same widgets as in the application.
class ShownEditor final
{
public:
    /// Reads the file in the background, as the application reads large files, then shows it.
    void open(const QString &path)
    {
        document.startReading(path);
        pumpUntil([this] { return !document.isReading(); });
        if (document.filePath().isEmpty())
            qFatal("cannot read the input");
        show(document.contentString());
    }

    void show(const Text &text)
    {
        state.setText(text);
        view.emplace(&state, &document);
        view->resize(kWindowSize);
        watch.emplace(view->textView()->viewport());
        view->show();
    }

    [[nodiscard]] bool hasCounted() const
    {
        return state.characterCount() == state.text().metrics().clusters;
    }

    void waitUntilShown()
    {
        pumpUntil([this] { return watch->hasPainted() && hasCounted(); });
    }

    [[nodiscard]] TextView *textView() const { return view->textView(); }

    DocumentState state;
    TextDocument document;
    std::optional<MainEditorView> view;
    std::optional<PaintWatch> watch;
};

} // namespace penwick::bench
