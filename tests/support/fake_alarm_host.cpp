#include "tests/support/fake_alarm_host.h"

#include "platform/installation_root.h"
#include "platform/number_text.h"
#include "tests/support/fake_host.h"

#include <limits>

namespace talvik::test {

FakeAlarmHost& fakeAlarmHost()
{
    static FakeAlarmHost host;
    return host;
}

}  // namespace talvik::test

std::string KEL_Utility::getKELRootEnv()
{
    talvik::test::fakeHost().enter("getKELRootEnv");
    return talvik::test::fakeAlarmHost().installationRoot;
}

unsigned int KelUtility::StrToUint(std::string text)
{
    talvik::test::fakeHost().act("StrToUint");
    unsigned long long number = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9' || number > std::numeric_limits<unsigned int>::max()) {
            break;
        }
        number = number * 10 + static_cast<unsigned>(digit - '0');
    }
    return static_cast<unsigned int>(number);
}

std::string KelUtility::UintToStr(unsigned int value)
{
    return std::to_string(value);
}
