#include "macro/script/ScriptWire.h"

#include "support/SendOutcome.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Map = ScriptValue::Map;
using List = ScriptValue::List;

/// The bytes that `send` writes to its sink.
template <typename Send> QByteArray bytesOf(Send send)
{
    QByteArray bytes;
    const ByteSink sink = [&bytes](QByteArrayView more) {
        bytes.append(more);
        return true;
    };
    return send(sink) ? bytes : QByteArray();
}

QByteArray bytesOf(const ScriptOutcome &outcome)
{
    return bytesOf([&](const ByteSink &sink) { return sendOutcome(outcome, sink); });
}

/// The single message in `bytes`, which arrive in portions of `portion` bytes.
std::optional<Message>
messageOf(const QByteArray &bytes, MessageReader::Side side, qsizetype portion)
{
    MessageReader reader(side);
    for (qsizetype start = 0; start < bytes.size(); start += portion) {
        const auto early = reader.next();
        if (!early || *early)
            return std::nullopt;
        reader.append(QByteArrayView(bytes).sliced(start, std::min(portion, bytes.size() - start)));
    }
    auto message = reader.next();
    return message ? std::move(*message) : std::nullopt;
}

WireError errorOf(const QByteArray &bytes)
{
    MessageReader reader(MessageReader::Side::FromHost);
    reader.append(bytes);
    while (true) {
        const auto message = reader.next();
        if (!message)
            return message.error();
        if (!*message)
            qFatal("The bytes hold no error.");
    }
}

QByteArray frame(int kind, const QByteArray &payload, int more = 0)
{
    const auto length = static_cast<quint32>(payload.size());
    QByteArray bytes;
    bytes.append(static_cast<char>(kind)).append(static_cast<char>(more)).append(2, '\0');
    bytes.append(reinterpret_cast<const char *>(&length), sizeof length);
    return bytes + payload;
}

/// Decodes the message after each portion that arrives, and when it is complete.
tl::expected<ScriptOutcome, WireError>
decodeInPortions(const Message &message, qsizetype portion, const ScriptLimits &limits = {})
{
    OutcomeDecoder decoder(limits);
    for (qsizetype size = portion; size < message.payload.size(); size += portion)
        decoder.decodeAhead({message.kind, message.payload.first(size)});
    return decoder.decode(message);
}

std::optional<WireError> valueError(const QByteArray &payload, const ScriptLimits &limits = {})
{
    const auto outcome = decodeOutcome({MessageKind::Value, payload}, limits);
    const auto inPortions = decodeInPortions({MessageKind::Value, payload}, 1, limits);
    if (inPortions != outcome)
        qFatal("A value decoded while it arrives differs.");
    return outcome ? std::nullopt : std::optional(outcome.error());
}

ScriptValue texts(const QString &joined, std::vector<quint32> lengths)
{
    return ScriptValue(ScriptTexts{Text(joined), std::move(lengths)});
}

QByteArray payloadOf(const ScriptValue &value)
{
    return bytesOf(ScriptOutcome(value)).mid(kFrameHeaderSize);
}

} // namespace

class ScriptWireTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outcome_anyKind_comesBack_data();
    void outcome_anyKind_comesBack();
    void request_anyText_comesBack_data();
    void request_anyText_comesBack();
    void request_narrowText_takesOneByteAUnit();
    void greeting_andLog_comeBack();
    void sink_refusing_isReported();
    void frames_broken_areErrors();
    void payload_cutAnywhere_isAnError();
    void payload_broken_isAnError_data();
    void payload_broken_isAnError();
    void value_beyondItsLimits_failsWithTheLimit();
    void failure_thatIsNotTheHostsToSay_isAnError();
    void failure_amidAValue_isTheOutcome();
    void log_amidAValue_isReadFirst();
};

