#include "macro/script/JsTextReader.h"

#include <iterator>
#include <utility>

namespace penwick {

namespace {

// Uses only what the script cannot replace: operators, the lengths of strings, and elements of
// typed arrays that exist. Only the read of an element may run code of the script.
//
// The engine joins strings when their characters are asked for, and then copies all of them in one
// pass. A join of an array would first make a copy of each string that is itself joined from
// others.
constexpr QStringView kReader = uR"JS((function (list, first, index, lengths, most, room) {
    'use strict';
    let joined = '';
    let count = 0;
    let next = first;
    while (typeof next === 'string' && next.length <= room) {
        joined = joined + '\n' + next;
        room -= next.length;
        lengths[count++] = next.length;
        if (count === most)
            break;
        try {
            next = list[index++];
        } catch {
            next = undefined;
        }
    }
    return [joined, count, next];
}))JS";

JSObjectRef compiled(JSContextRef context)
{
    JSValueRef function =
        JSEvaluateScript(context, toJsString(kReader).get(), nullptr, nullptr, 1, nullptr);
    return function != nullptr ? JSValueToObject(context, function, nullptr) : nullptr;
}

} // namespace

JsTextReader::JsTextReader(JSContextRef context)
    : m_context(context)
    , m_function(compiled(context))
    , m_functionProtection(context, m_function)
{
}

JsTextReader::Run JsTextReader::read(
    JSObjectRef list, JSValueRef first, std::size_t index, std::size_t count, std::size_t room)
{
    if (m_lengths == nullptr) {
        m_lengths =
            JSObjectMakeTypedArray(m_context, kJSTypedArrayTypeUint32Array, kMostTexts, nullptr);
        m_lengthsProtection.emplace(m_context, m_lengths);
    }
    const auto number = [this](std::size_t value) {
        return JSValueMakeNumber(m_context, static_cast<double>(value));
    };
    JSValueRef arguments[] = {list, first, number(index), m_lengths, number(count), number(room)};
    JSValueRef result = JSObjectCallAsFunction(
        m_context, m_function, nullptr, std::size(arguments), arguments, nullptr);
    if (result == nullptr)
        return {};
    const JsProtected protection(m_context, result);
    JSObjectRef parts = JSValueToObject(m_context, result, nullptr);
    const auto part = [this, parts](unsigned position) {
        return JSObjectGetPropertyAtIndex(m_context, parts, position, nullptr);
    };
    const auto taken = static_cast<std::size_t>(JSValueToNumber(m_context, part(1), nullptr));
    const auto *lengths =
        static_cast<const quint32 *>(JSObjectGetTypedArrayBytesPtr(m_context, m_lengths, nullptr));
    JsString characters(JSValueToStringCopy(m_context, part(0), nullptr));
    const QStringView all = characters ? viewOf(characters.get()) : QStringView();
    Run run{std::move(characters), all.sliced(all.isEmpty() ? 0 : 1), {lengths, taken}, {}};
    if (taken < count)
        run.next.emplace(m_context, part(2));
    return run;
}

} // namespace penwick
