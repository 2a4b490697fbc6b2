#pragma once

#include "host/loop_watcher.h"
#include "host/snmp/batch_table.h"

#include <memory>
#include <utility>
#include <vector>

class CTLVRecordV3;

namespace talvik {

/// Keeps what the agent has kept of tables true: what the back end reports changes it, and what is
/// too old is dropped although nobody asks. On the thread of the agent's loop.
class TableKeeper : public LoopWatcher {
public:
    /// Looks after `table` too.
    void add(std::shared_ptr<BatchTable> table) { tables_.push_back(std::move(table)); }

    /// The back end has reported `record`, an alarm's.
    void reported(const CTLVRecordV3& record);

    /// Anything may have changed: all rows are asked for anew.
    void dropRows();

    int descriptor() const override { return -1; }
    Time deadline() const override;
    void proceed(bool ready, Time now) override;

private:
    std::vector<std::shared_ptr<BatchTable>> tables_;
};

}  // namespace talvik
