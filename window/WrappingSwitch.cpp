#include "window/WrappingSwitch.h"

#include "view/TextView.h"

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const QString kOff = u"off"_s;
const QString kColumn = u"column"_s;

} // namespace

WrappingSwitch::WrappingSwitch(TextView *view, QObject *scope, Preferences &preferences)
    : QObject(scope)
    , m_view(view)
    , m_preferences(preferences)
    , m_lastOn(preference(PreferenceId::Wrapping).standard.toString())
{
    for (const PreferenceId id : {PreferenceId::Wrapping, PreferenceId::WrapColumn})
        Preferences::observe(id, this, [this] { apply(); });
    apply();
}

bool WrappingSwitch::isOn() const
{
    return m_preferences.text(PreferenceId::Wrapping) != kOff;
}

void WrappingSwitch::toggle()
{
    m_preferences.setText(PreferenceId::Wrapping, isOn() ? kOff : m_lastOn);
}

void WrappingSwitch::apply()
{
    const QString value = m_preferences.text(PreferenceId::Wrapping);
    if (value != kOff)
        m_lastOn = value;
    const auto wrapping = value == kOff      ? TextView::Wrapping::Off
                          : value == kColumn ? TextView::Wrapping::Column
                                             : TextView::Wrapping::Window;
    m_view->setWrapping(wrapping, m_preferences.number(PreferenceId::WrapColumn));
}

} // namespace penwick
