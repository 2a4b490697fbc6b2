#pragma once

#include "host/snmp/batch_table.h"
#include "host/snmp/subtree.h"

#include <memory>
#include <string>

namespace talvik {

/// A table that is driven in batches. However many batches a request takes, it sees each row as
/// it was at one moment, as long as its rows are not too many to be kept. A manager of version 1
/// sees no Counter64 column (RFC 3584, 4.2.2.1). GETBULK is answered here: net-snmp's repetition
/// goes through all of its agent for each variable. When the handler fails, a manager that has
/// asked for the table gets genErr; a walk that only comes by, at the end of what it has asked for,
/// goes on behind the table.
class BatchSubtree : public Subtree {
public:
    explicit BatchSubtree(std::shared_ptr<BatchTable> table);

    const std::string& name() const override { return table_->table().name; }
    const ObjectId& id() const override { return table_->table().id; }
    bool isWritable() const override { return false; }
    bool answersBulk() const override { return true; }
    void answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests) override;

private:
    struct Held;
    class Answering;

    static void release(void* held);

    Held& heldFor(netsnmp_agent_request_info* info);

    std::shared_ptr<BatchTable> table_;
    std::string key_;  ///< names what a request keeps of this table
};

}  // namespace talvik
