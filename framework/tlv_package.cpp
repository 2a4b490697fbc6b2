#include "framework/tlv_package.h"

#include "framework/kel_exception.h"

#include <string>

template <typename MSG_S_HEAD>
CTLVPackageV3<MSG_S_HEAD>::~CTLVPackageV3()
{
    CTLVPackageV3::clear();
}

template <typename MSG_S_HEAD>
void CTLVPackageV3<MSG_S_HEAD>::clear() noexcept
{
    for (CTLVRecordV3* record : oRecords) {
        delete record;
    }
    oRecords.clear();
}

template <typename MSG_S_HEAD>
CTLVRecordV3* CTLVPackageV3<MSG_S_HEAD>::operator[](std::size_t index) const
{
    if (index >= oRecords.size()) {
        // Contract: the wording is what operators search the host's log for.
        throw CKEL_Exception("record don't exist, index is " + std::to_string(index));
    }
    return oRecords[index];
}

// The codec's members are instantiated, with the class itself, in tlv_codec.cpp.
template CTLVPackageV3<TLVMsgHeadV3>::~CTLVPackageV3();
template void CTLVPackageV3<TLVMsgHeadV3>::clear() noexcept;
template CTLVRecordV3* CTLVPackageV3<TLVMsgHeadV3>::operator[](std::size_t) const;
