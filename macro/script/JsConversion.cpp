#include "macro/script/JsConversion.h"

#include "macro/script/JsHandles.h"

#include <algorithm>
#include <numeric>
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
    JsNames names;        // Null for a list.
    bool isMixed = false; // A list in which something follows a string that is no string.
    std::size_t size = 0;
    std::size_t next = 0;
};

/// Keeps the objects from the root down to the current one on an explicit stack, so that a deeply
/// nested value cannot overflow the call stack.
class Converter final
{
public:
    Converter(JSContextRef context,
              JsTextReader &reader,
              const ScriptLimits &limits,
              ScriptValueSink &sink)
        : m_context(context)
        , m_reader(reader)
        , m_limits(limits)
        , m_sink(sink)
    {
    }

    std::optional<ScriptError> convert(JSValueRef root)
    {
        take(root);
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
            return ScriptError{*m_error, {}};
        return std::nullopt;
    }

private:
    void takeMember(OpenObject &object)
    {
        JSStringRef name = JSPropertyNameArrayGetNameAtIndex(object.names.get(), object.next++);
        JSValueRef exception = nullptr;
        JSValueRef value = JSObjectGetProperty(m_context, object.object, name, &exception);
        if (exception != nullptr || value == nullptr || JSValueIsUndefined(m_context, value))
            return;
        if (!spend(JSStringGetLength(name)))
            return;
        m_sink.key(wellFormedView(viewOf(name)));
        take(value);
    }

    void takeElement(OpenObject &object)
    {
        const auto index = static_cast<unsigned>(object.next++);
        JSValueRef exception = nullptr;
        JSValueRef value = JSObjectGetPropertyAtIndex(m_context, object.object, index, &exception);
        const bool gone = exception != nullptr || value == nullptr;
        if (!gone && !object.isMixed && object.size - object.next >= kLeastTexts &&
            JSValueIsString(m_context, value))
            takeTexts(object, value);
        else
            take(gone ? JSValueMakeNull(m_context) : value);
    }

    // Takes `first`, which has been read, and the strings after it; then the element after them, if
    // it was read too. Each is checked against the limits as if it were taken alone.
    void takeTexts(OpenObject &list, JSValueRef first)
    {
        std::optional<JsProtected> next(std::in_place, m_context, first);
        std::size_t before = 0;
        do {
            before = m_values;
            next = takeRun(list, next->get());
            list.isMixed = next && !JSValueIsString(m_context, next->get());
        } while (next && !list.isMixed && m_values > before && !m_error);
        if (next && !m_error)
            take(next->get());
    }

    // Takes as many of these strings as the reader joins at once. Returns the element after them if
    // it was read; `first` when it is too long for the reader or no more values are allowed.
    [[nodiscard]] std::optional<JsProtected> takeRun(OpenObject &list, JSValueRef first)
    {
        const std::size_t count = std::min(
            {list.size - list.next + 1, m_limits.values - m_values, JsTextReader::kMostTexts});
        if (count == 0)
            return JsProtected(m_context, first);
        const std::size_t units = (m_limits.bytes - m_bytes) / sizeof(JSChar);
        JsTextReader::Run run = m_reader.read(
            list.object, first, list.next, count, std::min(units, JsTextReader::kMostUnits));
        if (!run.characters) { // The engine ran out of memory.
            m_error = Code::ResultTooLarge;
            return std::nullopt;
        }
        m_values += run.lengths.size();
        list.next += run.lengths.size() - (run.next ? 0 : 1);
        if (!run.lengths.empty() && spendAll(run.lengths))
            m_sink.texts(wellFormedView(run.joined), run.lengths);
        return std::move(run.next);
    }

    void take(JSValueRef value)
    {
        if (++m_values > m_limits.values) {
            m_error = Code::ResultTooManyValues;
            return;
        }
        switch (JSValueGetType(m_context, value)) {
        case kJSTypeUndefined:
        case kJSTypeNull:
            return m_sink.null();
        case kJSTypeBoolean:
            return m_sink.boolean(JSValueToBoolean(m_context, value));
        case kJSTypeNumber:
            return m_sink.number(JSValueToNumber(m_context, value, nullptr));
        case kJSTypeString:
            return takeString(value);
        case kJSTypeObject:
            return takeObject(value);
        default:
            return m_sink.other();
        }
    }

    void takeString(JSValueRef value)
    {
        const JsString string(JSValueToStringCopy(m_context, value, nullptr));
        if (!string) // The engine ran out of memory while it joined the string's pieces.
            m_error = Code::ResultTooLarge;
        else if (spend(JSStringGetLength(string.get())))
            m_sink.text(wellFormedView(viewOf(string.get())));
    }

    void takeObject(JSValueRef value)
    {
        JSObjectRef object = JSValueToObject(m_context, value, nullptr);
        if (object == nullptr || JSValueIsDate(m_context, value) || m_path.contains(object))
            m_sink.other();
        else if (m_open.size() == m_limits.depth)
            m_error = Code::ResultTooDeep;
        else if (isTypedArray(value))
            takeEmptyMap();
        else
            open(object);
    }

    // The engine makes a name for each element before it reports their number. For a large array
    // that takes minutes and more memory than there is, and no result needs the elements.
    [[nodiscard]] bool isTypedArray(JSValueRef value) const
    {
        return JSValueGetTypedArrayType(m_context, value, nullptr) != kJSTypedArrayTypeNone;
    }

    void takeEmptyMap()
    {
        m_sink.beginMap();
        m_sink.end();
    }

    void open(JSObjectRef object)
    {
        OpenObject opened{
            .object = object, .protection = JsProtected(m_context, object), .names = {}};
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
        if (opened.names)
            m_sink.beginMap();
        else
            m_sink.beginList();
        m_path.insert(object);
        m_open.push_back(std::move(opened));
    }

    // When a proxy's trap throws, the engine lists no keys but leaves the exception pending, and
    // the next call reports it. Converting a number fetches the exception, which is then discarded.
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
        m_path.erase(m_open.back().object);
        m_open.pop_back();
        m_sink.end();
    }

    /// The units, copied only when they are not well-formed. Valid until the next call.
    [[nodiscard]] QStringView wellFormedView(QStringView units)
    {
        if (isWellFormed(units))
            return units;
        m_wellFormed = wellFormed(units);
        return m_wellFormed;
    }

    [[nodiscard]] bool spendAll(std::span<const quint32> lengths)
    {
        return spend(std::accumulate(lengths.begin(), lengths.end(), std::size_t{0}));
    }

    [[nodiscard]] bool spend(std::size_t units)
    {
        m_bytes += units * sizeof(JSChar);
        if (m_bytes > m_limits.bytes)
            m_error = Code::ResultTooLarge;
        return !m_error;
    }

    // Fewer elements are not worth a call of the reader.
    static constexpr std::size_t kLeastTexts = 64;

    JSContextRef m_context;
    JsTextReader &m_reader;
    const ScriptLimits &m_limits;
    ScriptValueSink &m_sink;
    QString m_wellFormed;
    std::size_t m_values = 0;
    std::size_t m_bytes = 0;
    std::optional<Code> m_error;
    std::vector<OpenObject> m_open;
    std::unordered_set<JSObjectRef> m_path; // Objects of m_open. One that occurs again is a cycle.
};

} // namespace

std::optional<ScriptError> convertJsValue(JSContextRef context,
                                          JSValueRef value,
                                          JsTextReader &reader,
                                          const ScriptLimits &limits,
                                          ScriptValueSink &sink)
{
    return Converter(context, reader, limits, sink).convert(value);
}

} // namespace penwick