void ScriptWireTest::outcome_anyKind_comesBack_data()
{
    QTest::addColumn<ScriptOutcome>("outcome");

    const auto row = [](const char *name, ScriptOutcome outcome) {
        QTest::newRow(name) << std::move(outcome);
    };
    const ScriptValue null;
    row("null", null);
    row("other", ScriptValue::other());
    row("true", ScriptValue(true));
    row("false", ScriptValue(false));
    row("number", ScriptValue(-0.1));
    row("infinity", ScriptValue(std::numeric_limits<double>::infinity()));
    row("empty text", ScriptValue(u""_s));
    row("text", ScriptValue(u"a\0b\u00ff日本😀"_s));
    row("text of several frames", ScriptValue(u"日本"_s.repeated(1000000)));
    row("narrow text of several frames", ScriptValue(u"\u00e9 "_s.repeated(2000000)));
    row("empty list", ScriptValue(List{}));
    row("texts", ScriptValue(List{texts(u"a\n\n日"_s, {1, 0, 1}), null, texts(u""_s, {0})}));
    row("texts with line feeds", ScriptValue(List{texts(u"\n\n\n\n"_s, {1, 2})}));
    row("texts of several frames",
        ScriptValue(
            List{texts(u"日本\n"_s.repeated(600000).chopped(1), std::vector<quint32>(600000, 2))}));
    row("empty map", ScriptValue(Map{}));
    row("nested",
        ScriptValue(List{ScriptValue(Map{{u"日"_s, ScriptValue(List{ScriptValue()})},
                                         {u""_s, ScriptValue(1.0)},
                                         {u""_s, ScriptValue::other()}}),
                         ScriptValue(u"x"_s)}));
    ScriptValue deep;
    for (std::size_t i = 0; i < ScriptLimits().depth; ++i)
        deep = ScriptValue(List{deep});
    row("deep", deep);
    row("exception", tl::unexpected(ScriptError{ScriptError::Code::Exception, u"Error: 日"_s, 7}));
    row("exception with a column",
        tl::unexpected(ScriptError{ScriptError::Code::Exception, u"Error"_s, 7, {}, 9}));
    row("too large", tl::unexpected(ScriptError{ScriptError::Code::ResultTooLarge, {}}));
}

void ScriptWireTest::outcome_anyKind_comesBack()
{
    QFETCH(ScriptOutcome, outcome);
    const QByteArray bytes = bytesOf(outcome);
    for (const qsizetype portion : {bytes.size(), qsizetype{100003}}) {
        const auto message = messageOf(bytes, MessageReader::Side::FromHost, portion);
        QVERIFY(message.has_value());
        const auto decoded = decodeOutcome(*message);
        QVERIFY(decoded.has_value());
        QVERIFY(*decoded == outcome);
        QVERIFY(decodeInPortions(*message, std::max<qsizetype>(1, portion / 100)) == decoded);
    }
}

void ScriptWireTest::request_anyText_comesBack_data()
{
    QTest::addColumn<QString>("source");

    QTest::newRow("empty") << QString();
    QTest::newRow("narrow") << u"return {};\u00ff\u0080"_s;
    QTest::newRow("wide") << u"return '日本';"_s;
    QTest::newRow("lone surrogate") << QString(QChar(0xd800));
    QTest::newRow("long") << u"0123456789abcdef"_s.repeated(200000);
}

void ScriptWireTest::request_anyText_comesBack()
{
    QFETCH(QString, source);
    for (const std::optional<QString> &input : {std::optional<QString>(), {QString()}, {u"日"_s}}) {
        const ScriptRequest request{source, input, {source, u"日"_s, QString()}};
        const QByteArray bytes =
            bytesOf([&](const ByteSink &sink) { return sendRequest(request, sink); });
        const auto message = messageOf(bytes, MessageReader::Side::FromEditor, 4099);
        QVERIFY(message.has_value());
        const auto decoded = decodeRequest(message->payload);
        QVERIFY(decoded.has_value());
        QVERIFY(*decoded == request);
    }
}

