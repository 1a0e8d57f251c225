#pragma once

#include "editor/TextDocument.h"

#include <QDialog>
#include <QPointer>

namespace penwick {

/// Keeps the person from going on until the document's save is over: asked to close a window whose
/// text is being written, nothing else can be done. It closes itself; Escape and its button call
/// the save off.
class SavingDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \param document its save is under way; held weakly.
    /// \param name how the person knows it.
    SavingDialog(QWidget *parent, TextDocument *document, const QString &name);

    void reject() override;

    /// What came of the save, once the dialog has closed; empty when it succeeded.
    [[nodiscard]] const std::optional<DocumentError> &error() const { return m_error; }

private:
    QPointer<TextDocument> m_document;
    std::optional<DocumentError> m_error;
};

} // namespace penwick
