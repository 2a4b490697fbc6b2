#include "tests/contract/modules/faulty_module.h"

extern "C" int SNMP_AbsentLibrary();

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return SNMP_AbsentLibrary() == 0 ? nullptr : nullptr;
}