void ScriptWireTest::request_narrowText_takesOneByteAUnit()
{
    const auto sizeOf = [](const QString &source) {
        const auto send = [&source](const ByteSink &sink) {
            return sendRequest({source, std::nullopt}, sink);
        };
        return bytesOf(send).size();
    };
    const qsizetype empty = sizeOf({});
    QCOMPARE(sizeOf(u"x"_s.repeated(1000)), empty + 1000);
    QCOMPARE(sizeOf(u"行"_s.repeated(1000)), empty + 2000);
}

void ScriptWireTest::greeting_andLog_comeBack()
{
    for (int bits = 0; bits < 8; ++bits) {
        const HostProtection protection{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0};
        const QByteArray bytes =
            bytesOf([&](const ByteSink &sink) { return sendReady(protection, sink); });
        QVERIFY(decodeReady(bytes.mid(kFrameHeaderSize)) == protection);
    }
    const QByteArray bytes =
        bytesOf([](const ByteSink &sink) { return sendText(MessageKind::Log, u"日", sink); });
    QVERIFY(decodeText(bytes.mid(kFrameHeaderSize)) == u"日"_s);
    const QByteArray engine = bytesOf(
        [](const ByteSink &sink) { return sendText(MessageKind::Engine, u"Engine 1.2", sink); });
    QVERIFY(decodeText(engine.mid(kFrameHeaderSize)) == u"Engine 1.2"_s);
    QVERIFY(!decodeText("x").has_value());
}

void ScriptWireTest::sink_refusing_isReported()
{
    int asked = 0;
    const ByteSink sink = [&asked](QByteArrayView) { return ++asked < 2; };
    QVERIFY(!sendText(MessageKind::Log, u"日"_s.repeated(3000000), sink));
    QCOMPARE(asked, 2);
}

void ScriptWireTest::frames_broken_areErrors()
{
    constexpr int kLog = 3;
    QCOMPARE(errorOf(frame(0, {})), WireError::UnknownKind);
    QCOMPARE(errorOf(frame(7, {})), WireError::UnknownKind);
    QCOMPARE(errorOf(frame(255, {})), WireError::UnknownKind);
    QCOMPARE(errorOf(frame(2, {})), WireError::UnknownKind); // Only the editor sends this kind.
    QCOMPARE(errorOf(frame(kLog, {}, 2)), WireError::BadHeader);
    QByteArray padded = frame(kLog, {});
    padded[3] = 1;
    QCOMPARE(errorOf(padded), WireError::BadHeader);
    QByteArray longest = frame(kLog, {});
    longest[6] = 0x10;
    longest[4] = 1; // One byte more than 1 MiB.
    QCOMPARE(errorOf(longest), WireError::FrameTooLong);
    QCOMPARE(errorOf(frame(kLog, "a", 1) + frame(4, "b")), WireError::MixedMessages);
    QCOMPARE(errorOf(frame(kLog, "a", 1) + frame(5, "b")), WireError::MixedMessages);
    QCOMPARE(errorOf(frame(5, "a", 1) + frame(4, "b")), WireError::MixedMessages);
    QCOMPARE(errorOf(frame(5, "a", 1) + frame(kLog, "b")), WireError::MixedMessages);
    for (const int kind : {4, 5})
        QCOMPARE(errorOf(frame(4, "a", 1) + frame(kLog, "b", 1) + frame(kind, "c")),
                 WireError::MixedMessages);
    QCOMPARE(errorOf(frame(1, QByteArray(65, 'x'))), WireError::MessageTooLong);
    QCOMPARE(errorOf(frame(1, QByteArray(64, 'x'), 1) + frame(1, "x")), WireError::MessageTooLong);
}

void ScriptWireTest::payload_cutAnywhere_isAnError()
{
    const QByteArray payload = payloadOf(ScriptValue(
        Map{{u"日本"_s, ScriptValue(List{ScriptValue(1.5), ScriptValue(u"text"_s), ScriptValue()})},
            {u"c"_s, ScriptValue(List{texts(u"a\nb"_s, {1, 1})})},
            {u"b"_s, ScriptValue(true)}}));
    QVERIFY(!valueError(payload));
    for (qsizetype size = 0; size < payload.size(); ++size)
        QVERIFY(valueError(payload.first(size)).has_value());
    QCOMPARE(valueError(payload + 'x'), std::optional(WireError::TrailingBytes));
}

