#pragma once

#include <QString>
#include <QStringView>

#include <JavaScriptCore/JavaScript.h>
#include <memory>
#include <optional>
#include <type_traits>

namespace penwick {

/// Owning handles for the engine's reference-counted objects.
template <auto release> struct JsRelease
{
    template <typename Pointer> void operator()(Pointer pointer) const { release(pointer); }
};

using JsString = std::unique_ptr<std::remove_pointer_t<JSStringRef>, JsRelease<JSStringRelease>>;
using JsContextGroup =
    std::unique_ptr<std::remove_pointer_t<JSContextGroupRef>, JsRelease<JSContextGroupRelease>>;
using JsGlobalContext =
    std::unique_ptr<std::remove_pointer_t<JSGlobalContextRef>, JsRelease<JSGlobalContextRelease>>;
using JsClass = std::unique_ptr<std::remove_pointer_t<JSClassRef>, JsRelease<JSClassRelease>>;
using JsNames = std::unique_ptr<std::remove_pointer_t<JSPropertyNameArrayRef>,
                                JsRelease<JSPropertyNameArrayRelease>>;

/// Protects a value from the garbage collector while it is held where the collector does not look:
/// in memory that is not the stack. Sanitizers keep variables whose address is used in such memory.
class JsProtected final
{
public:
    JsProtected(JSContextRef context, JSValueRef value);
    ~JsProtected();
    JsProtected(JsProtected &&other) noexcept;
    JsProtected &operator=(JsProtected &&other) noexcept;
    JsProtected(const JsProtected &) = delete;
    JsProtected &operator=(const JsProtected &) = delete;

    [[nodiscard]] JSValueRef get() const { return m_value; }

private:
    JSContextRef m_context;
    JSValueRef m_value; // Null once moved from.
};

[[nodiscard]] JsString toJsString(QStringView text);

/// \param text must outlive the engine that uses the string.
[[nodiscard]] JsString toJsStringWithoutCopy(QStringView text);

/// The string's code units, which are valid as long as the string.
[[nodiscard]] QStringView viewOf(JSStringRef string);

/// Lone surrogates become U+FFFD.
[[nodiscard]] QString fromJsString(JSStringRef string);

/// Converts the value to a string as the engine does, which may run code of the script. When the
/// conversion throws, returns nothing and sets `exception` to the thrown value.
[[nodiscard]] std::optional<QString>
stringConversion(JSContextRef context, JSValueRef value, JSValueRef *exception);

} // namespace penwick
