#pragma once

#include "tools/snmp_request.h"
#include "tools/snmp_settings.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

struct snmp_pdu;

namespace talvik::ctl {

/// An SNMP session with one agent. It repeats requests itself, so that who asked learns of it: a
/// repeated SET may meet what its first try did.
class SnmpClient : public SnmpRequester {
public:
    /// Opens the session; nothing is sent yet. Throws `StartupError` when the settings are
    /// incomplete or cannot be used, `Failure` when the agent's address cannot be.
    explicit SnmpClient(const SnmpSettings& settings);
    ~SnmpClient() override;

    SnmpClient(const SnmpClient&) = delete;
    SnmpClient& operator=(const SnmpClient&) = delete;

    SnmpAnswer get(const std::vector<ObjectId>& names) override;
    SnmpAnswer getNext(const std::vector<ObjectId>& names) override;
    SnmpAnswer getBulk(const std::vector<ObjectId>& names, unsigned repetitions) override;
    SnmpAnswer set(const std::vector<SnmpCell>& cells) override;
    bool isV1() const override;
    const std::string& agent() const override { return settings_.agent; }

private:
    using MakePdu = std::function<snmp_pdu*()>;

    /// The library's number and words for what went wrong last.
    struct Error {
        int code = 0;
        std::string text;
    };

    Error lastError() const;
    [[noreturn]] void fail(const Error& error, unsigned sent) const;
    SnmpAnswer exchange(const MakePdu& makePdu);
    SnmpAnswer ask(int command, const std::vector<ObjectId>& names);

    SnmpSettings settings_;
    long version_ = 0;
    void* session_ = nullptr;
};

}  // namespace talvik::ctl
