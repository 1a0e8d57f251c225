#include "platform/settings/UserDefaults.h"

#include "support/TemporaryHome.h"

#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class UserDefaultsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void values_absent_haveTheirDefaults()
    {
        const TemporaryHome home;
        const UserDefaults defaults(home.file(u"d.conf"_s));
        QCOMPARE(defaults.string(u"key"_s), std::nullopt);
        QCOMPARE(defaults.bytes(u"key"_s), QByteArray());
        QVERIFY(!QFileInfo::exists(home.file(u"d.conf"_s)));
    }

    void values_set_areOnDiskAtOnceUnderTheirKeys()
    {
        const TemporaryHome home;
        UserDefaults defaults(home.file(u"config/penwick/penwick.conf"_s));
        QVERIFY(defaults.setString(u"activeUIWordingProfileId"_s, u"default-en"_s));
        QVERIFY(defaults.setBoolean(u"hasInitializedBuiltInMacros"_s, true));
        const QByteArray file = home.read(u"config/penwick/penwick.conf"_s);
        QVERIFY(file.contains("\nactiveUIWordingProfileId=default-en\n"));
        QVERIFY(file.contains("\nhasInitializedBuiltInMacros=true\n"));
    }

    // Each start applies the stored profile; this must not rewrite the file.
    void set_valueThatIsThere_leavesTheFile()
    {
        const TemporaryHome home;
        const QString path = home.file(u"d.conf"_s);
        QVERIFY(UserDefaults(path).setString(u"key"_s, u"a, b"_s));
        const QByteArray withComment = "; by hand\n" + home.read(u"d.conf"_s);
        home.write(u"d.conf"_s, withComment);
        UserDefaults defaults(path);
        QVERIFY(defaults.setString(u"key"_s, u"a, b"_s));
        QCOMPARE(home.read(u"d.conf"_s), withComment);
        QVERIFY(UserDefaults(path).setString(u"key"_s, u"from another process"_s));
        QVERIFY(defaults.setString(u"key"_s, u"a, b"_s));
        QCOMPARE(UserDefaults(path).string(u"key"_s), std::optional(u"a, b"_s));
    }

    void values_ofEveryKind_comeBackFromTheFile()
    {
        const TemporaryHome home;
        const QString written = home.file(u"a.conf"_s);
        const QString copied = home.file(u"b.conf"_s);
        const QString text = u"a, b; \"c\" = 日本 @Invalid() %2F\n\\"_s;
        const QByteArray bytes("\0\x01\xFF,\n", 5);
        UserDefaults defaults(written);
        QVERIFY(defaults.setString(u"text"_s, text));
        QVERIFY(defaults.setString(u"empty"_s, u""_s));
        QVERIFY(defaults.setString(u"at"_s, u"@Variant"_s));
        QVERIFY(defaults.setBoolean(u"no"_s, false));
        QVERIFY(defaults.setBytes(u"bytes"_s, bytes));
        // Stores of the same path share one cache. Only a store of another path reads the file.
        QVERIFY(QFile::copy(written, copied));
        const UserDefaults again(copied);
        QCOMPARE(again.string(u"text"_s), std::optional(text));
        QCOMPARE(again.string(u"empty"_s), std::optional(QString()));
        QCOMPARE(again.string(u"at"_s), std::optional(u"@Variant"_s));
        QCOMPARE(again.string(u"no"_s), std::optional(u"false"_s));
        QCOMPARE(again.bytes(u"bytes"_s), bytes);
    }

    void set_unwritableFile_failsAndKeepsTheValue()
    {
        const TemporaryHome home;
        home.write(u"file"_s, {});
        UserDefaults defaults(home.file(u"file/d.conf"_s));
        QVERIFY(!defaults.setString(u"key"_s, u"x"_s));
        QCOMPARE(defaults.string(u"key"_s), std::optional(u"x"_s));
    }

    void standardAndUsage_useTheConfigurationFolder()
    {
        const TemporaryHome home;
        QVERIFY(UserDefaults::standard().setBoolean(u"key"_s, true));
        QVERIFY(UserDefaults::usage().setBoolean(u"key"_s, false));
        QVERIFY(home.read(u"config/penwick/penwick.conf"_s).contains("key=true"));
        QVERIFY(home.read(u"config/penwick/usage.conf"_s).contains("key=false"));
    }
};

QTEST_APPLESS_MAIN(UserDefaultsTest)
#include "UserDefaultsTest.moc"
