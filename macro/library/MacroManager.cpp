#include "macro/library/MacroManager.h"

#include "macro/library/MacroFile.h"
#include "macro/library/MacroJson.h"
#include "macro/library/MacroList.h"
#include "platform/files/ApplicationSupport.h"
#include "platform/files/AtomicFile.h"
#include "platform/process/StandardOutput.h"
#include "wording/WordingLookup.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

auto hasId(const QString &id)
{
    return [id](const Macro &macro) { return macro.id == id; };
}

const QString kCopySuffix = u" のコピー"_s;

/// Ends the process on overflow: a wrapped value would sort new macros first, and be saved.
qint64 checkedSuccessor(qint64 sortOrder)
{
    if (sortOrder == std::numeric_limits<qint64>::max())
        qFatal("There is no sort order left for another macro.");
    return sortOrder + 1;
}

} // namespace

MacroManager::MacroManager(
    QString supportFolder, UserDefaults &defaults, Clock clock, IdSource ids, QObject *parent)
    : QObject(parent)
    , m_supportFolder(std::move(supportFolder))
    , m_defaults(defaults)
    , m_clock(std::move(clock))
    , m_ids(std::move(ids))
    , m_lock(m_supportFolder)
{
    ensureSupportDirectory();
    loadMacros();
}

MacroManager &MacroManager::shared()
{
    static auto *const manager =
        new MacroManager(ApplicationSupport::folderPath(), UserDefaults::standard());
    return *manager;
}

QUrl MacroManager::supportDirectoryURL() const
{
    return QUrl::fromLocalFile(m_supportFolder);
}

QUrl MacroManager::macrosFileURL() const
{
    return QUrl::fromLocalFile(macrosFilePath());
}

void MacroManager::ensureSupportDirectory()
{
    if (QFileInfo::exists(m_supportFolder))
        return;
    const auto created = createFolder(m_supportFolder);
    if (!created)
        printLine(u"Failed to create Application Support directory: "_s +
                  created.error().description());
}

void MacroManager::loadMacros()
{
    // Taken before the file is read, so that a change during the read is found later.
    m_fileVersion = FileVersion::of(macrosFilePath());
    auto macros = readMacroList(macrosFilePath());
    if (!macros)
        printLine(u"Failed to load macros.json: "_s + macros.error());
    else if (*macros)
        setMacros(**std::move(macros));
}

void MacroManager::saveMacros()
{
    save(m_lock.take());
}

void MacroManager::save(const Lock &lock)
{
    tl::expected<void, FileError> saved;
    if (lock)
        saved = replaceFile(macrosFilePath(), MacroJson::write(m_macros));
    else
        saved = tl::unexpected(lock.error());
    if (!saved)
        printLine(u"Failed to save macros.json: "_s + saved.error().description());
    // Without the lock the file may hold changes of another process, which are still to be loaded.
    if (lock)
        m_fileVersion = FileVersion::of(macrosFilePath());
}

MacroManager::Lock MacroManager::beginChange()
{
    Lock lock = m_lock.take();
    reloadIfChanged();
    return lock;
}

void MacroManager::reloadIfChanged()
{
    // When the file was removed, the list is kept and the next save writes the file again.
    const auto version = FileVersion::of(macrosFilePath());
    if (version && version != m_fileVersion)
        loadMacros();
}

std::optional<Macro> MacroManager::macroWithId(const QString &id) const
{
    const auto found = std::find_if(m_macros.cbegin(), m_macros.cend(), hasId(id));
    return found != m_macros.cend() ? std::optional(*found) : std::nullopt;
}

void MacroManager::addMacro(Macro macro)
{
    const Lock lock = beginChange();
    appendAndSave(lock, std::move(macro));
}

void MacroManager::updateMacro(Macro macro)
{
    const Lock lock = beginChange();
    QList<Macro> macros = m_macros;
    const auto place = std::find_if(macros.begin(), macros.end(), hasId(macro.id));
    if (place == macros.end())
        return;
    macro.updatedAt = nowTimestamp(m_clock);
    *place = std::move(macro);
    changeAndSave(lock, std::move(macros));
}

