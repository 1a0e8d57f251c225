#include "window/WrappingSwitch.h"

#include "support/ShownTextView.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QScrollBar>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// A view with a switch. Its text is one line that is wider than the view.
struct Switched
{
    explicit Switched(Preferences &preferences)
        : wrapping(&shown.view, &shown.view, preferences)
    {
    }

    [[nodiscard]] qint64 firstRow() const { return shown.view.rowAround(0).length; }

    test::ShownTextView shown{u"0123456789"_s.repeated(100)};
    WrappingSwitch wrapping;
};

/// Settings in a file with the given content.
struct Stored
{
    explicit Stored(const QByteArray &content)
    {
        QFile file(home.file(u"penwick.conf"_s));
        const bool isOpen = file.open(QIODevice::WriteOnly);
        Q_ASSERT(isOpen);
        Q_UNUSED(isOpen)
        file.write("[General]\n" + content);
        file.close();
        defaults = std::make_unique<UserDefaults>(file.fileName());
        preferences = std::make_unique<Preferences>(*defaults);
    }

    const test::TemporaryHome home;
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<Preferences> preferences;
};

} // namespace

class WrappingSwitchTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void setting_decidesWhereRowsEnd_data();
    void setting_decidesWhereRowsEnd();
    void toggle_changesAllViewsAndIsStored();
    void toggle_bringsTheColumnBack();
    void newColumn_actsAtOnce();
};

void WrappingSwitchTest::setting_decidesWhereRowsEnd_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<qint64>("row"); // 0: as many as fit.
    QTest::newRow("none") << QByteArray() << qint64(0);
    QTest::newRow("off") << QByteArray("wrapping=off\n") << qint64(1000);
    QTest::newRow("column") << QByteArray("wrapping=column\n") << qint64(80);
    QTest::newRow("column 33") << QByteArray("wrapping=column\nwrapColumn=33\n") << qint64(33);
    QTest::newRow("too small") << QByteArray("wrapping=column\nwrapColumn=19\n") << qint64(80);
    QTest::newRow("broken") << QByteArray("wrapping=maybe\nwrapColumn=33\n") << qint64(0);
}

void WrappingSwitchTest::setting_decidesWhereRowsEnd()
{
    QFETCH(QByteArray, content);
    QFETCH(qint64, row);
    const Stored stored(content);
    const Switched view(*stored.preferences);
    const test::ShownTextView plain(u"0123456789"_s.repeated(100));
    QCOMPARE(view.firstRow(), row > 0 ? row : plain.view.rowAround(0).length);
    QCOMPARE(view.wrapping.isOn(), row != 1000);
}

void WrappingSwitchTest::toggle_changesAllViewsAndIsStored()
{
    const Stored stored({});
    Switched first(*stored.preferences);
    Switched second(*stored.preferences);
    const qint64 wrapped = first.firstRow();
    second.wrapping.toggle();
    QCOMPARE(first.firstRow(), 1000);
    QCOMPARE(second.firstRow(), 1000);
    QVERIFY(first.shown.view.horizontalScrollBar()->maximum() > 0);
    UserDefaults later(stored.home.file(u"penwick.conf"_s));
    Preferences preferences(later);
    const Switched third(preferences);
    QVERIFY(!third.wrapping.isOn());
    QCOMPARE(third.firstRow(), 1000);
    first.wrapping.toggle();
    QCOMPARE(second.firstRow(), wrapped);
    QCOMPARE(second.shown.view.horizontalScrollBar()->maximum(), 0);
}

void WrappingSwitchTest::toggle_bringsTheColumnBack()
{
    const Stored stored("wrapping=column\n");
    Switched view(*stored.preferences);
    view.wrapping.toggle();
    QCOMPARE(view.firstRow(), 1000);
    view.wrapping.toggle();
    QCOMPARE(view.firstRow(), 80);
}

void WrappingSwitchTest::newColumn_actsAtOnce()
{
    const Stored stored("wrapping=column\n");
    const Switched view(*stored.preferences);
    stored.preferences->setNumber(PreferenceId::WrapColumn, 25);
    QCOMPARE(view.firstRow(), 25);
}

QTEST_MAIN(WrappingSwitchTest)
#include "WrappingSwitchTest.moc"
