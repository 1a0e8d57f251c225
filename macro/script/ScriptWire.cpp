#include "macro/script/ScriptWire.h"

#include <utility>

namespace penwick {

namespace {

// A list ends with `End`, a map with "no text" in place of a key. `Texts` stands for several
// elements of a list: their number and lengths follow, then their text as in `ScriptTexts`.
enum class Tag : quint8 { Null, False, True, Number, Text, List, Map, Other, End, Texts };

// Texts are sent once they have so many UTF-16 code units together: less is not worth waking the
// other side for.
constexpr qsizetype kPortion = qsizetype{1} << 19;

// Changes with the encoding of any message: after an update, the host may be newer than a running
// editor.
constexpr quint8 kProtocolVersion = 8;
constexpr quint8 kMemoryLimit = 1;
constexpr quint8 kSystemCallFilter = 2;
constexpr quint8 kFileAccessRules = 4;

/// True when strings of these lengths and a line feed between each two make up the text.
bool isMadeOf(const Text &joined, const std::vector<quint32> &lengths)
{
    std::size_t next = 0; // Index of the string at whose end the next line feed must be.
    qint64 nextEnd = lengths.front();
    qint64 start = 0; // Of the chunk.
    bool matches = true;
    joined.forEachChunk(0, joined.size(), [&](const TextChunkView &chunk) {
        while (matches && nextEnd < start + chunk.length) {
            const qint64 i = nextEnd - start;
            matches = (chunk.ascii != nullptr ? chunk.ascii[i] == '\n' : chunk.utf16[i] == u'\n') &&
                      ++next < lengths.size();
            if (matches)
                nextEnd += 1 + qint64{lengths[next]};
        }
        start += chunk.length;
        return matches;
    });
    return matches && next == lengths.size() - 1 && nextEnd == joined.size();
}

tl::expected<ScriptOutcome, WireError> decodeFailure(QByteArrayView payload,
                                                     const SharedTexts *shared)
{
    PayloadReader reader(payload, shared);
    const auto code = reader.get<quint8>();
    ScriptError error{static_cast<ScriptError::Code>(code), reader.getText()};
    error.line = reader.get<qint32>();
    error.column = reader.get<qint32>();
    if (const auto wrong = reader.errorAtEnd())
        return tl::unexpected(*wrong);
    // The codes after this one are about the host itself, and only the editor sets them.
    if (code > static_cast<quint8>(ScriptError::Code::ResultTooDeep) || error.line < 0 ||
        error.column < 0)
        return tl::unexpected(WireError::UnknownTag);
    if (!isWellFormed(error.text))
        return tl::unexpected(WireError::MalformedText);
    return ScriptOutcome(tl::unexpect, std::move(error));
}

} // namespace

class OutcomeDecoder::ValueDecoder final
{
public:
    ValueDecoder(const ScriptLimits &limits, const SharedTexts *shared)
        : m_limits(limits)
        , m_shared(shared)
    {
    }

    /// Decodes as many parts of the value as are complete.
    /// \param payload what has arrived of it: the same bytes as before, and more.
    void decode(QByteArrayView payload)
    {
        if (payload.size() == m_arrived)
            return;
        m_arrived = payload.size();
        while (!m_error && !isWhole()) {
            const auto values = m_values;
            const auto bytes = m_bytes;
            m_reader = PayloadReader(payload.sliced(m_decoded), m_shared);
            decodePart();
            if (m_reader.error() == WireError::Truncated) {
                m_values = values; // What is missing may still arrive.
                m_bytes = bytes;
                return;
            }
            m_error = m_reader.error();
            m_decoded = payload.size() - m_reader.left();
        }
    }

    /// \param payload all of it.
    tl::expected<ScriptValue, WireError> finish(QByteArrayView payload)
    {
        decode(payload);
        if (m_error)
            return tl::unexpected(*m_error);
        if (!isWhole())
            return tl::unexpected(WireError::Truncated);
        if (m_decoded != payload.size())
            return tl::unexpected(WireError::TrailingBytes);
        return m_builder.take();
    }

private:
    [[nodiscard]] bool isWhole() const { return m_hasRoot && m_builder.depth() == 0; }

