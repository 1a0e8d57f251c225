#include "app/ScriptHostReport.h"

#include "wording/WordingLookup.h"

#include <QStringList>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

QString wallLine(const QString &wall, bool stands)
{
    return u"  "_s + wall + u": "_s +
           (stands ? wording::text(u"cli.wallStands"_s, u"あり"_s)
                   : wording::text(u"cli.wallMissing"_s, u"なし"_s));
}

} // namespace

QString scriptHostReport(const std::optional<HostProtection> &protection)
{
    if (!protection) {
        return wording::text(u"macro.error.hostUnavailable"_s,
                             u"マクロの実行プログラムを起動できません"_s);
    }
    const QStringList lines{
        wording::text(u"cli.walls"_s, u"マクロの隔離:"_s),
        wallLine(wording::text(u"cli.wallProcess"_s, u"別プロセス"_s), true),
        wallLine(wording::text(u"cli.wallMemory"_s, u"メモリの上限"_s), protection->memoryLimit),
        wallLine(wording::text(u"cli.wallSystemCalls"_s, u"システムコールの制限 (seccomp)"_s),
                 protection->systemCallFilter),
        wallLine(wording::text(u"cli.wallFiles"_s, u"ファイルアクセスの規則 (Landlock)"_s),
                 protection->fileAccessRules)};
    return lines.join(u'\n');
}

QString missingWalls(const std::optional<HostProtection> &protection)
{
    if (!protection) {
        return u"the process that runs them"_s;
    }
    QStringList missing;
    if (!protection->memoryLimit) {
        missing << u"a memory limit"_s;
    }
    if (!protection->systemCallFilter) {
        missing << u"a filter of system calls (seccomp)"_s;
    }
    if (!protection->fileAccessRules) {
        missing << u"file access rules (Landlock)"_s;
    }
    return missing.join(u", "_s);
}

std::optional<std::uint64_t> scriptMemory(const UserDefaults &defaults)
{
    constexpr std::uint64_t kLeast = 64;
    constexpr std::uint64_t kMost = std::uint64_t{1} << 30; // A pebibyte: no sum overflows.
    bool isNumber = false;
    const std::uint64_t megabytes =
        defaults.string(u"macroMemoryLimitMegabytes"_s).value_or(QString()).toULongLong(&isNumber);
    if (!isNumber || megabytes < kLeast || megabytes > kMost) {
        return std::nullopt;
    }
    return megabytes << 20;
}

} // namespace penwick
