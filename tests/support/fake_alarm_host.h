#pragma once

#include <string>

namespace talvik::test {

/// What the alarm catalogue asks of a host besides the log and the device items. One for the
/// process; calls are entered in `fakeHost()` first.
struct FakeAlarmHost {
    std::string installationRoot = "/nowhere";
};

FakeAlarmHost& fakeAlarmHost();

}  // namespace talvik::test
