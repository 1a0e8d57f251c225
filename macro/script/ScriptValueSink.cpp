#include "macro/script/ScriptValueSink.h"

#include <utility>

namespace penwick {

namespace {

/// A list or map whose parts are being described. The open ones are on an explicit stack, so that a
/// deeply nested value cannot overflow the call stack.
struct Described
{
    const ScriptValue::List *list;
    const ScriptValue::Map *map;
    std::size_t next = 0;

    [[nodiscard]] std::size_t size() const { return list != nullptr ? list->size() : map->size(); }
};

/// Describes a value; begins a list or map without describing its parts.
/// \return true for a list or map.
bool describeOne(const ScriptValue &value, ScriptValueSink &sink)
{
    if (const bool *boolean = value.boolean())
        sink.boolean(*boolean);
    else if (const double *number = value.number())
        sink.number(*number);
    else if (const QString *text = value.string())
        sink.text(*text);
    else if (value.list() != nullptr)
        sink.beginList();
    else if (value.map() != nullptr)
        sink.beginMap();
    else if (value.isOther())
        sink.other();
    else
        sink.null();
    return value.list() != nullptr || value.map() != nullptr;
}

} // namespace

void describe(const ScriptValue &value, ScriptValueSink &sink)
{
    std::vector<Described> open;
    const auto take = [&open, &sink](const ScriptValue &part) {
        if (describeOne(part, sink))
            open.push_back({part.list(), part.map()});
    };
    take(value);
    while (!open.empty()) {
        Described &container = open.back();
        if (container.next == container.size()) {
            open.pop_back();
            sink.end();
        } else if (container.list != nullptr) {
            take((*container.list)[container.next++]);
        } else {
            const ScriptMember &member = (*container.map)[container.next++];
            sink.key(member.key);
            take(member.value);
        }
    }
}

void ScriptValueBuilder::beginList()
{
    m_open.emplace_back();
}

void ScriptValueBuilder::beginMap()
{
    m_open.emplace_back();
    m_open.back().isMap = true;
}

void ScriptValueBuilder::end()
{
    Container done = std::move(m_open.back());
    m_open.pop_back();
    put(done.isMap ? ScriptValue(std::move(done.map)) : ScriptValue(std::move(done.list)));
}

void ScriptValueBuilder::put(ScriptValue value)
{
    if (m_open.empty())
        m_root = std::move(value);
    else if (m_open.back().isMap)
        m_open.back().map.push_back({std::move(m_open.back().nextKey), std::move(value)});
    else
        m_open.back().list.push_back(std::move(value));
}

} // namespace penwick
