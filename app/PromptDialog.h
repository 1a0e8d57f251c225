#pragma once

#include <QDialog>

namespace penwick {

/// A modal question with one field: title, message and field, then OK and Cancel in this order. Its
/// own texts come from the wording.
class PromptDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \param field owned by the dialog; gets the focus, and the message as its accessible name.
    PromptDialog(const QString &message, QWidget *field, QWidget *parent);
};

} // namespace penwick
