#pragma once

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "support/FakeClock.h"
#include "support/FakeIds.h"
#include "support/FakePanels.h"
#include "support/TemporaryHome.h"

namespace penwick::test {

/// What a manager and its window depend on, isolated for one test.
struct ManagerDependencies
{
    TemporaryHome home;
    UserDefaults defaults{home.file(QStringLiteral("config.conf"))};
    NotificationCenter center;
    FakeClock time;
    FakeIds ids;
    FakePanels panels;
};

} // namespace penwick::test
