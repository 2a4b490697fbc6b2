#include "tests/contract/faults/operations.h"

#include "framework/kel_exception.h"
#include "framework/tlv_package.h"
#include "host/link/backend_link.h"
#include "host/link/configuration_link.h"
#include "host/platform/debug_kits.h"
#include "host/platform/device_config_file.h"
#include "host/platform/host_log.h"
#include "host/platform/installation_root.h"
#include "host/platform/table_batch.h"
#include "host/snmp/request_context.h"
#include "platform/snmp_table_base.h"
#include "tests/contract/faults/gates.h"
#include "tests/support/alarm_cells.h"
#include "tests/support/cell_bytes.h"

#include <agent_pp/snmp_pp_ext.h>

#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <utility>

namespace talvik::contract {

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;
using Call = int (CSnmpHandler::*)(const CKEL_SnmpContext&, const Package&, Package&);
using test::AlarmCells;

constexpr const char* kTopology = "1.3.6.1.4.1.99999.2.91.9.1";
constexpr const char* kCurrentAlarms = "1.3.6.1.4.1.99999.2.91.10.1.1";
constexpr const char* kClearAlarm = "1.3.6.1.4.1.99999.2.91.10.1.2";
constexpr const char* kTrapDestinations = "1.3.6.1.4.1.99999.2.91.10.4.1";
constexpr const char* kDestination = "17";
constexpr unsigned long long kDiskFailed = 501010001;

AlarmCells diskFailed()
{
    return AlarmCells()
        .cell(0, CTLVCell::TLV_UINT, "\x01")
        .wide(1, kDiskFailed)
        .text(8, "1,7,SN1,0");
}

/// A back end that knows one alarm.
class OneAlarmLink : public BackendLink {
public:
    int exchange(Package& request, Package& answer) override
    {
        if (usesPackages) {
            usePackage(request);
        }
        const gates::Pause pause;
        answer.oRecords.reserve(1);
        answer.oRecords.push_back(diskFailed().record().release());
        appendEndMark(answer);
        return 0;
    }
    std::string name() const override { return "one alarm"; }

