#include "encoding/FileSurvey.h"

#include "encoding/FileConversion.h"
#include "encoding/StrictDecoder.h"
#include "encoding/TextScore.h"
#include "platform/files/FileSystem.h"
#include "text/Utf8.h"

#include <algorithm>

namespace penwick {

namespace {

constexpr qint64 kBefore = 1 << 15; // Bytes of the part before the first invalid one, at most.
constexpr qint64 kAfter = 1 << 16;  // And from there on.

/// A part of a file.
struct Part
{
    QByteArray bytes;
    qint64 start = 0; ///< Position in the file.
    qint64 invalidByte = 0;
    bool reachesEnd = false;
};

/// Collects the part around the first byte that is not valid UTF-8.
class PartCollector
{
public:
    /// Returns false when the part is complete.
    bool take(QByteArrayView block)
    {
        if (!m_invalidByte && !m_reader.append(block))
            m_invalidByte = m_reader.finish().error().byteOffset;
        m_bytes.append(block);
        const qint64 first = std::max(qint64(0), invalidOr(m_start + m_bytes.size()) - kBefore);
        m_bytes.remove(0, first - m_start);
        m_start = first;
        return !m_invalidByte || m_start + m_bytes.size() < *m_invalidByte + kAfter;
    }

    /// \param reachesEnd the whole file was taken.
    [[nodiscard]] std::optional<Part> finish(bool reachesEnd)
    {
        if (!m_invalidByte) {
            const auto text = m_reader.finish();
            if (text)
                return std::nullopt;
            m_invalidByte = text.error().byteOffset;
        }
        const qint64 length = *m_invalidByte + kAfter - m_start;
        const bool isCut = m_bytes.size() > length;
        return Part{m_bytes.first(isCut ? length : m_bytes.size()),
                    m_start,
                    *m_invalidByte,
                    reachesEnd && !isCut};
    }

private:
    [[nodiscard]] qint64 invalidOr(qint64 position) const
    {
        return m_invalidByte.value_or(position);
    }

    Utf8Reader m_reader;
    QByteArray m_bytes; // From `m_start` on.
    qint64 m_start = 0;
    std::optional<qint64> m_invalidByte;
};

/// Lets a part from the middle of a file start with a line. It starts at an even position, so that
/// no unit of UTF-16 is split; the line feed belongs to the part if it is at an even position.
void startAtLine(Part &part)
{
    if (part.start == 0)
        return;
    const auto before = QByteArrayView(part.bytes).first(part.invalidByte - part.start);
    const qsizetype lineFeed = before.indexOf('\n');
    qint64 start = part.start + std::max<qsizetype>(0, lineFeed);
    start += start % 2;
    part.bytes.remove(0, start - part.start);
    part.start = start;
}

bool isLikelyBinary(const QByteArray &bytes)
{
    constexpr qsizetype kTextPerControl = 32;
    const auto isControl = [](char byte) {
        const auto code = static_cast<uchar>(byte); // Whether char has a sign differs.
        const bool isSpace = code >= '\b' && code <= '\r';
        return (code < ' ' && !isSpace && code != '\x1B') || code == '\x7F';
    };
    const auto controls = std::count_if(bytes.cbegin(), bytes.cend(), isControl);
    return bytes.contains('\0') || controls * kTextPerControl > bytes.size();
}

struct Judgement
{
    int score = 0;                     ///< Of the characters up to a failure.
    std::optional<qint64> errorOffset; ///< In the file.
};

Judgement judge(const Part &part, const Encoding &encoding)
{
    StrictDecoder decoder(encoding);
    TextScore score(encoding.script);
    const bool isDecoded = decoder.append(part.bytes);
    score.add(decoder.units());
    if (!isDecoded || (part.reachesEnd && !decoder.finish()))
        return {score.value(), part.start + decoder.errorOffset().value_or(0)};
    return {decoder.hasMark() ? kScoreOfMark : score.value(), std::nullopt};
}

void judgeAll(const Part &part, FileSurvey &survey)
{
    constexpr int kLeastScore = 25; // Of UTF-16 in a file that looks like a binary one.
    survey.isBinary = isLikelyBinary(part.bytes);
    int best = -kScoreOfMark;
    int closest = 0;
    for (const Encoding &encoding : encodings()) {
        const auto [score, errorOffset] = judge(part, encoding);
        const bool isUtf16 = encoding.script == Script::Any;
        if (errorOffset && score > closest) {
            closest = score;
            survey.closest = &encoding;
            survey.closestEnd = *errorOffset;
        } else if (!errorOffset && score > best &&
                   (!survey.isBinary || (isUtf16 && score >= kLeastScore))) {
            best = score;
            survey.probable = &encoding;
        }
    }
    survey.isBinary = survey.isBinary && survey.probable == nullptr;
    // One that fails early may owe its score to a few characters.
    const bool failsLate = (survey.closestEnd - part.start) * 2 > part.bytes.size();
    const bool isBetter = survey.probable == nullptr || (closest > 2 * best && failsLate);
    if (survey.isBinary || !isBetter)
        survey.closest = nullptr;
}

} // namespace

tl::expected<FileSurvey, FileError> surveyFile(const QString &path, TransferProgress &progress)
{
    FileSurvey survey;
    survey.version = FileVersion::of(path);
    PartCollector collector;
    const auto read = readFileInBlocks(path, [&](QByteArrayView block) {
        return !progress.isCancelled() && collector.take(block);
    });
    const bool isStopped = !read && read.error().kind == FileError::Kind::Cancelled;
    if (!read && (!isStopped || progress.isCancelled()))
        return tl::unexpected(read.error());
    auto part = collector.finish(!isStopped);
    if (!part)
        return tl::unexpected(FileError{FileError::Kind::Changed, 0});
    startAtLine(*part);
    survey.invalidByte = part->invalidByte;
    judgeAll(*part, survey);
    return survey;
}

} // namespace penwick
