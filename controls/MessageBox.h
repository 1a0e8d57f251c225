#pragma once

#include <QMessageBox>

namespace penwick {

/// A modal message box that shows its texts literally, without markup or access keys, and has only
/// the buttons that are added to it. Each text is cut as by `cutText` at `kLongestShown`.
class MessageBox final : public QMessageBox
{
    Q_OBJECT

public:
    /// \param text the message. The title bar shows the application's name.
    MessageBox(Icon icon, const QString &text, QWidget *parent);

    /// Shows a second text below the first one.
    void setInformation(const QString &text);

    /// \return the button, owned by the box.
    QPushButton *addTextButton(const QString &label, ButtonRole role);
};

} // namespace penwick
