#include "text/TextNode.h"

#include "text/GraphemeClusters.h"
#include "text/TextBuilder.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace penwick {

namespace {

char32_t firstCodePoint(const TextNode &node)
{
    const TextNode *leaf = &node;
    while (!leaf->isLeaf())
        leaf = leaf->left().data();
    const char16_t unit = leaf->unitAt(0);
    if (!QChar::isHighSurrogate(unit) || leaf->size() < 2)
        return unit;
    return QChar::surrogateToUcs4(unit, leaf->unitAt(1));
}

char32_t lastCodePoint(const TextNode &node)
{
    const TextNode *leaf = &node;
    while (!leaf->isLeaf())
        leaf = leaf->right().data();
    const char16_t unit = leaf->unitAt(leaf->size() - 1);
    if (!QChar::isLowSurrogate(unit) || leaf->size() < 2)
        return unit;
    return QChar::surrogateToUcs4(leaf->unitAt(leaf->size() - 2), unit);
}

qint64 firstLeafSize(const TextNode &node)
{
    return node.isLeaf() ? node.size() : firstLeafSize(*node.left());
}

qint64 lastLeafSize(const TextNode &node)
{
    return node.isLeaf() ? node.size() : lastLeafSize(*node.right());
}

bool isAsciiOnly(std::u16string_view units)
{
    char16_t all = 0;
    for (const char16_t unit : units)
        all = static_cast<char16_t>(all | unit);
    return all < 0x80;
}

} // namespace

TextNode::TextNode(TextNodePtr left, TextNodePtr right)
    : m_metrics(left->m_metrics + right->m_metrics)
    , m_height(std::max(left->m_height, right->m_height) + 1)
    , m_left(std::move(left))
    , m_right(std::move(right))
{
}

TextNodePtr TextNode::makeAsciiLeaf(std::string_view characters)
{
    auto *node = new TextNode;
    node->m_metrics = measureAscii(characters);
    node->m_ascii = std::make_unique_for_overwrite<char[]>(characters.size());
    std::copy(characters.begin(), characters.end(), node->m_ascii.get());
    return TextNodePtr(node);
}

TextNodePtr TextNode::makeLeaf(std::u16string_view units)
{
    if (isAsciiOnly(units)) {
        std::string characters(units.size(), '\0');
        std::transform(units.begin(), units.end(), characters.begin(), [](char16_t unit) {
            return static_cast<char>(unit);
        });
        return makeAsciiLeaf(characters);
    }
    auto *node = new TextNode;
    node->m_metrics = measureUtf16(units);
    node->m_utf16 = std::make_unique_for_overwrite<char16_t[]>(units.size());
    std::copy(units.begin(), units.end(), node->m_utf16.get());
    return TextNodePtr(node);
}

TextNodePtr TextNode::branch(const TextNodePtr &left, const TextNodePtr &right)
{
    return TextNodePtr(new TextNode(left, right));
}

TextNodePtr TextNode::balance(const TextNodePtr &left, const TextNodePtr &right)
{
    if (left->m_height > right->m_height + 1) {
        if (left->m_left->m_height >= left->m_right->m_height)
            return branch(left->m_left, branch(left->m_right, right));
        return branch(branch(left->m_left, left->m_right->m_left),
                      branch(left->m_right->m_right, right));
    }
    if (right->m_height > left->m_height + 1) {
        if (right->m_right->m_height >= right->m_left->m_height)
            return branch(branch(left, right->m_left), right->m_right);
        return branch(branch(left, right->m_left->m_left),
                      branch(right->m_left->m_right, right->m_right));
    }
    return branch(left, right);
}

TextNodePtr TextNode::join(const TextNodePtr &left, const TextNodePtr &right)
{
    if (!left)
        return right;
    if (!right)
        return left;
    if (left->m_height > right->m_height + 1)
        return balance(left->m_left, join(left->m_right, right));
    if (right->m_height > left->m_height + 1)
        return balance(join(left, right->m_left), right->m_right);
    return branch(left, right);
}

std::pair<TextNodePtr, TextNodePtr> TextNode::splitLeaf(const TextNodePtr &leaf, qint64 offset)
{
    const auto at = static_cast<std::size_t>(offset);
    if (leaf->isAscii())
        return {makeAsciiLeaf(leaf->ascii().substr(0, at)),
                makeAsciiLeaf(leaf->ascii().substr(at))};
    return {makeLeaf(leaf->utf16().substr(0, at)), makeLeaf(leaf->utf16().substr(at))};
}

std::pair<TextNodePtr, TextNodePtr> TextNode::split(const TextNodePtr &node, qint64 offset)
{
    if (!node || offset <= 0)
        return {TextNodePtr(), node};
    if (offset >= node->size())
        return {node, TextNodePtr()};
    if (node->isLeaf())
        return splitLeaf(node, offset);
    const qint64 leftSize = node->m_left->size();
    if (offset < leftSize) {
        auto [before, after] = split(node->m_left, offset);
        return {before, join(after, node->m_right)};
    }
    auto [before, after] = split(node->m_right, offset - leftSize);
    return {join(node->m_left, before), after};
}

std::pair<TextNodePtr, TextNodePtr> TextNode::popFirstLeaf(const TextNodePtr &node)
{
    if (node->isLeaf())
        return {node, TextNodePtr()};
    auto [leaf, rest] = popFirstLeaf(node->m_left);
    return {leaf, join(rest, node->m_right)};
}

std::pair<TextNodePtr, TextNodePtr> TextNode::popLastLeaf(const TextNodePtr &node)
{
    if (node->isLeaf())
        return {TextNodePtr(), node};
    auto [rest, leaf] = popLastLeaf(node->m_right);
    return {join(node->m_left, rest), leaf};
}

TextNodePtr TextNode::merged(const TextNode &left, const TextNode &right)
{
    if (left.isAscii() && right.isAscii() && left.size() + right.size() <= kLeafUnits) {
        std::string characters(left.ascii());
        characters += right.ascii();
        return makeAsciiLeaf(characters);
    }
    TextBuilder builder;
    builder.appendLeaf(left);
    builder.appendLeaf(right);
    return builder.finishNode();
}

TextNodePtr TextNode::concat(const TextNodePtr &left, const TextNodePtr &right)
{
    if (!left)
        return right;
    if (!right)
        return left;
    const bool fitsOneLeaf = lastLeafSize(*left) + firstLeafSize(*right) <= kLeafUnits;
    if (!fitsOneLeaf && clusters::isCertainBoundary(lastCodePoint(*left), firstCodePoint(*right)))
        return join(left, right);
    const auto [before, last] = popLastLeaf(left);
    const auto [first, after] = popFirstLeaf(right);
    return join(join(before, merged(*last, *first)), after);
}

TextNodePtr TextNode::fromLeaves(const TextNodePtr *begin, const TextNodePtr *end)
{
    const std::ptrdiff_t count = end - begin;
    if (count == 0)
        return {};
    if (count == 1)
        return *begin;
    const TextNodePtr *middle = begin + count / 2;
    return branch(fromLeaves(begin, middle), fromLeaves(middle, end));
}

TextMetrics TextNode::measurePrefix(qint64 length) const
{
    if (length == size())
        return m_metrics;
    const auto count = static_cast<std::size_t>(length);
    return isAscii() ? measureAscii(ascii().substr(0, count))
                     : measureUtf16(utf16().substr(0, count));
}

} // namespace penwick
