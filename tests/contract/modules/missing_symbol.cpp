// A shared object that needs what no host has.
#include "tests/contract/modules/faulty_module.h"

extern "C" int SNMP_NobodyHasThis();

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return SNMP_NobodyHasThis() == 0 ? nullptr : nullptr;
}
