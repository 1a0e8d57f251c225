#include "platform/desktop/WindowFrame.h"

#include <QBasicTimer>
#include <QEvent>
#include <QGuiApplication>
#include <QHash>
#include <QPointer>
#include <QScreen>
#include <QStyle>
#include <QTimerEvent>
#include <QWindow>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kSaveDelayMs = 300;

/// Saves the frame of one window under a name. It is a child of that window.
class FrameKeeper final : public QObject
{
public:
    FrameKeeper(QWidget *window, QString name, UserDefaults &defaults)
        : QObject(window)
        , m_window(window)
        , m_name(std::move(name))
        , m_key(u"windowFrame."_s + m_name)
        , m_defaults(defaults)
        , m_saved(defaults.bytes(m_key))
    {
        if (!m_saved.isEmpty())
            restore();
        m_window->installEventFilter(this);
    }

    static QHash<QString, QPointer<FrameKeeper>> &holders()
    {
        static QHash<QString, QPointer<FrameKeeper>> holdersByName;
        return holdersByName;
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
            // A drag sends hundreds of these events, and each save writes a file: the save is
            // debounced.
            if (m_window->isVisible())
                m_saveTimer.start(kSaveDelayMs, this);
            break;
        case QEvent::Close:
            save();
            break;
        case QEvent::Hide:
            if (!event->spontaneous())
                release();
            break;
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

protected:
    void timerEvent(QTimerEvent *event) override
    {
        if (event->timerId() == m_saveTimer.timerId())
            save();
    }

private:
    /// Restores the frame, but not the full screen: the user may not know the key that ends it.
    void restore()
    {
        m_window->restoreGeometry(m_saved);
        if (!m_window->isFullScreen())
            return;
        const QRect former = m_window->normalGeometry();
        m_window->setWindowState(m_window->windowState() & ~Qt::WindowFullScreen);
        m_window->setGeometry(former);
    }

    void save()
    {
        m_saveTimer.stop();
        const QByteArray frame = m_window->saveGeometry();
        if (frame != m_saved && m_defaults.setBytes(m_key, frame))
            m_saved = frame;
    }

    // Stops watching the window, which may still exist, and frees its name.
    void release()
    {
        if (m_saveTimer.isActive())
            save();
        m_window->removeEventFilter(this);
        holders().remove(m_name);
    }

    QWidget *m_window;
    QString m_name;
    QString m_key;
    UserDefaults &m_defaults;
    QByteArray m_saved;
    QBasicTimer m_saveTimer;
};

/// The margins of the window's frame; before the window is first shown, those of a usual one.
QMargins frameOf(const QWidget *window)
{
    const QWindow *handle = window->windowHandle();
    if (handle != nullptr && handle->isExposed())
        return handle->frameMargins();
    return {0, window->style()->pixelMetric(QStyle::PM_TitleBarHeight), 0, 0};
}

void fitNow(QWidget *window)
{
    const QMargins frame = frameOf(window);
    const QRect available = window->screen()->availableGeometry();
    const QSize room = available.marginsRemoved(frame).size();
    window->setMinimumSize(window->minimumSize().boundedTo(room));
    if (window->isMaximized() || window->isFullScreen())
        return;
    QRect place = window->geometry();
    place.setSize(place.size().boundedTo(room));
    const QPoint corner = place.marginsAdded(frame).topLeft();
    place.translate(positionOnScreen(corner, place.size().grownBy(frame)) - corner);
    // The window system chooses the place of a window that has no position.
    if (window->testAttribute(Qt::WA_Moved) || window->isVisible())
        window->setGeometry(place);
    else
        window->resize(place.size());
}

/// Fits a window once more when it is first on the screen, which is when its frame is known. It is
/// a child of that window.
class FirstShowFitter final : public QObject
{
public:
    explicit FirstShowFitter(QWidget *window)
        : QObject(window)
        , m_window(window)
    {
        m_window->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_window && event->type() == QEvent::Show) {
            m_window->windowHandle()->installEventFilter(this);
        } else if (event->type() == QEvent::Expose && m_window->windowHandle()->isExposed()) {
            m_window->windowHandle()->removeEventFilter(this);
            fitNow(m_window);
            deleteLater();
        }
        return false;
    }

private:
    QWidget *m_window;
};

} // namespace

void fitToScreen(QWidget *window)
{
    fitNow(window);
    new FirstShowFitter(window);
}

bool setFrameAutosaveName(QWidget *window, const QString &name, UserDefaults &defaults)
{
    auto &holders = FrameKeeper::holders();
    if (!holders.value(name).isNull())
        return false;
    holders.insert(name, new FrameKeeper(window, name, defaults));
    return true;
}

void centerWindow(QWidget *window)
{
    const QRect available = window->screen()->availableGeometry();
    QRect frame = window->frameGeometry();
    frame.moveCenter(available.center());
    window->move(frame.topLeft());
}

QPoint positionOnScreen(const QPoint &position, const QSize &size)
{
    const QScreen *screen = QGuiApplication::screenAt(position);
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    const QRect available = screen->availableGeometry();
    const int right = std::max(available.left(), available.right() - size.width());
    const int bottom = std::max(available.top(), available.bottom() - size.height());
    return {std::clamp(position.x(), available.left(), right),
            std::clamp(position.y(), available.top(), bottom)};
}

} // namespace penwick
