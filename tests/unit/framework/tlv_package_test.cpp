#include "framework/tlv_package.h"

#include "tests/support/fake_host_test.h"
#include "tests/support/throw_text.h"

#include <memory>

namespace {

class TlvPackage : public talvik::test::FakeHostTest {
protected:
    void addRecord(std::uint64_t id) { package.oRecords.push_back(new CTLVRecordV3(id)); }

    CTLVPackageV3<TLVMsgHeadV3> package;
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

}  // namespace
