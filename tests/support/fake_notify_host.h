#pragma once

#include <string>

namespace talvik::test {

/// What notifications ask of a host besides the log, the alarm catalogue and the node code. One for
/// the process; calls are entered in `fakeHost()` under their own names first.
class FakeNotifyHost {
public:
    /// Deletes the handlers that the dispatcher holds; the device is again of type 812 with the
    /// serial number "SN-21023", and there is a repository.
    void reset();

    /// `CAlarmRepository_Singleton::getAlarmRepository` answers null.
    bool withoutRepository = false;
};

FakeNotifyHost& fakeNotifyHost();

/// What the host's conversions of `seconds` give.
std::string octetsOfTime(long seconds);
std::string textOfTime(long seconds);

}  // namespace talvik::test
