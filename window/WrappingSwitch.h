#pragma once

#include "preferences/Preferences.h"

#include <QObject>

namespace penwick {

class TextView;

/// Wraps the lines of a text view as the settings `wrapping` and `wrapColumn` say, and switches
/// wrapping off and on for all views.
class WrappingSwitch final : public QObject
{
    Q_OBJECT

public:
    /// \param view not owned; must outlive this.
    /// \param scope the parent of this.
    /// \param preferences not owned, must outlive this.
    WrappingSwitch(TextView *view, QObject *scope, Preferences &preferences);

    /// True when lines wrap, at the window or at a column.
    [[nodiscard]] bool isOn() const;
    /// Switching on brings back where lines wrapped before, as far as this object has seen it.
    void toggle();

private:
    void apply();

    TextView *m_view;
    Preferences &m_preferences;
    QString m_lastOn; // The latest value that wraps.
};

} // namespace penwick
