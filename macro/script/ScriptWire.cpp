#include "macro/script/ScriptWire.h"

#include <utility>
#include <vector>

namespace penwick {

namespace {

enum class Tag : quint8 { Null, False, True, Number, Text, List, Map, Other };

// Changes with every message's form: after an update the host may be newer than a running editor.
constexpr quint8 kProtocolVersion = 2;
constexpr quint8 kMemoryLimit = 1;
constexpr quint8 kSystemCallFilter = 2;
constexpr quint8 kFileAccessRules = 4;

/// A list or map whose parts are being sent or read. The open ones form a stack of their own, so
/// that the depth of a value never becomes the depth of our calls.
struct SentContainer
{
    const ScriptValue::List *list;
    const ScriptValue::Map *map;
    std::size_t next = 0;

    [[nodiscard]] std::size_t size() const { return list != nullptr ? list->size() : map->size(); }
};

class ValueSender final
{
public:
    explicit ValueSender(FrameWriter &writer)
        : m_writer(writer)
    {
    }

    void send(const ScriptValue &root)
    {
        sendOne(root);
        while (!m_open.empty()) {
            SentContainer &container = m_open.back();
            if (container.next == container.size()) {
                m_open.pop_back();
            } else if (container.list != nullptr) {
                sendOne((*container.list)[container.next++]);
            } else {
                const ScriptMember &member = (*container.map)[container.next++];
                m_writer.putText(member.key);
                sendOne(member.value);
            }
        }
    }

private:
    void sendOne(const ScriptValue &value)
    {
        if (const bool *boolean = value.boolean()) {
            m_writer.put(*boolean ? Tag::True : Tag::False);
        } else if (const double *number = value.number()) {
            m_writer.put(Tag::Number);
            m_writer.put(*number);
        } else if (const QString *text = value.string()) {
            m_writer.put(Tag::Text);
            m_writer.putText(*text);
        } else if (value.list() != nullptr || value.map() != nullptr) {
            m_writer.put(value.list() != nullptr ? Tag::List : Tag::Map);
            m_open.push_back({value.list(), value.map()});
            m_writer.put(static_cast<quint32>(m_open.back().size()));
        } else {
            m_writer.put(value.isOther() ? Tag::Other : Tag::Null);
        }
    }

    FrameWriter &m_writer;
    std::vector<SentContainer> m_open;
};

struct ReadContainer
{
    bool isMap = false;
    quint32 missing = 0;
    QString key; // Under which it goes into the map around it, if it is one.
    ScriptValue::List list;
    ScriptValue::Map map;
};

class ValueReader final
{
public:
    ValueReader(QByteArrayView payload, const ScriptLimits &limits)
        : m_reader(payload)
        , m_limits(limits)
    {
    }

    tl::expected<ScriptValue, WireError> read()
    {
        readOne({});
        while (!m_open.empty() && !m_reader.error()) {
            ReadContainer &container = m_open.back();
            if (container.missing == 0) {
                close();
                continue;
            }
            --container.missing;
            QString key = container.isMap ? readText() : QString();
            readOne(std::move(key));
        }
        if (const auto error = m_reader.errorAtEnd())
            return tl::unexpected(*error);
        return std::move(m_root);
    }

private:
    void readOne(QString key)
    {
        const auto tag = m_reader.get<Tag>();
        if (m_reader.error())
            return;
        switch (tag) {
        case Tag::Null:
            return put(ScriptValue(), std::move(key));
        case Tag::False:
        case Tag::True:
            return put(ScriptValue(tag == Tag::True), std::move(key));
        case Tag::Number:
            return put(ScriptValue(m_reader.get<double>()), std::move(key));
        case Tag::Text:
            return put(ScriptValue(readText()), std::move(key));
        case Tag::List:
        case Tag::Map:
            return open(tag == Tag::Map, std::move(key));
        case Tag::Other:
            return put(ScriptValue::other(), std::move(key));
        }
        m_reader.fail(WireError::UnknownTag);
    }

    QString readText()
    {
        QString text = m_reader.getText();
        m_bytes += static_cast<std::size_t>(text.size()) * sizeof(char16_t);
        if (m_bytes > m_limits.bytes)
            m_reader.fail(WireError::TooManyBytes);
        else if (!text.isValidUtf16())
            m_reader.fail(WireError::MalformedText);
        return text;
    }

