#pragma once

#include "tests/unit/host_snmp/sender_kit.h"

// After the above: net-snmp's headers leave names behind.
#include "host/snmp/trap_pdu.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace talvik::test {

inline std::string ber(int tag, const std::string& content)
{
    const auto octet = [](std::size_t number) { return std::string(1, static_cast<char>(number)); };
    const auto size = content.size();
    const auto length =
        size < 0x80 ? octet(size) : octet(0x82) + octet(size >> 8U) + octet(size & 0xFFU);
    return octet(static_cast<std::size_t>(tag)) + length + content;
}

/// Takes elements from the front of a message.
class BerReader {
public:
    explicit BerReader(std::string octets) : octets_(std::move(octets)) {}

    /// The content of the next one.
    std::string next()
    {
        std::size_t length = at(1);
        std::size_t start = 2;
        if ((length & 0x80U) != 0) {
            const std::size_t more = length & 0x7FU;
            length = 0;
            for (std::size_t i = 0; i < more; ++i) {
                length = length << 8U | at(start++);
            }
        }
        auto content = octets_.substr(start, length);
        octets_.erase(0, start + length);
        return content;
    }

    std::size_t left() const { return octets_.size(); }

private:
    std::size_t at(std::size_t position) const
    {
        return static_cast<unsigned char>(octets_.at(position));
    }

    std::string octets_;
};

/// The answer to a version 2c inform: the same message with the tag of a response.
inline std::string responseTo(const std::string& inform)
{
    auto message = inform;
    BerReader inside(BerReader(message).next());
    inside.next();  // version
    inside.next();  // community
    message.at(message.size() - inside.left()) = '\xA2';
    return message;
}

/// A version 3 receiver of informs with an engine ID of its own.
class FakeEngine {
public:
    explicit FakeEngine(std::string engineId) : engineId_(std::move(engineId)) {}

    /// The report that a message to another engine ID gets; `reason` is the last number of the
    /// object of usmStats: 3 unknown user, 4 unknown engine ID.
    std::string reportTo(const std::string& message, char reason = 4) const
    {
        BerReader inside(BerReader(message).next());
        inside.next();  // version
        const auto id = BerReader(inside.next()).next();
        const auto zero = ber(0x02, std::string(1, '\0'));
        const auto none = ber(0x04, "");
        const auto object = std::string("\x2B\x06\x01\x06\x03\x0F\x01\x01", 8) + reason + '\0';
        const auto variable = ber(0x30, ber(0x06, object) + ber(0x41, "\x01"));
        const auto security = ber(0x30, ber(0x04, engineId_) + zero + zero + none + none + none);
        return ber(0x30, ber(0x02, "\x03") +
                             ber(0x30, ber(0x02, id) + ber(0x02, std::string("\x00\xFF\xE3", 3)) +
                                           ber(0x04, std::string(1, '\0')) + ber(0x02, "\x03")) +
                             ber(0x04, security) +
                             ber(0x30, ber(0x04, engineId_) + none +
                                           ber(0xA8, zero + zero + zero + ber(0x30, variable))));
    }

    /// True for a message that names this engine.
    bool isFor(const std::string& message) const
    {
        return message.find(engineId_) != std::string::npos;
    }

    /// The answer to an inform that `parseMessage` can read.
    std::string responseTo(const netsnmp_pdu& inform) const
    {
        const PduPtr pdu(snmp_pdu_create(SNMP_MSG_RESPONSE));
        pdu->version = SNMP_VERSION_3;
        pdu->reqid = inform.reqid;
        pdu->msgid = inform.msgid;
        pdu->errstat = 0;
        pdu->errindex = 0;
        pdu->variables = snmp_clone_varbind(inform.variables);
        auto engineId = engineId_;
        std::string user(inform.securityName, inform.securityNameLen);
        char noContext[1] = {};
        netsnmp_session session;
        snmp_sess_init(&session);
        session.version = SNMP_VERSION_3;
        session.securityModel = SNMP_SEC_MODEL_USM;
        session.securityLevel = SNMP_SEC_LEVEL_AUTHPRIV;
        session.securityName = user.data();
        session.securityNameLen = user.size();
        session.securityEngineID = reinterpret_cast<u_char*>(engineId.data());
        session.securityEngineIDLen = engineId.size();
        session.contextName = noContext;
        std::size_t size = 2048;
        std::size_t used = 0;
        auto* buffer = static_cast<u_char*>(std::malloc(size));
        const int result = snmp_build(&buffer, &size, &used, &session, pdu.get());
        const std::string message(buffer + size - used, buffer + size);
        std::free(buffer);
        if (result != 0) {
            throw std::runtime_error("no answer can be made");
        }
        return message;
    }

private:
    std::string engineId_;
};

}  // namespace talvik::test
