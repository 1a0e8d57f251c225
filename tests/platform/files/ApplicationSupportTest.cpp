#include "platform/files/ApplicationSupport.h"

#include "support/TemporaryHome.h"

#include <QTest>

#include <pwd.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class ApplicationSupportTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void folderPath_xdgSet_isPenwickBelowIt()
    {
        const TemporaryHome home;
        QCOMPARE(ApplicationSupport::folderPath(), home.dataFolder() + u"/penwick"_s);
        QCOMPARE(ApplicationSupport::configurationFilePath(),
                 home.configFolder() + u"/penwick/penwick.conf"_s);
        QCOMPARE(ApplicationSupport::usageFilePath(),
                 home.configFolder() + u"/penwick/usage.conf"_s);
        QCOMPARE(ApplicationSupport::stateFolderPath(), home.file(u"state/penwick"_s));
        QVERIFY(!QFileInfo::exists(home.dataFolder()));
    }

    void folderPath_xdgUnsetEmptyOrRelative_usesTheDefault_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("unset") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("relative") << QByteArray("some/where");
    }

    void folderPath_xdgUnsetEmptyOrRelative_usesTheDefault()
    {
        QFETCH(QByteArray, value);
        const TemporaryHome home;
        for (const char *name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"})
            if (value.isNull())
                qunsetenv(name);
            else
                qputenv(name, value);
        QCOMPARE(ApplicationSupport::folderPath(), home.file(u".local/share/penwick"_s));
        QCOMPARE(ApplicationSupport::configurationFilePath(),
                 home.file(u".config/penwick/penwick.conf"_s));
        QCOMPARE(ApplicationSupport::stateFolderPath(), home.file(u".local/state/penwick"_s));
    }

    void folderPath_noHomeVariable_asksTheUserDatabase()
    {
        const TemporaryHome home;
        qunsetenv("XDG_DATA_HOME");
        qunsetenv("HOME");
        QCOMPARE(ApplicationSupport::folderPath(),
                 QFile::decodeName(QByteArray(getpwuid(getuid())->pw_dir)) +
                     u"/.local/share/penwick"_s);
    }
};

QTEST_APPLESS_MAIN(ApplicationSupportTest)
#include "ApplicationSupportTest.moc"
