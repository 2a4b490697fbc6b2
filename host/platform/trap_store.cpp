#include "host/platform/trap_store.h"

#include "host/platform/database_files.h"
#include "host/platform/host_log.h"
#include "host/platform/name_cache.h"
#include "host/platform/trap_database.h"
#include "host/platform/trap_results.h"
#include "host/platform/trap_rules.h"
#include "host/startup_error.h"

#include <atomic>
#include <map>
#include <mutex>
#include <utility>

namespace talvik {

namespace {

constexpr const char* kFileName = "/trap-destinations.db";

/// A name that the process's cache keeps up to date while this lives.
class RetainedName {
public:
    explicit RetainedName(std::string name) : name_(std::move(name)) { nameCache().retain(name_); }

    ~RetainedName() { nameCache().release(name_); }

    RetainedName(const RetainedName&) = delete;
    RetainedName& operator=(const RetainedName&) = delete;

private:
    const std::string name_;
};

struct Entry {
    Entry(tTrapDestInfo given, std::uint32_t index)
        : destination(std::move(given)),
          name(std::make_unique<RetainedName>(destination.address))
    {
        destination.index = std::to_string(index);
    }

    tTrapDestInfo destination;
    std::unique_ptr<RetainedName> name;
};

/// Opens `path`; if it is damaged, an empty one after it was set aside.
std::unique_ptr<TrapDatabase> openOrReplace(const std::string& path)
{
    std::string damage;
    try {
        return TrapDatabase::open(path, TrapStore::kMaxDestinations);
    } catch (const DamagedFile& error) {
        damage = error.what();
    }
    const auto aside = setDatabaseAside(path);
    const auto remedy = aside.readable
                            ? "To get back what it still holds, end the agent and run: sqlite3 '" +
                                  aside.path +
                                  "' .dump | grep '^INSERT INTO destination ' | "
                                  "sqlite3 '" +
                                  path + "'"
                            : "Restore it from a backup, or enter the destinations again";
    hostLog()->error("the trap destinations in {} are damaged: {}. The file was set aside as {}; "
                     "the list is empty now. {}",
                     path, damage, aside.path, remedy);
    try {
        return TrapDatabase::open(path, TrapStore::kMaxDestinations);
    } catch (const DamagedFile& error) {
        throw StartupError("cannot make a new list of trap destinations in " + path + ": " +
                           error.what());
    }
}

}  // namespace

/// The destinations in memory, which is what is read, and in the file, which is written first.
class TrapStore::List {
public:
    explicit List(std::string path) : path_(std::move(path)), database_(openOrReplace(path_))
    {
        for (auto& [index, destination] : database_->takeRows()) {
            entries_.emplace(index, Entry(destination, index));
        }
    }

    std::list<tTrapDestInfo> all() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::list<tTrapDestInfo> copies;
        for (const auto& item : entries_) {
            copies.push_back(item.second.destination);
        }
        return copies;
    }

    std::uint64_t changes() const { return changes_; }

    int create(const tTrapDestInfo& destination, unsigned int index)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto chosen = index == kAnyIndex ? lowestFree() : index;
        if (entries_.count(chosen) != 0) {
            return trap_result::kIndexTaken;
        }
        if (entries_.size() >= kMaxDestinations) {
            return trap_result::kListFull;
        }
        // All that can fail comes before the file is changed.
        Entries fresh;
        fresh.emplace(chosen, Entry(destination, chosen));
        if (!store("create", chosen, [&] { database_->insert(chosen, destination); })) {
            return trap_result::kStoreFailed;
        }
        entries_.merge(fresh);
        return 0;
    }

    int modify(std::uint32_t index, const tTrapDestInfo& destination)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = entries_.find(index);
        if (found == entries_.end()) {
            return trap_result::kIndexUnknown;
        }
        Entry fresh(destination, index);
        if (!store("change", index, [&] { database_->update(index, destination); })) {
            return trap_result::kStoreFailed;
        }
        std::swap(found->second, fresh);
        return 0;
    }

    int remove(std::uint32_t index)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = entries_.find(index);
        if (found == entries_.end()) {
            return trap_result::kIndexUnknown;
        }
        if (!store("remove", index, [&] { database_->erase(index); })) {
            return trap_result::kStoreFailed;
        }
        entries_.erase(found);
        freeFrom_ = std::min(freeFrom_, index);
        return 0;
    }

private:
    using Entries = std::map<std::uint32_t, Entry>;

    /// Runs `work`, which changes the file. False, with a line in the log, if it did not.
    template <typename Work>
    bool store(const char* what, std::uint32_t index, Work work)
    {
        try {
            work();
            ++changes_;
            return true;
        } catch (const SqliteError& error) {
            hostLog()->error("cannot {} trap destination {} in {}: {}. The list stays as it was{}",
                             what, index, path_, error.what(),
                             error.meansDamage()
                                 ? "; restart the agent: it checks the file and sets it aside"
                                 : "");
            return false;
        }
    }

    std::uint32_t lowestFree()
    {
        while (entries_.count(freeFrom_) != 0) {
            ++freeFrom_;
        }
        return freeFrom_;
    }

    const std::string path_;
    mutable std::mutex mutex_;
    std::unique_ptr<TrapDatabase> database_;  ///< under mutex_
    Entries entries_;                         ///< under mutex_
    std::uint32_t freeFrom_ = 1;              ///< under mutex_: every lower index is taken
    std::atomic<std::uint64_t> changes_{0};
};

TrapStore::TrapStore(const std::string& directory)
    : list_(std::make_unique<List>(directory + kFileName))
{
}

TrapStore::~TrapStore() = default;

std::list<tTrapDestInfo> TrapStore::all() const
{
    return list_->all();
}

std::uint64_t TrapStore::changes() const
{
    return list_->changes();
}

namespace {

/// True, with a line in the log, if the list must not hold `destination`.
bool isRefused(const char* what, const tTrapDestInfo& destination)
{
    const auto objection = trap_rules::objection(destination);
    if (!objection.empty()) {
        hostLog()->warn("refused to {} a trap destination: its {} is not acceptable", what,
                        objection);
    }
    return !objection.empty();
}

}  // namespace

int TrapStore::create(const tTrapDestInfo& destination, unsigned int index)
{
    if (index != kAnyIndex && (index == 0 || index > trap_rules::kMaxIndex)) {
        return trap_result::kIndexInvalid;
    }
    return isRefused("create", destination) ? trap_result::kRefused
                                            : list_->create(destination, index);
}

int TrapStore::modify(const tTrapDestInfo& destination)
{
    const auto index = trap_rules::parseIndex(destination.index);
    if (!index) {
        return trap_result::kIndexUnknown;
    }
    return isRefused("change", destination) ? trap_result::kRefused
                                            : list_->modify(*index, destination);
}

int TrapStore::remove(const std::string& index)
{
    const auto number = trap_rules::parseIndex(index);
    return number ? list_->remove(*number) : trap_result::kIndexUnknown;
}

}  // namespace talvik
