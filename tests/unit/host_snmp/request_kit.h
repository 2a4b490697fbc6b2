#pragma once

#include "host/snmp/object_id.h"
#include "host/snmp/snmp_value.h"
#include "host/snmp/varbind.h"

// After the above: net-snmp's headers leave names behind.
#include "host/snmp/net_snmp.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

/// The agent library without any socket, once a process.
class AgentLibrary : public testing::Environment {
public:
    void SetUp() override
    {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_NO_ROOT_ACCESS, 1);
        ASSERT_EQ(init_agent("talvik-unit-test"), 0);
    }

    void TearDown() override { shutdown_agent(); }
};

inline const auto* const kLibrary = testing::AddGlobalTestEnvironment(new AgentLibrary);

/// One request, made by hand, on the registration that serves a table or scalar.
class HandMadeRequest {
public:
    /// `first` is the position of the first variable in the whole request.
    explicit HandMadeRequest(const ObjectId& served, int first = 1)
        : registration_(netsnmp_subtree_find(served.data(), served.size(), nullptr, "")->reginfo),
          first_(first)
    {
        session_.pdu = &pdu_;
        session_.session = &wire_;
        info_.asp = &session_;
    }

    ~HandMadeRequest()
    {
        netsnmp_free_all_list_data(info_.agent_data);
        for (auto& request : requests_) {
            netsnmp_free_all_list_data(request.parent_data);
        }
        snmp_free_varbind(variables_);
    }

    HandMadeRequest(const HandMadeRequest&) = delete;
    HandMadeRequest& operator=(const HandMadeRequest&) = delete;

    HandMadeRequest& add(const ObjectId& name, const SnmpValue& value)
    {
        auto* variable =
            snmp_varlist_add_variable(&variables_, name.data(), name.size(), ASN_NULL, nullptr, 0);
        setValue(*variable, value);
        return *this;
    }

    HandMadeRequest& add(const ObjectId& name)
    {
        snmp_varlist_add_variable(&variables_, name.data(), name.size(), ASN_NULL, nullptr, 0);
        return *this;
    }

    /// One phase or mode. Returns the errors of all variables.
    std::vector<int> run(int mode)
    {
        link();
        info_.mode = mode;
        EXPECT_EQ(netsnmp_call_handlers(registration_, &info_, requests_.data()), SNMP_ERR_NOERROR);
        std::vector<int> errors;
        for (const auto& request : requests_) {
            errors.push_back(request.status);
        }
        return errors;
    }

    const netsnmp_variable_list& variable() const { return *variables_; }

    /// Who asks, as SNMPv2c tells it.
    HandMadeRequest& by(std::string community)
    {
        community_ = std::move(community);
        pdu_.version = SNMP_VERSION_2c;
        pdu_.community = reinterpret_cast<unsigned char*>(community_.data());
        pdu_.community_len = community_.size();
        return *this;
    }

    /// The number that all calls for one request of a manager share.
    HandMadeRequest& numbered(long transaction)
    {
        pdu_.transid = transaction;
        return *this;
    }

    /// Another subtree's part of the request has failed.
    void failElsewhere(int error, int position)
    {
        session_.status = error;
        session_.index = position;
    }

    /// The error index that an error of each variable gives the response.
    std::vector<int> errorIndexes() const
    {
        std::vector<int> indexes;
        for (const auto& request : requests_) {
            indexes.push_back(request.index);
        }
        return indexes;
    }

private:
    void link()
    {
        if (!requests_.empty()) {
            return;
        }
        int index = first_;
        for (auto* variable = variables_; variable != nullptr; variable = variable->next_variable) {
            netsnmp_request_info request{};
            request.requestvb = variable;
            request.index = index++;
            request.agent_req_info = &info_;
            requests_.push_back(request);
        }
        for (std::size_t i = 1; i < requests_.size(); ++i) {
            requests_[i - 1].next = &requests_[i];
            requests_[i].prev = &requests_[i - 1];
        }
    }

    netsnmp_handler_registration* registration_;
    int first_;
    std::string community_;
    netsnmp_pdu pdu_{};
    netsnmp_session wire_{};
    netsnmp_agent_session session_{};
    netsnmp_agent_request_info info_{};
    netsnmp_variable_list* variables_ = nullptr;
    std::vector<netsnmp_request_info> requests_;
};

}  // namespace talvik::test
