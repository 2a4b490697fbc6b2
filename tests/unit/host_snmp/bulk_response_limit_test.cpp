#include "host/snmp/bulk_response_limit.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>

#include <cstring>
#include <string>

namespace {

constexpr unsigned long kFrame = 1472;
constexpr unsigned long kDatagram = 65507;

/// A request of a manager at `address`.
class RequestFrom {
public:
    explicit RequestFrom(const std::string& address)
    {
        if (inet_pton(AF_INET, address.c_str(), &addresses_.remote_addr.sin.sin_addr) == 1) {
            addresses_.remote_addr.sa.sa_family = AF_INET;
        } else {
            EXPECT_EQ(inet_pton(AF_INET6, address.c_str(), &addresses_.remote_addr.sin6.sin6_addr),
                      1);
            addresses_.remote_addr.sa.sa_family = AF_INET6;
        }
        pdu.transport_data = &addresses_;
        pdu.transport_data_length = sizeof(addresses_);
        pdu.version = SNMP_VERSION_2c;
    }

    netsnmp_pdu pdu{};

private:
    netsnmp_indexed_addr_pair addresses_{};
};

class BulkResponseLimitFor : public testing::TestWithParam<std::pair<const char*, unsigned long>> {
};

TEST_P(BulkResponseLimitFor, Managers)
{
    const auto& [address, octets] = GetParam();
    EXPECT_EQ(talvik::largestBulkResponse(RequestFrom(address).pdu), octets);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, BulkResponseLimitFor,
    testing::Values(std::make_pair("127.0.0.1", kDatagram), std::make_pair("127.1.2.3", kDatagram),
                    std::make_pair("::1", kDatagram), std::make_pair("126.255.255.255", kFrame),
                    std::make_pair("128.0.0.1", kFrame), std::make_pair("192.0.2.1", kFrame),
                    std::make_pair("::2", kFrame), std::make_pair("2001:db8::1", kFrame)));

TEST(BulkResponseLimit, IsOneFrameWhereTheManagerIsNotKnown)
{
    netsnmp_pdu pdu{};
    EXPECT_EQ(talvik::largestBulkResponse(pdu), kFrame);
    char unknown[1] = {};
    pdu.transport_data = unknown;
    pdu.transport_data_length = 1;
    EXPECT_EQ(talvik::largestBulkResponse(pdu), kFrame);
}

TEST(BulkResponseLimit, IsNoMoreThanTheManagerTakes)
{
    RequestFrom local("127.0.0.1");
    local.pdu.msgMaxSize = 484;
    EXPECT_EQ(talvik::largestBulkResponse(local.pdu), 484u);
    local.pdu.msgMaxSize = 1000000;
    EXPECT_EQ(talvik::largestBulkResponse(local.pdu), kDatagram);
}

TEST(BulkResponseLimit, RoomEndsWithTheVariableThatDoesNotFit)
{
    RequestFrom remote("192.0.2.1");
    talvik::BulkRoom room(remote.pdu);
    netsnmp_variable_list variable{};
    oid name[] = {1, 3, 6, 1};
    variable.name = name;
    variable.name_length = 4;
    variable.val_len = 500;

    EXPECT_TRUE(room.take(variable));
    EXPECT_TRUE(room.take(variable));
    EXPECT_TRUE(room.hasSome());
    EXPECT_FALSE(room.take(variable));
    EXPECT_FALSE(room.hasSome());
}

}  // namespace
