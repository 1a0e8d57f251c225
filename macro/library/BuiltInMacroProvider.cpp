#include "macro/library/BuiltInMacroProvider.h"

#include <QFile>
#include <QtGlobal>

#include <algorithm>

// Without this call the linker drops the resources of a static library. `Q_INIT_RESOURCE` must be
// used outside of any namespace.
static void registerScripts()
{
    Q_INIT_RESOURCE(scripts);
}

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

BuiltInMacroDefinition definition(BuiltInMacro macro,
                                  const QString &description,
                                  const std::optional<QString> &defaultInput = std::nullopt)
{
    return {u"default_"_s + rawValue(macro), macro, description, defaultInput};
}

} // namespace

const QList<BuiltInMacroDefinition> &BuiltInMacroProvider::definitions()
{
    static const QList<BuiltInMacroDefinition> definitions{
        definition(BuiltInMacro::TrimTrailingSpaces,
                   u"行末の不要な空白（半角、全角、タブ）を削除します。"_s),
        definition(BuiltInMacro::RemoveEmptyLines, u"テキスト内から空行を取り除きます。"_s),
        definition(BuiltInMacro::AddLinePrefix,
                   u"指定した文字列を各行の先頭に一括挿入します。"_s,
                   u"- "_s),
        definition(
            BuiltInMacro::AddLineSuffix, u"指定した文字列を各行の末尾に一括挿入します。"_s, u","_s),
        definition(BuiltInMacro::InsertDateTime,
                   u"現在の日時を挿入、または選択範囲を置換します。"_s,
                   u"yyyy-MM-dd HH:mm"_s),
        definition(BuiltInMacro::ExtractUrls,
                   u"テキストからURLを抜き出し、URL一覧に書き換えます。"_s),
        definition(BuiltInMacro::StripHtmlTags, u"HTMLタグを取り除き、テキストのみにします。"_s),
    };
    return definitions;
}

QString BuiltInMacroProvider::nameKey(BuiltInMacro macro)
{
    return u"macro.default."_s + rawValue(macro) + u".name"_s;
}

bool BuiltInMacroProvider::asksForInput(const QString &macroId)
{
    return std::any_of(definitions().begin(), definitions().end(), [&](const auto &definition) {
        return definition.id == macroId && definition.defaultInput;
    });
}

QString BuiltInMacroProvider::script(BuiltInMacro macro)
{
    registerScripts();
    QFile file(u":/penwick/scripts/"_s + rawValue(macro) + u".js"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("A built-in macro's script is missing from this build.");
    return QString::fromUtf8(file.readAll());
}

} // namespace penwick
