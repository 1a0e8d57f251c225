#pragma once

#include "editor/TextDocument.h"

#include <QDialog>
#include <QPointer>

namespace penwick {

/// Blocks the application until the document's save has ended. Shown when a window is to be closed
/// whose text is still being written. It closes itself; Escape and its button cancel the save.
class SavingDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \param document its save is under way; held weakly.
    /// \param name the document's display name.
    SavingDialog(QWidget *parent, TextDocument *document, const QString &name);

    void reject() override;

    /// The error of the save, once the dialog has closed; empty when it succeeded.
    [[nodiscard]] const std::optional<DocumentError> &error() const { return m_error; }

private:
    QPointer<TextDocument> m_document;
    std::optional<DocumentError> m_error;
};

} // namespace penwick
