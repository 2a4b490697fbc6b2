#pragma once

/// The cells of the agent's own commands about trap receivers, SHOW_RECEIVERS and SEND_TEST_TRAP.
namespace talvik::receiver {

constexpr unsigned short kAddressTag = 1;  ///< text
constexpr unsigned short kPortTag = 2;     ///< 4 bytes
constexpr unsigned short kIndexTag = 3;    ///< 4 bytes: the row in the table of trap destinations
constexpr unsigned short kVersionTag = 4;  ///< 4 bytes, as in that table
constexpr unsigned short kTypeTag = 5;     ///< 4 bytes, as in that table
constexpr unsigned short kUserTag = 6;     ///< text
constexpr unsigned short kInformTag = 7;   ///< 4 bytes: 1 for informs, 0 for traps
constexpr unsigned short kStateTag = 8;    ///< text for a human; "ok" when all is well
constexpr unsigned short kSentTag = 10;    ///< 8 bytes, as are the other counters
constexpr unsigned short kFailedTag = 11;
constexpr unsigned short kAnsweredTag = 12;
constexpr unsigned short kGivenUpTag = 13;
constexpr unsigned short kWaitingTag = 14;

/// Result codes of their own.
constexpr unsigned kNoSuchReceiver = 0x1000030;  ///< no row has that index
constexpr unsigned kAgentBusy = 0x1000031;       ///< the agent did not come to it in time

}  // namespace talvik::receiver
