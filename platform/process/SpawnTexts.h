#pragma once

#include <string>
#include <vector>

namespace penwick {

/// Returns what `posix_spawn` takes for arguments or environment: a pointer to each text, then
/// null. Valid until `texts` changes.
inline std::vector<char *> pointersTo(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace penwick