    // No room is made on the word of a count alone: each part takes at least a byte, and what is
    // announced counts as if it were here, or each level of a nest could announce all that is
    // allowed.
    void open(bool isMap, QString key)
    {
        const auto count = m_reader.get<quint32>();
        if (m_reader.error())
            return;
        if (m_open.size() == m_limits.depth)
            return m_reader.fail(WireError::TooDeep);
        if (count > m_limits.values - m_values)
            return m_reader.fail(WireError::TooManyValues);
        if (count > static_cast<quint64>(m_reader.remaining()))
            return m_reader.fail(WireError::Truncated);
        m_values += count;
        ReadContainer container{isMap, count, std::move(key), {}, {}};
        if (isMap)
            container.map.reserve(count);
        else
            container.list.reserve(count);
        m_open.push_back(std::move(container));
    }

    void close()
    {
        ReadContainer done = std::move(m_open.back());
        m_open.pop_back();
        put(done.isMap ? ScriptValue(std::move(done.map)) : ScriptValue(std::move(done.list)),
            std::move(done.key));
    }

    void put(ScriptValue value, QString key)
    {
        if (m_open.empty())
            m_root = std::move(value);
        else if (m_open.back().isMap)
            m_open.back().map.push_back({std::move(key), std::move(value)});
        else
            m_open.back().list.push_back(std::move(value));
    }

    PayloadReader m_reader;
    const ScriptLimits &m_limits;
    std::size_t m_values = 1; // The root, and what the open containers announced.
    std::size_t m_bytes = 0;
    std::vector<ReadContainer> m_open;
    ScriptValue m_root;
};

tl::expected<ScriptOutcome, WireError> decodeFailure(QByteArrayView payload)
{
    PayloadReader reader(payload);
    const auto code = reader.get<quint8>();
    ScriptError error{static_cast<ScriptError::Code>(code), reader.getText()};
    error.line = reader.get<qint32>();
    if (const auto wrong = reader.errorAtEnd())
        return tl::unexpected(*wrong);
    // What becomes of the host is not for the host to say.
    if (code > static_cast<quint8>(ScriptError::Code::ResultTooDeep) || error.line < 0)
        return tl::unexpected(WireError::UnknownTag);
    if (!error.text.isValidUtf16())
        return tl::unexpected(WireError::MalformedText);
    return ScriptOutcome(tl::unexpect, std::move(error));
}

} // namespace

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

bool sendRequest(const ScriptRequest &request, const ByteSink &sink)
{
    FrameWriter writer(MessageKind::Request, sink);
    writer.put(static_cast<quint8>(request.userInput.has_value() ? 1 : 0));
    writer.putText(request.userInput.value_or(QString()));
    writer.putText(request.source);
    return writer.finish();
}

tl::expected<ScriptRequest, WireError> decodeRequest(QByteArrayView payload)
{
    PayloadReader reader(payload);
    const auto hasInput = reader.get<quint8>();
    QString input = reader.getText();
    ScriptRequest request{reader.getText(), std::nullopt};
    if (const auto error = reader.errorAtEnd())
        return tl::unexpected(*error);
    if (hasInput > 1)
        return tl::unexpected(WireError::UnknownTag);
    if (hasInput == 1)
        request.userInput = std::move(input);
    return request;
}

bool sendLog(QStringView line, const ByteSink &sink)
{
    FrameWriter writer(MessageKind::Log, sink);
    writer.putText(line);
    return writer.finish();
}

tl::expected<QString, WireError> decodeLog(QByteArrayView payload)
{
    PayloadReader reader(payload);
    QString line = reader.getText();
    if (const auto error = reader.errorAtEnd())
        return tl::unexpected(*error);
    if (!line.isValidUtf16())
        return tl::unexpected(WireError::MalformedText);
    return line;
}

bool sendOutcome(const ScriptOutcome &outcome, const ByteSink &sink)
{
    FrameWriter writer(outcome ? MessageKind::Value : MessageKind::Failure, sink);
    if (outcome) {
        ValueSender(writer).send(*outcome);
    } else {
        writer.put(static_cast<quint8>(outcome.error().code));
        writer.putText(outcome.error().text);
        writer.put(static_cast<qint32>(outcome.error().line));
    }
    return writer.finish();
}

tl::expected<ScriptOutcome, WireError> decodeOutcome(const Message &message,
                                                     const ScriptLimits &limits)
{
    if (message.kind == MessageKind::Failure)
        return decodeFailure(message.payload);
    auto value = ValueReader(message.payload, limits).read();
    if (!value)
        return tl::unexpected(value.error());
    return ScriptOutcome(std::move(*value));
}

} // namespace penwick
