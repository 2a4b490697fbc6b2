#include "bench/container_agent.h"

#include "bench/receiver_rows.h"
#include "host/snmp/net_snmp.h"

#include <cstdlib>
#include <fstream>
#include <string>

namespace talvik::bench {

namespace {

constexpr unsigned kColumns = 8;

void put(netsnmp_variable_list* variable, const std::string& text)
{
    snmp_set_var_typed_value(variable, ASN_OCTET_STR, text.data(), text.size());
}

void put(netsnmp_variable_list* variable, unsigned char type, long number)
{
    snmp_set_var_typed_value(variable, type, &number, sizeof number);
}

void answerColumn(netsnmp_variable_list* variable, unsigned column, const Receiver& row)
{
    switch (column) {
    case 1:
    case 6:
        return put(variable, row.address);
    case 2:
        return put(variable, ASN_GAUGE, row.port);
    case 3:
        return put(variable, ASN_INTEGER, 1);
    case 4:
        return put(variable, ASN_INTEGER, row.index);
    case 5:
        return put(variable, ASN_INTEGER, row.version);
    case 7:
        return put(variable, ASN_INTEGER, row.type);
    default:
        return put(variable, row.user);
    }
}

int answer(netsnmp_mib_handler*, netsnmp_handler_registration*, netsnmp_agent_request_info*,
           netsnmp_request_info* requests)
{
    for (auto* request = requests; request != nullptr; request = request->next) {
        const auto* row = static_cast<const Receiver*>(netsnmp_tdata_extract_entry(request));
        if (row != nullptr) {
            answerColumn(request->requestvb, netsnmp_extract_table_info(request)->colnum, *row);
        }
    }
    return SNMP_ERR_NOERROR;
}

void registerTable(unsigned rows)
{
    auto* table = netsnmp_tdata_create_table("receivers", 0);
    for (unsigned index = 1; index <= rows; ++index) {
        auto* row = netsnmp_tdata_create_row();
        row->data = new Receiver(receiver(index));  // lives as long as the process
        const long key = static_cast<long>(index);
        snmp_varlist_add_variable(&row->indexes, nullptr, 0, ASN_INTEGER, &key, sizeof key);
        netsnmp_tdata_add_row(table, row);
    }
    auto* description = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    netsnmp_table_helper_add_indexes(description, ASN_INTEGER, 0);
    description->min_column = 1;
    description->max_column = kColumns;
    const auto root = receiverTable();
    netsnmp_tdata_register(netsnmp_create_handler_registration("receivers", &answer, root.data(),
                                                               root.size(), HANDLER_CAN_RONLY),
                           table, description);
}

}  // namespace

void serveContainer(unsigned port, unsigned rows, const char* folder)
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
