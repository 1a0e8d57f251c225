#include "app/WordingTranslator.h"

#include "wording/WordingLookup.h"

#include <QHash>

namespace penwick {

namespace {

struct Row
{
    const char *sourceText;
    QStringView key;
    QStringView defaultText; // Empty when the built-in table has the key.
};

// clang-format off
constexpr Row kRows[] = {
    {"Undo", u"menu.edit.undo", u""},
    {"&Undo", u"menu.edit.undo", u""},
    {"Redo", u"menu.edit.redo", u""},
    {"&Redo", u"menu.edit.redo", u""},
    {"Cu&t", u"menu.edit.cut", u""},
    {"&Copy", u"menu.edit.copy", u""},
    {"&Paste", u"menu.edit.paste", u""},
    {"Delete", u"common.delete", u""},
    {"&Delete", u"common.delete", u""},
    {"Select All", u"dialog.selectAll", u"すべてを選択"},
    {"&Select All", u"dialog.selectAll", u"すべてを選択"},
    {"Copy &Link Location", u"dialog.copyLink", u"リンクをコピー"},
    {"OK", u"common.ok", u""},
    {"&OK", u"common.ok", u""},
    {"Cancel", u"common.cancel", u""},
    {"&Cancel", u"common.cancel", u""},
    {"Save", u"common.save", u""},
    {"&Save", u"common.save", u""},
    {"Close", u"common.close", u""},
    {"&Close", u"common.close", u""},
    {"Open", u"dialog.open", u"開く"},
    {"&Open", u"dialog.open", u"開く"},
    {"&Choose", u"dialog.choose", u"選択"},
    {"&Yes", u"dialog.yes", u"はい"},
    {"&No", u"dialog.no", u"いいえ"},
    {"Show Details...", u"dialog.showDetails", u"詳細を表示…"},
    {"Hide Details...", u"dialog.hideDetails", u"詳細を隠す…"},
    {"Look in:", u"dialog.file.lookIn", u"場所:"},
    {"Back", u"dialog.file.back", u"戻る"},
    {"Go back", u"dialog.file.back", u"戻る"},
    {"Forward", u"dialog.file.forward", u"進む"},
    {"Go forward", u"dialog.file.forward", u"進む"},
    {"Parent Directory", u"dialog.file.parentFolder", u"上のフォルダ"},
    {"Go to the parent directory", u"dialog.file.parentFolder", u"上のフォルダ"},
    {"Create New Folder", u"dialog.file.newFolder", u"新規フォルダ"},
    {"Create a New Folder", u"dialog.file.newFolder", u"新規フォルダ"},
    {"&New Folder", u"dialog.file.newFolder", u"新規フォルダ"},
    {"New Folder", u"dialog.file.newFolder", u"新規フォルダ"},
    {"List View", u"dialog.file.listView", u"リスト表示"},
    {"Change to list view mode", u"dialog.file.listView", u"リスト表示"},
    {"Detail View", u"dialog.file.detailView", u"詳細表示"},
    {"Change to detail view mode", u"dialog.file.detailView", u"詳細表示"},
    {"Sidebar", u"dialog.file.sidebar", u"サイドバー"},
    {"List of places and bookmarks", u"dialog.file.places", u"よく使う場所"},
    {"Files", u"dialog.file.files", u"ファイル"},
    {"Files of type:", u"dialog.file.type", u"種類:"},
    {"File &name:", u"dialog.file.name", u"ファイル名:"},
    {"Directory:", u"dialog.file.directory", u"フォルダ:"},
    {"Directories", u"dialog.file.directories", u"フォルダ"},
    {"All Files (*)", u"dialog.file.allFiles", u"すべてのファイル (*)"},
    {"Save As", u"dialog.saveTitle", u"別名で保存"},
    {"Recent Places", u"dialog.file.recentPlaces", u"最近使った場所"},
    {"Computer", u"dialog.file.computer", u"コンピュータ"},
    {"&Rename", u"dialog.file.rename", u"名前を変更"},
    {"Remove", u"dialog.file.remove", u"一覧から除く"},
    {"Show ", u"dialog.file.show", u"表示:"},
    {"Show &hidden files", u"dialog.file.showHidden", u"隠しファイルを表示"},
    {"%1 already exists.\nDo you want to replace it?", u"dialog.file.replace", u"「%1」はすでにあります。\n置き換えますか？"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.", u"dialog.file.notFound", u"%1\nファイルが見つかりません。\nファイル名を確かめてください。"},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.", u"dialog.file.folderNotFound", u"%1\nフォルダが見つかりません。\nフォルダ名を確かめてください。"},
    {"'%1' is write protected.\nDo you want to delete it anyway?", u"dialog.file.deleteProtected", u"「%1」は書き込みが禁止されています。\nそれでも削除しますか？"},
    {"Are you sure you want to delete '%1'?", u"dialog.file.delete", u"「%1」を削除しますか？"},
    {"Could not delete directory.", u"dialog.file.deleteFailed", u"フォルダを削除できませんでした。"},
    {"Name", u"dialog.file.columnName", u"名前"},
    {"Size", u"dialog.file.columnSize", u"サイズ"},
    {"Type", u"dialog.file.columnType", u"種類"},
    {"Kind", u"dialog.file.columnType", u"種類"},
    {"Date Modified", u"dialog.file.columnModified", u"更新日時"},
    {"Folder", u"dialog.file.folder", u"フォルダ"},
    {"File", u"dialog.file.file", u"ファイル"},
    {"Drive", u"dialog.file.drive", u"ドライブ"},
    {"Unknown", u"dialog.file.unknown", u"不明"},
    {"Scroll here", u"dialog.scroll.here", u"ここにスクロール"},
    {"Left edge", u"dialog.scroll.leftEdge", u"左端"},
    {"Right edge", u"dialog.scroll.rightEdge", u"右端"},
    {"Top", u"dialog.scroll.top", u"先頭"},
    {"Bottom", u"dialog.scroll.bottom", u"末尾"},
    {"Page left", u"dialog.scroll.pageLeft", u"1ページ左へ"},
    {"Page right", u"dialog.scroll.pageRight", u"1ページ右へ"},
    {"Page up", u"dialog.scroll.pageUp", u"前のページ"},
    {"Page down", u"dialog.scroll.pageDown", u"次のページ"},
    {"Scroll left", u"dialog.scroll.left", u"左へスクロール"},
    {"Scroll right", u"dialog.scroll.right", u"右へスクロール"},
    {"Scroll up", u"dialog.scroll.up", u"上へスクロール"},
    {"Scroll down", u"dialog.scroll.down", u"下へスクロール"},
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

WordingTranslator::WordingTranslator(QObject *parent)
    : QTranslator(parent)
{
}

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
    QString text = wording::text(row->key.toString(), row->defaultText.toString());
    if (QByteArrayView(sourceText).contains('&'))
        text.replace(u'&', QStringLiteral("&&")); // The text has no access keys of its own.
    return text;
}

} // namespace penwick
