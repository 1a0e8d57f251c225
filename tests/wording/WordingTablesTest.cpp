#include "wording/WordingTables.h"

#include "wording/WordingLookup.h"

#include <QCryptographicHash>
#include <QTest>

#include <algorithm>

using namespace penwick;
using namespace Qt::StringLiterals;

class WordingTablesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void fallbackTable_always_holdsExactlyItsHundredTexts()
    {
        const QHash<QString, QString> &table = wording::fallbackTable();
        QCOMPARE(table.size(), 100);
        QStringList keys = table.keys();
        std::sort(keys.begin(), keys.end());
        QByteArray listing;
        for (const QString &key : std::as_const(keys))
            listing += key.toUtf8() + '\t' + table.value(key).toUtf8() + '\n';
        // The digest of the agreed wording, one "key TAB text LF" after another in the order of the
        // keys. An intended change of a text changes the digest too.
        QCOMPARE(QCryptographicHash::hash(listing, QCryptographicHash::Sha256).toHex(),
                 "90985f2edd3b8e2d384bf4d4bb4f1f380931a12f1171037c6d775df53ef53b8c"_ba);
    }

    void fallbackTable_punctuation_isKeptAsItIs()
    {
        const QHash<QString, QString> &table = wording::fallbackTable();
        QCOMPARE(table.value(u"menu.file.open"_s), u"開く\u2026"_s);
        QCOMPARE(table.value(u"profile.manage.deleteConfirmMessage"_s),
                 u"本当に削除してもよろしいですか\uFF1Fこの操作は元に戻せません\u3002"_s);
        QCOMPARE(table.value(u"app.description"_s),
                 u"シンプルに書けて\u3001必要に応じて育てられるテキストエディタ"_s);
    }

    void englishValues_always_areTheNine()
    {
        const QHash<QString, QString> expected{
            {u"menu.file"_s, u"File"_s},
            {u"menu.edit"_s, u"Edit"_s},
            {u"menu.macro"_s, u"Macro"_s},
            {u"menu.profile"_s, u"Profile"_s},
            {u"menu.window"_s, u"Window"_s},
            {u"menu.help"_s, u"Help"_s},
            {u"profile.manage"_s, u"Manage UI Wording Profiles..."_s},
            {u"profile.manageWindowTitle"_s, u"UI Wording Profile Manager"_s},
            {u"macro.manageWindowTitle"_s, u"Macro Manager"_s},
        };
        QCOMPARE(wording::englishValues(), expected);
    }

    void english_coversOnlyItsNineKeys()
    {
        wording::setActiveValues(wording::englishValues());
        QCOMPARE(wording::text(u"menu.file"_s), u"File"_s);
        QCOMPARE(wording::text(u"menu.file.new"_s), u"新規作成"_s);
    }

    void japanese_menuWindow_hasNoText()
    {
        QVERIFY(!wording::fallbackTable().contains(u"menu.window"_s));
        QVERIFY(!wording::fallbackTable().contains(u"macro.manageWindowTitle"_s));
        QCOMPARE(wording::text(u"menu.window"_s), u"menu.window"_s);
    }

    void anyProfile_nameAndFileName_areTheSame()
    {
        for (const auto &values : {QHash<QString, QString>(), wording::englishValues()}) {
            wording::setActiveValues(values);
            QCOMPARE(wording::text(u"profile.manage.exportDefaultFilename"_s), u"profile"_s);
            QCOMPARE(wording::text(u"app.name"_s), u"penwick"_s);
        }
    }

    void userProfile_keyOutsideTheTables_overridesTheDefault()
    {
        wording::setActiveValues(QHash<QString, QString>{{u"dialog.inputTitle"_s, u"Input"_s}});
        QCOMPARE(wording::text(u"dialog.inputTitle"_s, u"入力"_s), u"Input"_s);
    }
};

QTEST_APPLESS_MAIN(WordingTablesTest)
#include "WordingTablesTest.moc"
