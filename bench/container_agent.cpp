#include "bench/container_agent.h"

#include "host/snmp/net_snmp.h"

#include <cstdlib>
#include <fstream>
#include <string>

namespace talvik::bench {

namespace {

int answer(netsnmp_mib_handler*, netsnmp_handler_registration*, netsnmp_agent_request_info*,
           netsnmp_request_info* requests)
{
    for (auto* request = requests; request != nullptr; request = request->next) {
        const auto* row = static_cast<const TableRow*>(netsnmp_tdata_extract_entry(request));
        if (row != nullptr) {
            const auto& cell = row->cells.at(netsnmp_extract_table_info(request)->colnum - 1);
            snmp_set_var_typed_value(request->requestvb, cell.type, cell.octets.data(),
                                     cell.octets.size());
        }
    }
    return SNMP_ERR_NOERROR;
}

void registerTable(const TableRows& rows)
{
    constexpr const char* kName = "rows";
    auto* table = netsnmp_tdata_create_table(kName, 0);
    for (const auto& content : rows.rows) {
        auto* row = netsnmp_tdata_create_row();
        row->data = const_cast<TableRow*>(&content);  // which nobody changes
        snmp_varlist_add_variable(&row->indexes, nullptr, 0, rows.indexType, &content.index,
                                  sizeof content.index);
        netsnmp_tdata_add_row(table, row);
    }
    auto* description = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    netsnmp_table_helper_add_indexes(description, rows.indexType, 0);
    description->min_column = 1;
    description->max_column = static_cast<unsigned>(rows.rows.front().cells.size());
    netsnmp_tdata_register(netsnmp_create_handler_registration(kName, &answer, rows.table.data(),
                                                               rows.table.size(),
                                                               HANDLER_CAN_RONLY),
                           table, description);
}

}  // namespace

void serveContainer(unsigned port, const TableRows& rows, const char* folder)
{
    const std::string config = std::string(folder) + "/container.conf";
    std::ofstream(config) << "rocommunity bench 127.0.0.1\n";
    setenv("SNMPCONFPATH", folder, 1);
    setenv("MIBS", "", 1);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR, folder);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OPTIONALCONFIG, config.c_str());
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID,
                           NETSNMP_DS_AGENT_DONT_LOG_TCPWRAPPERS_CONNECTS, 1);
    netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_MAX_GETBULKRESPONSES, 1000);
    const auto endpoint = "udp:127.0.0.1:" + std::to_string(port);
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS, endpoint.c_str());

    std::string modules = "vacm_vars,vacm_conf,vacm_context,snmpEngine,snmp_mib";
    add_to_init_list(modules.data());
    init_agent("container");
    init_mib_modules();
    registerTable(rows);
    init_snmp("container");
    if (init_master_agent() != 0) {
        std::exit(1);
    }
    for (;;) {
        agent_check_and_process(1);
    }
}

}  // namespace talvik::bench
