#include "platform/trap_api.h"

#include "host/platform/host_log.h"
#include "host/platform/trap_results.h"
#include "host/platform/trap_store.h"

#include <exception>
#include <utility>

namespace talvik {

namespace {

std::unique_ptr<TrapStore>& installed()
{
    static std::unique_ptr<TrapStore> store;
    return store;
}

/// The result of `work` on the installed store; without one, and whatever it throws, that the store
/// failed.
template <typename Work>
int onStore(const char* what, Work work) noexcept
{
    try {
        if (installed()) {
            return work(*installed());
        }
        hostLog()->error("cannot {}: the list is not open", what);
    } catch (const std::exception& error) {
        hostLog()->error("cannot {}: {}", what, error.what());
    }
    return trap_result::kStoreFailed;
}

}  // namespace

void installTrapStore(std::unique_ptr<TrapStore> store)
{
    installed() = std::move(store);
}

}  // namespace talvik

using talvik::onStore;
using talvik::TrapStore;

int CSNMP_TrapApi::getAllTrapAddr(std::list<tTrapDestInfo>& destinations)
{
    return onStore("read the trap destinations", [&](const TrapStore& store) {
        destinations.splice(destinations.end(), store.all());
        return 0;
    });
}

int CSNMP_TrapApi::createTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3)
{
    return onStore("create a trap destination",
                   [&](TrapStore& store) { return store.create(destination, uiWord3); });
}

// The row is named by its index alone, so the last argument of these two says nothing new.

int CSNMP_TrapApi::modifyTrapAddr(const tTrapDestInfo& destination, unsigned int /*uiWord3*/)
{
    return onStore("change a trap destination",
                   [&](TrapStore& store) { return store.modify(destination); });
}

int CSNMP_TrapApi::deleteTrapAddr(const tTrapDestInfo& destination, unsigned int /*uiWord3*/)
{
    return onStore("remove a trap destination",
                   [&](TrapStore& store) { return store.remove(destination.index); });
}
