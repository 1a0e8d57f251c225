#pragma once

#include <QMessageBox>

namespace penwick {

/// A modal message that shows its texts as they are: no markup, no access keys, and the wording's
/// own buttons only.
class MessageBox final : public QMessageBox
{
    Q_OBJECT

public:
    /// \param text the message, also for the title bar and for assistive technology.
    MessageBox(Icon icon, const QString &text, QWidget *parent);

    /// Shows a second text, smaller, below the first one.
    void setInformation(const QString &text);

    /// \return the button, owned by the box.
    QPushButton *addTextButton(const QString &label, ButtonRole role);
};

} // namespace penwick
