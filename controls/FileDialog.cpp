#include "controls/FileDialog.h"

#include "controls/MessageBox.h"
#include "wording/WordingLookup.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeView>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

bool askToReplace(QWidget *parent, const QString &name)
{
    MessageBox box(QMessageBox::Warning, wording::text(u"dialog.file.replace"_s, {name}), parent);
    const QPushButton *yes =
        box.addTextButton(wording::text(u"dialog.yes"_s), QMessageBox::YesRole);
    QPushButton *no = box.addTextButton(wording::text(u"dialog.no"_s), QMessageBox::NoRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

} // namespace

FileDialog::FileDialog(QWidget *parent, const QString &title, const QString &folder)
    : QFileDialog(parent, title, folder)
{
    fitColumns();
}

// Qt's default widths cut off sizes and dates.
void FileDialog::fitColumns()
{
    const auto *files = findChild<QTreeView *>(u"treeView"_s);
    if (files == nullptr)
        return; // A native dialog.

    enum Column { Name, Size, Kind, Modified };

    QHeaderView *header = files->header();
    header->setSectionHidden(Kind, true); // Of little use when every file is text.
    header->setStretchLastSection(false);
    header->setSectionResizeMode(Name, QHeaderView::Stretch);
    header->setSectionResizeMode(Size, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(Modified, QHeaderView::ResizeToContents);
}

QStringList FileDialog::chosenPaths() const
{
    return m_pathWithQuotes.isEmpty() ? selectedFiles() : QStringList{m_pathWithQuotes};
}

QString FileDialog::pathWithQuotes() const
{
    const auto *field = findChild<QLineEdit *>(u"fileNameEdit"_s);
    if (field == nullptr || !field->text().contains(u'"'))
        return {};
    const QString text = field->text();
    const QString path = directory().absoluteFilePath(text);
    const bool isListOfNames = text.startsWith(u'"') && text.endsWith(u'"');
    const bool mayBeNew = acceptMode() == AcceptSave && !isListOfNames;
    return mayBeNew || QFileInfo(path).isFile() ? path : QString();
}

void FileDialog::accept()
{
    const QString path = pathWithQuotes();
    if (path.isEmpty()) {
        QFileDialog::accept();
        return;
    }
    const QFileInfo info(path);
    if (acceptMode() == AcceptSave && info.exists() && !askToReplace(this, info.fileName()))
        return;
    m_pathWithQuotes = path;
    done(Accepted);
}

} // namespace penwick
