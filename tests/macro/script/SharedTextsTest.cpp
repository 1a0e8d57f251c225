#include "macro/script/SharedTexts.h"

#include "macro/script/ScriptWire.h"
#include "platform/files/FileDescriptor.h"
#include "support/SendOutcome.h"

#include <QTest>

#include <array>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Side = SharedTexts::Side;

QString longText(QChar unit = u'日')
{
    return QString(SharedTexts::kLeastLength + 1000, unit);
}

/// A memory file with the views of both sides.
struct Shared
{
    FileDescriptor file{memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING)};
    SharedTexts editor{file.get(), Side::Editor};
    SharedTexts host{file.get(), Side::Host};
};

/// The payload of the message that `send` writes.
template <typename Send> QByteArray payloadOf(Send send)
{
    QByteArray payload;
    const ByteSink sink = [&payload](QByteArrayView frame) {
        payload.append(frame.sliced(kFrameHeaderSize));
        return true;
    };
    return send(sink) ? payload : QByteArray();
}

void sendTwoTexts(OutcomeSender &sender, const QString &first, const QString &second)
{
    const std::array lengths{static_cast<quint32>(first.size()),
                             static_cast<quint32>(second.size())};
    sender.texts(QString(first + u'\n' + second), lengths);
}

} // namespace

class SharedTextsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_leftByEitherSide_isFoundByTheOther();
    void text_short_staysInTheMessage();
    void source_inPieces_isFoundWhole();
    void source_ofAnotherLength_isNotLeft();
    void file_missing_leavesAllInTheMessage();
    void file_thatCannotBeWritten_leavesAllInTheMessage();
    void text_ofSeveralParts_isDecodedWhole();
    void text_withALoneSurrogate_isMalformed();
    void message_withBytesBeyondAscii_isAnError();
    void place_notWritten_isNotFound_data();
    void place_notWritten_isNotFound();
    void message_withLongTexts_isShort();
    void message_namingAPlaceThatIsNone_isAnError();
    void sharedText_isDecodedBeforeTheMessageEnds();
    void text_inPieces_isFoundWhole();
    void piece_thatDoesNotFit_leavesTheTextAsItWas();
    void text_betweenPieces_discardsThem();
    void textsOfAList_areSentTogether();
    void textsOfAList_thatFillAPortion_areSentAtOnce();
    void textsOfAList_beforeAFailure_areVoid();
    void textsOfAList_beyondTheFile_areSentInTheMessage();
    void host_cannotLeaveMoreThanItsRoom();
};

void SharedTextsTest::text_leftByEitherSide_isFoundByTheOther()
{
    Shared shared;
    const QString first = longText(u'a') + u"\0\xd800"_s;
    const QString second = longText(u'本').repeated(3);
    const QString third = longText(u'a').repeated(3);
    for (const auto &[from, to] :
         {std::pair(&shared.editor, &shared.host), std::pair(&shared.host, &shared.editor)}) {
        const auto firstPlace = from->put(first);
        const auto secondPlace = from->put(second);
        const auto thirdPlace = from->put(third);
        QVERIFY(firstPlace && secondPlace && thirdPlace);
        QCOMPARE(to->get(*firstPlace, first.size()), std::optional(first));
        QCOMPARE(to->get(*secondPlace, second.size()), std::optional(second));
        QCOMPARE(to->get(*thirdPlace, third.size()), std::optional(third));
        // The editor's texts are mapped, which needs the engine's form.
        QCOMPARE(thirdPlace->form == SharedTexts::Form::Ascii, from == &shared.host);
        // A side cannot read its own texts.
        QVERIFY(!from->get(*firstPlace, first.size()));
    }
}

void SharedTextsTest::text_short_staysInTheMessage()
{
    Shared shared;
    QVERIFY(!shared.editor.put(QString(SharedTexts::kLeastLength - 1, u'x')));
    QVERIFY(!shared.editor.put(QString()));
}

