#pragma once

#include "macro/library/Macro.h"
#include "platform/FileVersion.h"
#include "platform/JsonRecord.h"
#include "platform/StoreLock.h"
#include "platform/Timestamp.h"
#include "platform/UserDefaults.h"
#include "platform/Uuid.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Owns every macro that the user has, as one ordered list that `macros.json` mirrors: each
/// operation that changes the list saves the whole file before it returns. Use it from the main
/// thread. File failures are written to standard output; the list keeps the change.
///
/// Several processes may have the same file. Each change reads what another one wrote, changes that
/// and writes it while the others wait. A change for which the file cannot be had in time (see
/// `StoreLock`) is a file failure.
class MacroManager final : public QObject
{
    Q_OBJECT

public:
    /// Creates the folder where it is missing and loads the file.
    /// \param supportFolder absolute path.
    /// \param defaults not owned; must outlive the manager.
    MacroManager(QString supportFolder,
                 UserDefaults &defaults,
                 Clock clock = systemClock(),
                 IdSource ids = randomIds(),
                 QObject *parent = nullptr);

    /// The application's store, in the data folder. Created on first use, lives until the process
    /// ends.
    [[nodiscard]] static MacroManager &shared();

    /// In list order, disabled ones too.
    [[nodiscard]] const QList<Macro> &macros() const { return m_macros; }

    [[nodiscard]] QUrl supportDirectoryURL() const;
    [[nodiscard]] QUrl macrosFileURL() const;

    /// Creates the folder where nothing stands in its place; a failure is logged.
    void ensureSupportDirectory();
    /// Replaces the list by the file's, in ascending `sortOrder`, equal ones in file order. Without
    /// a file, or with one that cannot be read (which is logged), the list stays as it is.
    void loadMacros();
    /// Writes the whole list to the file. A failure is logged.
    void saveMacros();
    /// As `loadMacros`, if the file is not the one that was last read or written here: then another
    /// program has changed it. Every operation that changes the list does this first, so that it
    /// changes what is there and not what was.
    void takeInChangesFromElsewhere();

    /// The first macro with exactly this id.
    [[nodiscard]] std::optional<Macro> macroWithId(const QString &id) const;

    /// Appends the macro with new times and the next `sortOrder`; the rest is kept as given.
    void addMacro(Macro macro);
    /// Puts the macro in the place of the first one with its id, with a new `updatedAt`. Does
    /// nothing, not even save, when there is none.
    void updateMacro(Macro macro);
    /// Removes every macro with this id.
    void deleteMacro(const QString &id);
    /// Appends a copy with an id, times, `sortOrder` and name of its own. It belongs to the user.
    void duplicateMacro(Macro macro);
    /// Appends the macro of an exported file, enabled, with new times and the next `sortOrder`. An
    /// id that is taken is replaced by a new one, a name that is taken gets " のコピー" behind it.
    /// Returns the id. After an error nothing has changed.
    /// \param data the file's bytes.
    [[nodiscard]] tl::expected<QString, JsonRecordError> importMacro(QByteArrayView data);
    /// Appends the built-in macros whose ids the list lacks, named by the active wording. Saves
    /// only if there were any.
    void installBuiltInMacros();

Q_SIGNALS:
    /// Just before the list changes: `macros()` is still the old one.
    void macrosWillChange();
    /// The list has changed and `macros()` is the new one; the file follows.
    void macrosChanged();

private:
    /// The largest `sortOrder` plus 1, and 1 for the empty list. Ends the process past 64 bits.
    [[nodiscard]] qint64 nextSortOrder() const;
    void setMacros(QList<Macro> macros);
    using Lock = tl::expected<StoreLock::Holder, FileError>;
    /// Keeps other processes from the file, and takes in what they did to it.
    [[nodiscard]] Lock beginChange();
    /// \param lock what `beginChange` gave.
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
    std::optional<FileVersion> m_fileVersion; // Last read or written here.
};

} // namespace penwick
