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
    ObjectId suffix;  ///< its name behind the table's OID, as far as it lies there

    /// "noSuchObject", "noSuchInstance", "end", "no room" or "genErr" where it has none.
    std::string value;
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
        pdu_.flags = UCD_MSG_FLAG_ALWAYS_IN_VIEW;
        session_.pdu = &pdu_;
        session_.session = &wire_;
        info_.asp = &session_;
    }

    ~BatchRequest()
    {
        netsnmp_free_all_list_data(info_.agent_data);
        snmp_free_varbind(original_.variables);
    }

    BatchRequest(const BatchRequest&) = delete;
    BatchRequest& operator=(const BatchRequest&) = delete;

    /// The manager named this; without it what is called for.
    BatchRequest& naming(const ObjectId& name)
    {
        snmp_varlist_add_variable(&original_.variables, name.data(), name.size(), ASN_NULL, nullptr,
                                  0);
        session_.orig_pdu = &original_;
        return *this;
    }

    /// One call of the subtree; a GETBULK that net-snmp repeats takes several. `inclusive` as an
    /// AgentX master tells it.
    std::vector<Shown> call(const std::vector<ObjectId>& suffixes, bool inclusive = false)
    {
        info_.mode = pdu_.command == static_cast<int>(SNMP_MSG_GET) ? MODE_GET : MODE_GETNEXT;
        std::vector<Shown> shown;
        for (const auto& repetitions : answer(suffixes, 1, inclusive)) {
            shown.push_back(repetitions.front());
        }
        return shown;
    }

    /// One call for all repetitions of a GETBULK, whose first variables, so many, have none; the
    /// answers by variable.
    std::vector<std::vector<Shown>> bulk(const std::vector<ObjectId>& suffixes, int repetitions,
                                         std::size_t nonRepeaters = 0)
    {
        info_.mode = MODE_GETBULK;
        return answer(suffixes, repetitions, false, nonRepeaters);
    }

private:
    std::vector<std::vector<Shown>> answer(const std::vector<ObjectId>& suffixes, int repetitions,
                                           bool inclusive, std::size_t nonRepeaters = 0)
    {
        auto behind = subtree_.id();
        ++behind.back();
        std::vector<netsnmp_request_info> requests(suffixes.size());
        std::vector<netsnmp_variable_list*> lists(suffixes.size());
        for (std::size_t i = 0; i < suffixes.size(); ++i) {
            auto name = subtree_.id();
            name.insert(name.end(), suffixes[i].begin(), suffixes[i].end());
            const int times = i < nonRepeaters ? 1 : repetitions;
            for (int left = times; left != 0; --left) {
                snmp_varlist_add_variable(&lists[i], name.data(), name.size(), ASN_NULL, nullptr,
                                          0);
            }
            requests[i].requestvb = lists[i];
            requests[i].range_end = behind.data();
            requests[i].range_end_len = behind.size();
            requests[i].repeat = times - 1;
            requests[i].index = static_cast<int>(i) + 1;
            requests[i].inclusive = inclusive ? 1 : 0;
            requests[i].agent_req_info = &info_;
            requests[i].next = i + 1 < requests.size() ? &requests[i + 1] : nullptr;
        }
        subtree_.answer(&info_, requests.data());
        std::vector<std::vector<Shown>> shown(suffixes.size());
        for (std::size_t i = 0; i < suffixes.size(); ++i) {
            for (const auto* at = lists[i]; at != nullptr; at = at->next_variable) {
                const bool failed = at == requests[i].requestvb && requests[i].status != 0;
                shown[i].push_back(failed ? failureOf(requests[i].status) : shownOf(*at));
            }
            snmp_free_varbind(lists[i]);
        }
        return shown;
    }

    static Shown failureOf(int status)
    {
        return {{}, status == SNMP_ERR_GENERR ? "genErr" : "another error"};
    }

    Shown shownOf(const netsnmp_variable_list& variable) const
    {
        const auto suffix = suffixOf(variable, subtree_.id());
        switch (variable.type) {
        case ASN_NULL:
        case ASN_PRIV_RETRY:
            return {suffix, "end"};
        case SNMP_NOSUCHOBJECT:
            return {suffix, "noSuchObject"};
        case SNMP_NOSUCHINSTANCE:
            return {suffix, info_.mode == MODE_GETBULK ? "no room" : "noSuchInstance"};
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
    netsnmp_pdu original_{};
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