void SharedTextsTest::source_inPieces_isFoundWhole()
{
    Shared shared;
    const QString piece = longText();
    const ScriptSource source(piece.size() * 5, [&piece](const ScriptSource::Sink &sink) {
        for (int i = 0; i < 5; ++i)
            sink(piece);
    });
    const auto place = shared.editor.putSource(source);
    QVERIFY(place.has_value());
    QCOMPARE(shared.host.get(*place, source.size()), std::optional(piece.repeated(5)));
    QCOMPARE(source.text(), piece.repeated(5));
}

void SharedTextsTest::source_ofAnotherLength_isNotLeft()
{
    Shared shared;
    const ScriptSource source(SharedTexts::kLeastLength + 1,
                              [](const ScriptSource::Sink &sink) { sink(longText()); });
    QVERIFY(!shared.editor.putSource(source));
}

void SharedTextsTest::file_missing_leavesAllInTheMessage()
{
    SharedTexts none(-1, Side::Editor);
    QVERIFY(!none.put(longText()));
    QVERIFY(!none.putSource(longText()));
    QVERIFY(!none.get({}, SharedTexts::kLeastLength));
    const ScriptRequest request{longText(), longText(u'x')};
    const QByteArray payload =
        payloadOf([&](const ByteSink &sink) { return sendRequest(request, sink, &none); });
    QVERIFY(decodeRequest(payload, &none) == request);
}

void SharedTextsTest::file_thatCannotBeWritten_leavesAllInTheMessage()
{
    const Shared shared;
    QCOMPARE(fcntl(shared.file.get(), F_GETFL) & O_ACCMODE, O_RDWR);
    const FileDescriptor readOnly(
        open(qPrintable(u"/proc/self/fd/%1"_s.arg(shared.file.get())), O_RDONLY | O_CLOEXEC));
    QVERIFY(readOnly.isOpen());
    SharedTexts editor(readOnly.get(), Side::Editor);
    const ScriptRequest request{longText(), std::nullopt};
    const QByteArray payload =
        payloadOf([&](const ByteSink &sink) { return sendRequest(request, sink, &editor); });
    QVERIFY(decodeRequest(payload, &shared.host) == request);
}

// Long enough for several pieces and parts. The pairs, and CR LF, lie at even and odd offsets, so
// that one is where a piece or a part would end.
void SharedTextsTest::text_ofSeveralParts_isDecodedWhole()
{
    for (const QString &unit :
         {u"a"_s, u"\r\n"_s, u"𠮷"_s, u"e\u0301"_s, u"👩‍👩‍👧 "_s}) {
        for (const QString &start : {u""_s, u"a"_s}) {
            Shared shared;
            const QString text = start + unit.repeated(2'500'000 / unit.size());
            const auto place = shared.host.put(text);
            QVERIFY(place.has_value());
            const std::optional<Text> decoded = shared.editor.text(*place, text.size());
            QVERIFY(decoded == Text(text));
            QVERIFY(decoded->metrics() == Text(text).metrics());
        }
    }
}

void SharedTextsTest::text_withALoneSurrogate_isMalformed()
{
    for (const qint64 offset : {qint64{0}, qint64{1'250'000}, qint64{2'499'999}}) {
        for (const char16_t lone : {u'\xd800', u'\xdc00'}) {
            Shared shared;
            const QString text(2'500'000, u'日');
            const auto place = shared.host.put(text);
            QVERIFY(place.has_value());
            QCOMPARE(::pwrite(shared.file.get(), &lone, sizeof lone, offset * 2), 2);
            QVERIFY(shared.editor.hasText(*place, text.size()));
            QVERIFY(!shared.editor.text(*place, text.size()));
        }
    }
}

void SharedTextsTest::message_withBytesBeyondAscii_isAnError()
{
    Shared shared;
    const QString text = longText(u'x');
    const ScriptValue value(ScriptValue::List{
        ScriptValue(ScriptTexts{Text(text), {static_cast<quint32>(text.size())}})});
    const QByteArray answered =
        payloadOf([&](const ByteSink &sink) { return sendOutcome(value, sink, &shared.host); });
    const auto decoded = decodeOutcome({MessageKind::Value, answered}, {}, &shared.editor);
    QVERIFY(decoded && *decoded == ScriptOutcome(value));
    QCOMPARE(::pwrite(shared.file.get(), "\xe3", 1, text.size() / 2), 1);
    const auto broken = decodeOutcome({MessageKind::Value, answered}, {}, &shared.editor);
    QVERIFY(!broken && broken.error() == WireError::MalformedText);
}

