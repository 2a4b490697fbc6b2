#pragma once

#include "host/snmp/subtree.h"
#include "host/snmp/table_source.h"

#include <memory>
#include <string>

namespace talvik {

/// A table whose handler answers with the whole of it. A request sees one snapshot, taken when it
/// first touches the table. A SET changes one row of a table that has a RowStatus, all or nothing
/// (`set_transaction.h`).
class TableSubtree : public Subtree {
public:
    explicit TableSubtree(std::unique_ptr<TableSource> source);

    const std::string& name() const override { return source_->table().name; }
    const ObjectId& id() const override { return source_->table().id; }
    bool isWritable() const override { return source_->table().rowStatus != 0; }
    void answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests) override;

private:
    std::shared_ptr<const TableSnapshot> snapshotFor(netsnmp_agent_request_info* info);

    std::unique_ptr<TableSource> source_;
    std::string key_;     ///< names this table's snapshot among what a request holds
    std::string setKey_;  ///< and its part of a SET
};

}  // namespace talvik
