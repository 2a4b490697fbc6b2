#include <agent_pp/snmp_pp_ext.h>
#include <snmp_pp/snmp_pp.h>

#include <cstdio>
#include <string>

int main()
{
    const Agentpp::Vbx vb("1.3.6.1", Snmp_pp::OctetStr("linked"));
    const std::string oid = vb.get_oid().cut_left(2).get_printable();
    const std::string value = vb.get_printable_value();
    if (oid != "6.1" || value != "linked") {
        std::fprintf(stderr, "probe: got oid %s, value %s\n", oid.c_str(), value.c_str());
        return 1;
    }
    return 0;
}
