#pragma once

#include "platform/json/JsonText.h"

#include <QHash>
#include <QString>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Why a JSON text is not the expected record.
struct JsonRecordError
{
    enum class Kind {
        InvalidJson,   ///< See `json`.
        WrongType,     ///< `member`, or the record itself when that is empty, has another type.
        MissingMember, ///< `member` does not exist.
    };

    Kind kind = Kind::InvalidJson;
    QString member;
    JsonError json;

    /// A description in English, for logs.
    [[nodiscard]] QString description() const;

    bool operator==(const JsonRecordError &) const = default;
};

/// Reads the members of a JSON object one after another. The first member that is missing or has
/// the wrong type is kept as the error; every later result is empty.
class JsonRecordReader final
{
public:
    /// \param record must outlive the reader.
    explicit JsonRecordReader(const JsonValue &record);

    [[nodiscard]] QString text(const QString &member);
    [[nodiscard]] bool boolean(const QString &member);
    [[nodiscard]] qint64 integer(const QString &member);
    [[nodiscard]] QHash<QString, QString> texts(const QString &member);

    /// The first error; std::nullopt if there was none.
    [[nodiscard]] const std::optional<JsonRecordError> &error() const { return m_error; }

private:
    template <typename Type>
    Type read(const QString &member, std::optional<Type> (JsonValue::*as)() const);
    const JsonValue *find(const QString &member);
    void fail(JsonRecordError::Kind kind, const QString &member);

    const JsonObject *m_object;
    std::optional<JsonRecordError> m_error;
};

} // namespace penwick