void SharedTextsTest::place_notWritten_isNotFound_data()
{
    QTest::addColumn<quint64>("place");
    QTest::addColumn<qint64>("length");

    const qint64 length = longText().size();
    QTest::newRow("beyond the end") << quint64{65536} * 1000 << length;
    QTest::newRow("too long") << quint64{0} << length * 2;
    QTest::newRow("far too long") << quint64{0} << qint64{0xffffffff};
    QTest::newRow("too short") << quint64{0} << qint64{1};
    QTest::newRow("negative") << quint64{0} << qint64{-1};
    QTest::newRow("between places") << quint64{2} << length - 1;
    QTest::newRow("the other part") << quint64{SharedTexts::kHostRoom} << length;
    QTest::newRow("the largest number") << ~quint64{0} << length;
    QTest::newRow("the largest place") << (~quint64{0} & ~quint64{65535}) << length;
}

void SharedTextsTest::place_notWritten_isNotFound()
{
    QFETCH(quint64, place);
    QFETCH(qint64, length);
    Shared shared;
    const auto put = shared.host.put(longText());
    QVERIFY(put && put->start == 0 && put->form == SharedTexts::Form::Utf16);
    QVERIFY(shared.editor.get(*put, longText().size()).has_value());
    QVERIFY(!shared.editor.get({place}, length));
    QVERIFY(!shared.editor.hasText({place}, length));
    QVERIFY(!shared.editor.text({place}, length));
}

void SharedTextsTest::message_withLongTexts_isShort()
{
    Shared shared;
    const ScriptRequest request{longText(), longText(u'x'), {longText(u'y')}};
    const QByteArray sent =
        payloadOf([&](const ByteSink &sink) { return sendRequest(request, sink, &shared.editor); });
    QVERIFY(sent.size() < 100);
    QVERIFY(decodeRequest(sent, &shared.host) == request);

    const ScriptOutcome outcome(
        ScriptValue(ScriptValue::Map{{longText(), ScriptValue(longText())}}));
    const QByteArray answered =
        payloadOf([&](const ByteSink &sink) { return sendOutcome(outcome, sink, &shared.host); });
    QVERIFY(answered.size() < 100);
    const auto decoded = decodeOutcome({MessageKind::Value, answered}, {}, &shared.editor);
    QVERIFY(decoded && *decoded == outcome);
    QVERIFY((*decoded)->map()->front().value.text() != nullptr); // Not converted once more.
    OutcomeDecoder inPortions({}, &shared.editor);
    for (qsizetype size = 0; size < answered.size(); ++size)
        inPortions.decodeAhead({MessageKind::Value, answered.first(size)});
    QVERIFY(inPortions.decode({MessageKind::Value, answered}) == decoded);
    // The limits also apply to shared texts.
    ScriptLimits limits;
    limits.bytes = 1000;
    const auto refused = decodeOutcome({MessageKind::Value, answered}, limits, &shared.editor);
    QVERIFY(!refused && refused.error() == WireError::TooManyBytes);
}

void SharedTextsTest::message_namingAPlaceThatIsNone_isAnError()
{
    Shared shared;
    const QByteArray answered = payloadOf([&](const ByteSink &sink) {
        return sendOutcome(ScriptValue(longText()), sink, &shared.host);
    });
    const SharedTexts other(-1, Side::Editor);
    for (const SharedTexts *texts : {static_cast<const SharedTexts *>(nullptr), &other}) {
        const auto decoded = decodeOutcome({MessageKind::Value, answered}, {}, texts);
        QVERIFY(!decoded && decoded.error() == WireError::MissingText);
    }
    // A correct host never sends lone surrogates.
    const QByteArray broken = payloadOf([&](const ByteSink &sink) {
        return sendOutcome(ScriptValue(longText() + QChar(0xd800)), sink, &shared.host);
    });
    const auto decoded = decodeOutcome({MessageKind::Value, broken}, {}, &shared.editor);
    QVERIFY(!decoded && decoded.error() == WireError::MalformedText);
}

