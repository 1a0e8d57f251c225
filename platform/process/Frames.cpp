#include "platform/process/Frames.h"

#include <utility>

namespace penwick {

void setFrameHeader(QByteArray &frame, quint8 kind, bool more)
{
    const auto length = static_cast<quint32>(frame.size() - kFrameHeaderSize);
    frame[0] = static_cast<char>(kind);
    frame[1] = more ? 1 : 0;
    std::memcpy(frame.data() + 4, &length, sizeof length);
}

void FrameCutter::append(QByteArrayView bytes)
{
    m_input.remove(0, std::exchange(m_taken, 0));
    m_input.append(bytes.data(), bytes.size());
}

tl::expected<std::optional<Frame>, FrameError> FrameCutter::next()
{
    const QByteArrayView input = QByteArrayView(m_input).sliced(m_taken);
    if (input.size() < kFrameHeaderSize)
        return std::nullopt;
    QByteArrayView rest = input.sliced(4);
    const auto length = qsizetype{takeNumber<quint32>(rest).value_or(0)};
    if ((input[1] != 0 && input[1] != 1) || input[2] != 0 || input[3] != 0)
        return tl::unexpected(FrameError::BadHeader);
    if (length > m_longest)
        return tl::unexpected(FrameError::TooLong);
    if (rest.size() < length)
        return std::nullopt;
    m_taken += kFrameHeaderSize + length;
    return Frame{static_cast<quint8>(input[0]), input[1] == 1, rest.first(length)};
}

} // namespace penwick
