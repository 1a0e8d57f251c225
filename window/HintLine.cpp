#include "window/HintLine.h"

#include "command/ReadablePlaceholder.h"
#include "platform/settings/NotificationCenter.h"
#include "view/TextView.h"
#include "wording/UIWordingProfileManager.h"

#include <QFontDatabase>
#include <QHelpEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMargin = 10; // In logical pixels, like the next.
constexpr int kGap = 28;
constexpr int kLeastWidth = 100; // Less of a text that is cut says nothing.

bool isModifier(int key)
{
    return key == Qt::Key_Control || key == Qt::Key_Shift || key == Qt::Key_Alt ||
           key == Qt::Key_Meta || key == Qt::Key_AltGr;
}

/// True for events that start the user's work in the text.
bool startsWork(const QEvent &event)
{
    if (event.type() == QEvent::KeyPress)
        return !isModifier(static_cast<const QKeyEvent &>(event).key());
    if (event.type() != QEvent::InputMethod)
        return false;
    const auto &input = static_cast<const QInputMethodEvent &>(event);
    return !input.preeditString().isEmpty() || !input.commitString().isEmpty();
}

} // namespace

HintLine::HintLine(TextView *view,
                   std::function<QList<Hint>()> hints,
                   const Preferences &preferences)
    : QWidget(view->viewport())
    , m_view(view)
    , m_makeHints(std::move(hints))
    , m_preferences(preferences)
{
    setObjectName(u"hintLine"_s);
    setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont)); // Not that of the text.
    setCursor(Qt::PointingHandCursor);
    view->installEventFilter(this);
    view->viewport()->installEventFilter(this);
    connect(view->textStorage(), &TextStorage::changed, this, &HintLine::finish);
    Preferences::observe(PreferenceId::ShowsHint, this, [this] { refresh(); });
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { refresh(); });
    refresh();
}

void HintLine::refresh()
{
    const bool isWanted = m_view != nullptr && m_preferences.isOn(PreferenceId::ShowsHint);
    m_hints = isWanted ? m_makeHints() : QList<Hint>();
    QStringList texts;
    m_widths.clear(); // Measured once: each resize places the texts anew.
    for (const Hint &hint : std::as_const(m_hints)) {
        texts << hint.text;
        m_widths << fontMetrics().horizontalAdvance(hint.text) + 1;
    }
    if (m_view != nullptr)
        m_view->setAccessibleDescription(texts.join(u", "_s));
    place();
    setVisible(!m_hints.isEmpty());
    update();
}

void HintLine::finish()
{
    if (m_view == nullptr)
        return;
    m_view->setAccessibleDescription({});
    m_view = nullptr;
    hide();
    deleteLater();
}

/// Cuts the texts to the width of the text view, and moves the line to the bottom there.
void HintLine::place()
{
    const QSize room = parentWidget()->size() - QSize(2 * kMargin, 2 * kMargin);
    m_shown.clear();
    int right = 0;
    for (qsizetype i = 0; i < m_hints.size(); ++i) {
        const QString &text = m_hints.at(i).text;
        const int left = m_shown.isEmpty() ? 0 : right + kGap;
        const int wanted = m_widths.at(i);
        const int width = std::min(wanted, room.width() - left);
        if (width < std::min(wanted, kLeastWidth))
            break;
        m_shown << (width < wanted ? fontMetrics().elidedText(text, Qt::ElideMiddle, width) : text);
        right = left + width;
    }
    const int height = fontMetrics().height();
    const int top = parentWidget()->height() - kMargin - height;
    setGeometry(kMargin, top, right, height);
}

QRect HintLine::rectOf(int index) const
{
    int left = 0;
    for (int i = 0; i < index; ++i)
        left += fontMetrics().horizontalAdvance(m_shown.at(i)) + 1 + kGap;
    return {left, 0, fontMetrics().horizontalAdvance(m_shown.at(index)) + 1, height()};
}

/// Returns the hint before the gap at the point, too; -1 when there is none.
int HintLine::indexAt(QPoint point) const
{
    int index = static_cast<int>(m_shown.size()) - 1;
    while (index > 0 && point.x() < rectOf(index).left())
        --index;
    return rect().contains(point) ? index : -1;
}

bool HintLine::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const int index = indexAt(help->pos());
        QToolTip::showText(
            help->globalPos(), index < 0 ? QString() : m_hints.at(index).toolTip, this);
        return true;
    }
    return QWidget::event(event);
}

bool HintLine::eventFilter(QObject *object, QEvent *event)
{
    if (object == m_view && startsWork(*event))
        finish();
    else if (object != m_view && event->type() == QEvent::Resize)
        place();
    return false;
}

void HintLine::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setPen(quietInk(palette().color(QPalette::Text), palette().color(QPalette::Base)));
    for (int i = 0; i < static_cast<int>(m_shown.size()); ++i)
        painter.drawText(rectOf(i), Qt::AlignVCenter | Qt::TextSingleLine, m_shown.at(i));
}

void HintLine::mousePressEvent(QMouseEvent *event)
{
    m_pressed = event->button() == Qt::LeftButton ? indexAt(event->position().toPoint()) : -1;
    if (m_pressed < 0)
        event->ignore(); // The text gets it.
}

void HintLine::mouseReleaseEvent(QMouseEvent *event)
{
    const int pressed = std::exchange(m_pressed, -1);
    if (pressed >= 0 && pressed == indexAt(event->position().toPoint()))
        QMetaObject::invokeMethod(m_view, m_hints.at(pressed).run, Qt::QueuedConnection);
}

} // namespace penwick
