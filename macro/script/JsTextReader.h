#pragma once

#include "macro/script/JsHandles.h"

#include <JavaScriptCore/JavaScript.h>
#include <cstddef>
#include <optional>
#include <span>

namespace penwick {

/// Reads the strings of a list inside the engine: a call through its C interface for each of them
/// takes as long as the rest of a macro.
class JsTextReader final
{
public:
    /// Maximum number of strings in one run. With so many, even empty ones make a text that is long
    /// enough for `SharedTexts`.
    static constexpr std::size_t kMostTexts = (std::size_t{1} << 15) + 1;
    /// Maximum length of a run without its separators, in UTF-16 code units. What is read and
    /// copied in one go should stay in the processor's cache.
    static constexpr std::size_t kMostUnits = std::size_t{1} << 17;

    /// Strings that stand one after the other in a list, and what follows them.
    struct Run
    {
        JsString characters;              ///< What `joined` views. Null after an error.
        QStringView joined;               ///< The strings with U+000A between each two.
        std::span<const quint32> lengths; ///< In UTF-16 code units. Valid until the next `read`.
        std::optional<JsProtected> next;  ///< The element after them, if it was read.
    };

    /// Must be created before the engine runs a script, and destroyed before the engine.
    explicit JsTextReader(JSContextRef context);

    /// Reads elements, each once and in order, until there are `count` strings or one more would be
    /// no string or exceed `room`. Getters run code of the script meanwhile; an exception of theirs
    /// makes the element undefined.
    /// \param list an array.
    /// \param first the element before `index`, which has already been read and starts the run.
    /// \param count of strings, at least 1 and at most `kMostTexts`.
    /// \param room at most `kMostUnits`.
    [[nodiscard]] Run read(
        JSObjectRef list, JSValueRef first, std::size_t index, std::size_t count, std::size_t room);

private:
    JSContextRef m_context;
    JSObjectRef m_function;
    JsProtected m_functionProtection;
    JSObjectRef m_lengths = nullptr;
    std::optional<JsProtected> m_lengthsProtection;
};

} // namespace penwick
