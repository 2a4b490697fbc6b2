#pragma once

#include "backend/protocol.h"

#include <cstdint>
#include <string>

namespace talvik::backend {

/// Puts one record together at the end of a package.
class RecordBuilder {
public:
    /// Begins the record; `package` must outlive the builder.
    RecordBuilder(Package& package, std::uint64_t recordId);

    RecordBuilder& u8(unsigned tag, std::uint8_t value);
    RecordBuilder& u32(unsigned tag, std::uint32_t value);
    RecordBuilder& u64(unsigned tag, std::uint64_t value);

    /// Throws `CKEL_Exception` for a text of more than 65534 octets.
    RecordBuilder& text(unsigned tag, const std::string& value);

private:
    RecordBuilder& number(unsigned tag, const void* value, std::size_t size);

    CTLVRecordV3& record_;
};

}  // namespace talvik::backend
