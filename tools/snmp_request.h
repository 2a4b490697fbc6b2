#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace talvik::ctl {

using ObjectId = std::vector<std::uint32_t>;

/// One variable of a request or an answer.
struct SnmpCell {
    enum class Kind {
        Integer,
        Unsigned,    ///< Unsigned32 and its likes
        Text,        ///< octets; an IpAddress comes as its dotted text
        NoInstance,  ///< the agent knows the object, but not this row
        NoObject,    ///< the agent does not know the object, or does not show it
        EndOfView,   ///< nothing follows
        Other,
    };

    ObjectId oid;
    Kind kind = Kind::Other;
    std::int64_t number = 0;  ///< of Integer and Unsigned
    std::string text;         ///< of Text

    bool isNumber() const { return kind == Kind::Integer || kind == Kind::Unsigned; }
};

/// What an agent answered.
struct SnmpAnswer {
    int status = 0;              ///< error status of the protocol; 0 for none
    std::size_t errorIndex = 0;  ///< which variable is to blame, from 1; 0 for none
    std::vector<SnmpCell> cells;
    unsigned tries = 1;  ///< how often the request was sent; above 1 an answer may have been lost
};

/// Sends requests to one agent. Every operation throws `Failure` when no usable answer came:
/// NoAnswer when the request was sent, Connection when it was not. A refusal is an answer.
class SnmpRequester {
public:
    virtual ~SnmpRequester() = default;

    virtual SnmpAnswer get(const std::vector<ObjectId>& names) = 0;
    virtual SnmpAnswer getNext(const std::vector<ObjectId>& names) = 0;
    virtual SnmpAnswer getBulk(const std::vector<ObjectId>& names, unsigned repetitions) = 0;
    virtual SnmpAnswer set(const std::vector<SnmpCell>& cells) = 0;

    /// SNMPv1: no GETBULK, and fewer words for what went wrong.
    virtual bool isV1() const = 0;

    /// Where the agent is, as the user named it.
    virtual const std::string& agent() const = 0;

protected:
    SnmpRequester() = default;
    SnmpRequester(const SnmpRequester&) = default;
    SnmpRequester& operator=(const SnmpRequester&) = default;
};

}  // namespace talvik::ctl
