#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

class QPainter;

namespace penwick {

/// A thin ring within `rect` that says where the keyboard is.
void paintFocusRing(QPainter *painter, const QRect &rect, const QColor &color);

/// Marks the default button of a dialog while the keyboard is on it. Styles give it the look of one
/// that has the focus all the time, so that otherwise nobody sees when it really has it.
///
/// Make one per application; it works for all dialogs, the toolkit's own too.
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
