#include "macro/script/ScriptFrames.h"

#include "macro/script/ScriptHost.h"
#include "macro/script/ScriptSource.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace penwick {

namespace {

enum class TextForm : quint8 { None = 0, Latin1 = 1, Utf16 = 2, Shared = 3, SharedAscii = 4 };

bool fitsLatin1(QStringView text)
{
    char16_t all = 0; // No early exit, so that the compiler can vectorize the loop.
    for (const QChar unit : text)
        all |= unit.unicode();
    return all < 0x100;
}

std::optional<SharedTexts::Form> sharedForm(quint8 number)
{
    switch (static_cast<TextForm>(number)) {
    case TextForm::Shared:
        return SharedTexts::Form::Utf16;
    case TextForm::SharedAscii:
        return SharedTexts::Form::Ascii;
    default:
        return std::nullopt;
    }
}

// Longer than any message of a sender that keeps to its limits; 0 for an unknown kind. Bounds the
// memory that the other side can make this side allocate.
qsizetype longestMessage(MessageKind kind)
{
    constexpr qsizetype kFewParts = 64;
    constexpr qsizetype kName = 1024;
    constexpr qsizetype kBytesAPart = 16;
    const ScriptLimits limits;
    const qsizetype text = limits.sourceLength * qsizetype{sizeof(char16_t)};
    switch (kind) {
    case MessageKind::Engine:
        return kName;
    case MessageKind::Ready:
        return kFewParts;
    case MessageKind::Request:
        return 2 * text + kFewParts;
    case MessageKind::Log:
    case MessageKind::Failure:
        return text + kFewParts;
    case MessageKind::Value:
        return static_cast<qsizetype>(limits.bytes) +
               static_cast<qsizetype>(limits.values) * kBytesAPart;
    }
    return 0;
}

} // namespace

FrameWriter::FrameWriter(MessageKind kind, const ByteSink &sink, SharedTexts *shared)
    : m_kind(kind)
    , m_sink(sink)
    , m_shared(shared)
    , m_frame(kFrameHeaderSize, '\0')
{
}

void FrameWriter::putBytes(const void *data, std::size_t size)
{
    const char *from = static_cast<const char *>(data);
    auto left = static_cast<qsizetype>(size);
    while (left > 0 && m_good) {
        const qsizetype portion = std::min(left, room());
        m_frame.append(from, portion);
        from += portion;
        left -= portion;
        flushWhereFull();
    }
}

void FrameWriter::putText(QStringView text)
{
    if (const auto place = m_shared != nullptr ? m_shared->put(text) : std::nullopt)
        return putSharedText(text.size(), *place);
    const bool narrow = fitsLatin1(text);
    put(narrow ? TextForm::Latin1 : TextForm::Utf16);
    put(static_cast<quint32>(text.size()));
    if (!narrow) {
        putBytes(text.utf16(), static_cast<std::size_t>(text.size()) * sizeof(char16_t));
        return;
    }
    while (!text.isEmpty() && m_good) {
        const qsizetype portion = std::min(text.size(), room());
        const qsizetype before = m_frame.size();
        m_frame.resize(before + portion);
        std::transform(text.begin(),
                       text.begin() + portion,
                       m_frame.begin() + before,
                       [](QChar unit) { return static_cast<char>(unit.unicode()); });
        text = text.sliced(portion);
        flushWhereFull();
    }
}

void FrameWriter::putSource(const ScriptSource &source)
{
    if (const auto place = m_shared != nullptr ? m_shared->putSource(source) : std::nullopt)
        putSharedText(source.size(), *place);
    else
        putText(source.text());
}

void FrameWriter::putNoText()
{
    put(TextForm::None);
}

void FrameWriter::putSharedText(qsizetype length, SharedTexts::Place place)
{
    put(place.form == SharedTexts::Form::Ascii ? TextForm::SharedAscii : TextForm::Shared);
    put(static_cast<quint32>(length));
    put(place.start);
    flush(true);
}

qsizetype FrameWriter::room() const
{
    return kFrameHeaderSize + kMaxFramePayload - m_frame.size();
}

void FrameWriter::flushWhereFull()
{
    if (room() == 0)
        flush(true);
}

void FrameWriter::flush(bool more)
{
    setFrameHeader(m_frame, static_cast<quint8>(m_kind), more);
    m_good = m_good && m_sink(m_frame);
    m_frame.truncate(kFrameHeaderSize);
}

bool FrameWriter::finish()
{
    flush(false);
    return m_good;
}

