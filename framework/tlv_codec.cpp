#include "framework/tlv_package.h"

template <typename MSG_S_HEAD>
u_int CTLVPackageV3<MSG_S_HEAD>::decode(unsigned char*, unsigned int)
{
    return FAILED;
}
template <typename MSG_S_HEAD>
u_int CTLVPackageV3<MSG_S_HEAD>::encode(unsigned char*&)
{
    return FAILED;
}
template <typename MSG_S_HEAD>
u_int CTLVPackageV3<MSG_S_HEAD>::encode(unsigned char*, unsigned int)
{
    return FAILED;
}
template <typename MSG_S_HEAD>
void CTLVPackageV3<MSG_S_HEAD>::dump(std::ostringstream&) const
{
}
template class CTLVPackageV3<TLVMsgHeadV3>;
