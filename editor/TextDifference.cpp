#include "editor/TextDifference.h"

#include <QString>

#include <algorithm>

namespace penwick {

namespace {

constexpr qint64 kBlock = 1 << 16;

qint64 commonStart(const Text &one, const Text &other)
{
    const qint64 length = std::min(one.size(), other.size());
    for (qint64 offset = 0; offset < length; offset += kBlock) {
        const qint64 count = std::min(kBlock, length - offset);
        const QString a = one.slice(offset, count);
        const QString b = other.slice(offset, count);
        const auto different = std::mismatch(a.begin(), a.end(), b.begin()).first;
        if (different != a.end())
            return offset + (different - a.begin());
    }
    return length;
}

/// \param limit maximum of the result.
qint64 commonEnd(const Text &one, const Text &other, qint64 limit)
{
    for (qint64 done = 0; done < limit; done += kBlock) {
        const qint64 count = std::min(kBlock, limit - done);
        const QString a = one.slice(one.size() - done - count, count);
        const QString b = other.slice(other.size() - done - count, count);
        const auto different = std::mismatch(a.rbegin(), a.rend(), b.rbegin()).first;
        if (different != a.rend())
            return done + (different - a.rbegin());
    }
    return limit;
}

} // namespace

TextDifference differenceBetween(const Text &before, const Text &after)
{
    if (before.isSameValue(after))
        return {{before.size(), 0}, {}};
    qint64 start = commonStart(before, after);
    if (start > 0 && QChar::isHighSurrogate(before.at(start - 1)))
        --start; // Only one half of a surrogate pair is common.
    const qint64 shorter = std::min(before.size(), after.size());
    qint64 end = commonEnd(before, after, shorter - start);
    if (end > 0 && QChar::isLowSurrogate(before.at(before.size() - end)))
        --end;
    return {{start, before.size() - start - end}, after.mid(start, after.size() - start - end)};
}

} // namespace penwick