    static bool usesPackages;
    static std::exception_ptr thrown;  ///< by the package; kept from the channel, which answers it

private:
    /// What a host does with a package that the module has made runs the module's code.
    static void usePackage(Package& package)
    {
        unsigned char* bytes = nullptr;
        try {
            const auto size = package.encode(bytes);
            package.decode(bytes, size);
            std::ostringstream text;
            package.dump(text);
        } catch (...) {
            thrown = std::current_exception();
        }
        delete[] bytes;  // what is set is the host's, whatever became of the call
    }
};

bool OneAlarmLink::usesPackages = false;
std::exception_ptr OneAlarmLink::thrown;

void describe(const Package& package, std::string& answer)
{
    const gates::Pause pause;
    std::ostringstream text;
    for (const auto* record : package.oRecords) {
        for (const auto& cell : test::cellsOf(*record)) {
            text << cell << ' ';
        }
        text << '\n';
    }
    answer = text.str();
}

void text(CTLVRecordV3& record, unsigned short tag, const char* value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set(tag, value);
    record.append(cell.get());
    cell.release();
}

void number(CTLVRecordV3& record, unsigned short tag, unsigned value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(CTLVCell::TLV_UINT, tag, &value, sizeof value);
    record.append(cell.get());
    cell.release();
}

/// A request that every handler finds what it looks for in.
void fillRequest(Package& request)
{
    request.oRecords.push_back(new CTLVRecordV3);
    auto& record = *request.oRecords.front();
    number(record, 0, 42);
    text(record, 1, "192.0.2.1");
    number(record, 2, 162);
    text(record, 4, kDestination);
    number(record, 5, 2);
    text(record, 6, "192.0.2.9");
    number(record, 7, 1);
    text(record, 8, "--");
}

const Package& theRequest()
{
    static Package request;
    if (request.oRecords.empty()) {
        const gates::Pause pause;
        fillRequest(request);
    }
    return request;
}

Operation request(const char* name, const char* oid, Call call,
                  void (*arrange)(HostSide&) = nullptr)
{
    const auto run = [oid, call](Visit& visit, std::string& answer) {
        CKEL_SnmpContext context;
        context.pduType = 165;
        context.oid = {91, 10, 1, 1, 1, 1};
        Package response;
        const int result = (visit.at(oid).*call)(context, theRequest(), response);
        describe(response, answer);
        return result;
    };
    return {name, Operation::Needs::Handlers, run, arrange};
}

/// A create that names no address.
Operation refusedCreate()
{
    const auto run = [](Visit& visit, std::string&) {
        CKEL_SnmpContext context;
        Package request;
        Package response;
        {
            const gates::Pause pause;
            request.oRecords.push_back(new CTLVRecordV3);
            number(*request.oRecords.front(), 2, 162);
        }
        return visit.at(kTrapDestinations).OnCreateTable(context, request, response);
    };
    return {"TrapCreateRefused", Operation::Needs::Handlers, run};
}

CSnmpTableBase& alarmsOf(Visit& visit)
{
    return dynamic_cast<CSnmpTableBase&>(visit.at(kCurrentAlarms));
}

Operation hook(const char* name, std::function<int(CSnmpTableBase&, std::string&)> call)
{
    return {name, Operation::Needs::Handlers,
            [call](Visit& visit, std::string& answer) { return call(alarmsOf(visit), answer); }};
}

const CTLVRecordV3& alarmRecord()
{
    const gates::Pause pause;
    static const auto record = diskFailed().record();
    return *record;
}

/// A command whose package is used as hosts do.
Operation packages()
{
    const auto run = [](Visit& visit, std::string& answer) {
        OneAlarmLink::usesPackages = true;
        OneAlarmLink::thrown = nullptr;
        CKEL_SnmpContext context;
        Package response;
        const int result = visit.at(kClearAlarm).OnSetLeaf(context, theRequest(), response);
        OneAlarmLink::usesPackages = false;
        if (OneAlarmLink::thrown) {
            std::rethrow_exception(std::exchange(OneAlarmLink::thrown, nullptr));
        }
        describe(response, answer);
        return result;
    };
    return {"UseOfPackages", Operation::Needs::Handlers, run};
}

int describeRow(const CTLVRecordV3& row, std::string& answer)
{
    const gates::Pause pause;
    std::ostringstream text;
    for (const auto& cell : test::cellsOf(row)) {
        text << cell << ' ';
    }
    answer = text.str();
    return 0;
}

Operation notification(const char* name, std::size_t place)
{
    const auto run = [place](Visit& visit, std::string& answer) {
        auto& handler = visit.notifyHandler(place);
        Agentpp::Vbx* made = nullptr;
        const auto& record = alarmRecord();
        int result = 0;
        // What is set is the host's, whatever became of the call.
        try {
            result = handler.constructAlarmTrapVb(record, made);
        } catch (...) {
            delete[] made;
            throw;
        }
        const std::unique_ptr<Agentpp::Vbx[]> owned(made);
        for (int i = 0; made != nullptr && i < handler.getTrapVbLen(); ++i) {
            answer += std::string(made[i].get_printable_value()) + "\n";
        }
        return result;
    };
    return {name, Operation::Needs::Module, run};
}

Operation trapOid()
{
    const auto run = [](Visit& visit, std::string& answer) {
        answer = visit.notifyHandler(1).getTrapOid(kDiskFailed, 1).get_printable();
        return 0;
    };
    return {"GetTrapOid", Operation::Needs::Module, run};
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const Outcome& outcome)
{
    if (!outcome.thrown.empty()) {
        return os << "throws " << outcome.thrown;
    }
    return os << "returns " << outcome.result << " and answers " << outcome.answer;
}

HostSide::HostSide()
{
    LogSettings quiet;
    quiet.toStderr = false;
    configureLog(quiet);
    makeDebugKits();
    installDeviceConfig(DeviceConfigFile::load(TALVIK_DEVICE_FILE));
    installInstallationRoot(TALVIK_SOURCE_DIR);
    installBackendLink(std::make_unique<OneAlarmLink>());
    auto store = std::make_unique<TrapStore>(folder_.path());
    store_ = store.get();
    installTrapStore(std::move(store));
    forgetReports();
}

HostSide& hostSide()
{
    static HostSide host;
    return host;
}

HostSide::~HostSide()
{
    installTrapStore(nullptr);
    installBackendLink(nullptr);
}

void HostSide::restoreDestinations()
{
    const auto all = store_->all();
    if (all.size() == 1 && all.front().index == kDestination && all.front().port == 162) {
        return;
    }
    for (const auto& destination : all) {
        store_->remove(destination.index);
    }
    tTrapDestInfo destination;
    destination.address = "192.0.2.7";
    destination.port = 162;
    destination.type = 1;
    destination.user = "--";
    store_->create(destination, 17);
}

void HostSide::forgetReports()
{
    limitTableQueries(std::chrono::hours(1));  // nothing here is measured
}

const std::vector<Operation>& operations()
{
    using Needs = Operation::Needs;
    const auto restore = [](HostSide& host) { host.restoreDestinations(); };
    static const std::vector<Operation> all = {
        {"Factory", Needs::Nothing,
         [](Visit& visit, std::string&) {
             visit.makeModule();
             return 0;
         }},
        {"GetSvcHandler", Needs::Module,
         [](Visit& visit, std::string&) {
             visit.makeHandlers();
             return 0;
         }},
        request("TopologyQuery", kTopology, &CSnmpHandler::OnQueryTable),
        request("AlarmsQuery", kCurrentAlarms, &CSnmpHandler::OnQueryTable),
        request("ClearAlarmSet", kClearAlarm, &CSnmpHandler::OnSetLeaf),
        request("ClearAlarmQuery", kClearAlarm, &CSnmpHandler::OnQueryLeaf),
        request("TrapQuery", kTrapDestinations, &CSnmpHandler::OnQueryTable, restore),
        request("TrapCreate", kTrapDestinations, &CSnmpHandler::OnCreateTable, restore),
        refusedCreate(),
        request("TrapModify", kTrapDestinations, &CSnmpHandler::OnModifyTable, restore),
        request("TrapDelete", kTrapDestinations, &CSnmpHandler::OnDeleteTable, restore),
        hook("FillReqRecord",
             [](CSnmpTableBase& alarms, std::string& answer) {
                 CTLVRecordV3 record;
                 alarms.fillReqRecord(&record);
                 return describeRow(record, answer);
             }),
        hook("FillRspRecord",
             [](CSnmpTableBase& alarms, std::string& answer) {
                 CTLVRecordV3 row;
                 alarms.fillRspRecord(alarmRecord(), &row);
                 return describeRow(row, answer);
             }),
        hook("GetIndexOfRecord",
             [](CSnmpTableBase& alarms, std::string& answer) {
                 answer = alarms.getIndexOfRecord(alarmRecord());
                 return 0;
             }),
        hook("GetMibKey",
             [](CSnmpTableBase& alarms, std::string& answer) {
                 answer = alarms.getMibKey(Agentpp::Oidx("91.10.1.1.1.4.42"));
                 return 0;
             }),
        notification("ConstructFixedTrap", 0),
        notification("ConstructTrapOfItsOwnOid", 1),
        trapOid(),
        packages(),
    };
    return all;
}

void prepare(const Operation& operation, Visit& visit)
{
    if (operation.needs != Operation::Needs::Nothing) {
        visit.makeModule();
    }
    if (operation.needs == Operation::Needs::Handlers) {
        visit.makeHandlers();
    }
}

Outcome outcomeOf(const Operation& operation, Visit& visit)
{
    Outcome outcome;
    try {
        outcome.result = operation.run(visit, outcome.answer);
        return outcome;
    } catch (const CKEL_Exception& error) {
        outcome.thrown = error.what();
    } catch (const std::bad_alloc&) {
        outcome.thrown = "bad_alloc";
    } catch (int) {
        outcome.thrown = "int";
    } catch (const std::exception& error) {
        outcome.thrown = error.what();
    }
    outcome.answer.clear();
    return outcome;
}

}  // namespace talvik::contract
