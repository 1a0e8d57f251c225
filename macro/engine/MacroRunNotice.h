#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QLabel;

namespace penwick {

/// Says that a macro runs and for how long, over the window that it runs on, and lets the person
/// stop it: with the button, with Escape, or by closing the notice. All of these emit `rejected`.
class MacroRunNotice final : public QDialog
{
    Q_OBJECT

public:
    /// \param since when the run began.
    MacroRunNotice(const QString &macroName, const QElapsedTimer &since, QWidget *window);

private:
    void showElapsed();

    QElapsedTimer m_since;
    QLabel *m_elapsed;
};

} // namespace penwick
