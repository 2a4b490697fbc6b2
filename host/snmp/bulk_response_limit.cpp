#include "host/snmp/bulk_response_limit.h"

#include "host/snmp/net_snmp.h"
#include "host/startup_error.h"

#include <dlfcn.h>
#include <netinet/in.h>

#include <algorithm>
#include <string>

namespace talvik {

namespace {

using BuildPacket = int (*)(session_list*, netsnmp_pdu*, int);

/// Everything of a message but names and variables, all at its largest.
constexpr unsigned long kV3Overhead = 256;
constexpr unsigned long kCommunityOverhead = 48;

/// Content of a UDP datagram in one Ethernet frame: the largest GETBULK answer unless
/// sendMessageMaxSize says otherwise.
constexpr unsigned long kOneFrame = 1472;

/// Content of the largest UDP datagram.
constexpr unsigned long kOneDatagram = 65507;

/// What makes the library cut the answer itself, in a buffer that it may write past.
constexpr unsigned long kLibraryCuts = UCD_MSG_FLAG_FORWARD_ENCODE | UCD_MSG_FLAG_BULK_TOOBIG;

unsigned long overheadOf(const netsnmp_pdu& pdu)
{
    return pdu.version == SNMP_VERSION_3 ? kV3Overhead + pdu.securityNameLen + pdu.contextNameLen
                                         : kCommunityOverhead + pdu.community_len;
}

constexpr const char* kBuildName = "_build_initial_pdu_packet";

BuildPacket originalBuild()
{
    static const auto found = reinterpret_cast<BuildPacket>(dlsym(RTLD_NEXT, kBuildName));
    return found;
}

unsigned long nameOctets(const netsnmp_variable_list& variable)
{
    unsigned long octets = 0;
    for (std::size_t i = 0; i < variable.name_length; ++i) {
        unsigned long rest = variable.name[i];
        do {
            ++octets;
            rest >>= 7U;
        } while (rest != 0);
    }
    return octets;
}

/// Where a datagram is not cut into frames.
bool isOnThisMachine(const netsnmp_pdu& pdu)
{
    if (pdu.transport_data == nullptr ||
        pdu.transport_data_length != static_cast<int>(sizeof(netsnmp_indexed_addr_pair))) {
        return false;
    }
    const auto& remote =
        static_cast<const netsnmp_indexed_addr_pair*>(pdu.transport_data)->remote_addr;
    if (remote.sa.sa_family == AF_INET) {
        constexpr unsigned kLoopbackNet = 127;
        return ntohl(remote.sin.sin_addr.s_addr) >> 24U == kLoopbackNet;
    }
    return remote.sa.sa_family == AF_INET6 && IN6_IS_ADDR_LOOPBACK(&remote.sin6.sin6_addr);
}

/// The last variable that fits, or null when all do. One that is too large by itself is left to the
/// library, which knows whether the manager takes it.
netsnmp_variable_list* lastThatFits(const netsnmp_pdu& pdu)
{
    BulkRoom room(pdu);
    netsnmp_variable_list* last = pdu.variables;
    for (auto* variable = pdu.variables; variable != nullptr; variable = variable->next_variable) {
        if (!room.take(*variable)) {
            return last;
        }
        last = variable;
    }
    return nullptr;
}

/// What tag and length of one element take at least, and everything of a message but its variables.
constexpr unsigned long kLeastHeader = 2;
constexpr unsigned long kLeastOverhead = 20;

unsigned long leastEncodedSizeOf(const netsnmp_variable_list& variable)
{
    const unsigned long value = variable.type == ASN_OCTET_STR ? variable.val_len : 1;
    return 3 * kLeastHeader + nameOctets(variable) - 1 + value;
}

/// Whether the answer cannot be sent, however it is encoded: one to a GETBULK if not even its first
/// variable fits.
bool isTooBig(const netsnmp_pdu& pdu, bool bulk)
{
    const auto limit = pdu.msgMaxSize > 0
                           ? std::min(kOneDatagram, static_cast<unsigned long>(pdu.msgMaxSize))
                           : kOneDatagram;
    auto least = kLeastOverhead;
    for (const auto* variable = pdu.variables; variable != nullptr;
         variable = bulk ? nullptr : variable->next_variable) {
        least += leastEncodedSizeOf(*variable);
    }
    return least > limit;
}

/// Makes the answer tooBig without any variable (RFC 3416, 4.2.1) while it lives. The library would
/// copy the variables back, or fail to send.
class TooBig {
public:
    TooBig(netsnmp_pdu& pdu, bool applies) : pdu_(pdu), variables_(pdu.variables)
    {
        if (applies) {
            pdu_.errstat = SNMP_ERR_TOOBIG;
            pdu_.errindex = 0;
            pdu_.variables = nullptr;
        }
    }

