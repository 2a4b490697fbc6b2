#pragma once

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

}  // namespace talvik::contract
