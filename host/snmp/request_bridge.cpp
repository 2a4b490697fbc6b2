#include "host/snmp/request_bridge.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/pdu_context.h"
#include "host/snmp/set_phases.h"
#include "host/snmp/varbind.h"
#include "host/startup_error.h"

#include <string>

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

/// Past the table's end the variable stays untouched: the library goes on with the next subtree.
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

class RequestBridge::Subtree {
public:
    explicit Subtree(std::unique_ptr<TableSource> source)
        : source_(std::move(source)),
          key_("talvik:" + toText(source_->table().id)),
          setKey_(key_ + ":set")
    {
    }

    ~Subtree()
    {
        if (registration_ != nullptr) {
            netsnmp_unregister_handler(registration_);
        }
    }

    Subtree(const Subtree&) = delete;
    Subtree& operator=(const Subtree&) = delete;

    void enter()
    {
        const auto& table = source_->table();
        auto* registration = netsnmp_create_handler_registration(
            table.name.c_str(), &Subtree::onRequest, table.id.data(), table.id.size(),
            table.rowStatus == 0 ? HANDLER_CAN_RONLY : HANDLER_CAN_RWRITE);
        if (registration == nullptr) {
            throw std::bad_alloc();
        }
        registration->handler->myvoid = this;
        // On failure the library has freed the registration.
        if (netsnmp_register_handler(registration) != MIB_REGISTERED_OK) {
            throw StartupError("cannot serve table " + table.name + ": the OID " +
                               toText(table.id) + " is taken by another table");
        }
        registration_ = registration;
    }

private:
    static int onRequest(netsnmp_mib_handler* handler, netsnmp_handler_registration*,
                         netsnmp_agent_request_info* info, netsnmp_request_info* requests)
    {
        auto* self = static_cast<Subtree*>(handler->myvoid);
        const bool answered = guardCallback(self->key_.c_str(), false, [&] {
            self->answer(info, requests);
            return true;
        });
        if (!answered) {  // an error returned, not set, would reach the manager without an index
            netsnmp_set_request_error(info, requests, SNMP_ERR_GENERR);
        }
        return SNMP_ERR_NOERROR;
    }

    void answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests)
    {
        if (info->mode != MODE_GET && info->mode != MODE_GETNEXT) {
            takeSetPhase(*source_, setKey_, info, requests);
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

    HeldSnapshot snapshotFor(netsnmp_agent_request_info* info)
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

    std::unique_ptr<TableSource> source_;
    std::string key_;     ///< names this table's snapshot among what a request holds
    std::string setKey_;  ///< and its part of a SET
    netsnmp_handler_registration* registration_ = nullptr;
};

RequestBridge::RequestBridge() = default;
RequestBridge::~RequestBridge() = default;

void RequestBridge::serve(std::unique_ptr<TableSource> source)
{
    auto subtree = std::make_unique<Subtree>(std::move(source));
    subtree->enter();
    subtrees_.push_back(std::move(subtree));
}

}  // namespace talvik
