#pragma once

#include "platform/settings/Timestamp.h"

#include <QDateTime>
#include <QTimeZone>

#include <memory>

namespace penwick::test {

/// A clock that changes only when the test moves it. Starts at 2025-03-01T09:15:00Z.
class FakeClock final
{
public:
    /// The clock for the code under test. It follows this object, and stays valid after its end.
    [[nodiscard]] Clock clock() const
    {
        return [now = m_now] { return *now; };
    }

    void advanceSeconds(qint64 seconds) { *m_now = m_now->addSecs(seconds); }

    void set(const QDateTime &now) { *m_now = now; }

private:
    std::shared_ptr<QDateTime> m_now =
        std::make_shared<QDateTime>(QDate(2025, 3, 1), QTime(9, 15), QTimeZone::utc());
};

} // namespace penwick::test
