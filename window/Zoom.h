#pragma once

#include "platform/settings/UserDefaults.h"

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
    static constexpr int kSmallest = 50;
    static constexpr int kLargest = 300;

    /// \param view has the size of `defaults` already, see `pixels`; not owned, must outlive this.
    /// \param scope the parent of this; the keys work in its whole window.
    /// \param size of the text at 100 %, in logical pixels.
    /// \param defaults stores the choice; not owned, must outlive this.
    Zoom(TextView *view, QWidget *scope, int size, UserDefaults &defaults);

    [[nodiscard]] static int percentIn(const UserDefaults &defaults);
    /// \param size at 100 %, in logical pixels.
    [[nodiscard]] static int pixels(int size, const UserDefaults &defaults);

    /// False when `step` cannot change anything.
    [[nodiscard]] bool canStep(int steps) const;
    /// Makes the text larger, or smaller when negative, as far as the limits allow.
    void step(int steps);
    /// Back to 100 %.
    void reset();

    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void setPercent(int percent);

    UserDefaults &m_defaults;
    int m_wheelAngle = 0; // Turned since the last step, in eighths of a degree.
};

} // namespace penwick