    // An incomplete part is read again when more has arrived. So no part may take long before it
    // turns out to be incomplete: a key and the lengths of texts are parts of their own.
    void decodePart()
    {
        if (!m_hasRoot) {
            readValue(m_reader.get<Tag>());
            m_hasRoot = !m_reader.error();
        } else if (!m_lengths.empty()) {
            readJoined();
        } else if (!m_builder.isInMap()) {
            readElement();
        } else if (!m_hasKey) {
            readKey();
        } else {
            m_hasKey = false;
            readValue(m_reader.get<Tag>());
            m_hasKey = m_reader.error().has_value();
        }
    }

    void readElement()
    {
        const auto tag = m_reader.get<Tag>();
        if (tag == Tag::End)
            m_builder.end();
        else if (tag == Tag::Texts)
            readLengths();
        else
            readValue(tag);
    }

    void readLengths()
    {
        const auto count = m_reader.get<quint32>();
        if (count == 0)
            return m_reader.fail(WireError::UnknownTag);
        if (count > m_limits.values - m_values)
            return m_reader.fail(WireError::TooManyValues);
        m_values += count;
        m_lengths = m_reader.getNumbers(count);
    }

    void readJoined()
    {
        Text joined = m_reader.getLongText();
        if (m_reader.error())
            return;
        ScriptTexts texts{std::move(joined), std::exchange(m_lengths, {})};
        if (!isMadeOf(texts.joined, texts.lengths))
            return m_reader.fail(WireError::UnknownTag);
        checkSize(texts.joined.size() - static_cast<qsizetype>(texts.lengths.size()) + 1);
        m_builder.ownTexts(std::move(texts));
    }

    void readKey()
    {
        std::optional<QString> key = m_reader.getOptionalText();
        if (!key)
            return m_builder.end();
        check(*key);
        if (m_reader.error())
            return;
        m_builder.ownKey(std::move(*key));
        m_hasKey = true;
    }

    void readValue(Tag tag)
    {
        if (++m_values > m_limits.values)
            m_reader.fail(WireError::TooManyValues);
        if (m_reader.error())
            return;
        switch (tag) {
        case Tag::Null:
            return m_builder.null();
        case Tag::False:
        case Tag::True:
            return m_builder.boolean(tag == Tag::True);
        case Tag::Number:
            return readNumber();
        case Tag::Text:
            return readText();
        case Tag::List:
        case Tag::Map:
            return begin(tag);
        case Tag::Other:
            return m_builder.other();
        case Tag::End:
        case Tag::Texts:
            break;
        }
        m_reader.fail(WireError::UnknownTag);
    }

    void readNumber()
    {
        const auto number = m_reader.get<double>();
        if (!m_reader.error())
            m_builder.number(number);
    }

    void readText()
    {
        if (m_reader.isNextTextShared())
            return readLongText();
        QString text = m_reader.getText();
        check(text);
        if (!m_reader.error())
            m_builder.ownText(std::move(text));
    }

    void readLongText()
    {
        Text text = m_reader.getLongText();
        checkSize(text.size());
        if (!m_reader.error())
            m_builder.ownText(std::move(text));
    }

    void check(const QString &text)
    {
        if (!isWellFormed(text))
            m_reader.fail(WireError::MalformedText);
        checkSize(text.size());
    }

    void checkSize(qsizetype units)
    {
        m_bytes += static_cast<std::size_t>(units) * sizeof(char16_t);
        if (m_bytes > m_limits.bytes)
            m_reader.fail(WireError::TooManyBytes);
    }

    void begin(Tag tag)
    {
        if (m_builder.depth() == m_limits.depth)
            m_reader.fail(WireError::TooDeep);
        else if (tag == Tag::Map)
            m_builder.beginMap();
        else
            m_builder.beginList();
    }

