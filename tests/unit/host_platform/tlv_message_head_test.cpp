#include "framework/tlv_message_head.h"

#include <gtest/gtest.h>

#include <sstream>

TEST(TlvMessageHead, DumpShowsEveryWord)
{
    TLVMsgHeadV3 head;
    head.uiWord2 = 9;
    head.uiDataLen = 77;
    std::ostringstream os;

    head.dump(os);

    EXPECT_EQ(os.str(), "  head magic=0x55555555 version=3 word2=9 word3=4294967295 short0=65533 "
                        "short1=1 short2=65535 short3=65535 dataLen=77\n");
}
