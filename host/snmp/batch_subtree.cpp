#include "host/snmp/batch_subtree.h"

#include "host/snmp/bulk_response_limit.h"
#include "host/snmp/column_views.h"
#include "host/snmp/instance_name.h"
#include "host/snmp/pdu_context.h"
#include "host/snmp/varbind.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace talvik {

namespace {

using Kind = BatchTable::Answer::Kind;

/// Whether `variable` is still to be answered.
bool isOpen(const netsnmp_variable_list& variable)
{
    return variable.type == ASN_NULL || variable.type == ASN_PRIV_RETRY;
}

/// Fills the place of a variable that the answer to a GETBULK has no room for. Not with
/// endOfMibView: the library would look for more, and rearrange what stands before it.
void leaveOut(netsnmp_variable_list& variable)
{
    if (snmp_set_var_typed_value(&variable, SNMP_NOSUCHINSTANCE, nullptr, 0) != 0) {
        throw std::bad_alloc();
    }
}

}  // namespace

/// What one SNMP request keeps of the table, from the first of its variables to the last.
struct BatchSubtree::Held {
    explicit Held(BatchTable& table) : request(table.begin()), views(table.table()) {}

    BatchTable::Request request;
    ColumnViews views;
};

/// Answers the variables of one call.
class BatchSubtree::Answering {
public:
    Answering(BatchTable& table, netsnmp_agent_request_info* info, Held& held)
        : table_(table),
          columns_(table.table().columns),
          info_(info),
          request_(held.request),
          views_(held.views),
          context_([info] { return contextOf(*info); })
    {
    }

    void get(netsnmp_request_info* request)
    {
        auto& variable = *request->requestvb;
        const auto named = columnOf(table_.table(), variable);
        if (!named || !isShown(named->column)) {
            netsnmp_set_request_error(info_, request, SNMP_NOSUCHOBJECT);
            return;
        }
        if (!named->index) {
            netsnmp_set_request_error(info_, request, SNMP_NOSUCHINSTANCE);
            return;
        }
        const auto answer =
            table_.rowAt(request_, context_, columns_[named->column].tag, *named->index);
        if (answer.kind == Kind::Failed) {
            netsnmp_set_request_error(info_, request, SNMP_ERR_GENERR);
        } else if (answer.kind == Kind::None || !fill(variable, answer, named->column)) {
            netsnmp_set_request_error(info_, request, SNMP_NOSUCHINSTANCE);
        }
    }

    void getNext(netsnmp_request_info* request)
    {
        auto& variable = *request->requestvb;
        auto start = startOf(table_.table(), variable, request->inclusive != 0);
        for (; start.column < columns_.size(); start = {start.column + 1, 0}) {
            const auto kind = isShown(start.column) ? fillBehind(variable, start) : Kind::None;
            if (kind == Kind::Failed && isAskedFor(*request)) {
                netsnmp_set_request_error(info_, request, SNMP_ERR_GENERR);
            }
            if (kind != Kind::None) {
                return;
            }
        }
    }

    /// All repetitions, one after the other, as far as the response has room for them: what comes
    /// behind is cut off.
    void getBulk(netsnmp_request_info* requests)
    {
        BulkRoom room(*info_->asp->pdu);
        auto open = openAmong(requests);
        while (!open.empty()) {
            std::vector<netsnmp_request_info*> further;
            for (auto* request : open) {
                auto& variable = *request->requestvb;
                if (!room.hasSome()) {
                    leaveOut(variable);
                } else {
                    getNext(request);
                    if (isOpen(variable)) {  // others answer it, behind this table
                        continue;
                    }
                    room.take(variable);
                    request->inclusive = 0;
                }
                if (request->repeat > 0) {
                    further.push_back(request);
                }
            }
            netsnmp_bulk_to_next_fix_requests(requests);
            open = std::move(further);
        }
    }

private:
    static std::vector<netsnmp_request_info*> openAmong(netsnmp_request_info* requests)
    {
        std::vector<netsnmp_request_info*> open;
        for (auto* request = requests; request != nullptr; request = request->next) {
            if (request->processed == 0 && isOpen(*request->requestvb)) {
                open.push_back(request);
            }
        }
        return open;
    }

