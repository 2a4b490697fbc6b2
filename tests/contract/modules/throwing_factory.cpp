#include "framework/kel_exception.h"
#include "tests/contract/modules/faulty_module.h"

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    throw CKEL_Exception("the factory refuses");
}
