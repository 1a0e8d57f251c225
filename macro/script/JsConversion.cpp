#include "macro/script/JsConversion.h"

#include "macro/script/JsHandles.h"

#include <optional>
#include <unordered_set>
#include <utility>

namespace penwick {

namespace {

using Code = ScriptError::Code;

/// An object whose parts are being converted.
struct OpenObject
{
    JSObjectRef object;
    JsProtected protection;
    QString key;   // Under which the finished value goes into the map below this one, if it is one.
    JsNames names; // Null for a list.
    std::size_t size = 0;
    std::size_t next = 0;
    ScriptValue::List list;
    ScriptValue::Map map;
};

/// The objects from the root down to the one in work form a stack of their own, so that the depth
/// of a script's value never becomes the depth of our calls.
class Converter final
{
public:
    Converter(JSContextRef context, const ScriptLimits &limits)
        : m_context(context)
        , m_limits(limits)
    {
    }

    ScriptOutcome convert(JSValueRef root)
    {
        take(root, {});
        while (!m_error && !m_open.empty()) {
            OpenObject &object = m_open.back();
            if (object.next == object.size)
                close();
            else if (object.names)
                takeMember(object);
            else
                takeElement(object);
        }
        if (m_error)
            return tl::unexpected(ScriptError{*m_error, {}});
        return std::move(m_root);
    }

private:
    void takeMember(OpenObject &object)
    {
        JSStringRef name = JSPropertyNameArrayGetNameAtIndex(object.names.get(), object.next++);
        JSValueRef exception = nullptr;
        JSValueRef value = JSObjectGetProperty(m_context, object.object, name, &exception);
        if (exception != nullptr || value == nullptr || JSValueIsUndefined(m_context, value))
            return;
        if (spend(JSStringGetLength(name)))
            take(value, fromJsString(name));
    }

    void takeElement(OpenObject &object)
    {
        const auto index = static_cast<unsigned>(object.next++);
        JSValueRef exception = nullptr;
        JSValueRef value = JSObjectGetPropertyAtIndex(m_context, object.object, index, &exception);
        const bool gone = exception != nullptr || value == nullptr;
        take(gone ? JSValueMakeNull(m_context) : value, {});
    }

    void take(JSValueRef value, QString key)
    {
        if (++m_values > m_limits.values) {
            m_error = Code::ResultTooManyValues;
            return;
        }
        switch (JSValueGetType(m_context, value)) {
        case kJSTypeUndefined:
        case kJSTypeNull:
            return put(ScriptValue(), std::move(key));
        case kJSTypeBoolean:
            return put(ScriptValue(JSValueToBoolean(m_context, value)), std::move(key));
        case kJSTypeNumber:
            return put(ScriptValue(JSValueToNumber(m_context, value, nullptr)), std::move(key));
        case kJSTypeString:
            return takeString(value, std::move(key));
        case kJSTypeObject:
            return takeObject(value, std::move(key));
        default:
            return put(ScriptValue::other(), std::move(key));
        }
    }

    void takeString(JSValueRef value, QString key)
    {
        const JsString string(JSValueToStringCopy(m_context, value, nullptr));
        if (!string) // Out of memory while the engine joined its pieces.
            m_error = Code::ResultTooLarge;
        else if (spend(JSStringGetLength(string.get())))
            put(ScriptValue(fromJsString(string.get())), std::move(key));
    }

    void takeObject(JSValueRef value, QString key)
    {
        JSObjectRef object = JSValueToObject(m_context, value, nullptr);
        if (object == nullptr || JSValueIsDate(m_context, value) || m_path.contains(object))
            put(ScriptValue::other(), std::move(key));
        else if (m_open.size() == m_limits.depth)
            m_error = Code::ResultTooDeep;
        else if (isTypedArray(value))
            put(ScriptValue(ScriptValue::Map()), std::move(key));
        else
            open(object, std::move(key));
    }

    // The engine makes a name for each of its elements before it says how many there are: for a
    // large one that takes minutes and more memory than there is, and no result has a use for them.
    [[nodiscard]] bool isTypedArray(JSValueRef value) const
    {
        return JSValueGetTypedArrayType(m_context, value, nullptr) != kJSTypedArrayTypeNone;
    }

    void open(JSObjectRef object, QString key)
    {
        OpenObject opened{.object = object,
                          .protection = JsProtected(m_context, object),
                          .key = std::move(key),
                          .names = {},
                          .list = {},
                          .map = {}};
        if (JSValueIsArray(m_context, object)) {
            opened.size = listLength(object);
        } else {
            opened.names = keysOf(object);
            opened.size = JSPropertyNameArrayGetCount(opened.names.get());
        }
        if (opened.size > m_limits.values - m_values) {
            m_error = Code::ResultTooManyValues;
            return;
        }
        if (!opened.names)
            opened.list.reserve(opened.size);
        m_path.insert(object);
        m_open.push_back(std::move(opened));
    }

    // Where a proxy's trap throws, the engine lists no keys but leaves the exception pending, to be
    // reported by whatever call comes next. The conversion of a number takes it up and drops it.
    [[nodiscard]] JsNames keysOf(JSObjectRef object) const
    {
        JsNames names(JSObjectCopyPropertyNames(m_context, object));
        JSValueRef pending = nullptr;
        JSValueToNumber(m_context, JSValueMakeNumber(m_context, 0), &pending);
        return names;
    }

    [[nodiscard]] std::size_t listLength(JSObjectRef list) const
    {
        const JsString name = toJsString(u"length");
        JSValueRef length = JSObjectGetProperty(m_context, list, name.get(), nullptr);
        return static_cast<std::size_t>(JSValueToNumber(m_context, length, nullptr));
    }

    void close()
    {
        OpenObject done = std::move(m_open.back());
        m_open.pop_back();
        m_path.erase(done.object);
        put(done.names ? ScriptValue(std::move(done.map)) : ScriptValue(std::move(done.list)),
            std::move(done.key));
    }

    void put(ScriptValue value, QString key)
    {
        if (m_open.empty())
            m_root = std::move(value);
        else if (m_open.back().names)
            m_open.back().map.push_back({std::move(key), std::move(value)});
        else
            m_open.back().list.push_back(std::move(value));
    }

    [[nodiscard]] bool spend(std::size_t units)
    {
        m_bytes += units * sizeof(JSChar);
        if (m_bytes > m_limits.bytes)
            m_error = Code::ResultTooLarge;
        return !m_error;
    }

    JSContextRef m_context;
    const ScriptLimits &m_limits;
    std::size_t m_values = 0;
    std::size_t m_bytes = 0;
    std::optional<Code> m_error;
    std::vector<OpenObject> m_open;
    std::unordered_set<JSObjectRef> m_path; // The objects of m_open: one met again is a cycle.
    ScriptValue m_root;
};

} // namespace

ScriptOutcome convertJsValue(JSContextRef context, JSValueRef value, const ScriptLimits &limits)
{
    return Converter(context, limits).convert(value);
}

} // namespace penwick
