#include "host/snmp/table_subtree.h"

#include "host/snmp/pdu_context.h"
#include "host/snmp/set_phases.h"
#include "host/snmp/set_transaction.h"
#include "host/snmp/varbind.h"

#include <new>
#include <utility>
#include <vector>

namespace talvik {

namespace {

/// What a request keeps of a table: its snapshot, null when the handler failed. Held by net-snmp
/// until the request ends.
using HeldSnapshot = std::shared_ptr<const TableSnapshot>;

void releaseSnapshot(void* held)
{
    delete static_cast<HeldSnapshot*>(held);
}

void answerGet(const MibTable& table, const TableSnapshot& rows, netsnmp_agent_request_info* info,
               netsnmp_request_info* request)
{
    const auto suffix = suffixOf(*request->requestvb, table.id);
    if (const auto* instance = rows.at(suffix)) {
        setValue(*request->requestvb, instance->value);
        return;
    }
    const bool knownColumn = suffix.size() >= 2 && suffix[0] == 1 &&
                             table.column(suffix[1]) != nullptr &&
                             table.column(suffix[1])->access != Access::NotAccessible;
    netsnmp_set_request_error(info, request, knownColumn ? SNMP_NOSUCHINSTANCE : SNMP_NOSUCHOBJECT);
}

void answerGetNext(const MibTable& table, const TableSnapshot& rows, netsnmp_request_info* request)
{
    auto& variable = *request->requestvb;
    const auto suffix = suffixOf(variable, table.id);
    const auto* instance = rows.after(suffix, request->inclusive != 0);
    if (instance == nullptr) {
        return;
    }
    auto name = table.id;
    name.insert(name.end(), instance->suffix.begin(), instance->suffix.end());
    setName(variable, name);
    setValue(variable, instance->value);
}

}  // namespace

TableSubtree::TableSubtree(std::unique_ptr<TableSource> source)
    : source_(std::move(source)),
      key_("talvik:" + toText(source_->table().id)),
      setKey_(key_ + ":set")
{
}

void TableSubtree::answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    if (info->mode != MODE_GET && info->mode != MODE_GETNEXT) {
        takeSetPhase(id(), setKey_, info, requests,
                     [this](CKEL_SnmpContext context, std::vector<WrittenVariable> variables) {
                         return std::make_unique<SetTransaction>(*source_, std::move(context),
                                                                 std::move(variables));
                     });
        return;
    }
    const auto rows = snapshotFor(info);
    for (auto* request = requests; request != nullptr; request = request->next) {
        if (request->processed != 0) {
            continue;
        }
        if (rows == nullptr) {
            netsnmp_set_request_error(info, request, SNMP_ERR_GENERR);
        } else if (info->mode == MODE_GET) {
            answerGet(source_->table(), *rows, info, request);
        } else {
            answerGetNext(source_->table(), *rows, request);
        }
    }
}

std::shared_ptr<const TableSnapshot> TableSubtree::snapshotFor(netsnmp_agent_request_info* info)
{
    if (const auto* held = netsnmp_agent_get_list_data(info, key_.c_str())) {
        return *static_cast<const HeldSnapshot*>(held);
    }
    auto held = std::make_unique<HeldSnapshot>(source_->query(contextOf(*info)));
    auto* node = netsnmp_create_data_list(key_.c_str(), held.get(), &releaseSnapshot);
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    netsnmp_agent_add_list_data(info, node);
    return *held.release();
}

}  // namespace talvik
