#include "host/snmp/trap_encoder.h"

#include "host/snmp/trap_pdu.h"
#include "host/snmp/trap_size.h"
#include "host/snmp/usm_users.h"

#include <cstdlib>
#include <memory>
#include <new>

namespace talvik {

namespace {

constexpr std::size_t kBufferSize = 2048;  ///< more than a message; the library makes it grow

/// A session that is never opened: it only says how to encode. Keeps what it points to.
class TemplateSession {
public:
    explicit TemplateSession(const TrapMessageKind& kind) : name_(kind.name)
    {
        snmp_sess_init(&session_);
        if (kind.version == 3) {
            engineId_ = UsmUsers::ownEngineId();
            session_.version = SNMP_VERSION_3;
            session_.securityModel = SNMP_SEC_MODEL_USM;
            session_.securityLevel = SNMP_SEC_LEVEL_AUTHPRIV;
            session_.securityName = name_.data();
            session_.securityNameLen = name_.size();
            session_.securityEngineID = reinterpret_cast<u_char*>(engineId_.data());
            session_.securityEngineIDLen = engineId_.size();
            session_.contextName = noContext_;
        } else {
            session_.version = kind.version == 1 ? SNMP_VERSION_1 : SNMP_VERSION_2c;
            session_.community = reinterpret_cast<u_char*>(name_.data());
            session_.community_len = name_.size();
        }
    }

    TemplateSession(const TemplateSession&) = delete;
    TemplateSession& operator=(const TemplateSession&) = delete;

    netsnmp_session* get() { return &session_; }

private:
    std::string name_;
    std::string engineId_;
    char noContext_[1] = {};
    netsnmp_session session_;
};

/// The library grows the buffer with realloc.
class Buffer {
public:
    Buffer() : octets_(static_cast<u_char*>(std::malloc(kBufferSize)))
    {
        if (octets_ == nullptr) {
            throw std::bad_alloc();
        }
    }
    ~Buffer() { std::free(octets_); }

    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    bool build(TemplateSession& session, netsnmp_pdu& pdu)
    {
        offset_ = 0;
        return snmp_build(&octets_, &size_, &offset_, session.get(), &pdu) == 0;
    }

    /// The library writes from the end, unless its configuration says otherwise.
    std::string message(const netsnmp_pdu& pdu) const
    {
        const bool forward = (pdu.flags & UCD_MSG_FLAG_FORWARD_ENCODE) != 0;
        const auto* begin = forward ? octets_ : octets_ + size_ - offset_;
        return {begin, begin + (forward ? size_ : offset_)};
    }

private:
    u_char* octets_;
    std::size_t size_ = kBufferSize;
    std::size_t offset_ = 0;
};

/// What is made once and used for every message.
struct Workspace {
    Buffer buffer;
    VariableRoom variables;
};

BorrowingPduPtr makePdu(const TrapContent& content, const TrapMessageKind& kind, VariableRoom& room)
{
    if (kind.version == 1) {
        return borrowV1TrapPdu(content, kind.agentAddress, room);
    }
    return borrowTrapPdu(kind.version == 3 ? SNMP_VERSION_3 : SNMP_VERSION_2c, content, room);
}

}  // namespace

std::optional<std::string> encodeTrap(const TrapContent& content, const TrapMessageKind& kind,
                                      std::string& problem)
{
    static Workspace workspace;
    const auto pdu = makePdu(content, kind, workspace.variables);
    if (!pdu) {
        problem = "trap " + toText(content.id) + " has no enterprise for version 1";
        return std::nullopt;
    }
    TemplateSession session(kind);
    auto& buffer = workspace.buffer;
    if (!buffer.build(session, *pdu)) {
        problem =
            "cannot be encoded: " + std::string(snmp_api_errstring(session.get()->s_snmp_errno));
        return std::nullopt;
    }
    auto message = buffer.message(*pdu);
    if (message.size() > kMaxTrapMessage) {
        problem = "trap " + toText(content.id) + " takes " + std::to_string(message.size()) +
                  " octets, more than " + std::to_string(kMaxTrapMessage);
        return std::nullopt;
    }
    return message;
}

}  // namespace talvik
