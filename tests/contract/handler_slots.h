#pragma once

#include "framework/snmp_handler.h"
#include "tests/contract/vtable.h"

#include <cstddef>

namespace talvik::contract {

/// Where a handler's operations stand in its table.
enum HandlerSlot : std::size_t {
    OnQueryLeaf = 2,
    OnQueryTable,
    OnSetLeaf,
    OnCreateTable,
    OnModifyTable,
    OnDeleteTable,
    Strategy,
    IsWholeTable,
    GetSnmpOidVersion
};

/// Calls one of the operations that take packages, by its place.
inline int callHandler(CSnmpHandler& handler, HandlerSlot slot, const CKEL_SnmpContext& context,
                       const CTLVPackageV3<TLVMsgHeadV3>& request,
                       CTLVPackageV3<TLVMsgHeadV3>& response)
{
    using Package = CTLVPackageV3<TLVMsgHeadV3>;
    const auto operation =
        operationAt<int, const CKEL_SnmpContext&, const Package&, Package&>(&handler, slot);
    return operation(&handler, context, request, response);
}

}  // namespace talvik::contract
