#include "macro/script/ScriptRunner.h"

#include "macro/script/JsConversion.h"
#include "macro/script/JsHandles.h"
#include "macro/script/JsTextReader.h"

#include <limits>
#include <utility>

#if __has_include(<jsc/jsc.h>)
#define PENWICK_WEBKITGTK
#include <jsc/jsc.h>
#endif

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr QStringView kSourceUrl = u"penwick:macro";

// NOLINTNEXTLINE(readability-function-size): the engine fixes the parameters of its callbacks.
JSValueRef callLog(JSContextRef context,
                   JSObjectRef function,
                   JSObjectRef /*thisObject*/,
                   std::size_t argumentCount,
                   const JSValueRef arguments[],
                   JSValueRef *exception)
{
    JSValueRef undefined = JSValueMakeUndefined(context);
    JSValueRef first = argumentCount > 0 ? arguments[0] : undefined;
    const std::optional<QString> line = stringConversion(context, first, exception);
    const auto *log = static_cast<const ScriptLogSink *>(JSObjectGetPrivate(function));
    if (line && *log)
        (*log)(*line);
    return undefined;
}

void setProperty(JSContextRef context, JSObjectRef object, QStringView name, JSValueRef value)
{
    JSObjectSetProperty(
        context, object, toJsString(name).get(), value, kJSPropertyAttributeNone, nullptr);
}

JSObjectRef property(JSContextRef context, JSObjectRef object, QStringView name)
{
    JSValueRef value = JSObjectGetProperty(context, object, toJsString(name).get(), nullptr);
    return JSValueToObject(context, value, nullptr);
}

// An object of a custom class can carry the sink; the engine's own functions cannot carry data.
// With the prototype of functions, it has `call`, `apply` and `bind` like any other function.
JSObjectRef makeLogFunction(JSContextRef context, const ScriptLogSink &log)
{
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "Function";
    definition.callAsFunction = callLog;
    const JsClass functionClass(JSClassCreate(&definition));
    JSObjectRef function =
        JSObjectMake(context, functionClass.get(), const_cast<ScriptLogSink *>(&log));
    JSObjectRef constructor = property(context, JSContextGetGlobalObject(context), u"Function");
    JSObjectSetPrototype(context, function, property(context, constructor, u"prototype"));
    return function;
}

void installConsole(JSContextRef context, const ScriptLogSink &log)
{
    JSObjectRef console = JSObjectMake(context, nullptr, nullptr);
    setProperty(context, console, u"log", makeLogFunction(context, log));
    setProperty(context, JSContextGetGlobalObject(context), u"console", console);
}

void installUserInput(JSContextRef context, const QString &userInput)
{
    JSValueRef value = JSValueMakeString(context, toJsString(userInput).get());
    setProperty(context, JSContextGetGlobalObject(context), u"userInput", value);
}

// A text that is part of the source would be copied and hashed by the engine's parser. Reading a
// variable removes it, so the script finds nothing of it.
void installLongText(JSContextRef context, QStringView name, QStringView text)
{
    constexpr QStringView kInstaller = uR"JS((function (name, text) {
        'use strict';
        const all = globalThis;
        Object.defineProperty(all, name, {
            configurable: true,
            get() { delete all[name]; return text; },
        });
    }))JS";
    JSValueRef function =
        JSEvaluateScript(context, toJsString(kInstaller).get(), nullptr, nullptr, 1, nullptr);
    JSObjectRef installer = JSValueToObject(context, function, nullptr);
    const JSValueRef arguments[] = {
        JSValueMakeString(context, toJsString(name).get()),
        JSValueMakeString(context, toJsStringWithoutCopy(text).get()),
    };
    JSObjectCallAsFunction(context, installer, nullptr, std::size(arguments), arguments, nullptr);
}

/// A property of an error whose value is a number from 1 on; otherwise 0.
int countProperty(JSContextRef context, JSObjectRef error, QStringView name)
{
    JSValueRef value = JSObjectGetProperty(context, error, toJsString(name).get(), nullptr);
    if (value == nullptr || !JSValueIsNumber(context, value))
        return 0;
    const double number = JSValueToNumber(context, value, nullptr);
    return number >= 1 && number <= std::numeric_limits<int>::max() ? static_cast<int>(number) : 0;
}

