#include "macro/script/JsHandles.h"

#include "macro/script/ScriptValue.h"

#include <utility>

namespace penwick {

JsProtected::JsProtected(JSContextRef context, JSValueRef value)
    : m_context(context)
    , m_value(value)
{
    JSValueProtect(m_context, m_value);
}

JsProtected::~JsProtected()
{
    if (m_value != nullptr)
        JSValueUnprotect(m_context, m_value);
}

JsProtected::JsProtected(JsProtected &&other) noexcept
    : m_context(other.m_context)
    , m_value(std::exchange(other.m_value, nullptr))
{
}

JsProtected &JsProtected::operator=(JsProtected &&other) noexcept
{
    std::swap(m_context, other.m_context);
    std::swap(m_value, other.m_value);
    return *this;
}

// Only the calls that take and return UTF-16 keep every character: the UTF-8 calls stop at NUL and
// at lone surrogates.
JsString toJsString(QStringView text)
{
    static_assert(sizeof(JSChar) == sizeof(char16_t));
    return JsString(JSStringCreateWithCharacters(reinterpret_cast<const JSChar *>(text.utf16()),
                                                 static_cast<std::size_t>(text.size())));
}

// The engine exports this function under the same name everywhere but does not declare it in its
// public headers. Copying a large document would cost a tenth of its run.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" [[gnu::weak]] JSStringRef JSStringCreateWithCharactersNoCopy(const JSChar *units,
                                                                        std::size_t length);

JsString toJsStringWithoutCopy(QStringView text)
{
    if (JSStringCreateWithCharactersNoCopy == nullptr || text.isEmpty())
        return toJsString(text);
    return JsString(JSStringCreateWithCharactersNoCopy(
        reinterpret_cast<const JSChar *>(text.utf16()), static_cast<std::size_t>(text.size())));
}

QStringView viewOf(JSStringRef string)
{
    const JSChar *units = JSStringGetCharactersPtr(string);
    const auto length = static_cast<qsizetype>(JSStringGetLength(string));
    return {reinterpret_cast<const char16_t *>(units), length};
}

QString fromJsString(JSStringRef string)
{
    return wellFormed(viewOf(string));
}

std::optional<QString>
stringConversion(JSContextRef context, JSValueRef value, JSValueRef *exception)
{
    const JsString string(JSValueToStringCopy(context, value, exception));
    if (!string)
        return std::nullopt;
    return fromJsString(string.get());
}

} // namespace penwick