void MacroManager::deleteMacro(const QString &id)
{
    const auto hasThisId = hasId(id); // Copies the id, which may be part of the list.
    const Lock lock = beginChange();
    QList<Macro> macros = m_macros;
    macros.removeIf(hasThisId);
    changeAndSave(lock, std::move(macros));
}

void MacroManager::moveMacro(const QString &id, qsizetype place)
{
    const auto hasThisId = hasId(id); // Copies the id, which may be part of the list.
    const Lock lock = beginChange();
    QList<Macro> macros = m_macros;
    const qsizetype from =
        std::find_if(macros.cbegin(), macros.cend(), hasThisId) - macros.cbegin();
    const qsizetype to = std::clamp<qsizetype>(place, 0, std::max<qsizetype>(macros.size() - 1, 0));
    if (from == macros.size() || from == to)
        return;
    macros.move(from, to);
    for (qsizetype i = std::min(from, to); i <= std::max(from, to); ++i)
        macros[i].sortOrder = m_macros[i].sortOrder;
    changeAndSave(lock, std::move(macros));
}

void MacroManager::duplicateMacro(Macro macro)
{
    const Lock lock = beginChange();
    macro.id = m_ids();
    macro.name += kCopySuffix;
    macro.source = u"user"_s;
    appendAndSave(lock, std::move(macro));
}

tl::expected<QString, JsonRecordError> MacroManager::importMacro(QByteArrayView data)
{
    auto macro = MacroFile::read(data);
    if (!macro)
        return tl::unexpected(macro.error());
    const Lock lock = beginChange();
    const auto isTaken = [this, &macro](auto field) {
        return std::any_of(m_macros.cbegin(), m_macros.cend(), [&](const Macro &other) {
            return other.*field == (*macro).*field;
        });
    };
    if (isTaken(&Macro::id))
        macro->id = m_ids();
    if (isTaken(&Macro::name))
        macro->name += kCopySuffix;
    macro->source = u"imported"_s;
    macro->isEnabled = true;
    QString id = macro->id;
    appendAndSave(lock, *std::move(macro));
    return id;
}

void MacroManager::installBuiltInMacros()
{
    if (missingBuiltInMacros(m_macros).isEmpty())
        return; // The usual case at startup; needs no lock.
    const Lock lock = beginChange();
    const QList<Macro> missing = missingBuiltInMacros(m_macros);
    if (missing.isEmpty())
        return;
    qint64 sortOrder = nextSortOrder();
    const QString now = nowTimestamp(m_clock);
    QList<Macro> macros = m_macros;
    for (Macro macro : missing) {
        macro.createdAt = now;
        macro.updatedAt = now;
        macro.sortOrder = sortOrder;
        sortOrder = checkedSuccessor(sortOrder);
        macros.append(std::move(macro));
    }
    changeAndSave(lock, std::move(macros));
    m_defaults.setBoolean(u"hasInitializedBuiltInMacros"_s, true);
}

qint64 MacroManager::nextSortOrder() const
{
    const auto largest =
        std::max_element(m_macros.cbegin(), m_macros.cend(), [](const Macro &a, const Macro &b) {
            return a.sortOrder < b.sortOrder;
        });
    return checkedSuccessor(largest != m_macros.cend() ? largest->sortOrder : 0);
}

void MacroManager::setMacros(QList<Macro> macros)
{
    m_macros = std::move(macros);
    Q_EMIT macrosChanged();
}

void MacroManager::changeAndSave(const Lock &lock, QList<Macro> macros)
{
    setMacros(std::move(macros));
    save(lock);
}

void MacroManager::appendAndSave(const Lock &lock, Macro macro)
{
    macro.createdAt = nowTimestamp(m_clock);
    macro.updatedAt = macro.createdAt;
    macro.sortOrder = nextSortOrder();
    QList<Macro> macros = m_macros;
    macros.append(std::move(macro));
    changeAndSave(lock, std::move(macros));
}

QString MacroManager::macrosFilePath() const
{
    return penwick::macrosFilePath(m_supportFolder);
}

} // namespace penwick
