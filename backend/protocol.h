#pragma once

#include "framework/tlv_package.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

/// The language between host and back end: packages back to back on a stream. Both sides include
/// this one definition; docs/backend-protocol.md is its text.
namespace talvik::backend {

using Package = CTLVPackageV3<TLVMsgHeadV3>;
using Bytes = std::vector<unsigned char>;

/// What a package is, in the header word `usShort1`.
enum class MessageKind : std::uint16_t {
    Request = 1,  ///< the default of a new header
    Reply = 2,
    Notification = 3,
    Acknowledgement = 4
};

constexpr std::size_t kHeaderSize = sizeof(TLVMsgHeadV3);

/// No package is larger, header included. A header that promises more ends the connection.
constexpr std::size_t kMaxPackageSize = std::size_t{16} << 20U;

/// No package has more records. An empty record takes 10 bytes on the wire and a hundred times that
/// in memory.
constexpr std::size_t kMaxRecords = 65536;

/// No record holds more bytes of cells: a longer one would be refused by the codec.
constexpr unsigned kMaxRecordLength = 65525;

/// Result codes of a reply, in the header word `uiWord3`. 0x1000000 to 0x100000F belong to the
/// host's link.
namespace result {

constexpr std::uint32_t kSuccess = 0;
constexpr std::uint32_t kUnknownCommand =
    0x1000010;                                   ///< no command has the number of the first record
constexpr std::uint32_t kNoCommand = 0x1000011;  ///< the request has no record
constexpr std::uint32_t kCommandFailed =
    0x1000012;  ///< the command broke off; the back end's log says why
constexpr std::uint32_t kAnswerTooLarge = 0x1000013;  ///< the answer does not fit a package
constexpr std::uint32_t kNoSuchAlarm = 0x1000014;  ///< no alarm with that serial number is active
constexpr std::uint32_t kBadRequest =
    0x1000015;  ///< a cell is missing, of the wrong type or out of bounds
constexpr std::uint32_t kOutboxFull = 0x1000016;  ///< too many notifications wait for the host
constexpr std::uint32_t kAlreadySubscribed = 0x1000017;  ///< another host takes the notifications
constexpr std::uint32_t kStoreFailed = 0x1000018;        ///< the alarm store cannot be written

}  // namespace result

/// Bytes or a package that break the protocol. `what()` says how, as the end of a sentence about
/// the peer.
class ProtocolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline MessageKind kindOf(const TLVMsgHeadV3& head)
{
    return static_cast<MessageKind>(head.usShort1);
}

inline void setKind(TLVMsgHeadV3& head, MessageKind kind)
{
    head.usShort1 = static_cast<std::uint16_t>(kind);
}

/// The number that the requester chose; a reply repeats it.
inline std::uint32_t exchangeOf(const TLVMsgHeadV3& head)
{
    return head.uiWord2;
}

inline void setExchange(TLVMsgHeadV3& head, std::uint32_t number)
{
    head.uiWord2 = number;
}

/// A reply's result code. In a request the same word is the request's attribute, all ones for none.
inline std::uint32_t resultOf(const TLVMsgHeadV3& head)
{
    return head.uiWord3;
}

inline void setResult(TLVMsgHeadV3& head, std::uint32_t code)
{
    head.uiWord3 = code;
}

/// The package as it goes over the wire. Throws `ProtocolError` when it or one of its records is
/// too large.
Bytes encoded(Package& package);

/// Fills `package`, which holds no records, from the bytes of exactly one package. Throws
/// `ProtocolError` when they do not parse; the codec has then logged where.
void decodeInto(Package& package, Bytes& wire);

}  // namespace talvik::backend
