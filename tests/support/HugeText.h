#pragma once

#include "text/Text.h"

namespace penwick::test {

/// A text of `megabytes` million "x" that shares its storage: it takes the memory of one million.
inline Text hugeText(int megabytes)
{
    const Text piece(QString(1'000'000, u'x'));
    Text text;
    for (int i = 0; i < megabytes; ++i)
        text = text.appended(piece);
    return text;
}

} // namespace penwick::test
