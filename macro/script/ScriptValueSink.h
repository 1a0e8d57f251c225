#pragma once

#include "macro/script/ScriptValue.h"

#include <vector>

namespace penwick {

/// Takes a value part by part, from the root down: a list or a map is begun, its parts follow, and
/// it is ended. In a map each part follows its key. So a large value need not be in memory as a
/// tree.
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
    virtual void beginList() = 0;
    virtual void beginMap() = 0;
    virtual void key(QStringView key) = 0;
    /// Ends what was begun last.
    virtual void end() = 0;
};

/// Hands the value to the sink.
void describe(const ScriptValue &value, ScriptValueSink &sink);

/// Makes a tree again of what it takes.
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

    void beginList() override;
    void beginMap() override;

    void key(QStringView key) override { ownKey(key.toString()); }

    /// The same without a copy.
    void ownKey(QString key) { m_open.back().nextKey = std::move(key); }

    void end() override;

    /// How many lists and maps are begun and not ended.
    [[nodiscard]] std::size_t depth() const { return m_open.size(); }

    /// Whether the innermost of them is a map; only where there is one.
    [[nodiscard]] bool isInMap() const { return m_open.back().isMap; }

    /// What was built; null where nothing was.
    [[nodiscard]] ScriptValue take() { return std::move(m_root); }

private:
    // The open ones form a stack of their own, so that the depth of a value never becomes the depth
    // of our calls.
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
