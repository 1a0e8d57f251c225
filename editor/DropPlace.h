#pragma once

#include "editor/TextViewport.h"

#include <QBasicTimer>
#include <QObject>
#include <QPointF>

#include <functional>
#include <optional>

namespace penwick {

/// Where in a viewport the text of a drag would be dropped. While the mouse rests near the upper or
/// lower edge, it scrolls.
class DropPlace final : public QObject
{
public:
    /// \param viewport not owned; must outlive this object.
    /// \param changed called when the place or what is seen changed.
    DropPlace(TextViewport *viewport, std::function<void()> changed);

    /// The mouse is at `point`, in a viewport `height` logical pixels high.
    void moveTo(QPointF point, qreal height);
    /// No drag is over the viewport any more.
    void clear();

    /// None while no drag is over the viewport.
    [[nodiscard]] std::optional<TextCaret> caret() const { return m_caret; }

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    [[nodiscard]] qreal scrollDistance() const;

    TextViewport *m_viewport;
    std::function<void()> m_changed;
    std::optional<TextCaret> m_caret;
    QPointF m_point;
    qreal m_height = 0;
    QBasicTimer m_scrollTimer;
};

} // namespace penwick
