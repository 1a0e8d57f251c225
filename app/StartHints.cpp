#include "app/StartHints.h"

#include "app/AppCommands.h"
#include "app/DocumentController.h"
#include "app/RecentFiles.h"
#include "command/CommandShortcut.h"
#include "controls/VerbatimText.h"
#include "wording/WordingLookup.h"

#include <QFile>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

Hint commandHint(CommandId id, const QString &wordingKey, AppCommands *commands)
{
    const QString key = shownKey(id).toString(QKeySequence::NativeText);
    return {visibleLine(wording::text(wordingKey, {key})),
            verbatimToolTip(commandTitle(id)),
            [commands, id] { commands->performCommand(id); }};
}

Hint fileHint(const QString &path, DocumentController *documents)
{
    const QString name = path.section(u'/', -1);
    return {visibleLine(wording::text(u"editor.hint.recentFile"_s, {name})),
            verbatimToolTip(path),
            [documents, path] { documents->openFile(path); }};
}

} // namespace

QList<Hint>
startHints(AppCommands *commands, DocumentController *documents, const RecentFiles &files)
{
    QList<Hint> hints{commandHint(CommandId::ShowPalette, u"editor.hint.palette"_s, commands),
                      commandHint(CommandId::OpenDocument, u"editor.hint.open"_s, commands)};
    const QList<QByteArray> closed = files.closedPaths();
    if (!closed.isEmpty())
        hints << fileHint(QFile::decodeName(closed.constFirst()), documents);
    return hints;
}

} // namespace penwick
