#include "platform/configuration_channel.h"

#include "host/link/configuration_link.h"
#include "host/platform/host_log.h"

#include <exception>
#include <new>
#include <utility>

namespace {

/// Set while the host starts and stops, read by every command.
std::unique_ptr<talvik::BackendLink>& installedLink()
{
    static std::unique_ptr<talvik::BackendLink> link;
    return link;
}

}  // namespace

namespace talvik {

void installBackendLink(std::unique_ptr<BackendLink> link)
{
    installedLink() = std::move(link);
}

}  // namespace talvik

CSNMP_Configuration::CSNMP_Configuration() = default;
CSNMP_Configuration::~CSNMP_Configuration() = default;

CSNMP_Configuration* CSNMP_Configuration::instance()
{
    static CSNMP_Configuration configuration;
    return &configuration;
}

// The flags have no meaning in this host: every command is sent to its one back end and waited for.
int CSNMP_Configuration::configure(CTLVPackageV3<TLVMsgHeadV3>& request,
                                   CTLVPackageV3<TLVMsgHeadV3>& answer, bool, bool)
{
    const auto& link = installedLink();
    if (!link) {
        return talvik::BackendLink::kUnreachable;
    }
    try {
        return link->exchange(request, answer);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        talvik::hostLog()->error("a command to the back end {} broke off: {}", link->name(),
                                 error.what());
        return talvik::BackendLink::kProtocolError;
    }
}
