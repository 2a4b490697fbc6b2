#pragma once

#include "host/platform/name_cache_settings.h"
#include "host/snmp/trap_sender.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host_platform/scripted_lookup.h"
#include "tests/unit/host_snmp/log_kit.h"
#include "tests/unit/host_snmp/sender_kit.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

/// A trap sender with a settings file and names that a test controls.
class TrapSending : public testing::Test {
protected:
    using Time = TrapSender::Time;

    /// Write the settings first.
    TrapSender& sender()
    {
        if (!sender_) {
            sender_ = std::make_unique<TrapSender>(
                TrapSender::Settings{settingsPath(), nullptr, &names_});
        }
        return *sender_;
    }

    std::string settingsPath() const { return dir_.path("traps.json"); }

    void writeSettings(const std::string& text)
    {
        const auto path = dir_.write("traps.json", text);
        chmod(path.c_str(), S_IRUSR | S_IWUSR);
    }

    /// Settings that take effect now, though the sender may have looked this very moment.
    void changeSettings(const std::string& text)
    {
        writeSettings(text + std::string(++changes_, '\n'));
        later_ += std::chrono::seconds(2);
        sender().proceed(Clock::now() + later_);
    }

    static tTrapDestInfo row(const std::string& index, const std::string& address,
                             unsigned int port, unsigned int version = 2,
                             const std::string& user = "--")
    {
        return {index, address, port, version, 3, user};
    }

    static tTrapDestInfo row(const std::string& index, const UdpReceiver& receiver,
                             unsigned int version = 2, const std::string& user = "--")
    {
        return row(index, receiver.address(), receiver.port(), version, user);
    }

    /// To every row; each has to be set before.
    Trap trap(const std::vector<tTrapDestInfo>& rows, const std::string& title = "Fan 3 failed")
    {
        return {{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1, 0, 1},
                {{{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, 4, 0},
                  {Syntax::OctetString, 0, title}}},
                {rows.begin(), rows.end()}};
    }

    /// Sets the rows and sends a trap to all of them.
    void sendTo(const std::vector<tTrapDestInfo>& rows, const std::string& title = "Fan 3 failed")
    {
        sender().setReceivers(rows);
        sender().send(trap(rows, title), nullptr);
    }

    ReceiverStatus status(std::size_t receiver = 0) { return sender().status().at(receiver); }

    template <typename Condition>
    bool serve(Condition&& condition)
    {
        return serveUntil([this] { sender().proceed(Clock::now()); },
                          std::forward<Condition>(condition));
    }

    using Clock = std::chrono::steady_clock;

    TempDir dir_;
    LookupScript script_;
    NameCache names_{NameCache::Settings{{}, &Clock::now, [this] { return script_.makeLookup(); }}};
    LoggerCapture log_{"host"};
    std::unique_ptr<TrapSender> sender_;
    std::size_t changes_ = 0;
    std::chrono::seconds later_{0};
};

/// The text of the variable at `position`, the first is 0.
inline std::string textAt(const netsnmp_pdu& pdu, int position)
{
    const auto* variable = pdu.variables;
    for (; variable != nullptr && position > 0; --position) {
        variable = variable->next_variable;
    }
    return variable == nullptr
               ? "<none>"
               : std::string(variable->val.string, variable->val.string + variable->val_len);
}

inline std::string communityOf(const netsnmp_pdu& pdu)
{
    return {pdu.community, pdu.community + pdu.community_len};
}

}  // namespace talvik::test
