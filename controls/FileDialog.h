#pragma once

#include <QFileDialog>

namespace penwick {

/// Qt's file dialog with columns as wide as their contents, and for names that hold quotes: those
/// are only special where the whole field is a list of quoted names.
class FileDialog final : public QFileDialog
{
    Q_OBJECT

public:
    FileDialog(QWidget *parent, const QString &title, const QString &folder);

    /// The chosen paths once the dialog was accepted. Takes the place of `selectedFiles`, which
    /// would read quotes in a name as its ends.
    [[nodiscard]] QStringList chosenPaths() const;

    void accept() override;

private:
    void fitColumns();
    /// The path that the field names when all of it is one name with quotes; empty otherwise.
    [[nodiscard]] QString pathWithQuotes() const;

    QString m_pathWithQuotes;
};

} // namespace penwick
