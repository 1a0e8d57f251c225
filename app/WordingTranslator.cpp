#include "app/WordingTranslator.h"

#include "wording/WordingLookup.h"

#include <QHash>

namespace penwick {

namespace {

struct Row
{
    const char *sourceText;
    QStringView key;
};

// clang-format off
constexpr Row kRows[] = {
    {"Undo", u"menu.edit.undo"},
    {"&Undo", u"menu.edit.undo"},
    {"Redo", u"menu.edit.redo"},
    {"&Redo", u"menu.edit.redo"},
    {"Cu&t", u"menu.edit.cut"},
    {"&Copy", u"menu.edit.copy"},
    {"&Paste", u"menu.edit.paste"},
    {"Delete", u"common.delete"},
    {"&Delete", u"common.delete"},
    {"Select All", u"dialog.selectAll"},
    {"&Select All", u"dialog.selectAll"},
    {"Copy &Link Location", u"dialog.copyLink"},
    {"OK", u"common.ok"},
    {"&OK", u"common.ok"},
    {"Cancel", u"common.cancel"},
    {"&Cancel", u"common.cancel"},
    {"Save", u"common.save"},
    {"&Save", u"common.save"},
    {"Close", u"common.close"},
    {"&Close", u"common.close"},
    {"Open", u"dialog.open"},
    {"&Open", u"dialog.open"},
    {"&Choose", u"dialog.choose"},
    {"&Yes", u"dialog.yes"},
    {"&No", u"dialog.no"},
    {"Show Details...", u"dialog.showDetails"},
    {"Hide Details...", u"dialog.hideDetails"},
    {"Look in:", u"dialog.file.lookIn"},
    {"Back", u"dialog.file.back"},
    {"Go back", u"dialog.file.back"},
    {"Forward", u"dialog.file.forward"},
    {"Go forward", u"dialog.file.forward"},
    {"Parent Directory", u"dialog.file.parentFolder"},
    {"Go to the parent directory", u"dialog.file.parentFolder"},
    {"Create New Folder", u"dialog.file.newFolder"},
    {"Create a New Folder", u"dialog.file.newFolder"},
    {"&New Folder", u"dialog.file.newFolder"},
    {"New Folder", u"dialog.file.newFolder"},
    {"List View", u"dialog.file.listView"},
    {"Change to list view mode", u"dialog.file.listView"},
    {"Detail View", u"dialog.file.detailView"},
    {"Change to detail view mode", u"dialog.file.detailView"},
    {"Sidebar", u"dialog.file.sidebar"},
    {"List of places and bookmarks", u"dialog.file.places"},
    {"Files", u"dialog.file.files"},
    {"Files of type:", u"dialog.file.type"},
    {"File &name:", u"dialog.file.name"},
    {"Directory:", u"dialog.file.directory"},
    {"Directories", u"dialog.file.directories"},
    {"All Files (*)", u"dialog.file.allFiles"},
    {"Save As", u"dialog.saveTitle"},
    {"Recent Places", u"dialog.file.recentPlaces"},
    {"Computer", u"dialog.file.computer"},
    {"&Rename", u"dialog.file.rename"},
    {"Remove", u"dialog.file.remove"},
    {"Show ", u"dialog.file.show"},
    {"Show &hidden files", u"dialog.file.showHidden"},
    {"%1 already exists.\nDo you want to replace it?", u"dialog.file.replace"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.", u"dialog.file.notFound"},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.", u"dialog.file.folderNotFound"},
    {"'%1' is write protected.\nDo you want to delete it anyway?", u"dialog.file.deleteProtected"},
    {"Are you sure you want to delete '%1'?", u"dialog.file.delete"},
    {"Could not delete directory.", u"dialog.file.deleteFailed"},
    {"Name", u"dialog.file.columnName"},
    {"Size", u"dialog.file.columnSize"},
    {"Type", u"dialog.file.columnType"},
    {"Kind", u"dialog.file.columnType"},
    {"Date Modified", u"dialog.file.columnModified"},
    {"Folder", u"dialog.file.folder"},
    {"File", u"dialog.file.file"},
    {"Drive", u"dialog.file.drive"},
    {"Unknown", u"dialog.file.unknown"},
    {"Scroll here", u"dialog.scroll.here"},
    {"Left edge", u"dialog.scroll.leftEdge"},
    {"Right edge", u"dialog.scroll.rightEdge"},
    {"Top", u"dialog.scroll.top"},
    {"Bottom", u"dialog.scroll.bottom"},
    {"Page left", u"dialog.scroll.pageLeft"},
    {"Page right", u"dialog.scroll.pageRight"},
    {"Page up", u"dialog.scroll.pageUp"},
    {"Page down", u"dialog.scroll.pageDown"},
    {"Scroll left", u"dialog.scroll.left"},
    {"Scroll right", u"dialog.scroll.right"},
    {"Scroll up", u"dialog.scroll.up"},
    {"Scroll down", u"dialog.scroll.down"},
};

// clang-format on

const QHash<QByteArrayView, const Row *> &rowsBySource()
{
    static const auto kRowsBySource = [] {
        QHash<QByteArrayView, const Row *> rows;
        for (const Row &row : kRows)
            rows.insert(row.sourceText, &row);
        return rows;
    }();
    return kRowsBySource;
}

} // namespace

QString WordingTranslator::translate(const char *context,
                                     const char *sourceText,
                                     const char * /*disambiguation*/,
                                     int /*n*/) const
{
    // Translate the toolkit's classes only; penwick's own texts do not come through here.
    if (context == nullptr || context[0] != 'Q' || sourceText == nullptr)
        return {};
    const Row *row = rowsBySource().value(QByteArrayView(sourceText));
    if (row == nullptr)
        return {};
    QString text = wording::text(row->key.toString());
    if (QByteArrayView(sourceText).contains('&'))
        text.replace(u'&', QStringLiteral("&&")); // The text has no access keys of its own.
    return text;
}

} // namespace penwick
