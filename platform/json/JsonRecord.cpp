#include "platform/json/JsonRecord.h"

namespace penwick {

using namespace Qt::StringLiterals;

QString JsonRecordError::description() const
{
    switch (kind) {
    case Kind::WrongType:
        return member.isEmpty() ? u"The JSON value is of the wrong type"_s
                                : u"The member \"%1\" is of the wrong type"_s.arg(member);
    case Kind::MissingMember:
        return u"The member \"%1\" is missing"_s.arg(member);
    case Kind::InvalidJson:
        break;
    }
    return json.description();
}

JsonRecordReader::JsonRecordReader(const JsonValue &record)
    : m_object(record.asObject())
{
    if (m_object == nullptr)
        fail(JsonRecordError::Kind::WrongType, {});
}

QString JsonRecordReader::text(const QString &member)
{
    const JsonValue *value = find(member);
    if (value == nullptr)
        return {};
    if (const QString *text = value->asText())
        return *text;
    fail(JsonRecordError::Kind::WrongType, member);
    return {};
}

template <typename Type>
Type JsonRecordReader::read(const QString &member, std::optional<Type> (JsonValue::*as)() const)
{
    const JsonValue *value = find(member);
    if (value == nullptr)
        return {};
    const auto found = (value->*as)();
    if (!found)
        fail(JsonRecordError::Kind::WrongType, member);
    return found.value_or(Type());
}

bool JsonRecordReader::boolean(const QString &member)
{
    return read(member, &JsonValue::asBool);
}

qint64 JsonRecordReader::integer(const QString &member)
{
    return read(member, &JsonValue::asInteger);
}

QHash<QString, QString> JsonRecordReader::texts(const QString &member)
{
    const JsonValue *value = find(member);
    if (value == nullptr)
        return {};
    const JsonObject *object = value->asObject();
    if (object == nullptr) {
        fail(JsonRecordError::Kind::WrongType, member);
        return {};
    }
    QHash<QString, QString> texts;
    texts.reserve(object->size());
    for (auto it = object->cbegin(); it != object->cend(); ++it) {
        const QString *text = it.value().asText();
        if (text == nullptr) {
            fail(JsonRecordError::Kind::WrongType, member + u'.' + it.key());
            return {};
        }
        texts.insert(it.key(), *text);
    }
    return texts;
}

const JsonValue *JsonRecordReader::find(const QString &member)
{
    if (m_error)
        return nullptr;
    const auto found = m_object->constFind(member);
    if (found != m_object->cend())
        return &*found;
    fail(JsonRecordError::Kind::MissingMember, member);
    return nullptr;
}

void JsonRecordReader::fail(JsonRecordError::Kind kind, const QString &member)
{
    if (!m_error)
        m_error = JsonRecordError{kind, member, {}};
}

} // namespace penwick