    const ScriptLimits m_limits;
    const SharedTexts *m_shared;
    PayloadReader m_reader{{}};
    qsizetype m_decoded = 0; // Bytes of the payload.
    std::optional<WireError> m_error;
    qsizetype m_arrived = -1; // Bytes of the payload at the last call.
    bool m_hasRoot = false;
    bool m_hasKey = false;          // Of a member whose value comes next.
    std::vector<quint32> m_lengths; // Of texts that come next.
    std::size_t m_values = 0;
    std::size_t m_bytes = 0;
    ScriptValueBuilder m_builder;
};

bool sendText(MessageKind kind, QStringView text, const ByteSink &sink)
{
    FrameWriter writer(kind, sink);
    writer.putText(text);
    return writer.finish();
}

tl::expected<QString, WireError> decodeText(QByteArrayView payload)
{
    PayloadReader reader(payload);
    QString text = reader.getText();
    if (const auto error = reader.errorAtEnd())
        return tl::unexpected(*error);
    if (!isWellFormed(text))
        return tl::unexpected(WireError::MalformedText);
    return text;
}

bool sendReady(const HostProtection &protection, const ByteSink &sink)
{
    FrameWriter writer(MessageKind::Ready, sink);
    writer.put(kProtocolVersion);
    writer.put(static_cast<quint8>((protection.memoryLimit ? kMemoryLimit : 0) |
                                   (protection.systemCallFilter ? kSystemCallFilter : 0) |
                                   (protection.fileAccessRules ? kFileAccessRules : 0)));
    return writer.finish();
}

tl::expected<HostProtection, WireError> decodeReady(QByteArrayView payload)
{
    PayloadReader reader(payload);
    const auto version = reader.get<quint8>();
    const auto bits = reader.get<quint8>();
    if (const auto error = reader.errorAtEnd())
        return tl::unexpected(*error);
    if (version != kProtocolVersion || bits > (kMemoryLimit | kSystemCallFilter | kFileAccessRules))
        return tl::unexpected(WireError::UnknownTag);
    return HostProtection{(bits & kMemoryLimit) != 0,
                          (bits & kSystemCallFilter) != 0,
                          (bits & kFileAccessRules) != 0};
}

bool sendRequest(const ScriptRequest &request, const ByteSink &sink, SharedTexts *shared)
{
    FrameWriter writer(MessageKind::Request, sink, shared);
    writer.put(static_cast<quint8>(request.userInput.has_value() ? 1 : 0));
    writer.putText(request.userInput.value_or(QString()));
    writer.putSource(request.source);
    writer.put(static_cast<quint8>(request.longTexts.size()));
    for (const ScriptSource &text : request.longTexts)
        writer.putSource(text);
    return writer.finish();
}

tl::expected<ScriptRequest, WireError> decodeRequest(QByteArrayView payload,
                                                     const SharedTexts *shared)
{
    PayloadReader reader(payload, shared);
    const auto hasInput = reader.get<quint8>();
    QString input = reader.getText();
    ScriptRequest request{reader.getText(), std::nullopt};
    for (auto left = reader.get<quint8>(); left > 0 && !reader.error(); --left)
        request.longTexts.emplace_back(reader.getText());
    if (const auto error = reader.errorAtEnd())
        return tl::unexpected(*error);
    if (hasInput > 1)
        return tl::unexpected(WireError::UnknownTag);
    if (hasInput == 1)
        request.userInput = std::move(input);
    return request;
}

OutcomeSender::OutcomeSender(const ByteSink &sink, SharedTexts *shared)
    : m_sink(sink)
    , m_shared(shared)
    , m_writer(MessageKind::Value, sink, shared)
{
}

// For what comes after the pending texts.
FrameWriter &OutcomeSender::writer()
{
    sendPending();
    return m_writer;
}

void OutcomeSender::null()
{
    writer().put(Tag::Null);
}

void OutcomeSender::other()
{
    writer().put(Tag::Other);
}

void OutcomeSender::boolean(bool value)
{
    writer().put(value ? Tag::True : Tag::False);
}

void OutcomeSender::number(double value)
{
    writer().put(Tag::Number);
    m_writer.put(value);
}

void OutcomeSender::text(QStringView value)
{
    writer().put(Tag::Text);
    m_writer.putText(value);
}

void OutcomeSender::texts(QStringView joined, std::span<const quint32> lengths)
{
    if (!addToPending(joined, lengths)) {
        sendPending();
        if (!addToPending(joined, lengths)) {
            putLengths(lengths);
            m_writer.putText(joined);
        }
    }
    if (m_joinedUnits >= kPortion)
        sendPending();
}

void OutcomeSender::putLengths(std::span<const quint32> lengths)
{
    m_writer.put(Tag::Texts);
    m_writer.put(static_cast<quint32>(lengths.size()));
    m_writer.putBytes(lengths.data(), lengths.size_bytes());
}

bool OutcomeSender::addToPending(QStringView joined, std::span<const quint32> lengths)
{
    const bool isFirst = m_lengths.empty();
    if (m_shared == nullptr || (!isFirst && !m_shared->append(u"\n")) || !m_shared->append(joined))
        return false;
    m_joinedUnits += joined.size() + (isFirst ? 0 : 1);
    m_lengths.insert(m_lengths.end(), lengths.begin(), lengths.end());
    return true;
}

void OutcomeSender::sendPending()
{
    if (m_lengths.empty())
        return;
    putLengths(m_lengths);
    m_writer.putSharedText(std::exchange(m_joinedUnits, 0), m_shared->finish());
    m_lengths.clear();
}

void OutcomeSender::beginList()
{
    writer().put(Tag::List);
    m_isMap.push_back(false);
}

void OutcomeSender::beginMap()
{
    writer().put(Tag::Map);
    m_isMap.push_back(true);
}

void OutcomeSender::key(QStringView key)
{
    m_writer.putText(key);
}

void OutcomeSender::end()
{
    if (m_isMap.back())
        m_writer.putNoText();
    else
        writer().put(Tag::End);
    m_isMap.pop_back();
}

bool OutcomeSender::finish()
{
    return m_writer.finish();
}

bool OutcomeSender::fail(const ScriptError &error)
{
    FrameWriter writer(MessageKind::Failure, m_sink, m_shared);
    writer.put(static_cast<quint8>(error.code));
    writer.putText(error.text);
    writer.put(static_cast<qint32>(error.line));
    writer.put(static_cast<qint32>(error.column));
    return writer.finish();
}

OutcomeDecoder::OutcomeDecoder(const ScriptLimits &limits, const SharedTexts *shared)
    : m_shared(shared)
    , m_value(std::make_unique<ValueDecoder>(limits, shared))
{
}

OutcomeDecoder::OutcomeDecoder(OutcomeDecoder &&) noexcept = default;

OutcomeDecoder &OutcomeDecoder::operator=(OutcomeDecoder &&) noexcept = default;

OutcomeDecoder::~OutcomeDecoder() = default;

void OutcomeDecoder::decodeAhead(const Message &incomplete)
{
    if (incomplete.kind == MessageKind::Value)
        m_value->decode(incomplete.payload);
}

tl::expected<ScriptOutcome, WireError> OutcomeDecoder::decode(const Message &message)
{
    if (message.kind == MessageKind::Failure)
        return decodeFailure(message.payload, m_shared);
    auto value = m_value->finish(message.payload);
    if (!value)
        return tl::unexpected(value.error());
    return ScriptOutcome(std::move(*value));
}

tl::expected<ScriptOutcome, WireError>
decodeOutcome(const Message &message, const ScriptLimits &limits, const SharedTexts *shared)
{
    return OutcomeDecoder(limits, shared).decode(message);
}

} // namespace penwick