void SharedTextsTest::sharedText_isDecodedBeforeTheMessageEnds()
{
    Shared shared;
    QByteArray payload;
    const ByteSink sink = [&payload](QByteArrayView frame) {
        payload.append(frame.sliced(kFrameHeaderSize));
        return true;
    };
    const QString text(600'000, u'x');
    const std::array<quint32, 1> length{static_cast<quint32>(text.size())};
    OutcomeSender sender(sink, &shared.host);
    sender.beginList();
    sender.texts(text, length);
    OutcomeDecoder decoder({}, &shared.editor);
    decoder.decodeAhead({MessageKind::Value, payload});
    // What the host changes now comes too late.
    QCOMPARE(::pwrite(shared.file.get(), "\xe3", 1, text.size() / 2), 1);
    sender.end();
    QVERIFY(sender.finish());
    const auto decoded = decoder.decode({MessageKind::Value, payload});
    const ScriptValue expected(
        ScriptValue::List{ScriptValue(ScriptTexts{Text(text), {length.front()}})});
    QVERIFY(decoded && *decoded == ScriptOutcome(expected));
    const auto after = decodeOutcome({MessageKind::Value, payload}, {}, &shared.editor);
    QVERIFY(!after && after.error() == WireError::MalformedText);
}

void SharedTextsTest::text_inPieces_isFoundWhole()
{
    Shared shared;
    QVERIFY(shared.host.append(longText(u'x')));
    QVERIFY(shared.host.append(u"y"));
    const SharedTexts::Place ascii = shared.host.finish();
    QVERIFY(ascii.form == SharedTexts::Form::Ascii);
    QVERIFY(shared.host.append(longText(u'日')));
    QVERIFY(shared.host.append(u"x"));
    const SharedTexts::Place utf16 = shared.host.finish();
    QVERIFY(utf16.form == SharedTexts::Form::Utf16);
    const qsizetype length = longText().size() + 1;
    QCOMPARE(shared.editor.get(ascii, length), longText(u'x') + u'y');
    QCOMPARE(shared.editor.get(utf16, length), longText(u'日') + u'x');
}

void SharedTextsTest::piece_thatDoesNotFit_leavesTheTextAsItWas()
{
    Shared shared;
    QVERIFY(!shared.host.append(u"x")); // Too short for the beginning of a text.
    QVERIFY(shared.host.append(longText(u'x')));
    QVERIFY(!shared.host.append(u"日"));
    QVERIFY(shared.host.append(u"y"));
    const SharedTexts::Place place = shared.host.finish();
    QCOMPARE(shared.editor.get(place, longText().size() + 1), longText(u'x') + u'y');
}

void SharedTextsTest::text_betweenPieces_discardsThem()
{
    for (const bool isSource : {false, true}) {
        Shared shared;
        QVERIFY(shared.host.append(longText(u'x')));
        const auto other =
            isSource ? shared.host.putSource(longText(u'日')) : shared.host.put(longText(u'日'));
        QVERIFY(other.has_value());
        QVERIFY(!shared.host.append(u"y"));
        QVERIFY(shared.host.append(longText(u'z')));
        const SharedTexts::Place place = shared.host.finish();
        QCOMPARE(shared.editor.get(*other, longText().size()), longText(u'日'));
        QCOMPARE(shared.editor.get(place, longText().size()), longText(u'z'));
    }
}

// They share a place as long as they have one form.
void SharedTextsTest::textsOfAList_areSentTogether()
{
    Shared shared;
    const QByteArray answered = payloadOf([&](const ByteSink &sink) {
        OutcomeSender sender(sink, &shared.host);
        sender.beginList();
        for (const QChar unit : {u'x', u'y', u'日', u'z'})
            sendTwoTexts(sender, longText(unit), longText(unit));
        sender.text(u"single");
        sendTwoTexts(sender, u"short"_s, u"short"_s);
        sender.end();
        return sender.finish();
    });
    const auto length = static_cast<quint32>(longText().size());
    const QString ascii =
        QStringList{longText(u'x'), longText(u'x'), longText(u'y'), longText(u'y')}.join(u'\n');
    const QString utf16 =
        QStringList{longText(u'日'), longText(u'日'), longText(u'z'), longText(u'z')}.join(u'\n');
    const std::vector<quint32> lengths(4, length);
    const ScriptValue expected(ScriptValue::List{
        ScriptValue(ScriptTexts{Text(ascii), lengths}),
        ScriptValue(ScriptTexts{Text(utf16), lengths}),
        ScriptValue(u"single"_s),
        ScriptValue(ScriptTexts{Text(u"short\nshort"_s), {5, 5}}),
    });
    const auto decoded = decodeOutcome({MessageKind::Value, answered}, {}, &shared.editor);
    QVERIFY(decoded && *decoded == ScriptOutcome(expected));
}

void SharedTextsTest::textsOfAList_thatFillAPortion_areSentAtOnce()
{
    Shared shared;
    int frames = 0;
    const ByteSink sink = [&frames](QByteArrayView) {
        ++frames;
        return true;
    };
    OutcomeSender sender(sink, &shared.host);
    sender.beginList();
    int pieces = 0;
    for (; frames == 0 && pieces < 1000; ++pieces)
        sendTwoTexts(sender, longText(u'x'), longText(u'y'));
    QVERIFY(pieces >= 2);
    QVERIFY(pieces * longText().size() * 2 <= 1'000'000);
    sender.end();
    QVERIFY(sender.finish());
}

// A host that serves many scripts starts over after each of them.
void SharedTextsTest::textsOfAList_beforeAFailure_areVoid()
{
    Shared shared;
    const ScriptError error{ScriptError::Code::Exception, longText(u'e')};
    const QByteArray failed = payloadOf([&](const ByteSink &sink) {
        OutcomeSender sender(sink, &shared.host);
        sender.beginList();
        sendTwoTexts(sender, longText(u'x'), longText(u'y'));
        return sender.fail(error);
    });
    const auto failure = decodeOutcome({MessageKind::Failure, failed}, {}, &shared.editor);
    QVERIFY(failure && *failure == ScriptOutcome(tl::unexpect, error));

    shared.host.startOver();
    shared.editor.startOver();
    const ScriptValue value(longText(u'v'));
    const QByteArray answered =
        payloadOf([&](const ByteSink &sink) { return sendOutcome(value, sink, &shared.host); });
    const auto decoded = decodeOutcome({MessageKind::Value, answered}, {}, &shared.editor);
    QVERIFY(decoded && *decoded == ScriptOutcome(value));
}

void SharedTextsTest::textsOfAList_beyondTheFile_areSentInTheMessage()
{
    Shared shared;
    QCOMPARE(::ftruncate(shared.file.get(), longText().size() * 5), 0);
    QCOMPARE(::fcntl(shared.file.get(), F_ADD_SEALS, F_SEAL_GROW), 0);
    const QByteArray answered = payloadOf([&](const ByteSink &sink) {
        OutcomeSender sender(sink, &shared.host);
        sender.beginList();
        for (const QChar unit : {u'x', u'y', u'z'})
            sendTwoTexts(sender, longText(unit), longText(unit));
        sender.end();
        return sender.finish();
    });
    const auto length = static_cast<quint32>(longText().size());
    const auto pair = [](QChar unit) { return longText(unit) + u'\n' + longText(unit); };
    const ScriptValue expected(ScriptValue::List{
        ScriptValue(
            ScriptTexts{Text(pair(u'x') + u'\n' + pair(u'y')), {length, length, length, length}}),
        ScriptValue(ScriptTexts{Text(pair(u'z')), {length, length}}),
    });
    const auto decoded = decodeOutcome({MessageKind::Value, answered}, {}, &shared.editor);
    QVERIFY(decoded && *decoded == ScriptOutcome(expected));
    QVERIFY(answered.size() > longText().size());
}

void SharedTextsTest::host_cannotLeaveMoreThanItsRoom()
{
    Shared shared;
    // Claims a length beyond the space; its content is never read.
    const ScriptSource large(SharedTexts::kHostRoom / 2 + 1, [](const ScriptSource::Sink &) {
        qFatal("It must not be requested.");
    });
    QVERIFY(!shared.host.putSource(large));
    QVERIFY(shared.host.put(longText()).has_value()); // A text that fits is still accepted.
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::SharedTextsTest)
#include "SharedTextsTest.moc"