    /// Fills in the first value of a column that lies behind `start`.
    Kind fillBehind(netsnmp_variable_list& variable, NextStart start)
    {
        while (true) {
            const auto answer =
                table_.rowBehind(request_, context_, columns_[start.column].tag, start.after);
            if (answer.kind != Kind::Row) {
                return answer.kind;
            }
            const auto index = answer.batch->indexes()[answer.row];
            const InstanceName name(table_.table(), start.column, index);
            if (isInView(start.column, name) && fill(variable, answer, start.column)) {
                setName(variable, name.ids(), name.length());
                return Kind::Row;
            }
            start.after = index;
        }
    }

    /// False when the row has no value in the column at position `column`.
    bool fill(netsnmp_variable_list& variable, const BatchTable::Answer& answer,
              std::size_t column) const
    {
        const auto value = answer.batch->value(answer.row, column);
        if (value) {
            setValue(variable, columns_[column].syntax, value->number, value->octets);
        }
        return value.has_value();
    }

    /// Whether this manager may see anything of it.
    bool isShown(std::size_t column)
    {
        const auto* pdu = info_->asp->pdu;
        return columns_[column].access != Access::NotAccessible &&
               !(columns_[column].syntax == Syntax::Counter64 && pdu->version == SNMP_VERSION_1) &&
               !(isBulk() && !views_.showsSome(*info_->asp->pdu, column));
    }

    /// Whether the manager wants to see this table: what it named lies in it, or it in that. A walk
    /// of another table only comes by when it has reached its end, and must not fail for this one.
    bool isAskedFor(const netsnmp_request_info& request) const
    {
        const auto* named =
            info_->asp->orig_pdu == nullptr ? nullptr : info_->asp->orig_pdu->variables;
        for (int left = request.index - 1; left > 0 && named != nullptr; --left) {
            named = named->next_variable;
        }
        if (named == nullptr) {
            return true;
        }
        const auto& id = table_.table().id;
        if (named->type == ASN_PRIV_INCL_RANGE && named->name_length == id.size() &&
            std::equal(id.begin(), id.end(), named->name)) {
            return false;  // an AgentX master asks so when it comes from elsewhere
        }
        const auto shorter = std::min(id.size(), named->name_length);
        return std::equal(id.begin(), id.begin() + static_cast<std::ptrdiff_t>(shorter),
                          named->name);
    }

    /// For other requests net-snmp looks, and asks again behind what it leaves out.
    bool isInView(std::size_t column, const InstanceName& name)
    {
        return !isBulk() || views_.shows(*info_->asp->pdu, column, name);
    }

    bool isBulk() const { return info_->mode == MODE_GETBULK; }

    BatchTable& table_;
    const std::vector<MibColumn>& columns_;
    netsnmp_agent_request_info* info_;
    BatchTable::Request& request_;
    ColumnViews& views_;
    const BatchTable::ContextSource context_;
};

BatchSubtree::BatchSubtree(std::shared_ptr<BatchTable> table)
    : table_(std::move(table)),
      key_("talvik:" + toText(table_->table().id))
{
}

void BatchSubtree::answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    Answering answering(*table_, info, heldFor(info));
    if (info->mode == MODE_GETBULK) {
        answering.getBulk(requests);
        return;
    }
    for (auto* request = requests; request != nullptr; request = request->next) {
        if (request->processed != 0) {
            continue;
        }
        if (info->mode == MODE_GET) {
            answering.get(request);
        } else {
            answering.getNext(request);
        }
    }
}

void BatchSubtree::release(void* held)
{
    delete static_cast<Held*>(held);
}

BatchSubtree::Held& BatchSubtree::heldFor(netsnmp_agent_request_info* info)
{
    if (auto* held = netsnmp_agent_get_list_data(info, key_.c_str())) {
        return *static_cast<Held*>(held);
    }
    auto made = std::make_unique<Held>(*table_);
    auto* node = netsnmp_create_data_list(key_.c_str(), made.get(), &BatchSubtree::release);
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    netsnmp_agent_add_list_data(info, node);
    return *made.release();
}

}  // namespace talvik
