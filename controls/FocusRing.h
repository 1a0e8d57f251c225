#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

class QPainter;

namespace penwick {

/// Paints a thin ring within `rect` that shows the keyboard focus.
void paintFocusRing(QPainter *painter, const QRect &rect, const QColor &color);

/// Marks the default button of a dialog while it has the focus. Styles draw a default button as if
/// it always had the focus, which hides whether it really does.
///
/// Create one per application; it works for all dialogs, including Qt's own.
class DefaultButtonFocus final : public QObject
{
    Q_OBJECT

public:
    explicit DefaultButtonFocus(QObject *parent = nullptr);

private:
    void focusChanged(QWidget *now);

    QPointer<QWidget> m_ring; // A child of the button.
};

} // namespace penwick
