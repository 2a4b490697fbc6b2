#include "tools/trap_import_plan.h"

#include "host/platform/trap_store.h"
#include "tools/failure.h"
#include "tools/trap_import_file.h"

#include <algorithm>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace talvik::ctl {

namespace {

using Kind = TrapChange::Kind;

constexpr std::size_t kMaxRows = TrapStore::kMaxDestinations;

/// What `talvikctl trap add` gives a row that does not name it.
constexpr std::uint32_t kUsualVersion = 2;
constexpr std::uint32_t kUsualType = 1;
constexpr const char* kNoUser = "--";

void requireAllColumns(const std::vector<TrapDestination>& rows, const std::string& agent)
{
    for (const auto& row : rows) {
        if (!row.address || !row.port || !row.version || !row.type || !row.user) {
            throw Failure(Failure::Kind::Refused,
                          agent + " does not show all columns of trap destination " +
                              std::to_string(row.index),
                          "use a user or community whose view includes 1.3.6.1.4.1.99999");
        }
    }
}

TrapDestination newRow(const TrapDestination& wanted, std::uint32_t index)
{
    auto row = wanted;
    row.index = index;
    row.version = wanted.version.value_or(kUsualVersion);
    row.type = wanted.type.value_or(kUsualType);
    row.user = wanted.user.value_or(kNoUser);
    return row;
}

/// `row` with what the list says of it. Its address stays as it is written: it is the same.
TrapDestination changedRow(const TrapDestination& row, const TrapDestination& wanted)
{
    auto changed = row;
    changed.usable.reset();
    changed.version = wanted.version ? wanted.version : row.version;
    changed.type = wanted.type ? wanted.type : row.type;
    changed.user = wanted.user ? wanted.user : row.user;
    return changed;
}

bool differ(const TrapDestination& a, const TrapDestination& b)
{
    return a.address != b.address || a.port != b.port || a.version != b.version ||
           a.type != b.type || a.user != b.user;
}

/// One plan in the making.
class Planning {
public:
    Planning(const std::vector<TrapDestination>& rows, bool replace, std::string agent)
        : spare_(rows.begin(), rows.end()),
          rowCount_(rows.size()),
          replace_(replace),
          agent_(std::move(agent))
    {
        for (auto row = spare_.begin(); row != spare_.end(); ++row) {
            taken_.insert(row->index);
            byReceiver_[receiverKey(*row->address, *row->port)].push_back(row);
        }
    }

    TrapImportPlan plan(const std::vector<TrapDestination>& wanted)
    {
        const auto rows = rowsOf(wanted);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            match(wanted[i], rows[i]);
        }
        if (replace_) {
            replaceByIndex();
        }
        makeRoom();
        add();
        auto& changes = plan_.changes;
        changes.insert(changes.end(), modified_.begin(), modified_.end());
        if (!replace_) {
            plan_.others = spare_.size();
            return std::move(plan_);
        }
        for (const auto& row : spare_) {
            changes.push_back({Kind::Remove, row, {}});
        }
        return std::move(plan_);
    }

private:
    using Rows = std::list<TrapDestination>;

    using Row = std::optional<Rows::iterator>;

    /// The row of each, if it has one: no row is that of two. Those of the same index come first.
    std::vector<Row> rowsOf(const std::vector<TrapDestination>& wanted)
    {
        std::vector<Row> rows(wanted.size());
        for (const bool sameIndex : {true, false}) {
            for (std::size_t i = 0; i < wanted.size(); ++i) {
                rows[i] = rows[i] ? rows[i] : takeCandidate(wanted[i], sameIndex);
            }
        }
        return rows;
    }

    Row takeCandidate(const TrapDestination& wanted, bool sameIndex)
    {
        auto& candidates = byReceiver_[receiverKey(*wanted.address, *wanted.port)];
        const auto found = std::find_if(candidates.begin(), candidates.end(), [&](const auto& row) {
            return !sameIndex || row->index == wanted.index;
        });
        if (found == candidates.end()) {
            return std::nullopt;
        }
        const auto row = *found;
        candidates.erase(found);
        return row;
    }

    /// Takes the row of `wanted` out of the spare ones, or notes that there is none.
    void match(const TrapDestination& wanted, const Row& row)
    {
        if (!row) {
            new_.push_back(wanted);
            return;
        }
        const auto changed = changedRow(**row, wanted);
        if (differ(**row, changed)) {
            modified_.push_back({Kind::Modify, **row, changed});
        } else {
            ++plan_.unchanged;
        }
        spare_.erase(*row);
    }

    void become(Rows::iterator row, const TrapDestination& wanted)
    {
        modified_.push_back({Kind::Modify, *row, newRow(wanted, row->index)});
        spare_.erase(row);
    }

    void replaceByIndex()
    {
        for (auto wanted = new_.begin(); wanted != new_.end();) {
            const auto row = std::find_if(spare_.begin(), spare_.end(), [&](const auto& other) {
                return other.index == wanted->index;
            });
            if (row == spare_.end()) {
                ++wanted;
                continue;
            }
            become(row, *wanted);
            wanted = new_.erase(wanted);
        }
    }

    /// New rows that do not fit beside those to be removed take the place of such.
    void makeRoom()
    {
        while (rowCount_ + new_.size() > kMaxRows) {
            if (!replace_) {
                throw Failure(Failure::Kind::Refused,
                              agent_ + " has " + std::to_string(rowCount_) +
                                  " trap destinations and room for " + std::to_string(kMaxRows) +
                                  "; the list would add " + std::to_string(new_.size()),
                              "remove some that are not needed, or all that are not in the list "
                              "with --replace");
            }
            become(spare_.begin(), new_.back());
            new_.pop_back();
        }
    }

    void add()
    {
        for (auto& wanted : new_) {
            if (wanted.index != 0 && !taken_.insert(wanted.index).second) {
                wanted.index = 0;
            }
        }
        std::uint32_t free = 1;
        for (const auto& wanted : new_) {
            auto index = wanted.index;
            while (index == 0) {
                index = taken_.insert(free).second ? free : 0;
                ++free;
            }
            plan_.changes.push_back({Kind::Add, {}, newRow(wanted, index)});
        }
    }

    Rows spare_;  // rows that are none of the list's, as far as it was looked at
    std::map<std::string, std::vector<Rows::iterator>> byReceiver_;  // that no destination took
    std::set<std::uint32_t> taken_;                                  // indexes
    std::list<TrapDestination> new_;                                 // of the list, without a row
    std::vector<TrapChange> modified_;
    TrapImportPlan plan_;
    const std::size_t rowCount_;
    const bool replace_;
    const std::string agent_;
};

template <typename Value>
std::optional<Value> ifChanged(const std::optional<Value>& before,
                               const std::optional<Value>& after)
{
    return before == after ? std::nullopt : after;
}

}  // namespace

TrapImportPlan planTrapImport(const std::vector<TrapDestination>& wanted,
                              const std::vector<TrapDestination>& rows, bool replace,
                              const std::string& agent)
{
    requireAllColumns(rows, agent);
    return Planning(rows, replace, agent).plan(wanted);
}

TrapDestination changedValues(const TrapChange& change)
{
    TrapDestination values;
    values.index = change.before.index;
    values.address = ifChanged(change.before.address, change.after.address);
    values.port = ifChanged(change.before.port, change.after.port);
    values.version = ifChanged(change.before.version, change.after.version);
    values.type = ifChanged(change.before.type, change.after.type);
    values.user = ifChanged(change.before.user, change.after.user);
    return values;
}

}  // namespace talvik::ctl
