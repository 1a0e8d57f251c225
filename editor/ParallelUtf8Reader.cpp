#include "editor/ParallelUtf8Reader.h"

#include "text/Utf8.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

namespace penwick {

namespace {

constexpr unsigned kMostThreads = 8; // Reading the file does not get faster.

/// Where a piece can end so that the next one starts with a whole character: after a line feed near
/// the end, since no grapheme cluster goes on behind it; otherwise before the last character.
qsizetype pieceEnd(QByteArrayView bytes)
{
    constexpr qsizetype kNear = 1 << 16;
    const qsizetype lineFeed = bytes.last(std::min(bytes.size(), kNear)).lastIndexOf('\n');
    if (lineFeed >= 0)
        return std::max<qsizetype>(0, bytes.size() - kNear) + lineFeed + 1;
    qsizetype end = bytes.size() - 1;
    constexpr qsizetype kLongestSequence = 4; // Bytes. More of them are invalid anyway.
    const auto continues = [&] { return (static_cast<quint8>(bytes[end]) & 0xc0U) == 0x80U; };
    for (int i = 1; i < kLongestSequence && end > 0 && continues(); ++i)
        --end;
    return std::max<qsizetype>(end, 1);
}

} // namespace

ParallelUtf8Reader::ParallelUtf8Reader(ReportStart report, unsigned threads, qsizetype piece)
    : m_report(std::move(report))
    , m_mostThreads(threads)
    , m_pieceSize(piece)
{
}

ParallelUtf8Reader::~ParallelUtf8Reader()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isInvalid = true; // What is left is not decoded.
    }
    stop();
}

unsigned ParallelUtf8Reader::usefulThreads()
{
    return std::min(std::thread::hardware_concurrency(), kMostThreads);
}

bool ParallelUtf8Reader::append(QByteArrayView block)
{
    m_pending.append(block);
    while (m_pending.size() >= nextPieceSize()) {
        const qsizetype end = pieceEnd(QByteArrayView(m_pending).first(nextPieceSize()));
        QByteArray rest;
        rest.reserve(m_pieceSize + block.size());
        rest.append(QByteArrayView(m_pending).sliced(end));
        m_pending.truncate(end);
        submit(std::exchange(m_pending, std::move(rest)));
    }
    const std::lock_guard lock(m_mutex);
    return !m_isInvalid && !m_lacksMemory;
}

qsizetype ParallelUtf8Reader::nextPieceSize() const
{
    constexpr std::size_t kLongestShift = 8; // Pieces have their full length by then.
    return std::min(kFirstPiece << std::min(m_count, kLongestShift), m_pieceSize);
}

void ParallelUtf8Reader::submit(QByteArray bytes)
{
    Piece piece{m_count++, std::move(bytes)};
    if (piece.index > 0 && m_threads.size() < m_mostThreads)
        startThread();
    if (m_threads.empty())
        return tryToDecode(piece);
    std::unique_lock lock(m_mutex);
    m_isRoom.wait(lock, [this] { return m_waiting.size() < m_threads.size(); });
    m_waiting.push_back(std::move(piece));
    m_isWork.notify_one();
}

/// Does without it if the system allows no more.
void ParallelUtf8Reader::startThread()
{
    try {
        m_threads.emplace_back([this] { decodePieces(); });
    } catch (const std::system_error &) {
        m_mostThreads = static_cast<unsigned>(m_threads.size());
    }
}

void ParallelUtf8Reader::decodePieces()
{
    while (const auto piece = take())
        tryToDecode(*piece);
}

void ParallelUtf8Reader::tryToDecode(const Piece &piece)
{
    try {
        decode(piece);
    } catch (const std::bad_alloc &) {
        const std::lock_guard lock(m_mutex);
        m_lacksMemory = true;
    }
}

std::optional<ParallelUtf8Reader::Piece> ParallelUtf8Reader::take()
{
    std::unique_lock lock(m_mutex);
    m_isWork.wait(lock, [this] { return m_isComplete || !m_waiting.empty(); });
    if (m_waiting.empty())
        return std::nullopt;
    Piece piece = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_isRoom.notify_one();
    return piece;
}

void ParallelUtf8Reader::decode(const Piece &piece)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_isInvalid || m_lacksMemory)
            return;
    }
    Utf8Reader reader;
    reader.append(piece.bytes);
    auto text = reader.finish();
    const std::lock_guard lock(m_mutex);
    m_isInvalid = m_isInvalid || !text;
    if (m_isInvalid)
        return;
    if (m_decoded.size() <= piece.index)
        m_decoded.resize(piece.index + 1);
    m_decoded[piece.index] = *std::move(text);
    joinDecoded();
}

void ParallelUtf8Reader::joinDecoded()
{
    const std::size_t before = m_joined;
    for (; m_joined < m_decoded.size() && m_decoded[m_joined]; ++m_joined)
        m_text = m_text.appended(*std::exchange(m_decoded[m_joined], std::nullopt));
    if (m_joined > before && m_report)
        m_report(m_text);
}

std::optional<Text> ParallelUtf8Reader::finish()
{
    decode({m_count++, std::exchange(m_pending, {})});
    stop();
    if (m_lacksMemory)
        throw std::bad_alloc();
    return m_isInvalid ? std::nullopt : std::optional(m_text);
}

void ParallelUtf8Reader::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isComplete = true;
    }
    m_isWork.notify_all();
    for (std::thread &thread : std::exchange(m_threads, {}))
        thread.join();
}

} // namespace penwick
