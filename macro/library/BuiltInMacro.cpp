#include "macro/library/BuiltInMacro.h"

namespace penwick {

using namespace Qt::StringLiterals;

const QList<BuiltInMacro> &allBuiltInMacros()
{
    static const QList<BuiltInMacro> macros{
        BuiltInMacro::TrimTrailingSpaces,
        BuiltInMacro::RemoveEmptyLines,
        BuiltInMacro::AddLinePrefix,
        BuiltInMacro::AddLineSuffix,
        BuiltInMacro::InsertDateTime,
        BuiltInMacro::ExtractUrls,
        BuiltInMacro::StripHtmlTags,
    };
    return macros;
}

QString rawValue(BuiltInMacro macro)
{
    switch (macro) {
    case BuiltInMacro::TrimTrailingSpaces:
        return u"trimTrailingSpaces"_s;
    case BuiltInMacro::RemoveEmptyLines:
        return u"removeEmptyLines"_s;
    case BuiltInMacro::AddLinePrefix:
        return u"addLinePrefix"_s;
    case BuiltInMacro::AddLineSuffix:
        return u"addLineSuffix"_s;
    case BuiltInMacro::InsertDateTime:
        return u"insertDateTime"_s;
    case BuiltInMacro::ExtractUrls:
        return u"extractUrls"_s;
    case BuiltInMacro::StripHtmlTags:
        return u"stripHtmlTags"_s;
    }
    Q_UNREACHABLE();
}

std::optional<BuiltInMacro> builtInMacro(const QString &rawValue)
{
    for (const BuiltInMacro macro : allBuiltInMacros())
        if (penwick::rawValue(macro) == rawValue)
            return macro;
    return std::nullopt;
}

} // namespace penwick
