#pragma once

#include <QFileDialog>

namespace penwick {

/// Qt's file dialog, with columns as wide as their contents and support for names that contain
/// quotes: quotes are special only where the whole field is a list of quoted names.
class FileDialog final : public QFileDialog
{
    Q_OBJECT

public:
    FileDialog(QWidget *parent, const QString &title, const QString &folder);

    /// Returns the chosen paths after the dialog was accepted. Use this instead of `selectedFiles`,
    /// which takes quotes in a name for delimiters.
    [[nodiscard]] QStringList chosenPaths() const;

    void accept() override;

private:
    void fitColumns();
    /// Returns the path in the name field if all of it is one name with quotes; empty otherwise.
    [[nodiscard]] QString pathWithQuotes() const;

    QString m_pathWithQuotes;
};

} // namespace penwick
