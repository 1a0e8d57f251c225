#pragma once

#include "text/Text.h"

#include <QByteArray>
#include <QByteArrayView>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace penwick {

/// Decodes UTF-8 in blocks as `Utf8Reader` does, pieces of it at once on several threads. The text
/// is the same. Needs memory for the text and a few pieces.
class ParallelUtf8Reader final
{
public:
    static constexpr qsizetype kPiece = qsizetype{1} << 21; // Bytes.
    /// The first piece is decoded before `append` returns, since it can be shown. Each of the next
    /// ones is twice as long as the one before it, until they have their full length.
    static constexpr qsizetype kFirstPiece = kPiece / 8;

    /// Receives the start of the text, each time that more of it is decoded. Called from one thread
    /// at a time, which need not be the one that uses the reader.
    using ReportStart = std::function<void(const Text &)>;

    /// Starts no thread yet: a short text is decoded on the thread that uses this.
    /// \param threads the most to start; none of them starts another.
    explicit ParallelUtf8Reader(ReportStart report = {},
                                unsigned threads = usefulThreads(),
                                qsizetype piece = kPiece);
    Q_DISABLE_COPY_MOVE(ParallelUtf8Reader)
    ~ParallelUtf8Reader();

    /// Takes the next block, which may end anywhere. Returns false once an invalid byte was found,
    /// which may be later than with `Utf8Reader`; all later blocks are ignored. Blocks while the
    /// threads have enough to do.
    bool append(QByteArrayView block);

    /// Waits for the threads and returns the text; nothing when a byte is invalid. Call it once.
    /// Throws std::bad_alloc when a thread had too little memory.
    [[nodiscard]] std::optional<Text> finish();

private:
    struct Piece
    {
        std::size_t index;
        QByteArray bytes;
    };

    [[nodiscard]] static unsigned usefulThreads();
    [[nodiscard]] qsizetype nextPieceSize() const;
    void submit(QByteArray bytes);
    void startThread();
    void decodePieces();
    void tryToDecode(const Piece &piece);
    void decode(const Piece &piece);
    void joinDecoded();
    void stop();
    [[nodiscard]] std::optional<Piece> take();

    ReportStart m_report;
    unsigned m_mostThreads;
    qsizetype m_pieceSize;
    QByteArray m_pending; // Bytes that are not in a piece yet.
    std::size_t m_count = 0;
    std::vector<std::thread> m_threads;
    std::mutex m_mutex; // Protects the following.
    std::condition_variable m_isWork;
    std::condition_variable m_isRoom;
    std::deque<Piece> m_waiting;
    std::vector<std::optional<Text>> m_decoded; // By the index of their piece.
    std::size_t m_joined = 0;                   // Number of pieces in the following.
    Text m_text;
    bool m_isInvalid = false;
    bool m_lacksMemory = false;
    bool m_isComplete = false;
};

} // namespace penwick
