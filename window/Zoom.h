#pragma once

#include "preferences/Preferences.h"

#include <QObject>

class QWidget;

namespace penwick {

class TextView;

/// Changes the size of a view's text in steps of 10 %, by keys and by Ctrl+wheel. Caret and first
/// visible line stay. The choice applies to all views with a zoom and is a setting, `zoom`, in
/// percent; a value that is missing or not valid is 100.
class Zoom final : public QObject
{
    Q_OBJECT

public:
    /// \param view has the size of `preferences` already, see `pixels`; not owned, must outlive
    /// this. \param scope the parent of this; the keys work in its whole window. \param size of the
    /// text at 100 %, in logical pixels. \param preferences stores the choice; not owned, must
    /// outlive this.
    Zoom(TextView *view, QWidget *scope, int size, Preferences &preferences);

    /// \param size at 100 %, in logical pixels.
    [[nodiscard]] static int pixels(int size, const Preferences &preferences);

    /// False when `step` cannot change anything.
    [[nodiscard]] bool canStep(int steps) const;
    /// Makes the text larger, or smaller when negative, as far as the limits allow.
    void step(int steps);
    /// Back to 100 %.
    void reset();

    /// Sets the size at 100 % for the next steps, in logical pixels; the view's font stays.
    void setSize(int size) { m_size = size; }

    bool eventFilter(QObject *object, QEvent *event) override;

private:
    [[nodiscard]] int steppedBy(int steps) const;

    Preferences &m_preferences;
    int m_size;
    int m_wheelAngle = 0; // Turned since the last step, in eighths of a degree.
};

} // namespace penwick
