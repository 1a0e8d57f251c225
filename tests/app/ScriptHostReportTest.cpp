#include "app/ScriptHostReport.h"

#include "support/TemporaryHome.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class ScriptHostReportTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void report_anyTrial_namesSandboxAndEngine();
    void report_withoutProcess_namesTheError();
    void warning_failedTrial_namesTheFailures();
    void missing_namesWhatDoesNotStand();
    void memory_key_isInMegabytes_data();
    void memory_key_isInMegabytes();
};

void ScriptHostReportTest::report_anyTrial_namesSandboxAndEngine()
{
    EngineTrial trial;
    trial.engine = u"Engine 1.2"_s;
    trial.protection = HostProtection{true, false, true};
    const QString sandbox = u"マクロの隔離:\n"
                            "  別プロセス: あり\n"
                            "  メモリの上限: あり\n"
                            "  システムコールの制限 (seccomp): なし\n"
                            "  ファイルアクセスの規則 (Landlock): あり\n"
                            "マクロの実行エンジン: Engine 1.2\n"_s;
    QCOMPARE(scriptHostReport(trial), sandbox + u"  動作確認: 合格"_s);
    trial.deniedCalls = {DeniedCall{4000, 0, 0, 0}};
    QCOMPARE(scriptHostReport(trial),
             sandbox + u"  動作確認: 合格\n  拒否されたシステムコール: 4000"_s);
    trial.deniedCalls.clear();
    trial.failures = QStringList{u"dates: wrong"_s, u"text: wrong"_s};
    QCOMPARE(scriptHostReport(trial),
             sandbox + u"  動作確認: dates: wrong、text: wrong、Engine 1.2"_s);
}

void ScriptHostReportTest::report_withoutProcess_namesTheError()
{
    EngineTrial trial;
    trial.error = ScriptError{ScriptError::Code::HostUnavailable, {}};
    QCOMPARE(scriptHostReport(trial), u"  動作確認: マクロの実行プログラムを起動できません"_s);
}

void ScriptHostReportTest::warning_failedTrial_namesTheFailures()
{
    EngineTrial trial;
    trial.engine = u"Engine 1.2"_s;
    trial.protection = HostProtection{true, true, true};
    QCOMPARE(engineWarning(trial), QString());
    QCOMPARE(engineLogLine(trial), QString());
    trial.protection->systemCallFilter = false;
    QCOMPARE(engineWarning(trial), u"このシステムでは、マクロのシステムコールを制限できません"_s);
    trial.step = u"dates"_s;
    trial.error = ScriptError{ScriptError::Code::HostEnded, {}};
    trial.error->ending = {
        HostEnding::Cause::DeniedCall, 0, {DeniedCall{4000, 1, 0, 0}}, u"Engine 1.2"_s};
    QCOMPARE(engineWarning(trial),
             u"マクロの実行エンジンが正しく動作しません（dates、"
             "許可されていないシステムコール: 4000、Engine 1.2）。開発元に報告してください"_s);
    QVERIFY(engineLogLine(trial).startsWith(u"The script engine fails its trial: dates; "));
    trial.error = ScriptError{ScriptError::Code::Stopped, {}};
    QCOMPARE(engineWarning(trial),
             u"マクロの実行エンジンが正しく動作しません（dates、応答がありません、Engine 1.2）。"
             "開発元に報告してください"_s);
    trial.deniedCalls = {DeniedCall{4000, 0, 0, 0}};
    QCOMPARE(engineWarning(trial),
             u"マクロの実行エンジンが正しく動作しません（dates、応答がありません、"
             "拒否されたシステムコール: 4000、Engine 1.2）。開発元に報告してください"_s);
    trial.error.reset();
    trial.failures = QStringList{u"dates: wrong"_s};
    QCOMPARE(engineWarning(trial),
             u"マクロの実行エンジンが正しく動作しません（dates: wrong、"
             "拒否されたシステムコール: 4000、Engine 1.2）。開発元に報告してください"_s);
    QCOMPARE(engineLogLine(trial),
             u"The script engine fails its trial: dates: wrong; 4000; Engine 1.2"_s);
}

void ScriptHostReportTest::missing_namesWhatDoesNotStand()
{
    QCOMPARE(missingProtections(HostProtection{true, true, true}), QString());
    QCOMPARE(missingProtections(std::nullopt), u"the process that runs them"_s);
    QCOMPARE(missingProtections(HostProtection{false, true, false}),
             u"a memory limit, file access rules (Landlock)"_s);
    QCOMPARE(missingProtections(HostProtection{true, false, true}),
             u"a filter of system calls (seccomp)"_s);
}

void ScriptHostReportTest::memory_key_isInMegabytes_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<quint64>("bytes"); // 0: none.

    QTest::newRow("least") << u"64"_s << quint64{64} * 1024 * 1024;
    QTest::newRow("large") << u"16384"_s << quint64{16} * 1024 * 1024 * 1024;
    QTest::newRow("too small") << u"63"_s << quint64{0};
    QTest::newRow("negative") << u"-1"_s << quint64{0};
    QTest::newRow("beyond any machine") << u"99999999999999999"_s << quint64{0};
    QTest::newRow("no number") << u"4 GB"_s << quint64{0};
    QTest::newRow("automatic") << u"automatic"_s << quint64{0};
    QTest::newRow("empty") << QString() << quint64{0};
}

void ScriptHostReportTest::memory_key_isInMegabytes()
{
    QFETCH(QString, stored);
    QFETCH(quint64, bytes);
    const test::TemporaryHome home;
    UserDefaults defaults(home.file(u"settings.ini"_s));
    const Preferences preferences(defaults);
    QVERIFY(!scriptMemory(preferences).has_value());
    defaults.setString(u"macroMemoryLimitMegabytes"_s, stored);
    QCOMPARE(scriptMemory(preferences).value_or(0), bytes);
}

QTEST_APPLESS_MAIN(ScriptHostReportTest)
#include "ScriptHostReportTest.moc"
