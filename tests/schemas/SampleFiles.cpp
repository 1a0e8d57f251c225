#include "macro/engine/ContextJson.h"
#include "macro/library/MacroFile.h"
#include "macro/library/MacroJson.h"
#include "macro/library/MacroManager.h"
#include "support/FakeClock.h"
#include "support/FakeIds.h"
#include "wording/EnglishProfile.h"
#include "wording/UIWordingProfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStringList>

#include <cstdio>
#include <limits>

// Writes sample files as penwick does, and reports which files penwick accepts, for the checks that
// are written in Python.
//
//   sample_files write FOLDER         fills a folder, which must exist, with one file of each kind
//   sample_files read KIND FILE...    prints "accepted" or "refused" for each file; KIND is
//                                     macro, macros or profile

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

// A text with characters of every kind of escape, and some that must not be escaped.
QString oddText()
{
    return u"a/b \"c\" \\ \t\r\n\b\f 日本語 😀 é \u2028\u2029\u0001\u007F\uFEFF"_s + QChar(u'\0');
}

Macro ownMacro()
{
    Macro macro;
    macro.id = test::FakeIds::id(9); // The store generates no such id.
    macro.name = oddText();
    macro.description = u"URL: http://example.com/?a=b"_s;
    macro.code = u"// "_s + oddText() + u"\nreturn {};"_s;
    macro.isEnabled = false;
    macro.source = u"somewhere else"_s;
    macro.sortOrder = std::numeric_limits<qint64>::min();
    return macro;
}

UIWordingProfile ownProfile()
{
    UIWordingProfile profile;
    profile.id = test::FakeIds::id(2);
    profile.name = oddText();
    profile.locale = u"ja"_s;
    profile.createdAt = profile.updatedAt = nowTimestamp(test::FakeClock().clock());
    profile.values = {{u"menu.file.new"_s, oddText()}, {QString(), QString()}};
    return profile;
}

// Writes the file that the store itself creates.
void writeStore(const QString &folder)
{
    UserDefaults defaults(QDir(folder).filePath(u"defaults.ini"_s));
    MacroManager manager(folder, defaults, test::FakeClock().clock(), test::FakeIds().source());
    manager.installBuiltInMacros();
    manager.addMacro(ownMacro());
    manager.duplicateMacro(ownMacro());
}

QByteArray contextSample()
{
    EditorSnapshot snapshot;
    snapshot.text = Text(oddText());
    snapshot.selectionLocation = 2;
    snapshot.selectionLength = 7;
    snapshot.filePath = u"/home/someone/notes.txt"_s;
    snapshot.now = test::FakeClock().clock()();
    snapshot.timeZone = QTimeZone::utc();
    return contextJson(buildMacroContext(snapshot, u"id"_s, oddText()).toDictionary()).toUtf8();
}

bool write(const QDir &folder, const QString &name, const QByteArray &content)
{
    QFile out(folder.filePath(name));
    return out.open(QIODevice::WriteOnly) && out.write(content) == content.size();
}

bool writeSamples(const QDir &folder)
{
    writeStore(folder.path());
    QFile store(folder.filePath(u"macros.json"_s));
    if (!store.open(QIODevice::ReadOnly))
        return false;
    const auto macros = MacroJson::read(store.readAll());
    if (!macros || macros->isEmpty())
        return false;

    bool written = write(folder, u"empty.macros.json"_s, MacroJson::write({})) &&
                   write(folder, u"own.macro.json"_s, MacroFile::write(ownMacro())) &&
                   write(folder, u"default-ja.profile.json"_s, builtInJapaneseProfile().toJson()) &&
                   write(folder, u"default-en.profile.json"_s, builtInEnglishProfile().toJson()) &&
                   write(folder, u"english.profile.json"_s, englishProfile().toJson()) &&
                   write(folder, u"own.profile.json"_s, ownProfile().toJson()) &&
                   write(folder, u"context.json"_s, contextSample());
    for (const Macro &macro : *macros)
        written = written && write(folder, macro.id + u".macro.json"_s, MacroFile::write(macro));
    return written;
}

bool isAccepted(const QString &kind, const QByteArray &text)
{
    if (kind == "macro"_L1)
        return MacroFile::read(text).has_value();
    if (kind == "macros"_L1)
        return MacroJson::read(text).has_value();
    return UIWordingProfile::fromJson(text).has_value();
}

bool readFiles(const QString &kind, const QStringList &files)
{
    if (kind != "macro"_L1 && kind != "macros"_L1 && kind != "profile"_L1)
        return false;
    for (const QString &file : files) {
        QFile in(file);
        if (!in.open(QIODevice::ReadOnly))
            return false;
        std::puts(isAccepted(kind, in.readAll()) ? "accepted" : "refused");
    }
    return true;
}

} // namespace

} // namespace penwick

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    bool done = false;
    if (arguments.size() == 3 && arguments.at(1) == "write"_L1)
        done = penwick::writeSamples(QDir(arguments.at(2)));
    else if (arguments.size() > 3 && arguments.at(1) == "read"_L1)
        done = penwick::readFiles(arguments.at(2), arguments.mid(3));
    if (!done)
        std::fputs("sample_files: wrong arguments, or a file that cannot be read or written\n",
                   stderr);
    return done ? 0 : 1;
}