/// The error with the line and column that the engine stores in each error that it creates or sees
/// thrown.
ScriptError exceptionOf(JSContextRef context, JSValueRef thrown, const QString &text)
{
    ScriptError result{ScriptError::Code::Exception, text};
    if (!JSValueIsObject(context, thrown))
        return result;
    JSObjectRef error = JSValueToObject(context, thrown, nullptr);
    // Code that the script itself evaluates has line numbers of its own.
    JSValueRef place = JSObjectGetProperty(context, error, toJsString(u"sourceURL").get(), nullptr);
    if (place == nullptr || !JSValueIsString(context, place) ||
        stringConversion(context, place, nullptr) != QStringView(kSourceUrl))
        return result;
    result.line = countProperty(context, error, u"line");
    result.column = result.line > 0 ? countProperty(context, error, u"column") : 0;
    return result;
}

// Some values, such as symbols, have no string conversion; the exception of the attempt then
// explains more than an empty text. When that has no conversion either, the script counts as one
// that returned nothing.
std::optional<ScriptError>
takeException(JSContextRef context, JSValueRef thrown, ScriptValueSink &sink)
{
    JSValueRef second = nullptr;
    std::optional<QString> text = stringConversion(context, thrown, &second);
    if (!text && second != nullptr)
        text = stringConversion(context, second, nullptr);
    if (text)
        return exceptionOf(context, thrown, *text);
    sink.null();
    return std::nullopt;
}

} // namespace

struct ScriptEngine::Parts
{
    // These must outlive the engine, which refers to them.
    ScriptLogSink log{};
    QString source{};
    std::vector<QString> longTexts{};
    JsContextGroup group{JSContextGroupCreate()};
    JsGlobalContext context{group ? JSGlobalContextCreateInGroup(group.get(), nullptr) : nullptr};
    std::optional<JsTextReader> reader{};
};

ScriptEngine::ScriptEngine()
    : m_parts(std::make_unique<Parts>())
{
    if (m_parts->context)
        m_parts->reader.emplace(m_parts->context.get());
}

ScriptEngine::~ScriptEngine() = default;

void ScriptEngine::evaluate(const ScriptRequest &request,
                            const ScriptLogSink &log,
                            const ScriptLimits &limits,
                            const ScriptOutcomeSink &sink)
{
    if (request.size() > limits.sourceLength)
        return sink.done(ScriptError{ScriptError::Code::SourceTooLong, {}});
    if (!m_parts->reader)
        return sink.done(ScriptError{ScriptError::Code::EngineUnavailable, {}});

    JSGlobalContextRef context = m_parts->context.get();
    m_parts->log = log;
    installConsole(context, m_parts->log);
    if (request.userInput)
        installUserInput(context, *request.userInput);
    m_parts->longTexts.reserve(request.longTexts.size());
    for (const ScriptSource &longText : request.longTexts)
        m_parts->longTexts.push_back(longText.text());
    for (std::size_t i = 0; i < m_parts->longTexts.size(); ++i)
        installLongText(context, longTextName(i), m_parts->longTexts[i]);
    m_parts->source = request.source.text();
    const JsString source = toJsStringWithoutCopy(m_parts->source);
    const JsString url = toJsString(kSourceUrl);
    JSValueRef exception = nullptr;
    JSValueRef value = JSEvaluateScript(context, source.get(), nullptr, url.get(), 1, &exception);
    if (exception != nullptr)
        return sink.done(takeException(context, exception, sink.value));
    if (value == nullptr)
        value = JSValueMakeNull(context);
    sink.done(convertJsValue(context, value, *m_parts->reader, limits, sink.value));
}

QString engineName()
{
#ifdef PENWICK_WEBKITGTK
    return u"WebKitGTK %1.%2.%3"_s.arg(jsc_get_major_version())
        .arg(jsc_get_minor_version())
        .arg(jsc_get_micro_version());
#else
    return u"JavaScriptCore"_s;
#endif
}

ScriptOutcome
runScript(const ScriptRequest &request, const ScriptLogSink &log, const ScriptLimits &limits)
{
    ScriptValueBuilder builder;
    std::optional<ScriptError> error;
    const auto done = [&error](const std::optional<ScriptError> &how) { error = how; };
    ScriptEngine().evaluate(request, log, limits, {builder, done});
    if (error)
        return tl::unexpected(*error);
    return builder.take();
}

} // namespace penwick
