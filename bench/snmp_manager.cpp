#include "bench/snmp_manager.h"

#include <sys/select.h>

#include <memory>
#include <stdexcept>

namespace talvik::bench {

namespace {

struct PduDeleter {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};

using Pdu = std::unique_ptr<netsnmp_pdu, PduDeleter>;

constexpr long kTimeoutMicroseconds = 5'000'000;
constexpr long kProbeMicroseconds = 100'000;  // what comes before the agent listens is lost

/// Null when nothing answers. The library takes the request.
Pdu exchange(void* session, netsnmp_pdu* request)
{
    netsnmp_pdu* answer = nullptr;
    const int status = snmp_sess_synch_response(session, request, &answer);
    Pdu owned(answer);
    return status == STAT_SUCCESS ? std::move(owned) : nullptr;
}

void append(netsnmp_pdu* pdu, const ObjectId& name, const Assignment& column)
{
    if (column.type == ASN_OCTET_STR) {
        snmp_pdu_add_variable(pdu, name.data(), name.size(), column.type, column.octets.data(),
                              column.octets.size());
    } else {
        snmp_pdu_add_variable(pdu, name.data(), name.size(), column.type, &column.number,
                              sizeof column.number);
    }
}

/// Never null.
netsnmp_pdu* setRequest(const ObjectId& entry, const RowAssignment& row)
{
    auto* request = snmp_pdu_create(SNMP_MSG_SET);
    for (const auto& column : row.columns) {
        auto name = entry;
        name.push_back(column.column);
        name.push_back(row.index);
        append(request, name, column);
    }
    return request;
}

/// Why the agent has not set a row; empty if it has. `answer` is null when none came.
std::string refusal(const netsnmp_pdu* answer)
{
    if (answer == nullptr) {
        return "no answer";
    }
    return answer->errstat == SNMP_ERR_NOERROR ? std::string()
                                               : snmp_errstring(static_cast<int>(answer->errstat));
}

/// What became of the requests of one `setAll`.
struct Answers {
    std::size_t count = 0;
    std::string refusal;  ///< the last one
};

int onAnswer(int operation, netsnmp_session*, int, netsnmp_pdu* answer, void* answers)
{
    const auto reason =
        refusal(operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE ? answer : nullptr);
    auto& all = *static_cast<Answers*>(answers);
    ++all.count;
    if (!reason.empty()) {
        all.refusal = reason;
    }
    return 1;  // the request is done with
}

/// Waits for what comes first, an answer or the end of a request's time, and has it handled.
void handleNext(void* session)
{
    fd_set ready;
    FD_ZERO(&ready);
    int count = 0;
    int block = 1;
    timeval timeout{};
    snmp_sess_select_info(session, &count, &ready, &timeout, &block);
    if (select(count, &ready, nullptr, nullptr, block != 0 ? nullptr : &timeout) > 0) {
        snmp_sess_read(session, &ready);
    } else {
        snmp_sess_timeout(session);
    }
}

}  // namespace

SnmpManager::SnmpManager(unsigned port, const std::string& community)
{
    std::string peer = "udp:127.0.0.1:" + std::to_string(port);
    std::string name = community;
    netsnmp_session settings;
    snmp_sess_init(&settings);
    settings.version = SNMP_VERSION_2c;
    settings.peername = peer.data();
    settings.community = reinterpret_cast<unsigned char*>(name.data());
    settings.community_len = name.size();
    settings.timeout = kTimeoutMicroseconds;
    settings.retries = 0;
    session_ = snmp_sess_open(&settings);
    if (session_ == nullptr) {
        throw std::runtime_error("cannot open an SNMP session with " + peer);
    }
}

SnmpManager::~SnmpManager()
{
    snmp_sess_close(session_);
}

bool SnmpManager::answers() const
{
    const ObjectId anything = {1, 3};
    auto* request = snmp_pdu_create(SNMP_MSG_GETNEXT);
    snmp_add_null_var(request, anything.data(), anything.size());
    auto& settings = *snmp_sess_session(session_);
    settings.timeout = kProbeMicroseconds;
    const bool answered = exchange(session_, request) != nullptr;
    settings.timeout = kTimeoutMicroseconds;
    return answered;
}

void SnmpManager::setAll(const ObjectId& entry, const std::vector<RowAssignment>& rows,
                         std::size_t window) const
{
    Answers answers;
    for (std::size_t sent = 0; answers.count < rows.size();) {
        if (sent < rows.size() && sent - answers.count < window) {
            auto* request = setRequest(entry, rows[sent++]);
            if (snmp_sess_async_send(session_, request, &onAnswer, &answers) == 0) {
                snmp_free_pdu(request);
                ++answers.count;
                answers.refusal = "it cannot be sent";
            }
        } else {
            handleNext(session_);
        }
    }
    if (!answers.refusal.empty()) {
        throw std::runtime_error("a row is refused: " + answers.refusal);
    }
}

std::size_t SnmpManager::walk(const ObjectId& root, long repetitions) const
{
    return walk(root, repetitions, [](const netsnmp_variable_list&) {});
}

std::size_t SnmpManager::walk(const ObjectId& root, long repetitions,
                              const std::function<void(const netsnmp_variable_list&)>& see) const
{
    std::size_t count = 0;
    ObjectId last = root;
    for (;;) {
        auto* request = snmp_pdu_create(repetitions == 0 ? SNMP_MSG_GETNEXT : SNMP_MSG_GETBULK);
        if (repetitions != 0) {
            request->non_repeaters = 0;
            request->max_repetitions = repetitions;
        }
        snmp_add_null_var(request, last.data(), last.size());
        const auto answer = exchange(session_, request);
        if (answer == nullptr || answer->errstat != SNMP_ERR_NOERROR) {
            throw std::runtime_error("the walk failed at " + toText(last));
        }
        for (auto* variable = answer->variables; variable != nullptr;
             variable = variable->next_variable) {
            last.assign(variable->name, variable->name + variable->name_length);
            if (!startsWith(last, root) || variable->type == SNMP_ENDOFMIBVIEW) {
                return count;
            }
            see(*variable);
            ++count;
        }
    }
}

}  // namespace talvik::bench
