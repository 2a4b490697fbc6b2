#pragma once

#include "tests/support/fake_host.h"
#include "tests/support/request_context.h"

#include <gtest/gtest.h>

namespace talvik::test {

/// Base of the tests of the module's rooms: a fresh fake host and a request context for each.
class FakeHostTest : public testing::Test {
protected:
    FakeHostTest() { host.reset(); }
    ~FakeHostTest() override { host.reset(); }

    FakeHost& host = fakeHost();
    CKEL_SnmpContext context;
};

}  // namespace talvik::test