tl::expected<void, WireError> MessageReader::take(const Frame &frame)
{
    const auto kind = static_cast<MessageKind>(frame.kind);
    // The editor sends nothing but requests, and the host none.
    const bool isRequest = kind == MessageKind::Request;
    if (isRequest != (m_side == Side::FromEditor) || longestMessage(kind) == 0)
        return tl::unexpected(WireError::UnknownKind);
    const bool isInValue = m_open && m_open->kind == MessageKind::Value;
    const bool isLogInValue = isInValue && kind == MessageKind::Log;
    if (m_log && !isLogInValue)
        return tl::unexpected(WireError::MixedMessages);
    std::optional<Message> &open = isLogInValue ? m_log : m_open;
    if (!open || (isInValue && kind == MessageKind::Failure))
        open = Message{kind, {}};
    if (open->kind != kind)
        return tl::unexpected(WireError::MixedMessages);
    if (frame.payload.size() > longestMessage(kind) - open->payload.size())
        return tl::unexpected(WireError::MessageTooLong);
    open->payload.append(frame.payload);
    return {};
}

tl::expected<std::optional<Message>, WireError> MessageReader::next()
{
    while (!m_error) {
        const auto frame = m_frames.next();
        if (frame && !*frame)
            return std::nullopt;
        if (!frame)
            m_error = frame.error() == FrameError::TooLong ? WireError::FrameTooLong
                                                           : WireError::BadHeader;
        else if (const auto taken = take(**frame); !taken)
            m_error = taken.error();
        else if (!(*frame)->more)
            return std::exchange(m_log ? m_log : m_open, std::nullopt);
    }
    return tl::unexpected(*m_error);
}

std::vector<quint32> PayloadReader::getNumbers(std::size_t count)
{
    const auto size = static_cast<qsizetype>(count) * qsizetype{sizeof(quint32)};
    if (size > m_rest.size()) {
        fail(WireError::Truncated);
        return {};
    }
    std::vector<quint32> numbers(count);
    std::memcpy(numbers.data(), m_rest.data(), count * sizeof(quint32));
    m_rest = m_rest.sliced(size);
    return numbers;
}

void PayloadReader::fail(WireError error)
{
    if (!m_error)
        m_error = error;
    m_rest = {};
}

QString PayloadReader::getText()
{
    return getTextOf(get<quint8>());
}

std::optional<QString> PayloadReader::getOptionalText()
{
    const auto form = get<quint8>();
    if (!m_error && static_cast<TextForm>(form) == TextForm::None)
        return std::nullopt;
    return getTextOf(form);
}

QString PayloadReader::getTextOf(quint8 number)
{
    const auto form = static_cast<TextForm>(number);
    const auto length = static_cast<qsizetype>(get<quint32>());
    if (m_error)
        return {};
    if (const auto shared = sharedForm(number))
        return getSharedText(length, *shared);
    if (form != TextForm::Latin1 && form != TextForm::Utf16) {
        fail(WireError::UnknownTag);
        return {};
    }
    const qsizetype size = length * static_cast<qsizetype>(form);
    if (size > m_rest.size()) {
        fail(WireError::Truncated);
        return {};
    }
    const QByteArrayView bytes = m_rest.first(size);
    m_rest = m_rest.sliced(size);
    if (form == TextForm::Latin1)
        return QString::fromLatin1(bytes);
    QString text(length, Qt::Uninitialized);
    std::memcpy(text.data(), bytes.data(), static_cast<std::size_t>(size));
    return text;
}

QString PayloadReader::getSharedText(qsizetype length, SharedTexts::Form form)
{
    const SharedTexts::Place place{get<quint64>(), form};
    if (m_error)
        return {};
    auto text = m_shared != nullptr ? m_shared->get(place, length) : std::nullopt;
    if (!text) {
        fail(WireError::MissingText);
        return {};
    }
    return *std::move(text);
}

Text PayloadReader::getLongText()
{
    const auto number = get<quint8>();
    const auto form = sharedForm(number);
    if (!form) { // Short, or the place for shared texts is full.
        const QString text = getTextOf(number);
        if (!isWellFormed(text))
            fail(WireError::MalformedText);
        return m_error ? Text() : Text(text);
    }
    const auto length = static_cast<qsizetype>(get<quint32>());
    const SharedTexts::Place place{get<quint64>(), *form};
    const bool isThere = !m_error && m_shared != nullptr && m_shared->hasText(place, length);
    auto text = isThere ? m_shared->text(place, length) : std::nullopt;
    if (!text)
        fail(isThere ? WireError::MalformedText : WireError::MissingText);
    return text ? *std::move(text) : Text();
}

bool PayloadReader::isNextTextShared() const
{
    return !m_rest.isEmpty() && sharedForm(static_cast<quint8>(m_rest.front())).has_value();
}

std::optional<WireError> PayloadReader::errorAtEnd() const
{
    if (!m_error && !m_rest.isEmpty())
        return WireError::TrailingBytes;
    return m_error;
}

} // namespace penwick
