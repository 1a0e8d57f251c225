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
    constexpr QStringView kRawValues[]{u"trimTrailingSpaces",
                                       u"removeEmptyLines",
                                       u"addLinePrefix",
                                       u"addLineSuffix",
                                       u"insertDateTime",
                                       u"extractUrls",
                                       u"stripHtmlTags"};
    return kRawValues[static_cast<std::size_t>(macro)].toString();
}

std::optional<BuiltInMacro> builtInMacro(const QString &rawValue)
{
    for (const BuiltInMacro macro : allBuiltInMacros())
        if (penwick::rawValue(macro) == rawValue)
            return macro;
    return std::nullopt;
}

} // namespace penwick
