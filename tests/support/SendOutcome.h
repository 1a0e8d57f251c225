#pragma once

#include "macro/script/ScriptWire.h"

namespace penwick {

/// Passes the value to the sink, part by part.
inline void describe(const ScriptValue &value, ScriptValueSink &sink)
{
    if (const bool *boolean = value.boolean()) {
        sink.boolean(*boolean);
    } else if (const double *number = value.number()) {
        sink.number(*number);
    } else if (const auto text = value.anyString()) {
        sink.text(*text);
    } else if (const ScriptTexts *texts = value.texts()) {
        sink.texts(texts->joined.toString(), texts->lengths);
    } else if (value.isNull()) {
        sink.null();
    } else if (value.isOther()) {
        sink.other();
    } else if (const ScriptValue::List *list = value.list()) {
        sink.beginList();
        for (const ScriptValue &item : *list)
            describe(item, sink);
        sink.end();
    } else {
        sink.beginMap();
        for (const ScriptMember &member : *value.map()) {
            sink.key(member.key);
            describe(member.value, sink);
        }
        sink.end();
    }
}

/// Sends an outcome that exists as a whole, as the script host sends one while it is produced.
[[nodiscard]] inline bool
sendOutcome(const ScriptOutcome &outcome, const ByteSink &sink, SharedTexts *shared = nullptr)
{
    OutcomeSender sender(sink, shared);
    if (!outcome)
        return sender.fail(outcome.error());
    describe(*outcome, sender);
    return sender.finish();
}

} // namespace penwick
