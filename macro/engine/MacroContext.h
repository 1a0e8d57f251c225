#pragma once

#include "text/Text.h"

#include <QDateTime>
#include <QLatin1StringView>
#include <QString>
#include <QTimeZone>

#include <variant>
#include <vector>

namespace penwick {

struct ContextEntry;

/// A tree of keyed values that can be written as JSON.
using ContextDictionary = std::vector<ContextEntry>;

struct ContextEntry
{
    QLatin1StringView key; ///< ASCII without quotes and backslashes; not owned.
    std::variant<bool, qint64, QString, Text, ContextDictionary> value;
};

/// The snapshot of its window that a macro receives, taken when it starts. A plain value; the texts
/// share their storage with the document.
///
/// Offsets count UTF-16 code units, lines count line feeds, columns and `characterCount` count
/// grapheme clusters. All values but the counts are 0-based.
struct MacroContext
{
    struct App
    {
        QString name;
        QString version;
        bool operator==(const App &) const = default;
    };

    /// The features that scripts can use.
    struct Capabilities
    {
        bool textEdit = true;
        bool selection = true;
        bool cursor = true;
        bool notifications = true;
        bool settingsPatch = false;
        bool fileAccess = false;
        bool clipboard = false;
        bool network = false;
        bool operator==(const Capabilities &) const = default;
    };

    struct Document
    {
        Text text;
        qint64 lineCount = 1; ///< The number of line feeds plus 1.
        qint64 characterCount = 0;
        QString newline;  ///< The same for every file, whatever its line endings are.
        QString encoding; ///< The same for every file.
        bool isModified = false;
        bool operator==(const Document &) const = default;
    };

    struct File
    {
        QString name;          ///< Empty for a document never saved.
        QString path;          ///< Always empty: scripts may not reach files.
        QString directoryPath; ///< Always empty.
        QString extension;     ///< Without the dot.
        bool existsOnDisk = false;
        bool operator==(const File &) const = default;
    };

    struct Selection
    {
        bool hasSelection = false;
        Text text;
        qint64 startOffset = 0;
        qint64 endOffset = 0;
        qint64 startLine = 0;
        qint64 startColumn = 0;
        qint64 endLine = 0;
        qint64 endColumn = 0;
        bool operator==(const Selection &) const = default;
    };

    struct Cursor
    {
        qint64 offset = 0;
        qint64 line = 0;
        qint64 column = 0;
        bool operator==(const Cursor &) const = default;
    };

    struct Editor
    {
        QString tabId;
        QString tabTitle;
        bool operator==(const Editor &) const = default;
    };

    struct DateTime
    {
        QString nowIso;   ///< Such as 2024-02-29T12:34:56+09:00; a final Z for offset 0.
        QString timezone; ///< IANA name.
        bool operator==(const DateTime &) const = default;
    };

    /// The values of its own macro that a script receives.
    struct Macro
    {
        QString id;
        QString name;
        bool operator==(const Macro &) const = default;
    };

    QString schemaVersion;
    App app;
    Capabilities capabilities;
    Document document;
    File file;
    Selection selection;
    Cursor cursor;
    Editor editor;
    DateTime dateTime;
    Macro macro;

    /// Returns the snapshot as scripts see it: every field and nothing else.
    [[nodiscard]] ContextDictionary toDictionary() const;

    bool operator==(const MacroContext &) const = default;
};

/// The state of an editor window that a context is built from.
struct EditorSnapshot
{
    Text text;
    qint64 selectionLocation = 0; ///< In UTF-16 code units, as is the length.
    qint64 selectionLength = 0;
    QString filePath; ///< Empty for a document never saved. The file is not read.
    bool isModified = false;
    QDateTime now;
    QTimeZone timeZone;
};

/// Builds the context of a macro that starts now.
/// \param macroId, macroName the values of `context.macro`.
[[nodiscard]] MacroContext
buildMacroContext(const EditorSnapshot &snapshot, const QString &macroId, const QString &macroName);

struct LineAndColumn
{
    qint64 line = 0;   ///< Line feeds before the offset.
    qint64 column = 0; ///< Grapheme clusters between the last of them and the offset.
    bool operator==(const LineAndColumn &) const = default;
};

/// Returns the position of an offset in UTF-16 code units; one past the end counts as the end.
/// O(log n).
[[nodiscard]] LineAndColumn lineAndColumn(qint64 offset, const Text &text);

} // namespace penwick
