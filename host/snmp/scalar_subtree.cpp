#include "host/snmp/scalar_subtree.h"

#include "host/snmp/pdu_context.h"
#include "host/snmp/scalar_write.h"
#include "host/snmp/set_phases.h"
#include "host/snmp/varbind.h"

#include <new>
#include <utility>
#include <vector>

namespace talvik {

namespace {

const ObjectId kInstance = {0};

/// What a request keeps of a scalar: its value, or none when the handler failed. Held by net-snmp
/// until the request ends.
using HeldValue = std::optional<SnmpValue>;

void releaseValue(void* held)
{
    delete static_cast<HeldValue*>(held);
}

/// True if the instance is what comes next.
bool isNext(const ObjectId& suffix, bool inclusive)
{
    return suffix.empty() || (inclusive && suffix == kInstance);
}

}  // namespace

ScalarSubtree::ScalarSubtree(std::unique_ptr<ScalarSource> source, std::function<void()> changed)
    : source_(std::move(source)),
      changed_(std::move(changed)),
      key_("talvik:" + toText(source_->scalar().id)),
      setKey_(key_ + ":set")
{
}

void ScalarSubtree::answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    if (info->mode != MODE_GET && info->mode != MODE_GETNEXT) {
        takeSetPhase(id(), setKey_, info, requests,
                     [this](CKEL_SnmpContext context, std::vector<WrittenVariable> variables) {
                         return std::make_unique<ScalarWrite>(*source_, std::move(context),
                                                              std::move(variables), changed_);
                     });
        return;
    }
    for (auto* request = requests; request != nullptr; request = request->next) {
        if (request->processed == 0) {
            answerOne(info, request);
        }
    }
}

void ScalarSubtree::answerOne(netsnmp_agent_request_info* info, netsnmp_request_info* request)
{
    const auto suffix = suffixOf(*request->requestvb, id());
    if (info->mode == MODE_GET && suffix != kInstance) {
        // Never noSuchObject: whatever comes here begins with the object's OID (RFC 3416, 4.2.1).
        netsnmp_set_request_error(info, request, SNMP_NOSUCHINSTANCE);
        return;
    }
    if (info->mode == MODE_GETNEXT && !isNext(suffix, request->inclusive != 0)) {
        return;
    }
    const auto value = valueFor(info);
    if (!value) {
        netsnmp_set_request_error(info, request, SNMP_ERR_GENERR);
        return;
    }
    auto name = id();
    name.insert(name.end(), kInstance.begin(), kInstance.end());
    setName(*request->requestvb, name);
    setValue(*request->requestvb, *value);
}

std::optional<SnmpValue> ScalarSubtree::valueFor(netsnmp_agent_request_info* info)
{
    if (const auto* held = netsnmp_agent_get_list_data(info, key_.c_str())) {
        return *static_cast<const HeldValue*>(held);
    }
    auto held = std::make_unique<HeldValue>(source_->query(contextOf(*info)));
    auto* node = netsnmp_create_data_list(key_.c_str(), held.get(), &releaseValue);
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    netsnmp_agent_add_list_data(info, node);
    return *held.release();
}

}  // namespace talvik
