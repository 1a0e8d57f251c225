#pragma once

#include "text/Text.h"
#include "text/TextNode.h"

#include <algorithm>
#include <string>
#include <vector>

namespace penwick {

/// Collects characters and builds a `Text` from them. Chunks are cut at certain cluster boundaries.
/// Uses memory for the result and one chunk.
class TextBuilder final
{
public:
    /// Appends ASCII characters; any byte of 0x80 or more is a programming error.
    void appendAscii(std::string_view characters);
    /// Appends UTF-16 code units. A surrogate pair may be divided between two calls; a lone
    /// surrogate becomes U+FFFD.
    void appendUtf16(std::u16string_view units);
    /// Appends UTF-16 code units of 0x80 or more, in which no surrogate pair is split. Faster than
    /// `appendUtf16`; for decoders, which produce such units.
    void appendNonAscii(std::u16string_view units);
    /// Appends the characters of a leaf.
    void appendLeaf(const TextNode &leaf);

    /// Returns the text of everything appended. The builder is empty afterwards.
    [[nodiscard]] Text finish();
    /// As `finish`, but returns the root node; null for an empty text.
    [[nodiscard]] TextNodePtr finishNode();

private:
    template <typename Unit> void pushAsciiRun(std::basic_string_view<Unit> run);
    void pushAscii(char16_t unit);
    void pushOther(std::u16string_view units);
    /// Appends a block without dividing it into stretches. Returns false where they matter: at the
    /// start of a text and at the end of a chunk, with surrogates, and when its ASCII may be worth
    /// a chunk of its own.
    [[nodiscard]] bool pushBlock(std::u16string_view block);
    /// Appends blocks as long as that is possible, and returns the length of all of them.
    [[nodiscard]] std::size_t pushBlocks(std::u16string_view units);
    void sealAsciiPart();
    void appendSurrogate(char16_t unit);
    void flushHighSurrogate();
    void sealLongPending();
    void sealPending(std::size_t length);
    [[nodiscard]] std::size_t findCut() const;

    std::vector<TextNodePtr> m_leaves;
    std::u16string m_pending; // Appended units that are not in a leaf yet.
    std::size_t m_sealLimit = kSealUnits;
    std::size_t m_asciiRun = 0; // Length of the ASCII stretch that ends `m_pending`.
    bool m_pendingIsAscii = true;
    char16_t m_highSurrogate = 0; // The first half of a pair whose second half is still to come.

    // Pending text is cut once it is longer than a chunk, so that there are boundaries to choose
    // from.
    static constexpr std::size_t kSealUnits = TextNode::kLeafUnits + TextNode::kLeafUnits / 16;
    // An ASCII stretch this long is worth a chunk of its own: it takes half the memory.
    static constexpr std::size_t kAsciiRunUnits = TextNode::kLeafUnits / 4;
    // The compiler looks at the units of a block with vector instructions.
    static constexpr std::size_t kBlockUnits = std::max<std::size_t>(kAsciiRunUnits / 16, 8);
};

} // namespace penwick
