#pragma once

#include "framework/tlv_package.h"

#include <string>
#include <vector>

namespace talvik::bench {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

inline constexpr std::size_t kRecords = 50;
inline constexpr std::size_t kCells = 12;

/// What every record holds: five 4-byte and two 8-byte numbers, and texts that take 12, 24, 40, 80
/// and 160 bytes with their NUL, in mixed order with tags 1 to 12.
struct SampleCell {
    unsigned short tag;
    CTLVCell::ETLVType type;
    std::string value;  ///< the value bytes as they travel
};

const std::vector<SampleCell>& sampleCells();

/// Appends `kRecords` records of `sampleCells`.
void fillSample(Package& package);

/// The sample, encoded.
std::vector<unsigned char> encodedSample();

/// The sample as an encoded package of reference_package.proto.
template <typename ProtobufPackage>
std::string encodedProtobufSample();

}  // namespace talvik::bench
