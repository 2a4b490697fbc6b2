#pragma once

#include "host/snmp/failure_log.h"
#include "host/snmp/kept_rows.h"
#include "host/snmp/request_context.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CSnmpHandler;

namespace talvik {

/// A table whose handler answers in batches, row by row behind an index (`isWholeTable()` is
/// false). What it answered is kept for the table's `answerLifetime`, so that a walk, which goes
/// column by column, does not ask for each row once a column. This is the boundary to the module:
/// whatever a handler does or throws ends here as "failed" and a log line. Used by the agent's
/// thread only.
class BatchTable {
public:
    using Time = KeptRows::Time;
    using Clock = std::function<Time()>;

    /// The context of the request under way, made only when the handler has to be asked.
    using ContextSource = std::function<CKEL_SnmpContext()>;

    struct Limits {
        std::size_t keptSize = std::size_t{64} << 20U;  ///< bytes of memory for rows, about
        std::chrono::milliseconds asking{1000};  ///< after so long a request asks for no more rows
    };

    /// What one SNMP request remembers between its variables.
    struct Request {
        Time now;                        ///< its rows are those of this moment
        std::optional<Time> askedFirst;  ///< when it had to ask the handler for the first time
        unsigned asked = 0;              ///< how often it has asked the handler
        bool failed = false;             ///< the handler is not asked again in this request
    };

    /// A row, in a batch that is valid until the next call.
    struct Answer {
        enum class Kind { Row, None, Failed };

        Kind kind = Kind::Failed;
        const RowBatch* batch = nullptr;
        std::size_t row = 0;
    };

    /// `below` is the table's OID below the root that its handler knows. Throws `StartupError` when
    /// the index is not one number. The table must outlive this object.
    BatchTable(const MibTable& table, ObjectId below, std::unique_ptr<CSnmpHandler> handler,
               Limits limits, Clock clock = &std::chrono::steady_clock::now);
    ~BatchTable();

    BatchTable(const BatchTable&) = delete;
    BatchTable& operator=(const BatchTable&) = delete;

    /// Begins a request. Its rows are not dropped for their age until the next one begins.
    Request begin();

    /// The row with `index`, asked for if it is not kept; `None` when the table has no such row.
    /// `column` is the tag of the column that is asked for.
    Answer rowAt(Request& request, const ContextSource& context, unsigned short column,
                 std::uint32_t index);

    /// As above, the first row with a greater index than `after`; 0 for the first of all.
    Answer rowBehind(Request& request, const ContextSource& context, unsigned short column,
                     std::uint64_t after);

    /// What is known from elsewhere: the row is gone; there is one, or may be; anything may have
    /// changed.
    void rowIsGone(std::uint32_t index) { kept_.forget(index); }
    void rowExists(std::uint32_t index) { kept_.expect(index); }
    void dropRows() { kept_.clear(); }

    /// Drops the rows that are too old; `nextExpiry` says when there will be some again.
    void trim() { kept_.trim(clock_()); }
    Time nextExpiry() const { return kept_.nextExpiry(); }

    const MibTable& table() const { return table_; }
    const KeptRows& kept() const { return kept_; }

private:
    using Package = CTLVPackageV3<TLVMsgHeadV3>;

    bool ask(Request& request, const ContextSource& context, unsigned short column,
             std::uint64_t after);
    bool fail(Request& request, const std::string& reason);
    ObjectId wanted(const CKEL_SnmpContext& context, unsigned short column,
                    std::uint64_t after) const;
    bool take(Package& answer, std::uint64_t after, Request& request);

    const MibTable& table_;
    const ObjectId below_;
    std::unique_ptr<CSnmpHandler> handler_;
    const Limits limits_;
    const Clock clock_;
    FailureLog failures_;
    KeptRows kept_;
};

}  // namespace talvik
