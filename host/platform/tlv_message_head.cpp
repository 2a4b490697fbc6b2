#include "framework/tlv_message_head.h"

#include <iomanip>

void TLVMsgHeadV3::dump(std::ostringstream& os) const
{
    os << "  head magic=0x" << std::hex << uiMagic << std::dec << " version=" << uiVersion
       << " word2=" << uiWord2 << " word3=" << uiWord3 << " short0=" << usShort0
       << " short1=" << usShort1 << " short2=" << usShort2 << " short3=" << usShort3
       << " dataLen=" << uiDataLen << '\n';
}
