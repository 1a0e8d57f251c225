#include "app/StartUp.h"

#include "support/CapturedOutput.h"
#include "support/CurrentFolder.h"
#include "support/TemporaryHome.h"
#include "wording/EnglishProfile.h"
#include "wording/UIWordingProfile.h"
#include "wording/WordingLookup.h"

#include <QScopeGuard>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

/// A home with a runtime folder of its own, so that no running penwick is found.
class Home final
{
public:
    Home()
        : m_former(qgetenv("XDG_RUNTIME_DIR"))
    {
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home.file(u"run"_s)));
    }

    ~Home() { qputenv("XDG_RUNTIME_DIR", m_former); }

    Q_DISABLE_COPY_MOVE(Home)

    TemporaryHome home;

private:
    QByteArray m_former;
};

} // namespace

class StartUpTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void relativeName_isTakenFromTheCurrentFolder()
    {
        const Home place;
        const QByteArray folder = QFile::encodeName(place.home.path()) + "/a\xff";
        const CurrentFolder current(folder);
        const auto start = startUp(CommandLine::parse({"+3:4", "b\xfe", "/c"}));
        const auto *editor = std::get_if<EditorStart>(&start);
        QVERIFY(editor != nullptr && editor->place && editor->request);
        QCOMPARE(editor->request->items.size(), 2);
        QCOMPARE(editor->request->items.at(0).path, folder + "/b\xfe");
        QVERIFY((editor->request->items.at(0).place == TextPlace{3, 4}));
        QCOMPARE(editor->request->items.at(1).path, "/c"_ba);
    }

    void relativeName_inAFolderThatWasRemoved_isRefused()
    {
        const Home place;
        const CurrentFolder current(QFile::encodeName(place.home.file(u"gone"_s)));
        QVERIFY(QDir().rmdir(place.home.file(u"gone"_s)));
        CapturedOutput said(stderr);
        const auto start = startUp(CommandLine::parse({"/a", "--new-window", "b.txt"}));
        const auto lines = said.takeLines();
        const auto *status = std::get_if<int>(&start);
        QVERIFY(status != nullptr);
        QCOMPARE(*status, 1);
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().startsWith("penwick: ") && lines.first().endsWith(": b.txt"));
    }

    void message_underAProfile_hasItsWords()
    {
        const Home place;
        const auto reset = qScopeGuard([] { wording::setActiveValues(std::nullopt); });
        place.home.write(u"config/penwick/penwick.conf"_s, "activeUIWordingProfileId=en\n");
        UIWordingProfile profile;
        profile.id = u"en"_s;
        profile.values = {{u"cli.noCurrentFolder"_s, u"no folder"_s}};
        place.home.write(u"data/penwick/ui-wording-profiles/en.json"_s, profile.toJson());
        const CurrentFolder current(QFile::encodeName(place.home.file(u"gone"_s)));
        QVERIFY(QDir().rmdir(place.home.file(u"gone"_s)));
        CapturedOutput said(stderr);
        static_cast<void>(startUp(CommandLine::parse({"b.txt"})));
        QCOMPARE(said.take(), "penwick: no folder: b.txt\n"_ba);
    }

    void message_underEnglish_isEnglish()
    {
        const Home place;
        const auto reset = qScopeGuard([] { wording::setActiveValues(std::nullopt); });
        place.home.write(u"data/penwick/ui-wording-profiles/english.json"_s,
                         englishProfile().toJson());
        const CurrentFolder current(QFile::encodeName(place.home.file(u"gone"_s)));
        QVERIFY(QDir().rmdir(place.home.file(u"gone"_s)));
        for (const char *id : {"english", "default-en"}) {
            place.home.write(u"config/penwick/penwick.conf"_s,
                             "activeUIWordingProfileId=" + QByteArray(id) + '\n');
            CapturedOutput said(stderr);
            static_cast<void>(startUp(CommandLine::parse({"b.txt"})));
            QCOMPARE(said.take(), "penwick: the current folder cannot be found: b.txt\n"_ba);
            QVERIFY(CommandLine::helpText().startsWith(u"Usage: penwick ["_s));
        }
    }

    void absoluteName_inAFolderThatWasRemoved_isOpened()
    {
        const Home place;
        const CurrentFolder current(QFile::encodeName(place.home.file(u"gone"_s)));
        QVERIFY(QDir().rmdir(place.home.file(u"gone"_s)));
        const auto start = startUp(CommandLine::parse({"/a"}));
        const auto *editor = std::get_if<EditorStart>(&start);
        QVERIFY(editor != nullptr && editor->place && editor->request);
        QCOMPARE(editor->request->items.first().path, "/a"_ba);
    }
};

QTEST_GUILESS_MAIN(StartUpTest)
#include "StartUpTest.moc"
