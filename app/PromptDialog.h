#pragma once

#include <QDialog>

namespace penwick {

/// A modal question with one field: title, message, field, then OK and Cancel in this order. All
/// its texts come from the wording.
class PromptDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \param field taken over; it gets the focus, and the message names it.
    PromptDialog(const QString &message, QWidget *field, QWidget *parent);
};

} // namespace penwick