void ScriptWireTest::payload_broken_isAnError_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<int>("error");

    const auto row = [](const char *name, const QByteArray &payload, WireError error) {
        QTest::newRow(name) << payload << static_cast<int>(error);
    };
    row("empty", {}, WireError::Truncated);
    row("unknown tag", "\x0a", WireError::UnknownTag);
    row("negative tag", "\xff", WireError::UnknownTag);
    row("end of nothing", "\x08", WireError::UnknownTag);
    row("unknown form of text", QByteArray("\x04\x05\0\0\0\0", 6), WireError::UnknownTag);
    row("no text for a value", QByteArray("\x04\0\0\0\0\0", 6), WireError::UnknownTag);
    row("text of four gigabytes", "\x04\x02\xff\xff\xff\xff", WireError::Truncated);
    row("shared text where nothing is shared",
        QByteArray("\x04\x03\0\0\x01\0\0\0\0\0\0\0\0\0", 14),
        WireError::MissingText);
    row("lone surrogate", QByteArray("\x04\x02\x01\0\0\0\x00\xd8", 8), WireError::MalformedText);
    row("list without its end", QByteArray("\x05\0", 2), WireError::Truncated);
    row("map without its end", QByteArray("\x06\x01\0\0\0\0\0", 7), WireError::Truncated);
    row("map ended like a list", QByteArray("\x06\x08", 2), WireError::Truncated);
    const auto ofTexts = [](QByteArrayView rest) {
        return QByteArray("\x05\x09") + rest.toByteArray() + '\x08';
    };
    const QByteArray twoOfOne("\x02\0\0\0\x01\0\0\0\x01\0\0\0", 12);
    const QByteArray overflowing("\x02\0\0\0\xff\xff\xff\xff\xff\xff\xff\xff", 12);
    const QByteArray three("\x01\x03\0\0\0", 5); // A text of three units follows.
    row("texts, good", ofTexts(twoOfOne + three + "a\nb"), WireError::BadHeader);
    row("no texts", ofTexts(QByteArray(4, '\0') + three + "a\nb"), WireError::UnknownTag);
    row("texts without a line feed", ofTexts(twoOfOne + three + "a b"), WireError::UnknownTag);
    row("texts that are shorter",
        ofTexts(twoOfOne + QByteArray("\x01\x04\0\0\0a\nbc", 9)),
        WireError::UnknownTag);
    row("texts that are longer",
        ofTexts(twoOfOne + QByteArray("\x01\x02\0\0\0a\n", 7)),
        WireError::UnknownTag);
    row("texts that are much longer", ofTexts(overflowing + three + "a\nb"), WireError::UnknownTag);
    row("texts without their lengths", QByteArray("\x05\x09\xff\0\0\0", 6), WireError::Truncated);
    row("a billion texts", QByteArray("\x05\x09\xff\xff\xff\x3f", 6), WireError::TooManyValues);
    row("texts with a lone surrogate",
        QByteArray("\x05\x09\x01\0\0\0\x01\0\0\0\x02\x01\0\0\0\x00\xd8\x08", 18),
        WireError::MalformedText);
    row("texts outside of a list",
        QByteArray("\x09", 1) + twoOfOne + three + "a\nb",
        WireError::UnknownTag);
    row("map without a value", QByteArray("\x06\x01\0\0\0\0\x08", 7), WireError::UnknownTag);
}

void ScriptWireTest::payload_broken_isAnError()
{
    QFETCH(QByteArray, payload);
    QFETCH(int, error);
    QCOMPARE(static_cast<int>(valueError(payload).value_or(WireError::BadHeader)), error);
}

