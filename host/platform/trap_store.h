#pragma once

#include "trap/trap_dest_info.h"

#include <cstdint>
#include <list>
#include <memory>
#include <string>

namespace talvik {

/// The trap destinations, kept on disk: a change has reached the disk before the call returns, and
/// after a kill or a power cut the list is as before the change or as after it. Callable from any
/// thread; calls are serialised. Every wait is bounded.
class TrapStore {
public:
    /// The most destinations that the list takes.
    static constexpr std::size_t kMaxDestinations = 4096;

    /// The index argument of a create that leaves the choice to the list.
    static constexpr unsigned int kAnyIndex = ~0U;

    /// Opens, or makes, `trap-destinations.db` in `directory`. A file that is damaged is set aside
    /// beside it under a new name, with an error line that says so and how to recover it, and an
    /// empty list takes its place. Throws `StartupError` when the file cannot be used although it
    /// is whole: unreadable, in use, or of a later release.
    explicit TrapStore(const std::string& directory);
    ~TrapStore();

    TrapStore(const TrapStore&) = delete;
    TrapStore& operator=(const TrapStore&) = delete;

    /// Every destination, by ascending index.
    std::list<tTrapDestInfo> all() const;

    /// How often the list was changed since it was opened. Never waits.
    std::uint64_t changes() const;

    /// Adds `destination` under `index`, or under the lowest free one for `kAnyIndex`; its own
    /// `index` is not looked at. Results: 0 and those of trap_results.h.
    int create(const tTrapDestInfo& destination, unsigned int index);

    /// Replaces the destination that has the same index. Results as above.
    int modify(const tTrapDestInfo& destination);

    /// Removes the destination with this index (decimal). Results as above.
    int remove(const std::string& index);

private:
    class List;

    std::unique_ptr<List> list_;
};

/// The store that `CSNMP_TrapApi` works on from now on, or none. Call it while no request is under
/// way. Without one every call of `CSNMP_TrapApi` fails with `trap_result::kStoreFailed`.
void installTrapStore(std::unique_ptr<TrapStore> store);

}  // namespace talvik
