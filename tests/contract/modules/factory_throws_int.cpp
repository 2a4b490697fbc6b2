#include "tests/contract/modules/faulty_module.h"

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    throw 42;
}