void ScriptWireTest::value_beyondItsLimits_failsWithTheLimit()
{
    ScriptLimits limits;
    limits.values = 4;
    limits.bytes = 10;
    limits.depth = 2;
    const auto check = [&limits](const ScriptValue &value) {
        return valueError(payloadOf(value), limits);
    };
    const ScriptValue null;
    QCOMPARE(check(ScriptValue(List{null, null, null})), std::nullopt);
    QCOMPARE(check(ScriptValue(List{null, null, null, null})),
             std::optional(WireError::TooManyValues));
    QCOMPARE(check(ScriptValue(List{ScriptValue(List{null}), ScriptValue(List{null})})),
             std::optional(WireError::TooManyValues));
    QCOMPARE(check(ScriptValue(Map{{u"key"_s, ScriptValue(u"ab"_s)}})), std::nullopt);
    QCOMPARE(check(ScriptValue(Map{{u"key"_s, ScriptValue(u"abc"_s)}})),
             std::optional(WireError::TooManyBytes));
    QCOMPARE(check(ScriptValue(List{texts(u"\n\n"_s, {0, 0, 0})})), std::nullopt);
    QCOMPARE(check(ScriptValue(List{texts(u"\n\n\n"_s, {0, 0, 0, 0})})),
             std::optional(WireError::TooManyValues));
    QCOMPARE(check(ScriptValue(List{texts(u"ab\nabc"_s, {2, 3})})), std::nullopt);
    QCOMPARE(check(ScriptValue(List{texts(u"abc\nabc"_s, {3, 3})})),
             std::optional(WireError::TooManyBytes));
    QCOMPARE(check(ScriptValue(List{ScriptValue(List{null})})), std::nullopt);
    QCOMPARE(check(ScriptValue(List{ScriptValue(List{ScriptValue(List{})})})),
             std::optional(WireError::TooDeep));
}

void ScriptWireTest::failure_thatIsNotTheHostsToSay_isAnError()
{
    for (const ScriptError::Code code :
         {ScriptError::Code::Stopped, ScriptError::Code::HostEnded}) {
        const QByteArray bytes = bytesOf(ScriptOutcome(tl::unexpect, ScriptError{code, {}}));
        const auto decoded = decodeOutcome({MessageKind::Failure, bytes.mid(kFrameHeaderSize)});
        QVERIFY(!decoded.has_value());
        QCOMPARE(decoded.error(), WireError::UnknownTag);
    }
}

void ScriptWireTest::failure_amidAValue_isTheOutcome()
{
    const ScriptError error{ScriptError::Code::ResultTooLarge, {}};
    for (const qsizetype length : {qsizetype{3}, 2 * kMaxFramePayload}) {
        const QByteArray bytes = bytesOf([&](const ByteSink &sink) {
            OutcomeSender sender(sink);
            sender.beginList();
            sender.text(QString(length, u'x'));
            return sender.fail(error);
        });
        const auto message = messageOf(bytes, MessageReader::Side::FromHost, 65537);
        QVERIFY(message.has_value());
        const auto outcome = decodeOutcome(*message);
        QVERIFY(outcome && *outcome == ScriptOutcome(tl::unexpect, error));
        OutcomeDecoder decoder;
        decoder.decodeAhead({MessageKind::Value, bytes.sliced(kFrameHeaderSize, 2)});
        QVERIFY(decoder.decode(*message) == outcome);
    }
}

void ScriptWireTest::log_amidAValue_isReadFirst()
{
    constexpr int kLog = 3;
    constexpr int kValue = 4;
    MessageReader reader(MessageReader::Side::FromHost);
    reader.append(frame(kValue, "a", 1) + frame(kLog, "x", 1));
    QVERIFY(!*reader.next());
    QCOMPARE(reader.incomplete()->payload, QByteArray("a"));
    reader.append(frame(kLog, "y") + frame(kLog, "z") + frame(kValue, "b"));
    QByteArray all;
    for (auto message = reader.next(); *message; message = reader.next())
        all += QByteArray::number(static_cast<int>((*message)->kind)) + (*message)->payload + ' ';
    QCOMPARE(all, QByteArray("3xy 3z 4ab "));
    QCOMPARE(reader.incomplete(), nullptr);
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::ScriptWireTest)
#include "ScriptWireTest.moc"
