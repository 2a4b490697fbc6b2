#pragma once

#include "host/snmp/batch_subtree.h"
#include "host/snmp/varbind.h"
#include "tests/unit/host_snmp/batch_handler_kit.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

/// What a variable of a response came to.
struct Shown {
    ObjectId suffix;    ///< its name behind the table's OID, as far as it lies there
    std::string value;  ///< "noSuchObject", "noSuchInstance", "end" or "genErr" where it has none
    int type = ASN_NULL;

    bool hasValue() const { return type != ASN_NULL; }
};

/// "SUFFIX = VALUE".
inline std::string textOf(const Shown& shown)
{
    return shown.hasValue() ? toText(shown.suffix) + " = " + shown.value : shown.value;
}

inline std::vector<std::string> textsOf(const std::vector<Shown>& shown)
{
    std::vector<std::string> texts;
    for (const auto& one : shown) {
        texts.push_back(textOf(one));
    }
    return texts;
}

/// One request of a manager on a subtree. Names are told by what stands behind the table's OID.
class BatchRequest {
public:
    BatchRequest(Subtree& subtree, unsigned int command, long version = SNMP_VERSION_2c)
        : subtree_(subtree)
    {
        pdu_.command = static_cast<int>(command);
        pdu_.version = version;
        session_.pdu = &pdu_;
        session_.session = &wire_;
        info_.asp = &session_;
    }

    ~BatchRequest() { netsnmp_free_all_list_data(info_.agent_data); }

    BatchRequest(const BatchRequest&) = delete;
    BatchRequest& operator=(const BatchRequest&) = delete;

    /// One call of the subtree; a GETBULK takes several. `inclusive` as an AgentX master tells it.
    std::vector<Shown> call(const std::vector<ObjectId>& suffixes, bool inclusive = false)
    {
        std::vector<ObjectId> names;
        for (const auto& suffix : suffixes) {
            auto name = subtree_.id();
            name.insert(name.end(), suffix.begin(), suffix.end());
            names.push_back(name);
        }
        return callFor(names, inclusive);
    }

    /// As above, with whole names.
    std::vector<Shown> callFor(const std::vector<ObjectId>& names, bool inclusive = false)
    {
        info_.mode = pdu_.command == static_cast<int>(SNMP_MSG_GET) ? MODE_GET : MODE_GETNEXT;
        netsnmp_variable_list* variables = nullptr;
        std::vector<netsnmp_request_info> requests(names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            requests[i].requestvb = snmp_varlist_add_variable(
                &variables, names[i].data(), names[i].size(), ASN_NULL, nullptr, 0);
            requests[i].inclusive = inclusive ? 1 : 0;
            requests[i].agent_req_info = &info_;
            requests[i].next = i + 1 < names.size() ? &requests[i + 1] : nullptr;
        }
        subtree_.answer(&info_, requests.data());
        std::vector<Shown> shown;
        for (const auto& request : requests) {
            shown.push_back(shownOf(request));
        }
        snmp_free_varbind(variables);
        return shown;
    }

private:
    Shown shownOf(const netsnmp_request_info& request) const
    {
        const auto& variable = *request.requestvb;
        if (request.status != SNMP_ERR_NOERROR) {
            return {{}, request.status == SNMP_ERR_GENERR ? "genErr" : "another error"};
        }
        const auto suffix = suffixOf(variable, subtree_.id());
        switch (variable.type) {
        case ASN_NULL:
            return {suffix, "end"};
        case SNMP_NOSUCHOBJECT:
            return {suffix, "noSuchObject"};
        case SNMP_NOSUCHINSTANCE:
            return {suffix, "noSuchInstance"};
        case ASN_OCTET_STR:
            return {suffix,
                    {variable.val.string, variable.val.string + variable.val_len},
                    variable.type};
        case ASN_COUNTER64:
            return {suffix,
                    std::to_string((std::uint64_t{variable.val.counter64->high} << 32U) |
                                   variable.val.counter64->low),
                    variable.type};
        default:
            return {suffix, std::to_string(*variable.val.integer), variable.type};
        }
    }

    Subtree& subtree_;
    netsnmp_pdu pdu_{};
    netsnmp_session wire_{};
    netsnmp_agent_session session_{};
    netsnmp_agent_request_info info_{};
};

/// A table in batches with its script, on a clock that only a test moves.
struct BatchedTable {
    using Time = BatchTable::Time;

    explicit BatchedTable(BatchTable::Limits limits = {}, MibTable description = batchedTable())
        : mib(std::move(description)),
          table(std::make_shared<BatchTable>(mib, ObjectId{7, 1, 2, 3},
                                             std::make_unique<FakeBatchHandler>(script), limits,
                                             [this] { return now; })),
          subtree(table)
    {
    }

    BatchedTable& with(const std::vector<std::uint32_t>& indexes)
    {
        for (const auto index : indexes) {
            script.rows[index] = true;
        }
        return *this;
    }

    std::string get(const ObjectId& suffix, long version = SNMP_VERSION_2c)
    {
        return textOf(BatchRequest(subtree, SNMP_MSG_GET, version).call({suffix}).front());
    }

    std::string next(const ObjectId& suffix, long version = SNMP_VERSION_2c)
    {
        return textOf(BatchRequest(subtree, SNMP_MSG_GETNEXT, version).call({suffix}).front());
    }

    MibTable mib;
    BatchScript script;
    Time now{std::chrono::hours(1)};
    std::shared_ptr<BatchTable> table;
    BatchSubtree subtree;
};

}  // namespace talvik::test