    ~TooBig() { pdu_.variables = variables_; }

    TooBig(const TooBig&) = delete;
    TooBig& operator=(const TooBig&) = delete;

private:
    netsnmp_pdu& pdu_;
    netsnmp_variable_list* variables_;
};

/// Leaves out what follows `last` while it lives. The library still refers to these variables and
/// frees them later.
class CutAfter {
public:
    explicit CutAfter(netsnmp_variable_list* last)
        : last_(last),
          rest_(last == nullptr ? nullptr : last->next_variable)
    {
        if (last_ != nullptr) {
            last_->next_variable = nullptr;
        }
    }

    ~CutAfter()
    {
        if (last_ != nullptr) {
            last_->next_variable = rest_;
        }
    }

    CutAfter(const CutAfter&) = delete;
    CutAfter& operator=(const CutAfter&) = delete;

private:
    netsnmp_variable_list* last_;
    netsnmp_variable_list* rest_;
};

}  // namespace

}  // namespace talvik

// Builds every message for a manager. `bulk` is set for the answer to a GETBULK, whose variables
// may be left out from the end.
extern "C" __attribute__((visibility("default"))) int
_build_initial_pdu_packet(session_list* session, netsnmp_pdu* pdu, int bulk)
{
    const bool isAnswer = pdu->command == SNMP_MSG_RESPONSE && pdu->errstat == SNMP_ERR_NOERROR;
    const bool limited = bulk != 0 && isAnswer;
    if (limited) {
        pdu->flags &= ~talvik::kLibraryCuts;
    }
    const talvik::TooBig tooBig(*pdu, isAnswer && talvik::isTooBig(*pdu, bulk != 0));
    const talvik::CutAfter cut(limited ? talvik::lastThatFits(*pdu) : nullptr);
    return talvik::originalBuild()(session, pdu, bulk);
}

namespace talvik {

// The library's own setting is left alone unless it is configured: it also bounds the number of
// repeaters.
unsigned long largestBulkResponse(const netsnmp_pdu& pdu)
{
    const int configured = netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_MSG_SEND_MAX);
    auto limit = isOnThisMachine(pdu) ? kOneDatagram : kOneFrame;
    if (configured > 0) {
        limit = static_cast<unsigned long>(configured);
    }
    return pdu.msgMaxSize > 0 ? std::min(limit, static_cast<unsigned long>(pdu.msgMaxSize)) : limit;
}

std::size_t largestShownText()
{
    constexpr std::size_t kAlways = 16384;
    constexpr std::size_t kLeast = 64;
    constexpr std::size_t kBesides = kV3Overhead + encodedSizeOf(64, 0);
    const int configured = netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_MSG_SEND_MAX);
    if (configured <= 0) {
        return kAlways;
    }
    const auto limit = static_cast<std::size_t>(configured);
    return limit < kBesides + kLeast ? kLeast : std::min(kAlways, limit - kBesides);
}

BulkRoom::BulkRoom(const netsnmp_pdu& pdu)
    : limit_(largestBulkResponse(pdu)),
      used_(overheadOf(pdu))
{
}

bool BulkRoom::take(const netsnmp_variable_list& variable)
{
    used_ += encodedSizeOf(nameOctets(variable), variable.val_len);
    return used_ <= limit_;
}

void limitBulkResponses()
{
    if (originalBuild() == nullptr) {
        throw StartupError("this release of the net-snmp library builds its answers in another way "
                           "than this agent knows; use the release that it was built with");
    }
    const auto called = reinterpret_cast<BuildPacket>(dlsym(RTLD_DEFAULT, kBuildName));
    if (called != &_build_initial_pdu_packet) {
        throw StartupError(std::string("the net-snmp library would call another ") + kBuildName +
                           " than the agent's, so that GETBULK answers would not be limited; start "
                           "the agent without preloaded libraries and with its symbols exported");
    }
}

}  // namespace talvik
