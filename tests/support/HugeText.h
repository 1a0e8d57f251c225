#pragma once

#include "text/Text.h"

namespace penwick::test {

/// A text of so many megabytes of "x", at the cost of one of them.
inline Text hugeText(int megabytes)
{
    const Text piece(QString(1'000'000, u'x'));
    Text text;
    for (int i = 0; i < megabytes; ++i) {
        text = text.appended(piece);
    }
    return text;
}

} // namespace penwick::test
