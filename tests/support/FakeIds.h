#pragma once

#include "platform/settings/Uuid.h"

#include <QString>

#include <memory>

namespace penwick::test {

/// Identifiers in a known order: 00000000-0000-4000-8000-000000000001, ...2 and so on.
class FakeIds final
{
public:
    /// The source for the code under test. It stays valid after this object's end.
    [[nodiscard]] IdSource source() const
    {
        return [given = m_given] { return id(++*given); };
    }

    /// The `number`th id, counting from 1.
    [[nodiscard]] static QString id(int number)
    {
        return QStringLiteral("00000000-0000-4000-8000-%1").arg(number, 12, 16, QChar(u'0'));
    }

private:
    std::shared_ptr<int> m_given = std::make_shared<int>(0);
};

} // namespace penwick::test
