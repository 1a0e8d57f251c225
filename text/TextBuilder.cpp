#include "text/TextBuilder.h"

#include "text/GraphemeClusters.h"

#include <QChar>

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

constexpr char16_t kReplacement = u'\uFFFD';

/// Returns the length of the ASCII stretch at the start of `units`.
std::size_t asciiPrefix(std::u16string_view units)
{
    constexpr std::size_t kBlock = 32;
    std::size_t i = 0;
    while (i + kBlock <= units.size()) {
        char16_t all = 0; // No early exit inside a block, so that the compiler can vectorize it.
        for (const char16_t unit : units.substr(i, kBlock))
            all = static_cast<char16_t>(all | unit);
        if (all >= 0x80)
            break;
        i += kBlock;
    }
    while (i < units.size() && units[i] < 0x80)
        ++i;
    return i;
}

TextNodePtr makeAsciiLeaf(std::string_view run)
{
    return TextNode::makeAsciiLeaf(run);
}

TextNodePtr makeAsciiLeaf(std::u16string_view run)
{
    return TextNode::makeLeaf(run);
}

} // namespace

/// Returns the best index at which to cut a chunk off the pending text: the last possible one
/// within the usual chunk size, else the first one after it. 0 when there is none.
std::size_t TextBuilder::findCut() const
{
    constexpr auto kLeaf = static_cast<std::size_t>(TextNode::kLeafUnits);
    const bool isFirstSearch = m_sealLimit == kSealUnits;
    if (isFirstSearch) {
        for (std::size_t cut = std::min(kLeaf, m_pending.size() - 1); cut > 0; --cut)
            if (clusters::isCertainBoundaryAt(m_pending, cut))
                return cut;
    }
    // A later search continues where the last one stopped.
    const std::size_t start = isFirstSearch ? kLeaf + 1 : m_sealLimit / 2;
    for (std::size_t cut = start; cut < m_pending.size(); ++cut)
        if (clusters::isCertainBoundaryAt(m_pending, cut))
            return cut;
    return 0;
}

void TextBuilder::sealPending(std::size_t length)
{
    m_leaves.push_back(TextNode::makeLeaf(std::u16string_view(m_pending).substr(0, length)));
    m_pending.erase(0, length);
    m_sealLimit = kSealUnits;
    m_asciiRun = std::min(m_asciiRun, m_pending.size());
    m_pendingIsAscii = m_asciiRun == m_pending.size();
}

void TextBuilder::sealLongPending()
{
    while (m_pending.size() >= m_sealLimit) {
        const std::size_t cut = findCut();
        if (cut == 0) {
            // One cluster has thousands of units. Let the chunk grow and search again only after
            // its size has doubled, so that the total cost stays linear.
            m_sealLimit = m_pending.size() * 2;
            return;
        }
        sealPending(cut);
    }
}

void TextBuilder::sealAsciiPart()
{
    if (!m_pendingIsAscii || m_pending.size() < kAsciiRunUnits)
        return;
    // The last character stays in the pending text: the next one may join its cluster. The cut must
    // not split CR LF.
    std::size_t cut = m_pending.size() - 1;
    while (cut > 0 && !clusters::isCertainBoundaryAt(m_pending, cut))
        --cut;
    if (cut > 0)
        sealPending(cut);
}

void TextBuilder::pushOther(std::u16string_view units)
{
    sealAsciiPart();
    while (!units.empty()) {
        const std::size_t room = m_sealLimit - m_pending.size();
        std::size_t length = std::min(units.size(), room);
        // Never search for a cut after half a surrogate pair: its code point is unknown.
        if (length < units.size() && QChar::isHighSurrogate(units[length - 1]))
            ++length;
        m_pending.append(units.substr(0, length));
        units.remove_prefix(length);
        m_asciiRun = 0;
        m_pendingIsAscii = false;
        if (m_pending.size() >= m_sealLimit)
            sealLongPending();
    }
}

void TextBuilder::pushAscii(char16_t unit)
{
    m_pending.push_back(unit);
    ++m_asciiRun;
    const std::size_t start = m_pending.size() - m_asciiRun;
    if (!m_pendingIsAscii && m_asciiRun >= kAsciiRunUnits &&
        clusters::isCertainBoundaryAt(m_pending, start))
        sealPending(start);
    if (m_pending.size() >= m_sealLimit)
        sealLongPending();
}

void TextBuilder::flushHighSurrogate()
{
    if (m_highSurrogate == 0)
        return;
    m_highSurrogate = 0;
    pushOther({&kReplacement, 1});
}

