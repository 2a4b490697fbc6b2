#pragma once

#include "framework/tlv_message_head.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Takes captured packages apart field by field (docs/tlv-format.md). What is accepted is what the
/// codec accepts; unlike the codec it goes on behind a fault where it can, and says what is wrong.
/// Offsets are counted from the beginning of the capture.
namespace talvik::ctl {

/// Why something cannot be read, and where.
struct PackageFault {
    std::size_t offset = 0;
    std::string reason;
};

struct CapturedCell {
    std::size_t offset = 0;
    unsigned tag = 0;
    unsigned type = 0;
    std::vector<unsigned char> value;
};

struct CapturedRecord {
    std::size_t number = 0;  ///< within its package, from 1
    std::size_t offset = 0;
    std::uint64_t id = 0;
    std::uint32_t length = 0;  ///< bytes of cells, as the record says
    std::vector<CapturedCell> cells;
    bool accepted = false;              ///< by the codec
    std::optional<PackageFault> fault;  ///< of a refused record, or what the codec winks at
};

struct CapturedPackage {
    std::size_t number = 0;  ///< from 1
    std::size_t offset = 0;
    TLVMsgHeadV3 head;          ///< zero behind `headBytes`
    std::size_t headBytes = 0;  ///< how much of the header is there
};

/// What is behind the records of a package.
struct PackageEnd {
    std::size_t size = 0;  ///< bytes that the package takes
    bool accepted = false;
    std::vector<PackageFault> faults;  ///< of the package itself, not of its records
};

/// Who is told what is read, in its order.
class PackageVisitor {
public:
    virtual ~PackageVisitor() = default;

    virtual void begin(const CapturedPackage& package) = 0;
    virtual void record(const CapturedRecord& record) = 0;
    virtual void end(const CapturedPackage& package, const PackageEnd& end) = 0;

protected:
    PackageVisitor() = default;
    PackageVisitor(const PackageVisitor&) = default;
    PackageVisitor& operator=(const PackageVisitor&) = default;
};

/// Reads packages back to back. Behind one with a wrong magic or version it goes on at the next
/// bytes that look like a header. Returns whether there was a package and all were accepted.
bool readPackages(const std::vector<unsigned char>& bytes, PackageVisitor& visitor);

}  // namespace talvik::ctl
