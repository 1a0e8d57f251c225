#include "batch/BatchMacros.h"

#include "batch/BatchInputs.h"
#include "macro/library/BuiltInMacroProvider.h"
#include "macro/library/MacroFile.h"
#include "macro/library/MacroList.h"
#include "macro/library/MacroMetaParser.h"
#include "platform/files/ApplicationSupport.h"
#include "wording/FileReasons.h"
#include "wording/WordingLookup.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

using Chosen = tl::expected<BatchMacro, QString>;

tl::unexpected<QString> failure(const QString &subject, const QString &reason)
{
    QString message = subject + u": "_s + reason;
    return tl::unexpected(std::move(message));
}

BatchMacro batchMacro(const Macro &macro)
{
    return {macro.id, macro.name, macro.code};
}

/// Finds a macro by its id, else by its exact name.
Chosen storedMacro(const QString &wanted, const QList<Macro> &macros)
{
    const auto byId = std::find_if(
        macros.begin(), macros.end(), [&](const Macro &macro) { return macro.id == wanted; });
    if (byId != macros.end())
        return batchMacro(*byId);
    QList<Macro> found;
    std::copy_if(macros.begin(), macros.end(), std::back_inserter(found), [&](const Macro &macro) {
        return macro.name == wanted;
    });
    if (found.isEmpty())
        return failure(wanted, wording::text(u"batch.unknownMacro"_s));
    if (found.size() == 1)
        return batchMacro(found.first());
    QStringList ids;
    for (const Macro &macro : found)
        ids << macro.id;
    return failure(wanted, wording::text(u"batch.ambiguousMacro"_s) + u' ' + ids.join(u", "_s));
}

Chosen exportedMacro(const QString &name, const QByteArray &content)
{
    const auto macro = MacroFile::read(content);
    if (!macro)
        return failure(name,
                       wording::text(u"batch.notAMacroFile"_s) + u" ("_s +
                           macro.error().description() + u')');
    return batchMacro(*macro);
}

/// The first line may name an interpreter; it then becomes a comment, so that lines keep their
/// numbers.
QString withoutInterpreter(QString code)
{
    if (code.startsWith(u"#!"_s))
        code.replace(0, 2, u"//"_s);
    return code;
}

Chosen scriptFile(const QByteArray &path)
{
    const QString name = QFile::decodeName(path);
    const auto content = readAnyFile(path);
    if (!content)
        return failure(name, wording::reasonText(content.error().kind));
    if (path.endsWith(".json"))
        return exportedMacro(name, *content);
    if (!content->isValidUtf8())
        return failure(name, wording::text(u"error.reason.notUtf8"_s));
    QString code = QString::fromUtf8(*content);
    if (code.startsWith(QChar(QChar::ByteOrderMark)))
        code.remove(0, 1);
    const bool hasInterpreter = code.startsWith(u"#!"_s);
    const ParsedMeta meta = MacroMetaParser::parse(hasInterpreter ? code.section(u'\n', 1) : code);
    const QString fileName = QFileInfo(name).fileName();
    return BatchMacro{QString(), meta.name.value_or(fileName), withoutInterpreter(code)};
}

/// The macros of the store, read when they are first needed.
class Store final
{
public:
    Chosen find(const QString &wanted)
    {
        if (!m_macros)
            m_macros = storedMacros();
        if (!*m_macros)
            return tl::unexpected(m_macros->error());
        return storedMacro(wanted, **m_macros);
    }

private:
    std::optional<tl::expected<QList<Macro>, QString>> m_macros;
};

Chosen macroOf(const MacroSource &source, Store &store)
{
    switch (source.kind) {
    case MacroSource::Kind::Stored:
        return store.find(QString::fromUtf8(source.argument));
    case MacroSource::Kind::File:
        return scriptFile(source.argument);
    case MacroSource::Kind::Code:
        break;
    }
    return BatchMacro{QString(), u"-e"_s, QString::fromUtf8(source.argument)};
}

} // namespace

tl::expected<QList<Macro>, QString> storedMacros()
{
    QList<Macro> macros;
    if (ApplicationSupport::hasHome()) {
        const QString path = macrosFilePath(ApplicationSupport::folderPath());
        auto read = readMacroList(path);
        if (!read)
            return failure(
                path, wording::text(u"batch.storeUnreadable"_s) + u" ("_s + read.error() + u')');
        macros = read->value_or(QList<Macro>());
    }
    macros += missingBuiltInMacros(macros);
    return macros;
}

tl::expected<QList<BatchMacro>, QString> chosenMacros(const BatchOptions &options)
{
    Store store;
    QList<BatchMacro> macros;
    for (const MacroSource &source : options.macros) {
        auto macro = macroOf(source, store);
        if (!macro)
            return tl::unexpected(macro.error());
        if (!options.userInput && BuiltInMacroProvider::asksForInput(macro->id))
            return failure(macro->name, wording::text(u"batch.needsInput"_s));
        macros.append(*std::move(macro));
    }
    return macros;
}

} // namespace penwick
