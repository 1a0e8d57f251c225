#pragma once

#include <QProxyStyle>

namespace penwick {

/// Draws a menu bar and its menus in the application's style, but a menu that is longer than the
/// screen scrolls instead of getting more columns, and the current item of a bar that the keyboard
/// controls is highlighted even while its menu is closed.
class MenuStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    /// \param parent owns the style; not null.
    explicit MenuStyle(QObject *parent);

    void drawControl(ControlElement element,
                     const QStyleOption *option,
                     QPainter *painter,
                     const QWidget *widget) const override;

    int styleHint(StyleHint hint,
                  const QStyleOption *option,
                  const QWidget *widget,
                  QStyleHintReturn *returnData) const override;
};

} // namespace penwick
