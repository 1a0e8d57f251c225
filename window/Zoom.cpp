#include "window/Zoom.h"

#include "command/CommandShortcut.h"
#include "platform/desktop/SystemFonts.h"
#include "view/TextView.h"

#include <QShortcut>
#include <QWheelEvent>

#include <algorithm>

namespace penwick {

namespace {

constexpr int kWhole = 100;
constexpr int kStep = 10;

} // namespace

Zoom::Zoom(TextView *view, QWidget *scope, int size, Preferences &preferences)
    : QObject(scope)
    , m_preferences(preferences)
    , m_size(size)
{
    const auto connectKey = [this, scope](CommandId id, const auto &action) {
        connect(makeShortcut(id, scope), &QShortcut::activated, this, action);
    };
    connectKey(CommandId::ZoomIn, [this] { step(1); });
    connectKey(CommandId::ZoomOut, [this] { step(-1); });
    connectKey(CommandId::ZoomReset, [this] { reset(); });
    view->viewport()->installEventFilter(this);
    Preferences::observe(PreferenceId::Zoom, this, [this, view] {
        QFont font = view->font();
        setFontPixels(font, pixels(m_size, m_preferences));
        view->setFont(font);
    });
}

int Zoom::pixels(int size, const Preferences &preferences)
{
    return (size * preferences.number(PreferenceId::Zoom) + kWhole / 2) / kWhole;
}

bool Zoom::canStep(int steps) const
{
    return steppedBy(steps) != m_preferences.number(PreferenceId::Zoom);
}

void Zoom::step(int steps)
{
    m_preferences.setNumber(PreferenceId::Zoom, steppedBy(steps));
}

void Zoom::reset()
{
    m_preferences.setNumber(PreferenceId::Zoom, kWhole);
}

int Zoom::steppedBy(int steps) const
{
    const Preference &zoom = preference(PreferenceId::Zoom);
    return std::clamp(
        m_preferences.number(PreferenceId::Zoom) + steps * kStep, zoom.smallest, zoom.largest);
}

bool Zoom::eventFilter(QObject * /*object*/, QEvent *event)
{
    if (event->type() != QEvent::Wheel)
        return false;
    const auto *wheel = static_cast<QWheelEvent *>(event);
    if (wheel->modifiers() != Qt::ControlModifier) {
        m_wheelAngle = 0;
        return false;
    }
    m_wheelAngle += wheel->angleDelta().y();
    const int steps = m_wheelAngle / QWheelEvent::DefaultDeltasPerStep;
    m_wheelAngle -= steps * QWheelEvent::DefaultDeltasPerStep;
    if (steps != 0)
        step(steps);
    return true;
}

} // namespace penwick
