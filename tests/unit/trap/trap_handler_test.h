#pragma once

#include "tests/support/fake_host_test.h"
#include "tests/support/fake_trap_host.h"
#include "tests/support/throw_text.h"
#include "trap/talvik_trap_addr_handler.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace talvik::test {

constexpr int kRefused = 0x3000003;
constexpr unsigned kWord3 = 0x12345678;

/// Base of the tests of the trap destination table: a handler, and a request whose record 0 the
/// test fills column by column.
class TrapHandlerTest : public FakeHostTest {
protected:
    using Package = CTLVPackageV3<TLVMsgHeadV3>;
    using Calls = std::vector<std::string>;

    TrapHandlerTest()
    {
        trapHost.reset();
        request.oRecords.push_back(new CTLVRecordV3);
        request.oHead.uiWord3 = kWord3;
    }
    ~TrapHandlerTest() override { trapHost.reset(); }

    void cell(unsigned short tag, CTLVCell::ETLVType type, std::string_view bytes)
    {
        auto made = std::make_unique<CTLVCell>();
        made->set_i(type, tag, bytes.data(), bytes.size());
        request[0]->append(made.release());
    }

    void text(unsigned short tag, const std::string& value)
    {
        cell(tag, CTLVCell::TLV_STRING, {value.c_str(), value.size() + 1});
    }

    void number(unsigned short tag, std::uint32_t value)
    {
        cell(tag, CTLVCell::TLV_UINT, {reinterpret_cast<const char*>(&value), sizeof value});
    }

    void listed(const TrapFields& fields)
    {
        trapHost.destinations.push_back(destinationOf(fields));
    }

    int query() { return handler.OnQueryTable(context, request, response); }
    int create() { return handler.OnCreateTable(context, request, response); }
    int modify() { return handler.OnModifyTable(context, request, response); }
    int remove() { return handler.OnDeleteTable(context, request, response); }

    /// The calls of the trap list and its checks, in order.
    Calls trapCalls() const
    {
        static const Calls kOthers = {"find", "trace", "error", "set_i", "append"};
        Calls found;
        std::copy_if(host.calls.begin(), host.calls.end(), std::back_inserter(found),
                     [](const auto& call) {
                         return std::find(kOthers.begin(), kOthers.end(), call) == kOthers.end();
                     });
        return found;
    }

    /// The one change that reached the list, with the word of the request.
    void expectOnlyChange(const std::string& call, const TrapFields& destination) const
    {
        const std::vector<TrapChange> expected = {{call, destination, kWord3}};
        EXPECT_EQ(trapHost.changes, expected);
    }

    void expectNoChange() const
    {
        EXPECT_EQ(trapHost.changes, std::vector<TrapChange>());
        EXPECT_TRUE(response.oRecords.empty());
    }

    /// What was logged besides the traces.
    std::vector<LogLine> otherLines() const
    {
        std::vector<LogLine> others;
        std::copy_if(host.log.begin(), host.log.end(), std::back_inserter(others),
                     [](const auto& logged) { return logged.level != "trace"; });
        return others;
    }

    /// That one line besides the traces was logged, at level error.
    void expectOnlyLine(const char* label, unsigned long long code, const std::string& line) const
    {
        const auto others = otherLines();
        ASSERT_EQ(others.size(), 1U);
        EXPECT_EQ(others[0].level, "error");
        EXPECT_EQ(others[0].moduleId, 4U);
        EXPECT_EQ(others[0].messageId, code);
        EXPECT_EQ(others[0].label, label);
        EXPECT_EQ(others[0].text, line);
        EXPECT_GT(others[0].line, 0U);
    }

    void expectNoLine() const
    {
        for (const auto& line : otherLines()) {
            ADD_FAILURE() << line.level << ": " << line.text;
        }
    }

    /// That every guard that was entered was left, the innermost first.
    void expectBalancedTraces() const
    {
        std::vector<std::string> open;
        for (const auto& line : host.texts("trace")) {
            if (line.rfind("enter ", 0) == 0) {
                open.push_back(line.substr(6, line.size() - 9));
            } else {
                ASSERT_FALSE(open.empty()) << line;
                EXPECT_EQ(line, "leave " + open.back() + ": OK");
                open.pop_back();
            }
        }
        EXPECT_EQ(open, std::vector<std::string>());
        EXPECT_FALSE(host.texts("trace").empty());
    }

    FakeTrapHost& trapHost = fakeTrapHost();
    CTalvikTrapAddrHandler handler;
    Package request;
    Package response;
};

/// The texts of the refusals of a cell, of a look-up and of a request without a record.
inline std::string notNumerical(unsigned tag)
{
    return "CKEL_Exception: CTLVCell isn't numerical type! tag equal to " + std::to_string(tag);
}

inline std::string notString(unsigned tag)
{
    return "CKEL_Exception: CTLVCell isn't string type! tag equal to " + std::to_string(tag);
}

inline std::string noSuchCell(unsigned tag)
{
    return "CKEL_Exception: CTLVRecordV3 has no such cell! tag equal to " + std::to_string(tag);
}

constexpr const char* kNoRecord = "CKEL_Exception: record don't exist, index is 0";

}  // namespace talvik::test
