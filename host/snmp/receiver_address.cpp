#include "host/snmp/receiver_address.h"

#include "host/platform/destination_address.h"
#include "host/platform/name_cache.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace talvik {

ReceiverAddress::ReceiverAddress(std::string address, unsigned int port, NameCache* names)
    : address_(std::move(address)),
      port_(port),
      names_(names),
      isName_(destinationKind(address_) == DestinationKind::Name)
{
    if (!isName_) {
        use(address_);
    } else if (names_ != nullptr) {
        names_->retain(address_);
    }
}

ReceiverAddress::~ReceiverAddress()
{
    if (isName_ && names_ != nullptr) {
        names_->release(address_);
    }
}

bool ReceiverAddress::update()
{
    if (!isName_) {
        return false;
    }
    const auto found =
        names_ == nullptr ? std::vector<std::string>() : names_->addressesOf(address_);
    stale_ = found.empty() && known();
    if (found.empty() || std::find(found.begin(), found.end(), numeric_) != found.end()) {
        return false;
    }
    use(found.front());
    return true;
}

std::string ReceiverAddress::problem() const
{
    return isName_ ? "its name does not resolve" : "its address is none; write another one";
}

void ReceiverAddress::use(const std::string& numeric)
{
    numeric_ = numeric;
    to_ = SocketAddress::parse(numeric, port_);
}

}  // namespace talvik
