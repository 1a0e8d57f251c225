#include "window/Zoom.h"

#include "command/CommandShortcut.h"
#include "platform/desktop/SystemFonts.h"
#include "platform/settings/NotificationCenter.h"
#include "view/TextView.h"

#include <QShortcut>
#include <QWheelEvent>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const QString kZoomSetting = u"zoom"_s;
const QString kZoomDidChange = u"ZoomDidChange"_s;
constexpr int kWhole = 100;
constexpr int kStep = 10;

} // namespace

Zoom::Zoom(TextView *view, QWidget *scope, int size, UserDefaults &defaults)
    : QObject(scope)
    , m_defaults(defaults)
{
    const auto connectKey = [this, scope](CommandId id, const auto &action) {
        connect(makeShortcut(id, scope), &QShortcut::activated, this, action);
    };
    connectKey(CommandId::ZoomIn, [this] { step(1); });
    connectKey(CommandId::ZoomOut, [this] { step(-1); });
    connectKey(CommandId::ZoomReset, [this] { reset(); });
    view->viewport()->installEventFilter(this);
    NotificationCenter::defaultCenter().addObserver(kZoomDidChange, this, [this, view, size] {
        QFont font = view->font();
        setFontPixels(font, pixels(size, m_defaults));
        view->setFont(font);
    });
}

int Zoom::percentIn(const UserDefaults &defaults)
{
    bool isNumber = false;
    const int percent = defaults.string(kZoomSetting).value_or(QString()).toInt(&isNumber);
    return isNumber && percent >= kSmallest && percent <= kLargest ? percent : kWhole;
}

int Zoom::pixels(int size, const UserDefaults &defaults)
{
    return (size * percentIn(defaults) + kWhole / 2) / kWhole;
}

bool Zoom::canStep(int steps) const
{
    return percentIn(m_defaults) != (steps < 0 ? kSmallest : kLargest);
}

void Zoom::step(int steps)
{
    setPercent(std::clamp(percentIn(m_defaults) + steps * kStep, kSmallest, kLargest));
}

void Zoom::reset()
{
    setPercent(kWhole);
}

void Zoom::setPercent(int percent)
{
    if (percent == percentIn(m_defaults))
        return;
    m_defaults.setString(kZoomSetting, QString::number(percent));
    NotificationCenter::defaultCenter().post(kZoomDidChange);
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
