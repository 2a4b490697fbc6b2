#include "host/snmp/batch_subtree.h"

#include "host/snmp/pdu_context.h"
#include "host/snmp/varbind.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

namespace talvik {

namespace {

constexpr oid kEntry = 1;
constexpr std::size_t kInstanceLength = 3;  ///< entry, column, index

void releaseRequest(void* held)
{
    delete static_cast<BatchTable::Request*>(held);
}

/// What a variable's name says behind the table's OID.
struct Suffix {
    const oid* at = nullptr;
    std::size_t length = 0;

    oid operator[](std::size_t position) const { return at[position]; }
};

Suffix suffixOf(const netsnmp_variable_list& variable, const MibTable& table)
{
    const auto base = table.id.size();
    if (variable.name_length <= base ||
        !std::equal(table.id.begin(), table.id.end(), variable.name)) {
        return {};
    }
    return {variable.name + base, variable.name_length - base};
}

/// From where on a GETNEXT looks: a column's position in the table, and the index behind which.
struct Start {
    std::size_t column;
    std::uint64_t after;
};

}  // namespace

/// Answers the variables of one call.
class BatchSubtree::Answering {
public:
    Answering(BatchTable& table, netsnmp_agent_request_info* info, BatchTable::Request& request)
        : table_(table),
          info_(info),
          request_(request),
          context_([info] { return contextOf(*info); })
    {
    }

    void get(netsnmp_request_info* request)
    {
        const auto suffix = suffixOf(*request->requestvb, table_.table());
        const auto column = columnAt(suffix);
        if (!column) {
            netsnmp_set_request_error(info_, request, SNMP_NOSUCHOBJECT);
            return;
        }
        if (suffix.length != kInstanceLength) {
            netsnmp_set_request_error(info_, request, SNMP_NOSUCHINSTANCE);
            return;
        }
        const auto answer =
            table_.rowAt(request_, context_, tagOf(*column), static_cast<std::uint32_t>(suffix[2]));
        if (answer.kind == BatchTable::Answer::Kind::Failed) {
            netsnmp_set_request_error(info_, request, SNMP_ERR_GENERR);
            return;
        }
        const bool shown = answer.kind == BatchTable::Answer::Kind::Row &&
                           show(*request->requestvb, answer, *column);
        if (!shown) {
            netsnmp_set_request_error(info_, request, SNMP_NOSUCHINSTANCE);
        }
    }

    void getNext(netsnmp_request_info* request)
    {
        auto& variable = *request->requestvb;
        auto start = startOf(suffixOf(variable, table_.table()), request->inclusive != 0);
        const auto& columns = table_.table().columns;
        for (; start.column < columns.size(); start = {start.column + 1, 0}) {
            if (!isShown(columns[start.column])) {
                continue;
            }
            const auto answer = behind(start, variable);
            if (answer == BatchTable::Answer::Kind::Failed) {
                netsnmp_set_request_error(info_, request, SNMP_ERR_GENERR);
            }
            if (answer != BatchTable::Answer::Kind::None) {
                return;
            }
        }
    }

private:
    /// Shows the first value of the column that lies behind.
    BatchTable::Answer::Kind behind(Start start, netsnmp_variable_list& variable)
    {
        while (true) {
            const auto answer =
                table_.rowBehind(request_, context_, tagOf(start.column), start.after);
            if (answer.kind != BatchTable::Answer::Kind::Row) {
                return answer.kind;
            }
            const auto index = answer.batch->indexes()[answer.row];
            if (show(variable, answer, start.column)) {
                rename(variable, start.column, index);
                return answer.kind;
            }
            start.after = index;
        }
    }

    /// False when the row has no value there.
    bool show(netsnmp_variable_list& variable, const BatchTable::Answer& answer,
              std::size_t column) const
    {
        const auto value = answer.batch->value(answer.row, column);
        if (value) {
            setValue(variable, table_.table().columns[column].syntax, value->number, value->octets);
        }
        return value.has_value();
    }

    void rename(netsnmp_variable_list& variable, std::size_t column, std::uint32_t index) const
    {
        oid name[MAX_OID_LEN];
        const auto& id = table_.table().id;
        auto* const end = std::copy(id.begin(), id.end(), name);
        end[0] = kEntry;
        end[1] = tagOf(column);
        end[2] = index;
        setName(variable, name, id.size() + kInstanceLength);
    }

    unsigned short tagOf(std::size_t column) const { return table_.table().columns[column].tag; }

    /// Whether this manager may see it at all.
    bool isShown(const MibColumn& column) const
    {
        return column.access != Access::NotAccessible &&
               !(column.syntax == Syntax::Counter64 && info_->asp != nullptr &&
                 info_->asp->pdu != nullptr && info_->asp->pdu->version == SNMP_VERSION_1);
    }

    /// The position of the column that `suffix` names; nothing when there is none to be shown.
    std::optional<std::size_t> columnAt(Suffix suffix) const
    {
        if (suffix.length < 2 || suffix[0] != kEntry) {
            return std::nullopt;
        }
        const auto position = columnFrom(suffix[1]);
        const auto& columns = table_.table().columns;
        return position < columns.size() && columns[position].tag == suffix[1] &&
                       isShown(columns[position])
                   ? std::optional(position)
                   : std::nullopt;
    }

    /// The position of the first column with `tag` or a greater one.
    std::size_t columnFrom(oid tag) const
    {
        const auto& columns = table_.table().columns;
        const auto found =
            std::lower_bound(columns.begin(), columns.end(), tag,
                             [](const MibColumn& column, oid least) { return column.tag < least; });
        return static_cast<std::size_t>(found - columns.begin());
    }

    Start startOf(Suffix suffix, bool inclusive) const
    {
        const auto& columns = table_.table().columns;
        if (suffix.length == 0 || suffix[0] < kEntry) {
            return {0, 0};
        }
        if (suffix[0] > kEntry) {
            return {columns.size(), 0};
        }
        if (suffix.length == 1) {
            return {0, 0};
        }
        const auto column = columnFrom(suffix[1]);
        if (suffix.length == 2 || column == columns.size() || columns[column].tag != suffix[1]) {
            return {column, 0};
        }
        const bool itself = inclusive && suffix.length == kInstanceLength && suffix[2] != 0;
        return {column, itself ? suffix[2] - 1 : suffix[2]};
    }

    BatchTable& table_;
    netsnmp_agent_request_info* info_;
    BatchTable::Request& request_;
    const BatchTable::ContextSource context_;
};

BatchSubtree::BatchSubtree(std::shared_ptr<BatchTable> table)
    : table_(std::move(table)),
      key_("talvik:" + toText(table_->table().id))
{
}

void BatchSubtree::answer(netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    Answering answering(*table_, info, requestOf(info));
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

BatchTable::Request& BatchSubtree::requestOf(netsnmp_agent_request_info* info)
{
    if (auto* held = netsnmp_agent_get_list_data(info, key_.c_str())) {
        return *static_cast<BatchTable::Request*>(held);
    }
    auto made = std::make_unique<BatchTable::Request>(table_->begin());
    auto* node = netsnmp_create_data_list(key_.c_str(), made.get(), &releaseRequest);
    if (node == nullptr) {
        throw std::bad_alloc();
    }
    netsnmp_agent_add_list_data(info, node);
    return *made.release();
}

}  // namespace talvik
