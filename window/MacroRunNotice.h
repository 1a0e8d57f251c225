#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QLabel;

namespace penwick {

/// The dialog over a window on which a macro runs. Shows the elapsed time and lets the user stop
/// the macro: with the button, with Escape, or by closing the notice. Each of these emits
/// `rejected`.
class MacroRunNotice final : public QDialog
{
    Q_OBJECT

public:
    /// \param since started when the run began.
    MacroRunNotice(const QString &macroName, const QElapsedTimer &since, QWidget *window);

protected:
    /// A key that does nothing here may be meant for the text: it makes a sound.
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showElapsed();

    QElapsedTimer m_since;
    QLabel *m_elapsed;
};

} // namespace penwick