template <typename Unit> void TextBuilder::pushAsciiRun(std::basic_string_view<Unit> run)
{
    constexpr auto kLeaf = static_cast<std::size_t>(TextNode::kLeafUnits);
    std::size_t i = 0;
    // A short run that neither ends a chunk nor is worth one of its own needs no look at each unit.
    if (m_asciiRun + run.size() < kAsciiRunUnits && m_pending.size() + run.size() < m_sealLimit) {
        m_pending.append(run.begin(), run.end());
        m_asciiRun += run.size();
        return;
    }
    while (i < run.size()) {
        // Cut whole chunks of a long ASCII stretch directly, without the pending text.
        if (m_pending.empty() && run.size() - i > kLeaf) {
            const bool cutsPair = run[i + kLeaf - 1] == '\r' && run[i + kLeaf] == '\n';
            const std::size_t length = cutsPair ? kLeaf - 1 : kLeaf;
            m_leaves.push_back(makeAsciiLeaf(run.substr(i, length)));
            i += length;
            continue;
        }
        const bool startsChunk = m_pendingIsAscii && run.size() - i > kLeaf &&
                                 m_pending.size() >= kAsciiRunUnits &&
                                 !(m_pending.back() == u'\r' && run[i] == '\n');
        if (startsChunk) {
            sealPending(m_pending.size());
            continue;
        }
        pushAscii(static_cast<char16_t>(run[i]));
        ++i;
    }
}

void TextBuilder::appendAscii(std::string_view characters)
{
    flushHighSurrogate();
    pushAsciiRun(characters);
}

void TextBuilder::appendUtf16(std::u16string_view units)
{
    std::size_t nextBlock = 0; // Where to try a block again.
    std::size_t i = 0;
    while (i < units.size()) {
        if (i >= nextBlock) {
            i += pushBlocks(units.substr(i));
            nextBlock = i + kBlockUnits;
            continue;
        }
        const char16_t unit = units[i];
        if (QChar::isSurrogate(unit)) {
            appendSurrogate(unit);
            ++i;
            continue;
        }
        flushHighSurrogate();
        if (unit < 0x80) {
            const std::size_t length = asciiPrefix(units.substr(i));
            pushAsciiRun(units.substr(i, length));
            i += length;
            continue;
        }
        std::size_t end = i + 1;
        while (end < units.size() && units[end] >= 0x80 && !QChar::isSurrogate(units[end]))
            ++end;
        pushOther(units.substr(i, end - i));
        i = end;
    }
}

std::size_t TextBuilder::pushBlocks(std::u16string_view units)
{
    std::size_t length = 0;
    while (units.size() - length >= kBlockUnits && pushBlock(units.substr(length, kBlockUnits)))
        length += kBlockUnits;
    return length;
}

bool TextBuilder::pushBlock(std::u16string_view block)
{
    if (m_pending.empty() || m_highSurrogate != 0 || m_asciiRun + block.size() >= kAsciiRunUnits ||
        m_pending.size() + block.size() >= m_sealLimit)
        return false;
    quint16 all = 0;
    quint16 surrogates = 0;
    for (const char16_t unit : block) {
        all = static_cast<quint16>(all | unit);
        surrogates = static_cast<quint16>(surrogates + ((unit & 0xF800) == 0xD800));
    }
    if (surrogates != 0)
        return false;
    m_pending.append(block);
    if (all < 0x80) {
        m_asciiRun += block.size();
        return true;
    }
    m_asciiRun = 0;
    while (block[block.size() - 1 - m_asciiRun] < 0x80)
        ++m_asciiRun;
    m_pendingIsAscii = false;
    return true;
}

void TextBuilder::appendSurrogate(char16_t unit)
{
    if (QChar::isHighSurrogate(unit)) {
        flushHighSurrogate();
        m_highSurrogate = unit;
    } else if (m_highSurrogate != 0) {
        const char16_t pair[] = {std::exchange(m_highSurrogate, u'\0'), unit};
        pushOther({pair, 2});
    } else {
        pushOther({&kReplacement, 1});
    }
}

void TextBuilder::appendNonAscii(std::u16string_view units)
{
    flushHighSurrogate();
    pushOther(units);
}

void TextBuilder::appendLeaf(const TextNode &leaf)
{
    if (leaf.isAscii())
        appendAscii(leaf.ascii());
    else
        appendUtf16(leaf.utf16());
}

TextNodePtr TextBuilder::finishNode()
{
    flushHighSurrogate();
    if (!m_pending.empty())
        sealPending(m_pending.size());
    TextNodePtr root = TextNode::fromLeaves(m_leaves.data(), m_leaves.data() + m_leaves.size());
    m_leaves.clear();
    return root;
}

Text TextBuilder::finish()
{
    return Text(finishNode());
}

} // namespace penwick
