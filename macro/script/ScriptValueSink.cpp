#include "macro/script/ScriptValueSink.h"

#include <utility>

namespace penwick {

void ScriptValueSink::texts(QStringView joined, std::span<const quint32> lengths)
{
    qsizetype start = 0;
    for (const quint32 length : lengths) {
        text(joined.sliced(start, length));
        start += qsizetype{length} + 1;
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
