#include "macro/engine/HostEndingText.h"

#include <QTest>

#include <csignal>
#include <sys/syscall.h>

using namespace Qt::StringLiterals;

namespace penwick {

class HostEndingTextTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ending_anyCause_isNamed_data();
    void ending_anyCause_isNamed();
};

void HostEndingTextTest::ending_anyCause_isNamed_data()
{
    QTest::addColumn<HostEnding>("ending");
    QTest::addColumn<QString>("text"); // The part in parentheses.
    QTest::addColumn<QString>("line");

    using Cause = HostEnding::Cause;
    const QString socket = u"socket (%1)"_s.arg(SYS_socket);
    const QString open = u"openat (%1)"_s.arg(SYS_openat);
    const DeniedCall killed{SYS_socket, 1, 0, 0};
    const DeniedCall refused{SYS_openat, 0, 0, 0};
    const DeniedCall unknown{4000, 0, 0, 0};

    QTest::newRow("call") << HostEnding{Cause::DeniedCall, SIGSYS, {killed}, u"E 1"_s}
                          << u"許可されていないシステムコール: %1、E 1"_s.arg(socket)
                          << u"denied system call: %1; E 1"_s.arg(socket);
    QTest::newRow("call after refused ones")
        << HostEnding{Cause::DeniedCall, SIGSYS, {unknown, refused, killed}, {}}
        << u"許可されていないシステムコール: %1、拒否されたシステムコール: 4000, %2"_s.arg(socket,
                                                                                           open)
        << u"denied system call: %1; refused system calls: 4000, %2"_s.arg(socket, open);
    QTest::newRow("signal") << HostEnding{Cause::Signal, SIGSEGV, {}, u"E 1"_s}
                            << u"シグナル: SIGSEGV、E 1"_s << u"signal: SIGSEGV; E 1"_s;
    QTest::newRow("killed") << HostEnding{Cause::Signal, SIGKILL, {}, {}}
                            << u"シグナル: SIGKILL、メモリ不足の可能性"_s
                            << u"signal: SIGKILL; perhaps for want of memory"_s;
    QTest::newRow("signal after a refused call")
        << HostEnding{Cause::Signal, SIGTRAP, {refused}, u"E 1"_s}
        << u"シグナル: SIGTRAP、拒否されたシステムコール: %1、E 1"_s.arg(open)
        << u"signal: SIGTRAP; refused system calls: %1; E 1"_s.arg(open);
    QTest::newRow("status") << HostEnding{Cause::Ended, 3, {}, {}} << u"終了ステータス: 3"_s
                            << u"exit status: 3"_s;
    QTest::newRow("nonsense") << HostEnding{} << u"応答を解釈できません"_s
                              << u"its answer makes no sense"_s;
}

void HostEndingTextTest::ending_anyCause_isNamed()
{
    QFETCH(HostEnding, ending);
    QFETCH(QString, text);
    QFETCH(QString, line);
    QCOMPARE(hostEndingText(ending),
             u"実行が異常終了しました（"_s + text + u"）。開発元に報告してください"_s);
    QCOMPARE(hostEndingLogLine(ending), u"The process that runs macros ended: "_s + line);
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::HostEndingTextTest)
#include "HostEndingTextTest.moc"
