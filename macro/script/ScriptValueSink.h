#pragma once

#include "macro/script/ScriptValue.h"

#include <span>
#include <vector>

namespace penwick {

/// Receives a value part by part, from the root down: a list or a map is begun, its parts follow,
/// and it is ended. In a map, each part follows its key. So a large value need not be in memory as
/// a tree.
class ScriptValueSink
{
public:
    ScriptValueSink() = default;
    ScriptValueSink(const ScriptValueSink &) = delete;
    ScriptValueSink &operator=(const ScriptValueSink &) = delete;
    virtual ~ScriptValueSink() = default;

    virtual void null() = 0;
    virtual void other() = 0;
    virtual void boolean(bool value) = 0;
    virtual void number(double value) = 0;
    virtual void text(QStringView value) = 0;
    /// Several elements of a list, as in `ScriptTexts`. Unless overridden, passes each to `text`.
    virtual void texts(QStringView joined, std::span<const quint32> lengths);
    virtual void beginList() = 0;
    virtual void beginMap() = 0;
    virtual void key(QStringView key) = 0;
    /// Ends the innermost open list or map.
    virtual void end() = 0;
};

/// Builds a tree from the parts that it receives.
class ScriptValueBuilder final : public ScriptValueSink
{
public:
    void null() override { put(ScriptValue()); }

    void other() override { put(ScriptValue::other()); }

    void boolean(bool value) override { put(ScriptValue(value)); }

    void number(double value) override { put(ScriptValue(value)); }

    void text(QStringView value) override { put(ScriptValue(value.toString())); }

    /// The same without a copy.
    void ownText(QString value) { put(ScriptValue(std::move(value))); }

    /// The same for a string in its other form.
    void ownText(Text value) { put(ScriptValue(std::move(value))); }

    /// Adds the strings as one element, which `texts` does not.
    void ownTexts(ScriptTexts value) { put(ScriptValue(std::move(value))); }

    void beginList() override;
    void beginMap() override;

    void key(QStringView key) override { ownKey(key.toString()); }

    /// The same without a copy.
    void ownKey(QString key) { m_open.back().nextKey = std::move(key); }

    void end() override;

    /// Number of open lists and maps.
    [[nodiscard]] std::size_t depth() const { return m_open.size(); }

    /// True when the innermost open container is a map. Call this only while one is open.
    [[nodiscard]] bool isInMap() const { return m_open.back().isMap; }

    /// Moves the built value out; null when nothing was built.
    [[nodiscard]] ScriptValue take() { return std::move(m_root); }

private:
    // An explicit stack, so that a deeply nested value cannot overflow the call stack.
    struct Container
    {
        bool isMap = false;
        QString nextKey;
        ScriptValue::List list;
        ScriptValue::Map map;
    };

    void put(ScriptValue value);

    std::vector<Container> m_open;
    ScriptValue m_root;
};

} // namespace penwick
