#include "host/snmp/request_bridge.h"

#include "host/snmp/callback_guard.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/subtree.h"
#include "host/startup_error.h"

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
        registration->handler->myvoid = subtree_.get();
        // On failure the library has freed the registration.
        if (netsnmp_register_handler(registration) != MIB_REGISTERED_OK) {
            throw StartupError("cannot serve " + subtree_->name() + ": the OID " + toText(id) +
                               " is taken by another object");
        }
        registration_ = registration;
    }

private:
    static int onRequest(netsnmp_mib_handler* handler, netsnmp_handler_registration*,
                         netsnmp_agent_request_info* info, netsnmp_request_info* requests)
    {
        auto* subtree = static_cast<Subtree*>(handler->myvoid);
        const bool answered = guardCallback(subtree->name().c_str(), false, [&] {
            subtree->answer(info, requests);
            return true;
        });
        if (!answered) {  // an error returned, not set, would reach the manager without an index
            netsnmp_set_request_error(info, requests, SNMP_ERR_GENERR);
        }
        return SNMP_ERR_NOERROR;
    }

    std::unique_ptr<Subtree> subtree_;
    netsnmp_handler_registration* registration_ = nullptr;
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

}  // namespace talvik
