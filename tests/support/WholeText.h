#pragma once

#include "view/TextView.h"

namespace penwick::test {

/// Replaces the whole text of the view in one edit, as a macro does.
inline void replaceWholeText(TextView *view, const Text &text)
{
    const TextRange all{0, view->string().size()};
    view->shouldChangeText(all, text);
    view->replaceCharacters(all, text);
    view->didChangeText();
}

} // namespace penwick::test
