#pragma once

#include "macro/library/Macro.h"
#include "platform/files/FileVersion.h"
#include "platform/files/StoreLock.h"
#include "platform/json/JsonRecord.h"
#include "platform/settings/Timestamp.h"
#include "platform/settings/UserDefaults.h"
#include "platform/settings/Uuid.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Owns all macros of the user as one ordered list, mirrored in `macros.json`: each operation that
/// changes the list saves the whole file before it returns. Use it from the main thread. A file
/// failure is written to standard output; the list keeps the change.
///
/// Several processes may share the file. Each change locks the file, loads what another process
/// wrote, applies the change and saves the result, while other processes wait. When the lock cannot
/// be taken in time (see `StoreLock`), the change counts as a file failure.
class MacroManager final : public QObject
{
    Q_OBJECT

public:
    /// Creates the folder if it is missing and loads the file.
    /// \param supportFolder absolute path.
    /// \param defaults not owned; must outlive this.
    MacroManager(QString supportFolder,
                 UserDefaults &defaults,
                 Clock clock = systemClock(),
                 IdSource ids = randomIds(),
                 QObject *parent = nullptr);

    /// The application's store, in the data folder. Created on first use; exists until the process
    /// ends.
    [[nodiscard]] static MacroManager &shared();

    /// In list order, including disabled macros.
    [[nodiscard]] const QList<Macro> &macros() const { return m_macros; }

    [[nodiscard]] QUrl supportDirectoryURL() const;
    [[nodiscard]] QUrl macrosFileURL() const;

    /// Creates the folder if nothing exists at its path. A failure is logged.
    void ensureSupportDirectory();
    /// Replaces the list by the file's macros in ascending `sortOrder`; equal ones stay in file
    /// order. If the file is missing, or cannot be read (which is logged), the list stays as it is.
    void loadMacros();
    /// Writes the whole list to the file. A failure is logged.
    void saveMacros();
    /// Calls `loadMacros` if another program has changed the file since it was last read or written
    /// here. Every operation that changes the list calls this first, so that it changes the current
    /// list.
    void reloadIfChanged();

    /// Returns the first macro with exactly this id.
    [[nodiscard]] std::optional<Macro> macroWithId(const QString &id) const;

    /// Appends the macro with new times and the next `sortOrder`; keeps its other fields.
    void addMacro(Macro macro);
    /// Replaces the first macro with the same id, and sets a new `updatedAt`. If there is none,
    /// does nothing and does not save.
    void updateMacro(Macro macro);
    /// Removes every macro with this id.
    void deleteMacro(const QString &id);
    /// Moves the first macro with this id to another place in the list. The list's values of
    /// `sortOrder` stay in their order, so each macro between the two places takes its neighbour's.
    /// Without such a macro, or at its place, does nothing and does not save.
    /// \param place in the list after the move, 0-based; clamped to the list.
    void moveMacro(const QString &id, qsizetype place);
    /// Appends a copy with a new id, new times, the next `sortOrder`, a changed name and the source
    /// `user`.
    void duplicateMacro(Macro macro);
    /// Appends the macro of an exported file, enabled, with new times and the next `sortOrder`. An
    /// id that is taken is replaced by a new one; a name that is taken gets the suffix " のコピー".
    /// Returns the id. On an error nothing has changed.
    /// \param data the bytes of the file.
    [[nodiscard]] tl::expected<QString, JsonRecordError> importMacro(QByteArrayView data);
    /// Appends the built-in macros whose ids are not in the list, named in the active wording.
    /// Saves only if there were any.
    void installBuiltInMacros();

Q_SIGNALS:
    /// Emitted after the list has changed and before the change is saved.
    void macrosChanged();

private:
    /// Returns the largest `sortOrder` plus 1; 1 for the empty list. Ends the process on overflow.
    [[nodiscard]] qint64 nextSortOrder() const;
    void setMacros(QList<Macro> macros);
    using Lock = tl::expected<StoreLock::Holder, FileError>;
    /// Locks the file against other processes and loads their changes.
    [[nodiscard]] Lock beginChange();
    /// \param lock from `beginChange`.
    void changeAndSave(const Lock &lock, QList<Macro> macros);
    void save(const Lock &lock);
    void appendAndSave(const Lock &lock, Macro macro);
    [[nodiscard]] QString macrosFilePath() const;

    const QString m_supportFolder;
    UserDefaults &m_defaults;
    const Clock m_clock;
    const IdSource m_ids;
    QList<Macro> m_macros;
    StoreLock m_lock;
    std::optional<FileVersion> m_fileVersion; // When it was last read or written here.
};

} // namespace penwick
