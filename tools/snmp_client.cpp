#include "tools/snmp_client.h"

#include "tools/failure.h"
#include "tools/net_snmp_client.h"
#include "tools/progress.h"
#include "tools/snmp_library.h"
#include "tools/snmp_session.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace talvik::ctl {

namespace {

struct FreePdu {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};

using Pdu = std::unique_ptr<netsnmp_pdu, FreePdu>;

Pdu newPdu(int command)
{
    Pdu pdu(snmp_pdu_create(command));
    if (!pdu) {
        throw std::bad_alloc();
    }
    return pdu;
}

std::vector<oid> libraryName(const ObjectId& name)
{
    return {name.begin(), name.end()};
}

void addName(netsnmp_pdu& pdu, const ObjectId& name)
{
    const auto own = libraryName(name);
    snmp_add_null_var(&pdu, own.data(), own.size());
}

void addCell(netsnmp_pdu& pdu, const SnmpCell& cell)
{
    const auto name = libraryName(cell.oid);
    if (cell.kind == SnmpCell::Kind::Text) {
        snmp_pdu_add_variable(&pdu, name.data(), name.size(), ASN_OCTET_STR, cell.text.data(),
                              cell.text.size());
        return;
    }
    const u_char type = cell.kind == SnmpCell::Kind::Unsigned ? ASN_UNSIGNED : ASN_INTEGER;
    const long value = static_cast<long>(cell.number);
    snmp_pdu_add_variable(&pdu, name.data(), name.size(), type, &value, sizeof value);
}

std::string dotted(const netsnmp_variable_list& variable)
{
    std::string text;
    for (std::size_t i = 0; i < variable.val_len; ++i) {
        text += (i == 0 ? "" : ".") + std::to_string(variable.val.string[i]);
    }
    return text;
}

void readValue(const netsnmp_variable_list& variable, SnmpCell& cell)
{
    using Kind = SnmpCell::Kind;
    switch (variable.type) {
    case ASN_INTEGER:
        cell.kind = Kind::Integer;
        cell.number = *variable.val.integer;
        break;
    case ASN_GAUGE:
    case ASN_COUNTER:
    case ASN_TIMETICKS:
        cell.kind = Kind::Unsigned;
        cell.number = *variable.val.integer & 0xFFFFFFFFL;
        break;
    case ASN_OCTET_STR:
        cell.kind = Kind::Text;
        cell.text.assign(reinterpret_cast<const char*>(variable.val.string), variable.val_len);
        break;
    case ASN_IPADDRESS:
        cell.kind = Kind::Text;
        cell.text = dotted(variable);
        break;
    case SNMP_NOSUCHOBJECT:
        cell.kind = Kind::NoObject;
        break;
    case SNMP_NOSUCHINSTANCE:
        cell.kind = Kind::NoInstance;
        break;
    case SNMP_ENDOFMIBVIEW:
        cell.kind = Kind::EndOfView;
        break;
    default:
        break;
    }
}

SnmpAnswer read(const netsnmp_pdu& response, unsigned tries)
{
    SnmpAnswer answer;
    answer.status = static_cast<int>(response.errstat);
    answer.errorIndex = response.errindex > 0 ? static_cast<std::size_t>(response.errindex) : 0;
    answer.tries = tries;
    for (const auto* variable = response.variables; variable != nullptr;
         variable = variable->next_variable) {
        SnmpCell cell;
        cell.oid.assign(variable->name, variable->name + variable->name_length);
        readValue(*variable, cell);
        answer.cells.push_back(std::move(cell));
    }
    return answer;
}

}  // namespace

SnmpClient::SnmpClient(const SnmpSettings& settings) : settings_(settings)
{
    const auto open = openSession(settings_);
    session_ = open.handle;
    version_ = open.version;
}

SnmpClient::~SnmpClient()
{
    snmp_sess_close(session_);
}

bool SnmpClient::isV1() const
{
    return version_ == SNMP_VERSION_1;
}

SnmpAnswer SnmpClient::get(const std::vector<ObjectId>& names)
{
    return ask(SNMP_MSG_GET, names);
}

SnmpAnswer SnmpClient::getNext(const std::vector<ObjectId>& names)
{
    return ask(SNMP_MSG_GETNEXT, names);
}

SnmpAnswer SnmpClient::ask(int command, const std::vector<ObjectId>& names)
{
    return exchange([&] {
        auto pdu = newPdu(command);
        for (const auto& name : names) {
            addName(*pdu, name);
        }
        return pdu.release();
    });
}

SnmpAnswer SnmpClient::getBulk(const std::vector<ObjectId>& names, unsigned repetitions)
{
    return exchange([&] {
        auto pdu = newPdu(SNMP_MSG_GETBULK);
        pdu->non_repeaters = 0;
        pdu->max_repetitions = static_cast<long>(repetitions);
        for (const auto& name : names) {
            addName(*pdu, name);
        }
        return pdu.release();
    });
}

SnmpAnswer SnmpClient::set(const std::vector<SnmpCell>& cells)
{
    return exchange([&] {
        auto pdu = newPdu(SNMP_MSG_SET);
        for (const auto& cell : cells) {
            addCell(*pdu, cell);
        }
        return pdu.release();
    });
}

SnmpAnswer SnmpClient::exchange(const MakePdu& makePdu)
{
    unsigned sent = 0;
    for (unsigned left = settings_.retries + 1; left > 0; --left) {
        netsnmp_pdu* received = nullptr;
        takeLibraryErrors();
        const Progress::Span span("waiting for an answer of the agent");
        const int status = snmp_sess_synch_response(session_, makePdu(), &received);
        const Pdu response(received);
        // For SNMPv3 the library first asks the agent who it is; without an answer to that, it
        // calls it an error and has not sent the request.
        const auto error = status == STAT_ERROR ? lastError() : Error{};
        sent += status == STAT_ERROR ? 0U : 1U;
        if (status == STAT_SUCCESS && response) {
            return read(*response, sent);
        }
        if (status == STAT_ERROR && error.code != SNMPERR_TIMEOUT) {
            fail(error, sent);
        }
    }
    fail({SNMPERR_TIMEOUT, ""}, sent);
}

void SnmpClient::fail(const Error& error, unsigned sent) const
{
    if (sent == 0) {
        throw connectionFailure(settings_, version_, error.code, error.text);
    }
    const auto failure = connectionFailure(settings_, version_, error.code, error.text);
    throw Failure(Failure::Kind::NoAnswer, failure.what(), failure.advice());
}

SnmpClient::Error SnmpClient::lastError() const
{
    Error error;
    char* text = nullptr;
    int systemError = 0;
    snmp_sess_error(session_, &systemError, &error.code, &text);
    error.text = text == nullptr ? "" : text;
    std::free(text);
    return error;
}

}  // namespace talvik::ctl
