#include "macro/script/ScriptRunner.h"

#include <QTest>

#include <cstddef>

using namespace Qt::StringLiterals;

// This test is linked as if the engine lacked this function. The function is not part of the
// engine's public interface, so a release may omit it.
extern "C" [[gnu::weak]] struct OpaqueJSString *
JSStringCreateWithCharactersNoCopy(const unsigned short *units, std::size_t length);

namespace penwick {

class ScriptCopyTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void call_isMissing();
    void source_withoutTheCall_runs_data();
    void source_withoutTheCall_runs();
};

void ScriptCopyTest::call_isMissing()
{
    QVERIFY(JSStringCreateWithCharactersNoCopy == nullptr);
}

void ScriptCopyTest::source_withoutTheCall_runs_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("nothing") << QString();
    QTest::newRow("narrow") << u"plain text "_s;
    QTest::newRow("wide") << u"日本語 😀"_s;
    QTest::newRow("long") << u"日本語 "_s.repeated(1000000);
}

void ScriptCopyTest::source_withoutTheCall_runs()
{
    QFETCH(QString, text);
    QVERIFY(runScript({u"'"_s + text + u"'"_s, std::nullopt}, {}) == ScriptValue(text));
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::ScriptCopyTest)
#include "ScriptCopyTest.moc"
