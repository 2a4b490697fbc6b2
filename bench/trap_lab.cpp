#include "bench/trap_lab.h"
#include "bench/trap_handlers.h"

#include "backend/alarm_tags.h"
#include "host/platform/debug_kits.h"
#include "host/platform/device_config_store.h"
#include "host/platform/host_log.h"
#include "host/platform/installation_root.h"
#include "host/snmp/net_snmp.h"
#include "host/snmp/varbind.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <list>
#include <memory>
#include <stdexcept>
#include <utility>

namespace talvik::bench {

namespace {

namespace alarm = backend::alarm;

constexpr std::uint64_t kDiskFailed = 501010001;

void append(CTLVRecordV3& record, std::unique_ptr<CTLVCell> cell)
{
    record.append(cell.get());
    static_cast<void>(cell.release());
}

template <typename Number>
void number(CTLVRecordV3& record, unsigned tag, Number value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(CTLVCell::TLV_UINT, static_cast<unsigned short>(tag), &value, sizeof value);
    append(record, std::move(cell));
}

std::list<tTrapDestInfo> rowsOf(const DeafReceivers& receivers)
{
    std::list<tTrapDestInfo> rows;
    for (const auto port : receivers.ports()) {
        tTrapDestInfo row;
        row.index = std::to_string(rows.size() + 1);
        row.address = "127.0.0.1";
        row.port = port;
        row.type = 1;
        rows.push_back(std::move(row));
    }
    return rows;
}

void dispatch(NotificationDispatcher& dispatcher, const backend::Bytes& notification)
{
    backend::Bytes wire = notification;
    backend::Package package;
    backend::decodeInto(package, wire);
    for (const auto* record : package.oRecords) {
        dispatcher.dispatch(*record, nullptr);
    }
}

}  // namespace

DeafReceivers::DeafReceivers(unsigned count)
{
    for (unsigned made = 0; made < count; ++made) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockets_.push_back(socket);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket, generic, size) != 0 || ::getsockname(socket, generic, &size) != 0) {
            throw std::runtime_error("cannot make a receiver on the loopback");
        }
        ports_.push_back(ntohs(address.sin_port));
    }
}

DeafReceivers::~DeafReceivers()
{
    for (const int socket : sockets_) {
        ::close(socket);
    }
}

void startLab(const std::string& folder)
{
    const std::string sources = TALVIK_SOURCE_DIR;
    LogSettings log;
    log.level = "error";
    configureLog(log);
    makeDebugKits();
    installDeviceConfig(DeviceConfigFile::load(sources + "/etc/talvik-device.xml"));
    installInstallationRoot(sources);
    setenv("SNMPCONFPATH", folder.c_str(), 1);
    setenv("MIBS", "", 1);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR, folder.c_str());
    init_agent("talvik-bench");
    init_snmp("talvik-bench");
    registerHandlers();
}

AlarmPath::AlarmPath(const DeafReceivers& receivers)
    : sender_(TrapSender::Settings()),
      dispatcher_([this](Trap&& trap, const Delivery& delivery) {
          sender_.send(std::move(trap), delivery);
      })
{
    const auto rows = rowsOf(receivers);
    dispatcher_.setReceivers(rows);
    sender_.setReceivers({rows.begin(), rows.end()});
}

AlarmPath::~AlarmPath() = default;

backend::Bytes AlarmPath::notification()
{
    backend::Package package;
    auto record = std::make_unique<CTLVRecordV3>(alarm::kRecordId);
    number(*record, alarm::kKindTag, std::uint8_t{1});
    number(*record, alarm::kIdTag, kDiskFailed);
    number(*record, alarm::kLevelTag, std::uint32_t{2});
    number(*record, alarm::kSerialTag, std::uint32_t{4711});
    number(*record, alarm::kTimeTag, std::uint64_t{1'790'000'000});
    number(*record, alarm::kOtherClearTag, std::uint64_t{0});
    number(*record, alarm::kClearTimeTag, std::uint64_t{0});
    auto text = std::make_unique<CTLVCell>();
    text->set(alarm::kParametersTag, "0,7,S3A1XK07,1");
    append(*record, std::move(text));
    number(*record, alarm::kEventFlagTag, std::uint32_t{0});
    package.oRecords.push_back(record.get());
    static_cast<void>(record.release());
    backend::setKind(package.oHead, backend::MessageKind::Notification);
    return backend::encoded(package);
}

void AlarmPath::send(const backend::Bytes& notification)
{
    dispatch(dispatcher_, notification);
}

std::uint64_t AlarmPath::sent() const
{
    std::uint64_t sent = 0;
    for (const auto& status : sender_.status()) {
        if (status.failed != 0) {
            throw std::runtime_error("a trap was not sent: " + status.state);
        }
        sent += status.sent;
    }
    return sent;
}

BareLoop::BareLoop(const DeafReceivers& receivers)
{
    for (const auto port : receivers.ports()) {
        std::string peer = "udp:127.0.0.1:" + std::to_string(port);
        std::string community = "public";
        netsnmp_session settings;
        snmp_sess_init(&settings);
        settings.version = SNMP_VERSION_2c;
        settings.peername = peer.data();
        settings.community = reinterpret_cast<unsigned char*>(community.data());
        settings.community_len = community.size();
        auto* const session = snmp_sess_open(&settings);
        if (session == nullptr) {
            throw std::runtime_error("cannot open a session with " + peer);
        }
        sessions_.push_back(session);
    }
}

BareLoop::~BareLoop()
{
    for (auto* const session : sessions_) {
        snmp_sess_close(session);
    }
}

void BareLoop::send(const Trap& trap)
{
    static const ObjectId kUpTime = {1, 3, 6, 1, 2, 1, 1, 3, 0};
    static const ObjectId kTrapOid = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
    auto* pdu = snmp_pdu_create(SNMP_MSG_TRAP2);
    const unsigned long upTime = netsnmp_get_agent_uptime();
    snmp_pdu_add_variable(pdu, kUpTime.data(), kUpTime.size(), ASN_TIMETICKS, &upTime,
                          sizeof upTime);
    snmp_pdu_add_variable(pdu, kTrapOid.data(), kTrapOid.size(), ASN_OBJECT_ID, trap.id.data(),
                          trap.id.size() * sizeof(oid));
    for (const auto& binding : trap.bindings) {
        auto* const variable = snmp_pdu_add_variable(pdu, binding.name.data(), binding.name.size(),
                                                     ASN_NULL, nullptr, 0);
        setValue(*variable, binding.value);
    }
    for (std::size_t at = 0; at < sessions_.size(); ++at) {
        auto* const own = at + 1 == sessions_.size() ? pdu : snmp_clone_pdu(pdu);
        if (snmp_sess_send(sessions_[at], own) == 0) {
            throw std::runtime_error("the bare loop cannot send");
        }
    }
}

Trap trapOf(const backend::Bytes& notification)
{
    tTrapDestInfo row;
    row.index = "1";
    row.type = 1;
    Trap result;
    NotificationDispatcher dispatcher(
        [&](Trap&& trap, const Delivery& /*delivery*/) { result = std::move(trap); });
    dispatcher.setReceivers({row});
    dispatch(dispatcher, notification);
    if (result.bindings.size() != 14) {
        throw std::runtime_error("the alarm gave no notification");
    }
    return result;
}

}  // namespace talvik::bench
