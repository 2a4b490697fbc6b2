#pragma once

#include "host/snmp/scalar_source.h"
#include "host/snmp/subtree.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace talvik {

/// A scalar, whose one instance is its OID with .0. A request sees one value, asked for when it
/// first needs it. A SET goes through `scalar_write.h`.
class ScalarSubtree : public Subtree {
public:
    /// `changed`, if there is one, is called after each successful write.
    explicit ScalarSubtree(std::unique_ptr<ScalarSource> source,
                           std::function<void()> changed = nullptr);

    const std::string& name() const override { return source_->scalar().name; }
    const ObjectId& id() const override { return source_->scalar().id; }
    bool isWritable() const override { return source_->scalar().cell.access == Access::ReadWrite; }
    void answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests) override;

private:
    void answerOne(netsnmp_agent_request_info* info, netsnmp_request_info* request);
    std::optional<SnmpValue> valueFor(netsnmp_agent_request_info* info);

    std::unique_ptr<ScalarSource> source_;
    std::function<void()> changed_;
    std::string key_;     ///< names this scalar's value among what a request holds
    std::string setKey_;  ///< and its part of a SET
};

}  // namespace talvik
