#pragma once

#include "platform/JsonText.h"

#include <QHash>
#include <QString>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Why a JSON text is not the record that was expected.
struct JsonRecordError
{
    enum class Kind {
        InvalidJson,   ///< See `json`.
        WrongType,     ///< `member`, or the record itself when that is empty, has another type.
        MissingMember, ///< `member` is not there.
    };

    Kind kind = Kind::InvalidJson;
    QString member;
    JsonError json;

    /// A description in English, for logs.
    [[nodiscard]] QString description() const;

    bool operator==(const JsonRecordError &) const = default;
};

/// Takes the members out of a JSON object one after another. The first member that is missing or of
/// the wrong type is remembered as the error; from then on every answer is empty.
class JsonRecordReader final
{
public:
    /// \param record must outlive the reader.
    explicit JsonRecordReader(const JsonValue &record);

    [[nodiscard]] QString text(const QString &member);
    [[nodiscard]] bool boolean(const QString &member);
    [[nodiscard]] qint64 integer(const QString &member);
    [[nodiscard]] QHash<QString, QString> texts(const QString &member);

    /// Nothing when all went well so far.
    [[nodiscard]] const std::optional<JsonRecordError> &error() const { return m_error; }

private:
    const JsonValue *find(const QString &member);
    void fail(JsonRecordError::Kind kind, const QString &member);

    const JsonObject *m_object;
    std::optional<JsonRecordError> m_error;
};

} // namespace penwick
