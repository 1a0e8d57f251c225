#include "app/OpenRequestWire.h"

#include <QTest>
#include <QtEndian>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

QByteArray bytesOf(const OpenRequest &request)
{
    QByteArray bytes;
    sendRequest(request, [&bytes](QByteArrayView more) {
        bytes.append(more.data(), more.size());
        return true;
    });
    return bytes;
}

/// Reads `bytes` in portions of the given size. Nothing when the request is incomplete.
tl::expected<std::optional<OpenRequest>, Refusal> read(QByteArrayView bytes, qsizetype portion)
{
    RequestReader reader;
    for (qsizetype i = 0; i < bytes.size(); i += portion) {
        const auto complete = reader.append(bytes.sliced(i, std::min(portion, bytes.size() - i)));
        if (!complete)
            return tl::unexpected(complete.error());
        if (*complete && i + portion >= bytes.size())
            return reader.take();
    }
    return std::nullopt;
}

OpenRequest sample()
{
    OpenRequest request;
    request.newWindow = true;
    request.activationToken = "token";
    request.startupId = "id_TIME123";
    request.items = {{"/tmp/a b", std::nullopt, std::nullopt},
                     {"/tmp/\xff\xfe\n", std::nullopt, TextPlace{3, 4}},
                     {{}, Text(u"日本語 😀\r\n"_s), TextPlace{1, 2}},
                     {{}, Text(), std::nullopt}};
    return request;
}

QByteArray header(quint8 kind, quint32 length)
{
    QByteArray bytes(8, '\0');
    bytes[0] = static_cast<char>(kind);
    qToLittleEndian(length, bytes.data() + 4);
    return bytes;
}

QByteArray frame(quint8 kind, const QByteArray &payload)
{
    return header(kind, static_cast<quint32>(payload.size())) + payload;
}

const QByteArray kGreeting = frame(1, QByteArray("penwick!\1\0\0\0", 12));
const QByteArray kNoPlace(16, '\0');

} // namespace

class OpenRequestWireTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void request_sentAndRead_isTheSame()
    {
        for (const bool wait : {false, true}) {
            OpenRequest request = sample();
            request.wait = wait;
            const QByteArray bytes = bytesOf(request);
            for (const qsizetype portion : {qsizetype{1}, qsizetype{7}, bytes.size()}) {
                const auto got = read(bytes, portion);
                QVERIFY(got && *got);
                QVERIFY(**got == request);
            }
        }
    }

    void request_emptyOne_isTheSame()
    {
        const auto got = read(bytesOf({}), 1);
        QVERIFY(got && *got && **got == OpenRequest());
    }

    void request_largeText_comesInFramesOfBoundedSize()
    {
        const Text text(QString(300'000, u'あ'));
        OpenRequest request;
        request.items = {{{}, text, std::nullopt}};
        qsizetype largest = 0;
        QByteArray bytes;
        QVERIFY(sendRequest(request, [&](QByteArrayView more) {
            largest = std::max(largest, more.size());
            bytes.append(more.data(), more.size());
            return true;
        }));
        QVERIFY(largest <= kMaxPayload + 8);
        const auto got = read(bytes, 100'000);
        QVERIFY(got && *got);
        QVERIFY((*got)->items.first().text == text);
    }

    void request_refusedBySink_stops()
    {
        int calls = 0;
        QVERIFY(!sendRequest(sample(), [&calls](QByteArrayView) { return ++calls < 3; }));
        QCOMPARE(calls, 3);
    }

    void request_cutOffAnywhere_staysIncomplete()
    {
        const QByteArray bytes = bytesOf(sample());
        for (qsizetype size = 0; size < bytes.size(); ++size) {
            const auto got = read(QByteArrayView(bytes).first(size), bytes.size());
            QVERIFY(got && !*got);
        }
    }

    void reader_brokenBytes_refuses_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("refusal");
        const auto row = [](const char *name, const QByteArray &bytes, Refusal refusal) {
            QTest::newRow(name) << bytes << static_cast<int>(refusal);
        };
        const auto afterGreeting =
            [&row](const char *name, const QByteArray &bytes, Refusal refusal) {
                row(name, kGreeting + bytes, refusal);
            };
        row("noise", "GET / HTTP/1.1\r\n\r\n", Refusal::Malformed);
        row("no greeting", frame(8, {}), Refusal::Malformed);
        row("short greeting", frame(1, "penwick!"), Refusal::Malformed);
        row("other greeting", frame(1, QByteArray("PENWICK!\1\0\0\0", 12)), Refusal::Malformed);
        row("newer version", frame(1, QByteArray("penwick!\2\0\0\0", 12)), Refusal::OtherVersion);
        row("newer version with more",
            frame(1, QByteArray("penwick!\2\0\0\0more", 16)),
            Refusal::OtherVersion);
        row("huge announcement", header(1, 0xffffffff), Refusal::TooLarge);
        row("bytes that have to be zero", QByteArray("\1\1\0\0\0\0\0\0", 8), Refusal::Malformed);
        afterGreeting("greeting again", kGreeting, Refusal::Malformed);
        afterGreeting("unknown kind", frame(99, {}), Refusal::Malformed);
        afterGreeting("file without place", frame(4, "/a"), Refusal::Malformed);
        afterGreeting("relative path", frame(4, kNoPlace + "a"), Refusal::Malformed);
        afterGreeting("no path", frame(4, kNoPlace), Refusal::Malformed);
        afterGreeting(
            "path with NUL", frame(4, kNoPlace + QByteArray("/a\0b", 4)), Refusal::Malformed);
        afterGreeting("place before the first line",
                      frame(4, QByteArray(16, '\xff') + "/a"),
                      Refusal::Malformed);
        afterGreeting("bytes of no text", frame(6, "a"), Refusal::Malformed);
        afterGreeting("end of no text", frame(7, {}), Refusal::Malformed);
        afterGreeting("file inside a text",
                      frame(5, kNoPlace) + frame(4, kNoPlace + "/a"),
                      Refusal::Malformed);
        afterGreeting("end inside a text", frame(5, kNoPlace) + frame(8, {}), Refusal::Malformed);
        afterGreeting(
            "text that is no UTF-8", frame(5, kNoPlace) + frame(6, "\xff"), Refusal::NotUtf8);
        afterGreeting("text that is cut off",
                      frame(5, kNoPlace) + frame(6, "\xe3\x81") + frame(7, {}),
                      Refusal::NotUtf8);
        afterGreeting("more after the end", frame(8, {}) + frame(8, {}), Refusal::Malformed);
    }

    void reader_brokenBytes_refuses()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, refusal);
        for (const qsizetype portion : {qsizetype{1}, bytes.size()}) {
            const auto got = read(bytes, portion);
            QVERIFY(!got);
            QCOMPARE(static_cast<int>(got.error()), refusal);
        }
    }

    void reader_tooManyItems_refuses()
    {
        RequestReader reader;
        QVERIFY(reader.append(kGreeting));
        const QByteArray file = frame(4, kNoPlace + "/a");
        for (qsizetype i = 0; i < kMaxItems; ++i)
            QVERIFY(reader.append(file));
        QCOMPARE(static_cast<int>(reader.append(file).error()),
                 static_cast<int>(Refusal::TooLarge));
    }

    void reply_sentAndRead_isTheSame()
    {
        ReplyReader reader;
        const Reply replies[] = {
            {.kind = Reply::Kind::Taken},
            {.kind = Reply::Kind::Refused, .refusal = Refusal::OtherVersion},
            {.kind = Reply::Kind::Closed, .openedAll = false},
            {.kind = Reply::Kind::Closed, .openedAll = true},
            {.kind = Reply::Kind::Opened, .openedAll = false},
        };
        for (const Reply &reply : replies) {
            const QByteArray bytes = encoded(reply);
            for (const char byte : bytes) {
                const auto none = reader.next();
                QVERIFY(none && !*none);
                reader.append({&byte, 1});
            }
            const auto got = reader.next();
            QVERIFY(got && *got);
            QVERIFY(**got == reply);
        }
    }

    void reply_broken_isRefused()
    {
        for (const QByteArray &bytes : {frame(1, "a"), frame(64, {}), header(64, 1U << 31)}) {
            ReplyReader reader;
            reader.append(bytes);
            QVERIFY(!reader.next());
        }
    }
};

QTEST_GUILESS_MAIN(OpenRequestWireTest)
#include "OpenRequestWireTest.moc"
