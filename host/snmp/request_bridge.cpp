#include "host/snmp/request_bridge.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/subtree.h"
#include "host/startup_error.h"

#include <algorithm>
#include <new>
#include <utility>

namespace talvik {

/// A subtree in the registry of net-snmp's agent library.
class RequestBridge::Registration {
public:
    explicit Registration(std::unique_ptr<Subtree> subtree) : subtree_(std::move(subtree)) {}

    ~Registration()
    {
        if (registration_ != nullptr) {
            netsnmp_unregister_handler(registration_);
        }
    }

    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    void enter()
    {
        const auto& id = subtree_->id();
        auto* registration = netsnmp_create_handler_registration(
            subtree_->name().c_str(), &Registration::onRequest, id.data(), id.size(),
            (subtree_->isWritable() ? HANDLER_CAN_RWRITE : HANDLER_CAN_RONLY) |
                (subtree_->answersBulk() ? HANDLER_CAN_GETBULK : 0));
        if (registration == nullptr) {
            throw std::bad_alloc();
        }
        registration->handler->myvoid = this;
        // On failure the library has freed the registration.
        if (netsnmp_register_handler(registration) != MIB_REGISTERED_OK) {
            throw StartupError("cannot serve " + subtree_->name() + ": the OID " + toText(id) +
                               " is taken by another object");
        }
        registration_ = registration;
    }

    ServedObject served() const
    {
        return {subtree_->name(), subtree_->id(), subtree_->isWritable(), counters_};
    }

private:
    static int onRequest(netsnmp_mib_handler* handler, netsnmp_handler_registration*,
                         netsnmp_agent_request_info* info, netsnmp_request_info* requests)
    {
        auto* registration = static_cast<Registration*>(handler->myvoid);
        auto& subtree = *registration->subtree_;
        if (info->mode == MODE_GETNEXT && isHidden(*info, subtree)) {
            return SNMP_ERR_NOERROR;  // the library goes on behind it
        }
        const bool answered = guardCallback(subtree.name().c_str(), false, [&] {
            subtree.answer(info, requests);
            return true;
        });
        if (!answered) {  // an error returned, not set, would reach the manager without an index
            netsnmp_set_request_error(info, requests, SNMP_ERR_GENERR);
        }
        registration->count(*info, requests);
        return SNMP_ERR_NOERROR;
    }

    /// Whether the manager may see nothing of it. The library leaves that out value by value, and
    /// fails when a GETBULK for several objects comes to it with one of them before the others.
    static bool isHidden(const netsnmp_agent_request_info& info, const Subtree& subtree)
    {
        auto* pdu = info.asp == nullptr ? nullptr : info.asp->pdu;
        auto id = subtree.id();
        return pdu != nullptr &&
               netsnmp_acm_check_subtree(pdu, id.data(), id.size()) == VACM_NOTINVIEW;
    }

    /// The library calls once a repetition of a GETBULK and once a phase of a SET.
    void count(const netsnmp_agent_request_info& info, const netsnmp_request_info* requests)
    {
        const auto* pdu = info.asp == nullptr ? nullptr : info.asp->pdu;
        const long transaction = pdu == nullptr ? 0 : pdu->transid;
        if (transaction == 0 || transaction != transaction_) {
            transaction_ = transaction;
            failed_ = false;
            ++counters_.requests;
            counters_.sets += info.mode == MODE_SET_RESERVE1 ? 1 : 0;
        }
        for (const auto* request = requests; request != nullptr && !failed_;
             request = request->next) {
            failed_ = request->status != SNMP_ERR_NOERROR;
            counters_.errors += failed_ ? 1 : 0;
        }
    }

    std::unique_ptr<Subtree> subtree_;
    netsnmp_handler_registration* registration_ = nullptr;
    RequestCounters counters_;
    long transaction_ = 0;  ///< that was counted last
    bool failed_ = false;   ///< its error is counted
};

RequestBridge::RequestBridge() = default;
RequestBridge::~RequestBridge() = default;

void RequestBridge::serve(std::unique_ptr<Subtree> subtree)
{
    auto registration = std::make_unique<Registration>(std::move(subtree));
    registration->enter();
    registrations_.push_back(std::move(registration));
}

void RequestBridge::serve(std::vector<std::unique_ptr<Subtree>> subtrees)
{
    const auto before = registrations_.size();
    try {
        for (auto& subtree : subtrees) {
            serve(std::move(subtree));
        }
    } catch (...) {
        registrations_.resize(before);
        throw;
    }
}

std::vector<ServedObject> RequestBridge::served() const
{
    std::vector<ServedObject> all;
    for (const auto& registration : registrations_) {
        all.push_back(registration->served());
    }
    std::sort(all.begin(), all.end(),
              [](const ServedObject& a, const ServedObject& b) { return a.id < b.id; });
    return all;
}

}  // namespace talvik
