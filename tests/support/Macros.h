#pragma once

#include "macro/library/Macro.h"

#include <QString>

namespace penwick::test {

/// A macro with a distinct, non-default value in every field.
inline Macro sampleMacro(const QString &id = QStringLiteral("A"), qint64 sortOrder = 1)
{
    Macro macro;
    macro.id = id;
    macro.name = QStringLiteral("name of ") + id;
    macro.description = QStringLiteral("説明 😀");
    macro.code = QStringLiteral("// http://example.com\nreturn { \"textEdits\": [] };\n");
    macro.isEnabled = false;
    macro.source = QStringLiteral("imported");
    macro.version = QStringLiteral("2.0");
    macro.createdAt = QStringLiteral("2020-01-01T00:00:00Z");
    macro.updatedAt = QStringLiteral("2020-01-02T00:00:00Z");
    macro.sortOrder = sortOrder;
    macro.category = QStringLiteral("text");
    macro.helpURL = QStringLiteral("https://example.com/help");
    return macro;
}

} // namespace penwick::test
