#pragma once

#include "preferences/Preferences.h"

#include <QList>
#include <QString>
#include <QWidget>

#include <functional>

namespace penwick {

class TextView;

/// A part of a `HintLine`.
struct Hint
{
    QString text;              ///< One line.
    QString toolTip;           ///< Escaped; may be empty.
    std::function<void()> run; ///< Called after a click, in a later turn of the event loop.
};

/// A quiet line at the bottom of an empty text that says how to begin. It is not part of the text,
/// but the description of the view for assistive technology. It takes no focus. It removes itself
/// with the first key, composition or change of the text. Hidden while the setting `ShowsHint` is
/// off.
class HintLine final : public QWidget
{
    Q_OBJECT

public:
    /// \param view has an empty text; its viewport is the parent of this.
    /// \param hints called now and at each `refresh`. What does not fit is left out from the end.
    /// \param preferences not owned; must outlive this.
    HintLine(TextView *view,
             std::function<QList<Hint>()> hints,
             const Preferences &preferences = Preferences::standard());

    void refresh();
    /// Hides the line, and deletes it later.
    void finish();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void place();
    [[nodiscard]] QRect rectOf(int index) const;
    [[nodiscard]] int indexAt(QPoint point) const;

    TextView *m_view;
    std::function<QList<Hint>()> m_makeHints;
    const Preferences &m_preferences;
    QList<Hint> m_hints;
    QList<int> m_widths;    // Of the whole texts, in logical pixels.
    QList<QString> m_shown; // The texts of the hints that fit, the last one cut.
    int m_pressed = -1;
};

} // namespace penwick
