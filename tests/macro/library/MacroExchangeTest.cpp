#include "macro/library/MacroFile.h"
#include "macro/library/MacroManagerScene.h"
#include "support/FileSizeLimit.h"

#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

/// Tests of exporting macros to files and importing them.
class MacroExchangeTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void export_draft_writesItWithItsHeader()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.fill(u"macroName"_s, u"Omega"_s);
        world.panels.state->answer = world.home.file(u"out.json"_s);
        world.page().click(u"エクスポート…"_s);
        QCOMPARE(world.page().takeAlert(), u"エクスポートしました"_s);
        QCOMPARE(world.panels.state->title, u"エクスポート…"_s);
        QCOMPARE(world.panels.state->name, u"Omega"_s);
        QCOMPARE(world.home.read(u"out.json"_s),
                 MacroFile::write(namedMacro(u"A"_s, u"Omega"_s, 1)));
        QCOMPARE(world.stored(u"A"_s).name, u"Alpha"_s);
    }

    void export_emptyName_suggestsMacro()
    {
        const MacroManagerScene world({namedMacro(u"A"_s, QString())});
        world.page().clickRow(0);
        world.page().click(u"エクスポート…"_s);
        QCOMPARE(world.panels.state->name, u"macro"_s);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void export_fullDisk_showsMessageAndLeavesTheOldFile()
    {
        const MacroManagerScene world;
        world.page().clickRow(0);
        world.home.write(u"out.json"_s, "old");
        world.panels.state->answer = world.home.file(u"out.json"_s);
        {
            const FileSizeLimit full(16);
            world.page().click(u"エクスポート…"_s);
        }
        QCOMPARE(world.page().takeAlert(), u"エクスポートに失敗しました"_s);
        QCOMPARE(world.home.read(u"out.json"_s), "old");
    }

    void import_exported_isSelectedAndShowsMessage()
    {
        const MacroManagerScene world;
        const QString path =
            world.home.write(u"in.json"_s, MacroFile::write(namedMacro(u"A"_s, u"Alpha"_s)));
        world.import(path);
        QCOMPARE(world.page().takeAlert(), u"マクロをインポートしました"_s);
        QCOMPARE(world.panels.state->title, u"インポート…"_s);
        QCOMPARE(world.page().selectedName(), u"Alpha のコピー"_s);
        const Macro imported = world.manager->macros().constLast();
        QCOMPARE(imported.id, FakeIds::id(1));
        QCOMPARE(imported.source, u"imported"_s);
        QCOMPARE(imported.sortOrder, 3);
        QCOMPARE(imported.code, sampleMacro().code);
        QCOMPARE(world.page().badge(2), u"インポート"_s);
    }

    void import_unreadable_showsReasonAndChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");
        const QString invalid = u"プロファイルJSONの形式が正しくありません"_s;
        QTest::newRow("list") << MacroJson::write({sampleMacro()}) << invalid;
        QTest::newRow("no JSON") << QByteArray("return 1;") << invalid;
        QTest::newRow("not UTF-8") << QByteArray("{\"\xFF\":1}") << invalid;
        QTest::newRow("key missing")
            << MacroFile::write(sampleMacro()).replace("helpURL\" :", "help\" :") << invalid;
        QTest::newRow("gone") << QByteArray() << u"ファイルを開けませんでした"_s;
    }

    void import_unreadable_showsReasonAndChangesNothing()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        const MacroManagerScene world;
        const QByteArray before = world.file();
        world.page().clickRow(1);
        if (!content.isNull())
            world.home.write(u"in.json"_s, content);
        world.import(world.home.file(u"in.json"_s));
        QCOMPARE(world.page().takeAlert(), message);
        QCOMPARE(world.file(), before);
        QCOMPARE(world.page().selectedName(), u"Beta"_s);
    }

    void import_folderOrCancelled_changesNothing()
    {
        const MacroManagerScene world;
        world.import(world.home.file(u"data"_s));
        QCOMPARE(world.page().takeAlert(), u"ファイルを開けませんでした"_s);
        world.import(std::nullopt);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(world.page().names().size(), 2);
    }
};

QTEST_MAIN(MacroExchangeTest)
#include "MacroExchangeTest.moc"
