#include "framework/tlv_package.h"

#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

#include <csignal>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

class TlvPackage : public talvik::test::FakeHostTest {
protected:
    void addRecord(std::uint64_t id) { package.oRecords.push_back(new CTLVRecordV3(id)); }

    Package package;
};

TEST_F(TlvPackage, IsMadeWithTheHeaderDefaultsAndNoRecords)
{
    EXPECT_EQ(package.oHead.uiMagic, 0x55555555U);
    EXPECT_EQ(package.oHead.uiVersion, 3U);
    EXPECT_EQ(package.oHead.uiWord2, 0U);
    EXPECT_EQ(package.oHead.uiWord3, 0xFFFFFFFFU);
    EXPECT_EQ(package.oHead.usShort0, 0xFFFD);
    EXPECT_EQ(package.oHead.usShort1, 0x0001);
    EXPECT_EQ(package.oHead.usShort2, 0xFFFF);
    EXPECT_EQ(package.oHead.usShort3, 0xFFFF);
    EXPECT_EQ(package.oHead.uiDataLen, 0U);
    EXPECT_TRUE(package.oRecords.empty());
}

TEST_F(TlvPackage, IndexPastTheEndThrowsWithTheIndex)
{
    addRecord(1);
    addRecord(2);

    EXPECT_EQ(package[1]->ullRecordId, 2U);
    EXPECT_EQ(talvik::test::textOfThrown([this] { package[2]; }),
              "CKEL_Exception: record don't exist, index is 2");
    EXPECT_EQ(talvik::test::textOfThrown([this] { package[4294967296]; }),
              "CKEL_Exception: record don't exist, index is 4294967296");
}

TEST_F(TlvPackage, IndexZeroOfAnEmptyPackageThrows)
{
    EXPECT_EQ(talvik::test::textOfThrown([this] { package[0]; }),
              "CKEL_Exception: record don't exist, index is 0");
}

TEST_F(TlvPackage, ClearDropsTheRecordsAndKeepsTheHeader)
{
    package.oHead.uiWord2 = 5;
    package.oHead.uiDataLen = 77;
    addRecord(1);

    package.clear();

    EXPECT_TRUE(package.oRecords.empty());
    EXPECT_EQ(package.oHead.uiWord2, 5U);
    EXPECT_EQ(package.oHead.uiDataLen, 77U);
}

/// Tearing a record down counts as not failing: an exception on the way ends the process.
class TlvPackageTeardownDeathTest : public TlvPackage {
protected:
    TlvPackageTeardownDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~TlvPackageTeardownDeathTest() override { GTEST_FLAG_SET(death_test_style, style_); }

    /// From here on the host's part of a record's teardown throws.
    void failTeardown()
    {
        host.onCall("clear", [] { throw std::runtime_error("no teardown"); });
    }

private:
    const std::string style_ = GTEST_FLAG_GET(death_test_style);
};

TEST_F(TlvPackageTeardownDeathTest, ClearEndsTheProcess)
{
    static_assert(noexcept(std::declval<Package&>().clear()), "part of the interface");
    addRecord(1);

    EXPECT_EXIT(
        {
            failTeardown();
            try {
                package.clear();
            } catch (const std::runtime_error&) {
            }
            std::exit(0);
        },
        testing::KilledBySignal(SIGABRT), "terminate called.*\n.*no teardown");
}

TEST_F(TlvPackageTeardownDeathTest, TheDestructorEndsTheProcess)
{
    EXPECT_EXIT(
        {
            auto owned = std::make_unique<Package>();
            owned->oRecords.push_back(new CTLVRecordV3(1));
            failTeardown();
            try {
                owned.reset();
            } catch (const std::runtime_error&) {
            }
            std::exit(0);
        },
        testing::KilledBySignal(SIGABRT), "terminate called.*\n.*no teardown");
}

}  // namespace
